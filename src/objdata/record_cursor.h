// The records of one entity: a walk over the record containers of its extension dictionary
// (one XRECORD per table, keyed by the table name, holding the values of one or more
// records back to back) and the operations on the record at the walk's position.
//
// A walk: openCursor; while !cursorDone: readRecord, act, then nextRecord, or after
// deleteRecord read again, since the cursor then already stands on the record that
// followed the deleted one.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/database.h"
#include "objdata/stored_table.h"
#include "objdata/value.h"

namespace objdata {

inline constexpr int kStatusEntityNotOpened = 18;  // the entity could not be opened

// The table dictionary of one drawing and the stored tables read from it so far. One
// directory serves one command run, so each stored table is read once however many
// entities carry it. Tables stored during the run are found as soon as they exist.
class TableDirectory {
 public:
  // `dictionary` may be null: the drawing stores no table, and no entry is a record container.
  TableDirectory(host::Database& database, host::ObjectId dictionary)
      : database_(database), dictionary_(dictionary) {}

  host::Database& database() { return database_; }
  host::ObjectId id() const { return dictionary_; }
  // Takes the table dictionary made after this directory (when it had none).
  void setId(host::ObjectId dictionary) { dictionary_ = dictionary; }

  // The stored table `name` (compared without regard to case); null when not stored.
  const StoredTable* find(std::wstring_view name);
  // Whether an extension-dictionary entry keyed `name` is a record container.
  bool has(std::wstring_view name) { return find(name) != nullptr; }
  // A chain for the record operations to read into, kept from one call to the next.
  host::ResBufChain& scratch() { return scratch_; }

 private:
  host::Database& database_;
  host::ObjectId dictionary_;
  std::map<std::wstring, StoredTable, std::less<>> tables_;  // by lower-case name
  // The same tables by the names as asked for: most lookups repeat a name exactly, and
  // this spares lower-casing it.
  std::map<std::wstring, const StoredTable*, std::less<>> as_asked_;
  // The last table found: entities mostly carry the same few tables one after another.
  std::wstring last_name_;
  const StoredTable* last_ = nullptr;
  host::ResBufChain scratch_;
};

struct RecordCursor {
  host::ObjectId entity;
  host::ObjectId extension_dictionary;
  // The extension dictionary's entries as (key, container); `entry` indexes the current one.
  // The walk is over when `entry` has passed the last one.
  std::vector<std::pair<std::wstring, host::ObjectId>> entries;
  size_t entry = 0;
  // Index of the current record's first value in its container, and its number of values
  // (set by readRecord).
  int32_t start = 0;
  uint32_t count = 0;
  // The current record is the last one of its container.
  bool at_end = false;
  // When set, only the entry whose key equals it exactly (case-sensitive) is visited, and
  // only if it is a record container.
  std::optional<std::wstring> table_filter;
  // For the cursor's owner; the record operations never read it.
  host::ObjectId user_slot;
  // The current container's values, read once per container (when `values_read`); the
  // storage is reused from one container and entity to the next.
  host::ResBufChain values;
  bool values_read = false;
};

// Starts a walk over the records of `entity`: kStatusEntityNotOpened when the entity does
// not exist, kStatusNothing when it has no extension dictionary or none of its entries is a
// record container. Entries of other applications are passed over. With a table filter the
// cursor moves on to the first entry of that key and is done when there is none (still
// kStatusOk).
int openCursor(TableDirectory& tables, RecordCursor& cursor, host::ObjectId entity);

bool cursorDone(const RecordCursor& cursor);

// Reads the record at the cursor: its table name and one field per stored field, in stored
// order, typed by the value's group code (1 Character, 10 Point, 40 Real, 90 Integer; other
// codes leave the field unset). A container shorter than the record gives fewer fields and
// ends the container. kStatusOpenFailed when the container cannot be read.
int readRecord(TableDirectory& tables, RecordCursor& cursor, TableRecord& record);

// Moves to the next record: the next one of the same container, or the first of the next
// record container (the filter's key only, when one is set). Always kStatusOk.
int nextRecord(TableDirectory& tables, RecordCursor& cursor);

// Overwrites the record at the cursor with `record`'s values, each taken by the group code
// the stored value already has (the field's own type is not consulted). Kept as the drawing
// format has always had it: a point's y is written from the field's z. kStatusNothing when
// the container cannot be written.
int updateRecord(TableDirectory& tables, RecordCursor& cursor, const TableRecord& record);

// Deletes the record at the cursor; the cursor then stands on the record that followed it.
// When the container is left empty its entry is removed, the container erased, and the
// extension dictionary released if nothing else is in it. kStatusNothing, changing
// nothing, when the container cannot be read or written.
int deleteRecord(TableDirectory& tables, RecordCursor& cursor);

// A record of `table` whose every field holds the zero of its type (an empty text for
// Character): what a record is before its values are given.
TableRecord blankRecord(const StoredTable& table);

// Appends `record` to `entity`'s container of table `table` (both made when missing). An
// empty record is first given the stored table's name and fields. Each value is written by
// its field's type; a Real goes through the integer conversion on this path and so loses its
// fraction, kept as the drawing format has always had it. kStatusEntityNotOpened when the
// entity does not exist. Throws kConversionFailed or kNotAPoint as the conversions do,
// having written nothing.
int appendRecord(TableDirectory& tables, const StoredTable& table, TableRecord& record,
                 host::ObjectId entity);

// The values appendRecord writes for `record`, one per field by the field's type (a Real
// without its fraction). Throws as the conversions do.
host::ResBufChain appendedValues(const TableRecord& record);
// appendRecord for values converted already: one record for many entities is converted once.
int appendValues(TableDirectory& tables, const StoredTable& table, const host::ResBufChain& values,
                 host::ObjectId entity);

}  // namespace objdata
