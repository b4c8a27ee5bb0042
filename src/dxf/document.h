// A DXF drawing held losslessly: every record keeps its tags and their value text as read,
// and a record nobody changed is written back as the very bytes it came from.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/status.h"
#include "dxf/codec.h"
#include "dxf/number_text.h"
#include "dxf/record_facts.h"
#include "dxf/tags.h"
#include "dxf/text_store.h"

namespace dxf {

using RecordId = uint32_t;
constexpr RecordId kNoRecord = UINT32_MAX;
// Ids from here up name attached records (see AttachmentBuilder).
constexpr RecordId kAttachedBase = 0x8000'0000;
using Handle = uint64_t;  // 0 means none

enum class Format : uint8_t { kAscii, kBinary };

// One structure of the file: a run of tags from a code 0 tag to the next one.
struct Record {
  // Where the record's tags lie in the text: an unchanged ASCII record's file bytes, else
  // its encoding (a binary file's record, one made, changed or spliced since loading).
  uint32_t pos = 0;
  uint32_t size = 0;
  uint32_t tag_count = 0;
  RecordId prev = kNoRecord;  // file order
  RecordId next = kNoRecord;
  uint16_t type = 0;         // the structure name, as an index into the drawing's list of them
  bool changed : 1 = false;  // tags no longer match the raw bytes (or there never were any)
  bool erased : 1 = false;   // unlinked from the file; kept so that ids stay valid
  bool paper : 1 = false;    // an entity flagged as paper space (67)
  // Its file bytes but for one run of tags replaced by others (some inserted, some taken
  // out, or both): the encoding holds where the run lies and the new tags (see
  // Document::splicedSource).
  bool spliced : 1 = false;
  // Its handle was used by an object earlier in the file, which keeps it in the index; this
  // one keeps it in its bytes until it changes, and is then given a fresh one.
  bool rehandle : 1 = false;
  // The tag at layer_at opens the record's AcDbEntity group (RecordFacts::layer_opens_group).
  bool layer_opens_group : 1 = false;
  // An attached record whose tags are still those it was made with: they are read from its
  // attachment, and pos and size mean nothing.
  bool row : 1 = false;
  // Where the layer's value lies in the record's file bytes (RecordFacts::layer_at), when
  // that is under 256 and the bytes still hold the record's layer (outside a run a splice
  // replaced); 0 otherwise.
  uint8_t layer_at = 0;
  Handle handle = 0;
  Handle xdict = 0;  // the extension dictionary its tags name, 0 if none
};

static_assert(sizeof(Record) == 40, "a record's entry is kept for every record of a drawing");

// A section, table or block: the record that opens it and the one that closes it.
struct Span {
  RecordId head = kNoRecord;
  RecordId tail = kNoRecord;
};

// Told of the objects that join and leave a drawing, whoever adds or erases them. Objects
// are every record but the markers of the file's structure (SECTION, ENDSEC, ENDTAB, EOF).
class DocumentObserver {
 public:
  virtual ~DocumentObserver() = default;
  // `id` was linked into the file with its tags complete (and, for an object a dictionary
  // lists, after the entry that names it was written).
  virtual void recordAdded(RecordId id) = 0;
  // `id` was unlinked for good. A cascade is told owner first, then what it owned.
  virtual void recordErased(RecordId id) = 0;
};

// One thread at a time, reads included: the first read of an attached pair's tags writes
// them (see Attachment).
class Document {
 public:
  Document() = default;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  Document(Document&&) = default;
  Document& operator=(Document&&) = default;

  // Parses a whole file held in `bytes`; `name` is used in error messages
  // ("NAME:LINE: what is wrong"). On error nothing of the drawing is returned. Faults that
  // a CAD program's audit repairs or ignores do not refuse the drawing: see faults().
  static base::Result<Document> parse(std::string bytes, const std::string& name);
  // Reads and parses a file.
  static base::Result<Document> load(const std::string& path);

  // Writes the drawing in its own format; unchanged records are their original bytes.
  std::string serialize() const;
  // Writes to a temporary file beside `path` and renames it over `path` only after a
  // complete, flushed write; on failure `path` is untouched.
  base::Status save(const std::string& path) const;

