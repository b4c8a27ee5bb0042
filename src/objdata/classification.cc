#include "objdata/classification.h"

#include <algorithm>

#include "base/crt_numbers.h"
#include "base/text_case.h"
#include "objdata/class_dependencies.h"

namespace objdata {

namespace {

using catalogue::FieldDefinition;
using catalogue::ObjectClass;
using catalogue::TableDefinition;

const TableDefinition* findTableOf(const ObjectClass& cls, std::wstring_view name) {
  for (const TableDefinition& table : cls.tables) {
    if (base::equalsIgnoringCase(table.name, name)) return &table;
  }
  return nullptr;
}

}  // namespace

std::wstring textOrEmpty(const Value& value) {
  if (value.type == ValueType::kNone) return {};
  try {
    return asText(value);
  } catch (int) {
    return {};
  }
}

bool valueEqualsText(const Value& value, std::wstring_view text) {
  switch (value.type) {
    case ValueType::kInteger:
      return value.integer == base::wtoi(text);
    case ValueType::kReal:
      return value.real == base::wtof(text);
    case ValueType::kCharacter:
      return (value.text ? std::wstring_view(*value.text) : std::wstring_view()) == text;
    default:
      return false;
  }
}

std::span<const TableRecord> Classifier::records(host::ObjectId entity) {
  size_t count = 0;
  if (openCursor(tables_, cursor_, entity) == kStatusOk) {
    for (; !cursorDone(cursor_); nextRecord(tables_, cursor_)) {
      // Records are read into the slots of earlier entities, so their buffers are reused.
      if (count == records_.size()) records_.emplace_back();
      if (readRecord(tables_, cursor_, records_[count]) == kStatusOk) ++count;
    }
  }
  return std::span<const TableRecord>(records_.data(), count);
}

const std::vector<std::wstring>& Classifier::keyFieldsOf(std::wstring_view table_name) {
  if (last_key_fields_ && table_name == last_table_) return *last_key_fields_;
  last_table_.assign(table_name);
  if (auto it = key_fields_.find(table_name); it != key_fields_.end())
    return *(last_key_fields_ = &it->second);
  std::vector<std::wstring> fields;
  // Every class that uses a table declares it alike (the class file refuses conflicts), so
  // the first class's definition speaks for all.
  const catalogue::TableEntry* entry = catalogue_.findTable(table_name);
  if (entry && !entry->objects.empty()) {
    const ObjectClass* owner = catalogue_.findObject(entry->objects.front());
    const TableDefinition* table = owner ? findTableOf(*owner, table_name) : nullptr;
    if (table) {
      for (const FieldDefinition& field : table->fields) {
        if (field.kind == catalogue::ValueKind::kKey) fields.push_back(field.name);
      }
    }
  }
  return *(last_key_fields_ =
               &key_fields_.emplace(std::wstring(table_name), std::move(fields)).first->second);
}

const ObjectClass* Classifier::classNamed(const Value& value) {
  if (value.type != ValueType::kCharacter || !value.text)
    return catalogue_.findObject(textOrEmpty(value));
  const std::wstring& text = *value.text;
  if (!last_key_.empty() && text == last_key_) return last_class_;
  auto it = classes_by_key_.find(text);
  if (it == classes_by_key_.end())
    it = classes_by_key_.emplace(text, catalogue_.findObject(text)).first;
  last_key_ = text;
  return last_class_ = it->second;
}

const ObjectClass* Classifier::classOfRecord(const TableRecord& record) {
  for (const std::wstring& field : keyFieldsOf(record.table_name)) {
    int index = findField(record.fields, field);
    if (index < 0) continue;
    if (const ObjectClass* cls = classNamed(record.fields[index].value)) return cls;
  }
  return nullptr;
}

std::wstring Classifier::expand(std::wstring_view text, const ObjectClass& cls) const {
  if (text.find(L"$(") == std::wstring_view::npos) return std::wstring(text);
  return expandTemplates(std::wstring(text), cls.display_name, environment_);
}

Classifier::Key Classifier::keyOf(const TableDefinition& table, const ObjectClass& cls) {
  for (const FieldDefinition& field : table.fields) {
    if (field.kind == catalogue::ValueKind::kKey) return {field.name, expand(field.value, cls)};
  }
  return {};
}

const std::vector<Classifier::TableRules>& Classifier::rulesOf(const ObjectClass& cls) {
  if (auto it = rules_.find(&cls); it != rules_.end()) return it->second;
  TextExpander expander = [&](std::wstring_view text) { return expand(text, cls); };
  std::vector<TableRules> tables;
  for (const TableDefinition& table : cls.tables)
    tables.push_back({&table, keyOf(table, cls), compileRules(table, expander)});
  return rules_.emplace(&cls, std::move(tables)).first->second;
}

bool Classifier::isClassifiedAs(std::span<const TableRecord> records, const ObjectClass& cls,
                                bool validate, bool required_only, std::vector<Finding>* findings) {
  if (records.empty() && !findings) return false;
  bool classified = !records.empty();
  for (const TableRules& table : rulesOf(cls)) {
    // A table without a key field cannot name the class: no record of it ever counts.
    const TableRecord* first_named = nullptr;
    bool carried = false;
    for (const TableRecord& record :
         table.key.field.empty() ? std::span<const TableRecord>() : records) {
      if (!base::equalsIgnoringCase(record.table_name, table.table->name)) continue;
      int index = findField(record.fields, table.key.field);
      if (index < 0 || !valueEqualsText(record.fields[index].value, table.key.value)) continue;
      if (!first_named) first_named = &record;
      if (validate && !recordKeepsRules(record, table.fields, required_only)) continue;
      carried = true;
      break;
    }
    if (carried) continue;
    classified = false;
    if (!findings) return false;
    std::vector<FieldFinding> broken;
    if (first_named) checkRecord(*first_named, table.fields, required_only, &broken);
    if (broken.empty()) broken.push_back({BrokenRule::kNoRecord, {}, {}});
    for (FieldFinding& finding : broken)
      findings->push_back({&cls, table.table->name, std::move(finding)});
  }
  return classified;
}

void Classifier::classesNamed(std::span<const TableRecord> records,
                              std::vector<const ObjectClass*>& classes) {
  for (const TableRecord& record : records) {
    for (const std::wstring& field : keyFieldsOf(record.table_name)) {
      int index = findField(record.fields, field);
      if (index < 0) continue;
      const ObjectClass* cls = classNamed(record.fields[index].value);
      if (cls && std::find(classes.begin(), classes.end(), cls) == classes.end())
        classes.push_back(cls);
    }
  }
}

void Classifier::findBrokenRules(std::span<const TableRecord> records, bool required_only,
                                 std::vector<Finding>& findings) {
  std::vector<const ObjectClass*> checked;
  for (const TableRecord& record : records) {
    const ObjectClass* cls = classOfRecord(record);
    if (!cls || std::find(checked.begin(), checked.end(), cls) != checked.end()) continue;
    checked.push_back(cls);
    isClassifiedAs(records, *cls, true, required_only, &findings);
  }
}

const Classifier::NewRecord& Classifier::newRecordOf(const TableDefinition& table,
                                                     const ObjectClass& cls) {
  auto key = std::make_pair(&table, &cls);
  if (auto it = new_records_.find(key); it != new_records_.end()) return it->second;
  NewRecord made;
  std::vector<StoredField> fields;
  for (const FieldDefinition& field : table.fields)
    fields.push_back({field.name, static_cast<ValueType>(field.type)});
  if (ensureStoredTable(database_, tables_.id(), table.name, fields) != 1)
    made.stored = tables_.find(table.name);
  if (made.stored) {
    TableRecord record = blankRecord(*made.stored);
    for (const FieldDefinition& field : table.fields) {
      int index = findField(record.fields, field.name);
      if (index < 0) continue;
      std::wstring text = expand(field.value, cls);
      try {
        assign(record.fields[index].value, makeValue(static_cast<ValueType>(field.type), text));
      } catch (int code) {
        throw ConversionFailure{code, cls.display_name, table.name, field.name, text};
      }
    }
    made.values = appendedValues(record);
  }
  return new_records_.emplace(key, std::move(made)).first->second;
}

bool Classifier::classifyWithTable(const TableDefinition& table, const ObjectClass& cls,
                                   host::ObjectId entity) {
  const NewRecord& made = newRecordOf(table, cls);
  return made.stored && appendValues(tables_, *made.stored, made.values, entity) == kStatusOk;
}

Classifier::Applied Classifier::applyClass(const ObjectClass& cls, host::ObjectId entity,
                                           bool properties, bool records, draw::ApplyMode mode) {
  if (!loadDependencies(cls)) return Applied::kResourcesMissing;
  bool ok = true;
  if (properties) ok = draw::applyDrawingProperties(database_, entity, cls.properties, mode).isOk();
  if (records) {
    for (const TableDefinition& table : cls.tables) {
      if (!classifyWithTable(table, cls, entity)) ok = false;
    }
  }
  return ok ? Applied::kYes : Applied::kFailed;
}

bool Classifier::loadDependencies(const ObjectClass& cls) {
  auto [it, inserted] = dependencies_.try_emplace(&cls, false);
  if (inserted) it->second = loadClassDependencies(database_, catalogue_, provided_, cls);
  return it->second;
}

bool Classifier::removeClass(std::wstring_view name, host::ObjectId entity) {
  const ObjectClass* cls = catalogue_.findObject(name);
  if (!cls || !isClassifiedAs(records(entity), *cls)) return false;
  for (const TableRules& table : rulesOf(*cls)) {
    const Key& key = table.key;
    const StoredTable* stored = tables_.find(table.table->name);
    if (!stored) continue;
    RecordCursor cursor;
    cursor.table_filter = stored->name;
    if (openCursor(tables_, cursor, entity) != kStatusOk) continue;
    while (!cursorDone(cursor)) {
      TableRecord record;
      if (readRecord(tables_, cursor, record) != kStatusOk) break;
      int index = findField(record.fields, key.field);
      if (index >= 0 && textOrEmpty(record.fields[index].value) == key.value) {
        deleteRecord(tables_, cursor);
        break;
      }
      nextRecord(tables_, cursor);
    }
  }
  return true;
}

}  // namespace objdata
