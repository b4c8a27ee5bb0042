#include "objdata/record_cursor.h"

#include <algorithm>

#include "base/text_case.h"

namespace objdata {

namespace {

const std::wstring& currentKey(const RecordCursor& cursor) {
  return cursor.entries[cursor.entry].first;
}

host::ObjectId currentContainer(const RecordCursor& cursor) {
  return cursor.entries[cursor.entry].second;
}

// Whether the walk may stop at entry `index`. Entries of other applications are never
// stopped at, even when a filter names one, so that a read never takes a foreign XRECORD
// for records.
bool visits(TableDirectory& tables, const RecordCursor& cursor, size_t index) {
  const std::wstring& key = cursor.entries[index].first;
  if (cursor.table_filter && key != *cursor.table_filter) return false;
  return tables.has(key);
}

// Moves from the current entry (included when `include_current`) to the next one the walk
// visits, or past the last, and starts at its first record.
void settleOnEntry(TableDirectory& tables, RecordCursor& cursor, bool include_current) {
  if (!include_current && cursor.entry < cursor.entries.size()) ++cursor.entry;
  while (cursor.entry < cursor.entries.size() && !visits(tables, cursor, cursor.entry)) {
    ++cursor.entry;
  }
  cursor.start = 0;
  cursor.count = 0;
  cursor.at_end = false;
  cursor.values_read = false;
}

// The current container's values, read on first use.
const host::ResBufChain* containerValues(TableDirectory& tables, RecordCursor& cursor) {
  if (!cursor.values_read) {
    if (!tables.database().readXrecordInto(currentContainer(cursor), cursor.values)) return nullptr;
    cursor.values_read = true;
  }
  return &cursor.values;
}

// Sets `value` from one stored value, reusing the value's text buffer: a walk over many
// entities reads into the same records again and again.
void readValue(const host::ResBuf& buf, Value& value) {
  value.type = ValueType::kNone;
  switch (buf.code) {
    case 1: {
      value.type = ValueType::kCharacter;
      const auto* text = std::get_if<std::wstring>(&buf.value);
      if (!value.text) value.text.emplace();
      if (text) {
        value.text->assign(*text);
      } else {
        value.text->clear();
      }
      break;
    }
    case 10:
      value.type = ValueType::kPoint;
      if (const auto* point = std::get_if<host::Point3>(&buf.value)) {
        value.point = {point->x, point->y, point->z};
      }
      break;
    case 40:
      value.type = ValueType::kReal;
      if (const auto* real = std::get_if<double>(&buf.value)) value.real = *real;
      break;
    case 90:
      value.type = ValueType::kInteger;
      if (const auto* integer = std::get_if<int32_t>(&buf.value)) value.integer = *integer;
      break;
    default:
      break;
  }
}

// The stored value rewritten from `field`, by the code the stored value already has.
void overwrite(host::ResBuf& buf, const Value& field) {
  switch (buf.code) {
    case 1:
      buf.value = field.text.value_or(std::wstring());
      break;
    case 10:
      // y takes z: this update has always written points so, and is kept compatible.
      buf.value = host::Point3{field.point.x, field.point.z, field.point.z};
      break;
    case 40:
      buf.value = field.real;
      break;
    case 90:
      buf.value = field.integer;
      break;
    default:
      break;
  }
}

// The value `field` is written as when appended; throws as the conversions do.
host::ResBuf appendedValue(const FieldValue& field) {
  switch (field.value.type) {
    case ValueType::kInteger:
      return host::ResBuf::integer(asInteger(field.value));
    case ValueType::kReal:
      return host::ResBuf::real(static_cast<double>(asInteger(field.value)));
    case ValueType::kCharacter:
      return host::ResBuf::text(asText(field.value));
    case ValueType::kPoint: {
      Point point = asPoint(field.value);
      return host::ResBuf::point({point.x, point.y, point.z});
    }
    default:
      return host::ResBuf{};
  }
}

}  // namespace

const StoredTable* TableDirectory::find(std::wstring_view name) {
  if (dictionary_.isNull()) return nullptr;
  if (last_ && name == last_name_) return last_;
  if (auto it = as_asked_.find(name); it != as_asked_.end()) {
    last_name_.assign(name);
    return last_ = it->second;
  }
  std::wstring key = base::lowerCase(name);
  auto it = tables_.find(key);
  if (it == tables_.end()) {
    StoredTable table;
    if (readStoredTable(database_, dictionary_, name, table) != kStatusOk) return nullptr;
    it = tables_.emplace(std::move(key), std::move(table)).first;
  }
  as_asked_.emplace(std::wstring(name), &it->second);
  last_name_.assign(name);
  return last_ = &it->second;
}

int openCursor(TableDirectory& tables, RecordCursor& cursor, host::ObjectId entity) {
  cursor.entity = entity;
  cursor.extension_dictionary = {};
  // Done until the entries are read; the entries' storage is kept for the next entity.
  cursor.entry = cursor.entries.size();
  cursor.start = 0;
  cursor.count = 0;
  cursor.at_end = false;
  cursor.values_read = false;

  host::Database& db = tables.database();
  if (!db.isValid(entity)) return kStatusEntityNotOpened;
  auto dictionary = db.extensionDictionary(entity);
  if (!dictionary) return kStatusEntityNotOpened;
  if (dictionary->isNull()) return kStatusNothing;
  if (!db.dictionaryEntriesInto(*dictionary, cursor.entries)) {
    cursor.entries.clear();
    cursor.entry = 0;
    return kStatusOpenFailed;
  }
  cursor.extension_dictionary = *dictionary;

  cursor.entry = 0;
  while (cursor.entry < cursor.entries.size() && !tables.has(currentKey(cursor))) ++cursor.entry;
  if (cursorDone(cursor)) return kStatusNothing;
  if (cursor.table_filter) settleOnEntry(tables, cursor, true);
  return kStatusOk;
}

bool cursorDone(const RecordCursor& cursor) { return cursor.entry >= cursor.entries.size(); }

int readRecord(TableDirectory& tables, RecordCursor& cursor, TableRecord& record) {
  if (cursorDone(cursor)) return kStatusOpenFailed;
  record.table_name.assign(currentKey(cursor));
  const StoredTable* table = tables.find(currentKey(cursor));
  const host::ResBufChain* values = table ? containerValues(tables, cursor) : nullptr;
  if (values == nullptr) {
    record.fields.clear();
    // Ends the container so that nextRecord leaves it instead of standing still.
    cursor.count = 0;
    cursor.at_end = true;
    return kStatusOpenFailed;
  }
  cursor.count = static_cast<uint32_t>(table->fields.size());
  size_t first = static_cast<size_t>(cursor.start);
  size_t available = first < values->size() ? values->size() - first : 0;
  record.fields.resize(std::min(table->fields.size(), available));
  for (size_t i = 0; i < record.fields.size(); ++i) {
    FieldValue& field = record.fields[i];
    field.name.assign(table->fields[i].name);
    field.extra.reset();
    readValue((*values)[first + i], field.value);
  }
  // A table without fields would otherwise keep the walk on the same record forever.
  if (cursor.count == 0 || first + cursor.count >= values->size()) cursor.at_end = true;
  return kStatusOk;
}

int nextRecord(TableDirectory& tables, RecordCursor& cursor) {
  if (cursorDone(cursor)) return kStatusOk;
  if (!cursor.at_end) {
    cursor.start += static_cast<int32_t>(cursor.count);
    return kStatusOk;
  }
  settleOnEntry(tables, cursor, false);
  return kStatusOk;
}

int updateRecord(TableDirectory& tables, RecordCursor& cursor, const TableRecord& record) {
  if (cursorDone(cursor)) return kStatusNothing;
  const host::ResBufChain* current = containerValues(tables, cursor);
  if (current == nullptr) return kStatusNothing;
  host::ResBufChain values = *current;
  cursor.count = static_cast<uint32_t>(record.fields.size());
  size_t i = static_cast<size_t>(cursor.start);
  for (size_t field = 0; field < record.fields.size() && i < values.size(); ++field, ++i) {
    overwrite(values[i], record.fields[field].value);
  }
  if (i >= values.size()) cursor.at_end = true;
  if (!tables.database().writeXrecord(currentContainer(cursor), values)) {
    cursor.values_read = false;
    return kStatusNothing;
  }
  cursor.values = std::move(values);
  cursor.values_read = true;
  return kStatusOk;
}

int deleteRecord(TableDirectory& tables, RecordCursor& cursor) {
  if (cursorDone(cursor)) return kStatusNothing;
  const StoredTable* table = tables.find(currentKey(cursor));
  const host::ResBufChain* current = containerValues(tables, cursor);
  if (current == nullptr) return kStatusNothing;
  size_t length = table ? table->fields.size() : 0;
  if (length == 0) {
    // Nothing can be cut out; leave the container so that a delete-and-reread walk ends.
    settleOnEntry(tables, cursor, false);
    return kStatusOk;
  }

  size_t first = static_cast<size_t>(cursor.start);
  host::ResBufChain kept(current->begin(), current->begin() + std::min(first, current->size()));
  bool followed = first + length < current->size();
  if (followed) kept.insert(kept.end(), current->begin() + first + length, current->end());

  host::Database& db = tables.database();
  if (!kept.empty()) {
    if (!db.writeXrecord(currentContainer(cursor), kept)) return kStatusNothing;
    if (followed) {
      cursor.values = std::move(kept);
      cursor.values_read = true;
    } else {
      settleOnEntry(tables, cursor, false);
    }
    return kStatusOk;
  }

  if (cursor.entries.size() == 1) {
    // The dictionary's only entry: erasing the dictionary takes the entry with it, and the
    // entity no longer names it.
    (void)db.erase(cursor.extension_dictionary);
    cursor.extension_dictionary = {};
  } else {
    (void)db.dictionaryRemove(cursor.extension_dictionary, currentKey(cursor));
    (void)db.erase(currentContainer(cursor));
  }
  cursor.entries.erase(cursor.entries.begin() + static_cast<std::ptrdiff_t>(cursor.entry));
  settleOnEntry(tables, cursor, true);
  return kStatusOk;
}

TableRecord blankRecord(const StoredTable& table) {
  TableRecord record{table.name, {}};
  record.fields.reserve(table.fields.size());
  for (const StoredField& field : table.fields) {
    Value zero;
    zero.type = field.type;
    if (field.type == ValueType::kCharacter) zero.text.emplace();
    record.fields.push_back({field.name, std::nullopt, std::move(zero)});
  }
  return record;
}

int appendRecord(TableDirectory& tables, const StoredTable& table, TableRecord& record,
                 host::ObjectId entity) {
  if (record.fields.empty()) record = blankRecord(table);
  if (!tables.database().isValid(entity)) return kStatusEntityNotOpened;
  // Converted before anything is made, so that a failed conversion leaves the drawing as it was.
  return appendValues(tables, table, appendedValues(record), entity);
}

host::ResBufChain appendedValues(const TableRecord& record) {
  host::ResBufChain values;
  values.reserve(record.fields.size());
  for (const FieldValue& field : record.fields) values.push_back(appendedValue(field));
  return values;
}

int appendValues(TableDirectory& tables, const StoredTable& table, const host::ResBufChain& values,
                 host::ObjectId entity) {
  host::Database& db = tables.database();
  if (!db.isValid(entity)) return kStatusEntityNotOpened;
  auto dictionary = db.extensionDictionary(entity);
  if (!dictionary) return kStatusEntityNotOpened;
  if (!*dictionary) {
    // Most entities have none yet: the dictionary and the record are made in one step.
    auto attached = db.attachXrecord(entity, table.name, values);
    if (attached) return kStatusOk;
    // As when the dictionary could not be made: a drawing that cannot hold one.
    return attached.status().code() == base::Code::kUnsupported ? kStatusEntityNotOpened
                                                                : kStatusNothing;
  }
  if (auto container = db.dictionaryGet(*dictionary, table.name)) {
    host::ResBufChain& all = tables.scratch();
    if (!db.readXrecordInto(*container, all)) return kStatusNothing;
    all.insert(all.end(), values.begin(), values.end());
    return db.writeXrecord(*container, all) ? kStatusOk : kStatusNothing;
  }
  return db.createXrecordWith(*dictionary, table.name, values) ? kStatusOk : kStatusNothing;
}

}  // namespace objdata