  // --- File properties.
  Format format() const { return format_; }
  bool crlf() const { return crlf_; }
  const std::string& version() const { return version_; }  // "AC1009"... or "" if absent
  bool isR12() const { return version_ <= "AC1009"; }
  const Codec& codec() const { return codec_; }
  // What was wrong with the file but did not keep it from being read, in file order, each
  // once, as "NAME:LINE: what; how it is read". The bytes stay as they were.
  const std::vector<std::string>& faults() const { return faults_; }

  // --- Records and tags. Text views stay valid while the drawing changes, with one
  // exception: the record changed last is rewritten in place by its next change, so views
  // of its values must not be held across that. A tag list is a copy of the tags the record
  // had when it was taken; a scan reads them where they lie. A record's entry is a copy too.
  Record record(RecordId id) const {
    if (isAttached(id)) [[unlikely]] return attachedRecord(id);
    return records_[id];
  }
  // The size of the record list: ids below it name records of the file's order (linked or
  // not), attached records aside.
  size_t recordCount() const { return records_.size(); }
  // Whether `id` names a record of the drawing: linked into the file, or attached, and not
  // erased.
  bool exists(RecordId id) const {
    if (isAttached(id)) [[unlikely]] return attachedExists(id);
    return id < records_.size() && !records_[id].erased;
  }
  TagList tags(RecordId id) const { return TagList(scan(id)); }
  TagScan scan(RecordId id) const {
    if (isAttached(id)) [[unlikely]] return attachedScan(id);
    return scanOf(records_[id]);
  }
  std::string_view text(const Tag& tag) const { return text_.view(tag.value); }
  std::string_view text(TextRef ref) const { return text_.view(ref); }
  // The record's structure name: the value of its code 0 tag ("LINE", "SECTION"...).
  std::string_view type(RecordId id) const {
    if (isAttached(id)) [[unlikely]] return type_names_[attachedType(id)];
    return type_names_[records_[id].type];
  }
  RecordId first() const { return first_; }
  // Attached records are not in the file's order: they have no neighbours.
  RecordId next(RecordId id) const { return isAttached(id) ? kNoRecord : records_[id].next; }
  RecordId prev(RecordId id) const { return isAttached(id) ? kNoRecord : records_[id].prev; }
  // Counts the changes to records' tags and the records unlinked: what a reader cached from a
  // record is still good while this has not moved.
  uint64_t revision() const { return revision_; }

  // --- Attached records. An entity's extension dictionary made for it together with the one
  // XRECORD it holds (AttachmentBuilder) is kept as a row: its handles, and the tags it has
  // in common with other pairs (the key, the XRECORD's values) kept once for all of them.
  // Classifying gives every entity one, and entries and encodings of their own would double
  // what the drawing holds. They read and change like any record, but are not in the file's
  // order (first, next): they are written at the end of the OBJECTS section, each dictionary
  // before its XRECORD, and cannot be moved.
  static bool isAttached(RecordId id) { return id >= kAttachedBase && id != kNoRecord; }
  // Attached records have the ids from kAttachedBase up to this one, in the order they are
  // written; those erased do not exist().
  RecordId attachedEnd() const {
    return static_cast<RecordId>(kAttachedBase + 2 * attachments_.size());
  }
  // The XRECORD of the attached dictionary `dict` while the dictionary's tags are as they
  // were made and neither has gone (it is then the dictionary's only entry, hard-owned);
  // kNoRecord otherwise.
  RecordId attachedXrecordOf(RecordId dict) const {
    const size_t k = dict - kAttachedBase;
    if (!isAttached(dict) || k % 2 != 0 || k / 2 >= attachments_.size() ||
        attachments_[k / 2].erased != 0 ||
        (k < attached_records_.size() && !attached_records_[k].row)) {
      return kNoRecord;
    }
    return dict + 1;
  }

