// Helpers shared by the resource copier and the resource file readers.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/status.h"
#include "dxf/document.h"

namespace dxf::resource_detail {

// True when new records get handles: always from R13 on, in R12 when the drawing uses them.
bool usesHandles(const Document& doc);

// Adds a table entry before the table's end (making the table when missing) and counts it
// in the table's 70 (and, for DIMSTYLE tables that list their entries, its 71 and 340s).
// `tags` holds the complete record, its handle tag included when it has one.
RecordId addTableEntry(Document& doc, std::string_view table, std::span<const Tag> tags);

// The root dictionary, made with the OBJECTS section when the drawing has none. Fails on
// R12 drawings.
base::Result<RecordId> ensureRootDictionary(Document& doc);
// The entry `key` of the root dictionary, made as an empty dictionary when missing.
base::Result<RecordId> ensureRootEntry(Document& doc, std::wstring_view key);

// One line of a resource file with its 1-based number.
struct SourceLine {
  std::wstring text;
  int number = 0;
};
// Decodes a resource file (UTF-8 with or without a byte-order mark, else Windows-1252) and
// splits it into lines without their line ends.
std::vector<SourceLine> splitLines(std::string_view bytes);

// "NAME:LINE: message" as an invalid-argument error.
base::Status lineError(const std::string& file, int line, const std::string& message);

// Text without leading and trailing blanks and tabs.
std::wstring_view trim(std::wstring_view text);
// Parses a whole (trimmed) field as a real number; false when it is not one.
bool parseReal(std::wstring_view text, double& out);
// Upper-case copy, for case-insensitive keys.
std::wstring upper(std::wstring_view text);

// --- Copies between drawings: CopyPlan decides (resource_plan.cc), copyResources writes.

// A handle written as hexadecimal text, or 0.
Handle parseHandle(std::string_view text);
// Codes whose values are handles that a copy translates (DXF pointer codes; 320-329 are
// taken as they are by definition).
bool isPointer(int code);
// Entity types whose code 2 names a block.
bool namesBlock(std::string_view type);

enum class Named : uint8_t {
  kLayer,
  kLinetype,
  kTextStyle,
  kDimStyle,
  kAppId,
  kBlock,
  kMlineStyle,
  kMLeaderStyle
};

// The records of `source` that a copy into `target` takes, in the order they are written,
// with the handles they get: those named, and what they use that the target lacks.
class CopyPlan {
 public:
  enum class Place : uint8_t { kTableEntry, kBlock, kObject };
  struct Item {
    RecordId source;
    Place place;
    std::string table;  // for kTableEntry
  };
  // Where a source object is listed: the dictionary (its owner, when several list it).
  struct Listing {
    RecordId dictionary;
    std::wstring key;
    bool hard_owner;
  };

  // Allocates the target's handles for the copies as it plans them.
  CopyPlan(Document& target, const Document& source);

  // Takes the record `name` of `kind` unless the target has one of that name.
  void request(Named kind, std::wstring_view name);
  // Adds what the taken records use, until nothing more is missing.
  void collect();
  bool targetHas(Named kind, std::wstring_view name) const;

  const std::vector<Item>& items() const { return items_; }
  bool taken(RecordId r) const { return queued_.contains(r); }
  // The target handle of the copy of `r`, or 0 (a target without handles).
  Handle newHandle(RecordId r) const;
  const Listing* listing(RecordId r) const;
  // The new name of an anonymous block (decoded name), or nullptr.
  const std::wstring* renamedBlock(std::wstring_view name) const;
  RecordId sourceRoot() const { return source_root_; }
  // The target's record standing for a source record that is not copied: the table,
  // entry, block or dictionary entry of the same name; 0 when there is none.
  Handle counterpart(RecordId r);
  // Forgets looked-up counterparts, after containers were added to the target.
  void forgetCounterparts() { counterparts_.clear(); }
  // What a source handle becomes in the target: its copy's handle, else its counterpart's.
  Handle remap(Handle h);

 private:
  void indexSource();
  void enqueueNamed(Named kind, std::wstring_view name);
  void enqueueRecord(RecordId r);
  void enqueueBlock(std::wstring_view name);
  void push(RecordId r, Place place, std::string table = {});
  void scan(const Item& item);
  void followHard(Handle h);
  std::wstring freeAnonymousName(std::wstring_view old_name);

  Document& target_;
  const Document& source_;
  bool downgrade_;  // into R12 from a later format
  bool handles_;

  RecordId source_root_ = kNoRecord;
  std::unordered_map<RecordId, std::string> entry_table_;
  std::unordered_map<Handle, Listing> listing_;
  std::unordered_set<RecordId> objects_;

  std::vector<Item> items_;
  std::unordered_set<RecordId> queued_;
  std::unordered_map<RecordId, Handle> new_handle_;
  std::unordered_map<Handle, RecordId> queued_by_handle_;
  std::unordered_map<std::wstring, std::wstring> block_rename_;  // upper-case old -> new
  std::unordered_set<std::wstring> target_blocks_;               // upper-case
  bool target_blocks_read_ = false;
  std::unordered_map<RecordId, Handle> counterparts_;
};

}  // namespace dxf::resource_detail