  // The text of the layer tag of `id` (its first 8 in the AcDbEntity group) when the load
  // noted where it lies and the record's file bytes still hold it; nothing otherwise (read
  // the tags then). Commands ask every entity they visit for its layer.
  std::optional<std::string_view> knownLayer(RecordId id) const;
  // The first tag with each of `codes` of the AcDbEntity group of `id`, outside application
  // groups, as a scan of its tags would find them, into `found` (one for each code), when the
  // record is its file bytes and the layer's tag opens that group: the group is then read
  // once, from the layer on. False, and nothing found, otherwise. No code may be 8.
  bool findInEntityGroup(RecordId id, std::span<const int> codes,
                         std::span<std::optional<Tag>> found) const;
  // The first tag of `id` with `code`, if any.
  std::optional<Tag> find(RecordId id, int code) const;
  // The raw text of the first tag with `code`, or `fallback`.
  std::string_view value(RecordId id, int code, std::string_view fallback = {}) const;
  // The first tag with `code` read as a number, or `fallback` when absent or not a number.
  int64_t intValue(RecordId id, int code, int64_t fallback) const;
  double realValue(RecordId id, int code, double fallback) const;

  // --- Changes.
  Tag makeTag(int code, std::string_view raw_text);
  Tag makeTag(int code, double value);
  Tag makeTag(int code, int64_t value);
  // Replaces all tags of `id` (in place when they fit); the record is written from its tags
  // from now on.
  void setTags(RecordId id, std::span<const Tag> tags);
  // Inserts `tags` before the tag at `index` (0 = before the first); the same as setTags
  // with them inserted, without decoding the record when it is unchanged.
  void insertTags(RecordId id, size_t index, std::span<const Tag> tags);
  // The same with the tags given as texts: inserted into a record's file bytes, they are
  // encoded there and their values kept nowhere else.
  void insertTags(RecordId id, size_t index, std::span<const TagText> tags);
  // Gives `id` the group "102 {ACAD_XDICTIONARY, 360 dictionary, 102 }" just after its
  // handle and its reactors, where it belongs: the same as insertTags there. Classifying
  // does it to every entity, and only the first few tags are read for it.
  void insertExtensionGroup(RecordId id, Handle dictionary);
  // Takes the group "102 {ACAD_XDICTIONARY" out of `id`, to its "102 }" or the record's end:
  // the same as eraseTags over it. Removing records does it to every entity.
  void cutExtensionGroup(RecordId id);
  // Takes out `count` tags from the tag at `index` on; the same as setTags without them,
  // without rewriting the record when it is its file bytes or they are what was inserted.
  void eraseTags(RecordId id, size_t index, size_t count);
  // Creates an unlinked record; link it with insertBefore. RecordBuilder does the same
  // from codes and values.
  RecordId newRecord(std::span<const Tag> tags);
  // Links the unlinked record `id` into the file just before `pos`.
  void insertBefore(RecordId pos, RecordId id);
  // Unlinks `id` from the file (takes an attached record out); byHandle no longer finds it.
  void unlink(RecordId id);
  // Moves the linked record `id` to just before `pos`; the observer is not told, since the
  // object stays in the drawing. Attached records stay where they are.
  void moveBefore(RecordId pos, RecordId id);

  // --- Observer. At most one; it must outlive the drawing or be reset to nullptr first.
  // Notices wait while a ChangeBatch is open and are told, in order, when the last closes.
  void setObserver(DocumentObserver* observer) { observer_ = observer; }
  DocumentObserver* observer() const { return observer_; }

  // --- Handles.
  RecordId byHandle(Handle handle) const;
  // A handle not used before; $HANDSEED is kept above it when the drawing is written.
  Handle allocateHandle();
  // Gives `id` the handle `handle` in the index (the caller has written its tag).
  void indexHandle(RecordId id, Handle handle);

  // --- Structure.
  Span section(std::string_view name) const;
  Span table(std::string_view name) const;  // "LAYER", "LTYPE"... (case-sensitive, as written)
  // The header section's record; kNoRecord if the file has none.
  RecordId header() const { return section("HEADER").head; }
  // Adds a section (before EOF, in the conventional order) and returns it.
  Span addSection(std::string_view name);
  // Adds an empty table to the TABLES section.
  Span addTable(std::string_view name);

  // --- Header variables ("$INSUNITS"). Values are the tags after the variable's code 9 tag.
  std::vector<Tag> headerVariable(std::string_view name) const;
  // Replaces (or appends) a variable's tags.
  void setHeaderVariable(std::string_view name, std::span<const Tag> value_tags);

 private:
  // Whether a direct index up to `handle` stays within a few slots per handle.
  bool denseEnough(Handle handle) const { return handle <= 4 * handle_count_ + 4096; }
  friend class DocumentBuilder;

  friend class ChangeBatch;
  friend class RecordBuilder;
  friend class AttachmentBuilder;

  TagScan scanOf(const Record& r) const {
    if (r.spliced) return TagScan(splicedSource(r));
    if (!r.changed && format_ == Format::kAscii) {
      return TagScan(TagSource({raw_.data() + r.pos, r.pos, r.size, r.tag_count, true, {}}));
    }
    return TagScan(TagSource(encodedSegment(r.pos, r.size, r.tag_count)));
  }
  // The `count` encoded tags at [pos, pos + size) of the text store.
  TagSegment encodedSegment(uint32_t pos, uint32_t size, uint32_t count) const {
    return {text_.view({pos, size}).data(), pos, size, count, false, shared_};
  }

  // An extension dictionary and its XRECORD made together. Their own tags are
  //   0 DICTIONARY, 5 dictionary, 330 owner | 360 XRECORD | 0 XRECORD, 5 XRECORD, 330 dictionary
  // and the rest, the same for every pair made with the same key and values, is its shape's.
  // The dictionary is attached record kAttachedBase + 2 * index, the XRECORD the next id.
  // Own tags are encoded only once something reads them: until then (size 0) pos holds the
  // owner's handle and the pair's handles are those its ids have in handle_runs_. Classifying
  // and saving never read them, and their encodings would be a third of what classifying
  // adds to a drawing.
  struct Attachment {
    uint32_t pos = 0;        // its own tags, in the text store; or the owner's handle
    uint32_t shape = 0;      // in shapes_
    uint8_t size = 0;        // bytes of its own tags (handles take at most 16 digits)
    uint8_t entry_at = 0;    // where the dictionary's entry (360) begins in them
    uint8_t xrecord_at = 0;  // where the XRECORD's begin
    uint8_t erased = 0;      // bit 0 the dictionary, bit 1 the XRECORD
  };
  // What pairs share, encoded once: the dictionary's tags after its owner up to its entry
  //   100 AcDbDictionary, 280 1, 281 1, 3 key
  // then the XRECORD's after its owner (100 AcDbXrecord, its values).
  struct Shape {
    uint32_t pos = 0;
    uint32_t size = 0;
    uint32_t dictionary_size = 0;  // bytes of the dictionary's part
    uint32_t xrecord_tags = 0;
  };
  static constexpr uint32_t kShapeDictionaryTags = 4;
  static constexpr uint32_t kOwnDictionaryTags = 4;  // three before the shape's, one after
  static constexpr uint32_t kOwnXrecordTags = 3;
  // A pair's own tags, with its handles' texts.
  struct OwnTags {
    HandleText owner, dictionary, xrecord;
    std::array<TagText, 3> dictionaryHead() const {
      return {{{0, "DICTIONARY"}, {5, dictionary.view()}, {330, owner.view()}}};
    }
    TagText entry() const { return {360, xrecord.view()}; }
    std::array<TagText, 3> xrecordHead() const {
      return {{{0, "XRECORD"}, {5, xrecord.view()}, {330, dictionary.view()}}};
    }
  };
  // The own tags of the pair at `pair` whose own tags are not encoded.
  OwnTags unencodedOwnTags(size_t pair) const;
  // Encodes the own tags of the pair at `pair` into the text store.
  void encodeOwnTags(size_t pair, const OwnTags& own) const;
  // The shape's part of the dictionary (or of the XRECORD) of a pair.
  TagSegment shapePart(const Shape& shape, bool dictionary) const;
  // The handle the runs give the attached record `id`; 0 when none does.
  Handle runHandle(RecordId id) const;
  // Where the tags of the attached record `k` (id - kAttachedBase) lie, while it is a row.
  TagSource attachedSource(size_t k) const;
  // The entry of the attached record `id`, its handle aside (0).
  Record attachedEntry(RecordId id) const;
  bool attachedExists(RecordId id) const {
    const size_t k = id - kAttachedBase;
    if (k < attached_records_.size()) return !attached_records_[k].erased;
    return k / 2 < attachments_.size() && (attachments_[k / 2].erased >> (k % 2) & 1) == 0;
  }
  TagScan attachedScan(RecordId id) const {
    const size_t k = id - kAttachedBase;
    if (k < attached_records_.size() && !attached_records_[k].row) {
      return scanOf(attached_records_[k]);
    }
    return TagScan(attachedSource(k));
  }
  Record attachedRecord(RecordId id) const;
  uint16_t attachedType(RecordId id) const {
    const size_t k = id - kAttachedBase;
    if (k < attached_records_.size()) return attached_records_[k].type;
    return k % 2 == 0 ? dictionary_type_ : xrecord_type_;
  }
  // indexHandle for an attached record made just now: its handle joins the last run of
  // handles when it follows it.
  void indexAttachedHandle(RecordId id, Handle handle);
  // The entry of `id` to change: an attached record gets one kept for it.
  Record& entry(RecordId id);
  // Tells the observer (now, or when the open batches close) that `id` came or went.
  void notify(RecordId id, bool added);
  void flushNotices();
  void link(RecordId pos, RecordId id);
  void unlinkQuietly(RecordId id);

  // Appends the encoding of `tags` to `out`, naming the values that recur in every object
  // (structure names, markers, keys, layer and style names) by their shared number.
  void encode(std::span<const Tag> tags, std::string& out);
  void encode(std::span<const TagText> tags, std::string& out);
  std::string_view textOf(const Tag& tag) const { return text(tag); }
  static std::string_view textOf(const TagText& tag) { return tag.value; }
  // Tags [index, index + cut) of a record that is its file bytes replaced by `added`: the
  // record is spliced. False (nothing done) for any other.
  template <typename T>
  bool spliceFileBytes(RecordId id, size_t index, size_t cut, std::span<const T> added);
  void encodeOne(int code, std::string_view value, std::string& out);
  // Reads the facts of `id` again from its tags as they are, its structure name aside (or
  // given as `type`).
  void noteFacts(RecordId id);
  void noteFacts(RecordId id, uint16_t type);
  // Sets the facts a record caches, after its tags changed.
  void setFacts(RecordId id, uint16_t type, const RecordFacts& facts);

  // The index of structure name `name` (the text of a code 0 tag) in type_names_.
  uint16_t internType(std::string_view name);
  // Keeps the facts a record caches (type, extension dictionary, paper space) in step with
  // its tags `tags`, after they changed.
  void noteTags(RecordId id, std::span<const Tag> tags);

  // A spliced record's three runs of tags: the file's tags before the replaced run, the new
  // tags, the file's tags after the run. `file`, when given, receives the record's file
  // bytes, `insert_at` the offset into them where the run begins and `resume_at` where the
  // file's tags go on after it.
  TagSource splicedSource(const Record& r, std::string_view* file = nullptr,
                          uint32_t* insert_at = nullptr, uint32_t* resume_at = nullptr) const;
  struct SpliceHeader {
    uint32_t raw_begin = 0, raw_size = 0, file_tags = 0;  // the file bytes and their tags
    uint32_t first = 0, offset = 0;   // the first tag replaced, and where it lies in them
    uint32_t cut_tags = 0, resume = 0;  // how many are replaced, where the file goes on
    uint32_t header_size = 0;         // where the new tags' encoding begins
  };
  SpliceHeader spliceHeader(const Record& r) const;
  // The bytes of an ASCII file that `r` still keeps: all of them when it is unchanged, those
  // around the replaced run when it is spliced; none when it is written from its tags.
  std::string_view keptFileBytes(const Record& r) const {
    if (format_ != Format::kAscii || (r.changed && !r.spliced)) return {};
    if (r.spliced) return splicedFileBytes(r);
    return {raw_.data() + r.pos, r.size};
  }
  std::string_view splicedFileBytes(const Record& r) const;
  // The file bytes [begin, end) of the unchanged record `id`.
  std::pair<uint32_t, uint32_t> fileBytes(RecordId id) const {
    if (format_ == Format::kBinary) return binary_raw_[id];
    return {records_[id].pos, records_[id].pos + records_[id].size};
  }
  // Keeps an ASCII record that is unchanged or spliced as its file bytes when `tags` differ
  // from the file's tags in one run only, short enough to be worth it (or in none: the
  // record is its file bytes again); returns false (nothing done) otherwise.
  bool trySplice(RecordId id, std::span<const Tag> tags);
  // Whether `id` is an ASCII record whose file bytes a splice can keep.
  bool spliceable(const Record& r) const {
    return (r.spliced || (!r.changed && r.size != 0)) && !r.rehandle &&
           format_ == Format::kAscii;
  }
  // Makes `r` its file bytes [begin, begin + size), which hold `tag_count` tags, again.
  static void keepFileBytes(Record& r, uint32_t begin, uint32_t size, uint32_t tag_count);
  // Makes the unchanged record `id` the file's bytes with its tags [first, first + cut_tags),
  // which lie at [offset, offset + cut_size) in them, replaced by `added`.
  template <typename T>
  void splice(RecordId id, uint32_t first, uint32_t offset, uint32_t cut_tags, uint32_t cut_size,
              std::span<const T> added);

  base::Status buildStructure(const std::string& name);
  // Indexes the handles the load found (in handles_, in file order), noting those used
  // twice; sets the next handle to give out.
  void indexLoadedHandles(const std::string& name);
  // Notes the faults a load reads past. Each goes with its file offset, to sort them by.
  void noteDanglingExtensionDictionaries(const std::string& name);
  void noteTextThatIsNotUtf8(const std::string& name);
  void addFault(uint32_t offset, const std::string& name, std::string what);
  // The file offset of `id`, or of its tag `tag` (ASCII files).
  uint32_t offsetOf(RecordId id, const Tag* tag = nullptr) const;
  // "NAME:LINE: " (ASCII) or "NAME: byte N: " (binary) for the file byte `offset`.
  std::string placeOf(const std::string& name, uint32_t offset) const;
  // "line N" or "byte N".
  std::string lineOf(uint32_t offset) const;
  // The line of the ASCII file's byte `offset`, 1 for the first.
  uint64_t lineNumber(uint32_t offset) const;
  // Writes the fresh handle a `rehandle` record is given into `tags`.
  void giveFreshHandle(RecordId id, std::vector<Tag>& tags);
  // Writes the whole drawing to `out` (a std::string or a buffered file).
  template <typename Out>
  void writeTo(Out& out) const;

  std::string raw_;  // the file as read
  // While loading: the records with an extension dictionary group, to be checked.
  std::vector<RecordId> xdict_candidates_;
  // A binary file's records read from its text (their encodings); these are their bytes.
  std::vector<std::pair<uint32_t, uint32_t>> binary_raw_;
  // Mutable: reading an attached pair's own tags the first time encodes them (Attachment).
  mutable TextStore text_;
  std::string encode_scratch_;
  // What trySplice reads of a record's file bytes: its tags and where each begins.
  std::vector<Tag> splice_tags_;
  std::vector<uint32_t> splice_starts_;
  std::string builder_scratch_;  // the encoding a RecordBuilder is writing
  // Recent short values made for edits, by hash: the same names, flags and defaults are
  // made again for every object an operation writes, and are kept once.
  static constexpr size_t kValueCacheSize = 4096;
  std::vector<TextRef> value_cache_;
  // Values that encodings name by number, each kept once (a bounded number of them).
  std::vector<TextRef> shared_;
  std::unordered_map<std::string_view, uint32_t> shared_index_;
  std::array<uint32_t, 64> recent_shared_ = [] {
    std::array<uint32_t, 64> none;
    none.fill(UINT32_MAX);
    return none;
  }();
  // Structure names, few and repeated by every record: each kept once, index 0 being "".
  std::deque<std::string> type_names_ = {std::string()};  // a deque: names never move
  std::unordered_map<std::string_view, uint16_t> type_index_;
  std::vector<Record> records_;
  mutable std::vector<Attachment> attachments_;
  // The encodings of "0 DICTIONARY" and "0 XRECORD", which begin a pair's own tags.
  std::string dictionary_tag_, xrecord_tag_;
  mutable std::string own_tags_scratch_;  // encodeOwnTags
  std::vector<Shape> shapes_;
  // The shapes made last, by hash of their bytes: pairs made one after another mostly
  // repeat one of a few.
  static constexpr size_t kShapeCacheSize = 1024;
  std::vector<uint32_t> shape_cache_;
  // Shapes by the sources they were made from, by hash (reuseShape): pairs attached one
  // after another mostly repeat one of a few.
  struct ShapeSource {
    std::string source;
    uint32_t shape = UINT32_MAX;
  };
  static constexpr size_t kShapeSourceCacheSize = 64;
  std::vector<ShapeSource> shape_sources_;
  // The entries of attached records, by id - kAttachedBase, once a change reached one of
  // them; those attached after that, and those whose entry is still a `row`, are read from
  // their attachment.
  std::vector<Record> attached_records_;
  uint16_t dictionary_type_ = 0;  // the structure names of attached records
  uint16_t xrecord_type_ = 0;
  RecordId first_ = kNoRecord;
  RecordId last_ = kNoRecord;

  Format format_ = Format::kAscii;
  bool crlf_ = false;
  bool padded_codes_ = true;  // codes right-aligned in three columns, as most writers do
  bool r12_binary_codes_ = false;
  std::string version_;
  Codec codec_;

  // Sorted by handle; only while the handles are too sparse for the direct index.
  std::vector<std::pair<Handle, RecordId>> handles_;
  size_t handle_count_ = 0;
  // Record by handle, indexed directly, while the handles are dense enough (as writers
  // allocate them, counting up): commands look handles up for every entity they visit.
  // Empty when the handles are too sparse; handles_ answers then.
  std::vector<RecordId> dense_handles_;
  bool dense_ = false;
  // Handles of attached records, given out counting up as the records' ids do: runs of
  // handles and ids that rise together, above every handle the index above holds when made.
  // Classifying attaches two records to every entity, and a slot each would cost as much as
  // the record list.
  struct HandleRun {
    Handle handle = 0;
    RecordId id = kNoRecord;
    uint32_t count = 0;
  };
  std::vector<HandleRun> handle_runs_;
  Handle next_handle_ = 1;
  Handle file_handseed_ = 0;
  bool handles_allocated_ = false;
  std::vector<std::pair<std::string, Span>> sections_;
  std::vector<std::pair<std::string, Span>> tables_;
  std::vector<std::string> faults_;
  std::vector<std::pair<uint32_t, std::string>> pending_faults_;  // while loading
  // While loading, once a message needs a line: where each line ends. A damaged drawing may
  // give a message for every object, and counting from the start for each would be slow.
  mutable std::vector<uint32_t> line_ends_;

  uint64_t revision_ = 0;
  DocumentObserver* observer_ = nullptr;
  int batch_depth_ = 0;
  std::vector<std::pair<RecordId, bool>> notices_;  // (record, added) held by a batch
};

// Makes a new record from its tags' codes and values, encoding each as it comes: objects
// made in bulk are written without making each value a tag first. One at a time per drawing.
class RecordBuilder {
 public:
  explicit RecordBuilder(Document& doc) : doc_(doc) { doc_.builder_scratch_.clear(); }
  RecordBuilder(const RecordBuilder&) = delete;
  RecordBuilder& operator=(const RecordBuilder&) = delete;

  RecordBuilder& add(int code, std::string_view value);
  // Creates the record, unlinked: link it with Document::insertBefore.
  RecordId finish();

 private:
  Document& doc_;
  RecordFactsReader facts_;
  uint16_t type_ = 0;
  uint32_t count_ = 0;
};

// While one lives, the drawing's observer is told nothing; when the outermost ends, it is
// told every change in order. Operations that add or erase several records open one, so
// that nothing is announced before the whole change is done.
class ChangeBatch {
 public:
  explicit ChangeBatch(Document& doc) : doc_(doc) { ++doc_.batch_depth_; }
  ChangeBatch(const ChangeBatch&) = delete;
  ChangeBatch& operator=(const ChangeBatch&) = delete;
  ~ChangeBatch() {
    if (--doc_.batch_depth_ == 0) doc_.flushNotices();
  }

 private:
  Document& doc_;
};

}  // namespace dxf
