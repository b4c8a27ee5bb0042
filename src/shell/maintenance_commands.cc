#include "shell/maintenance_commands.h"

#include <algorithm>
#include <climits>
#include <set>

#include "base/crt_numbers.h"
#include "base/text_case.h"
#include "maintenance/decimal_rounding.h"
#include "maintenance/draw_order.h"
#include "shell/classification_run.h"

namespace shell {

namespace {

using catalogue::ObjectClass;
using catalogue::TableDefinition;

// The pruned candidates; `empty_message` is printed when none is selected, `pruned_message`
// (with 0; none: nothing) when none is left. Nothing when the command ends.
std::optional<std::vector<host::ObjectId>> maintenanceCandidates(
    CommandContext& context, StringId empty_message, std::optional<StringId> pruned_message) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  auto candidates = maintenance::pickedOrSelected(context.editor(), context.database(), picked,
                                                  maintenance::EmptyPick::kModelSpace);
  if (!candidates) return std::nullopt;
  if (candidates->empty()) {
    if (empty_message == StringId::kErrorNoObjectsSelected)
      context.print(empty_message);
    else
      context.print(empty_message, {0});
    return std::nullopt;
  }
  maintenance::pruneCandidates(context.database(), *candidates);
  if (candidates->empty()) {
    if (pruned_message) context.print(*pruned_message, {0});
    return std::nullopt;
  }
  return candidates;
}

// The classes the records carry, by key values alone, in the catalogue's name order.
std::vector<const ObjectClass*> carriedClasses(objdata::Classifier& classifier,
                                               std::span<const objdata::TableRecord> records) {
  std::vector<const ObjectClass*> classes;
  if (records.empty()) return classes;
  std::vector<const ObjectClass*> named;
  classifier.classesNamed(records, named);
  for (const auto& [key, cls] : classifier.catalogue().objects) {
    bool possible =
        cls.tables.empty() || std::find(named.begin(), named.end(), &cls) != named.end();
    if (possible && classifier.isClassifiedAs(records, cls)) classes.push_back(&cls);
  }
  return classes;
}

// Walks the entity's records of `table` (the drawing's spelling) in stored order, reading
// each into `record` (whose buffers the caller keeps for the next walk) and calling
// `visit(cursor, record, number)`; `visit` answers whether it deleted the record (the cursor
// then stands on the next one) and may end the walk by setting `stop`.
template <typename Visit>
void walkTable(objdata::TableDirectory& tables, host::ObjectId entity, const std::wstring& table,
               objdata::TableRecord& record, Visit visit) {
  objdata::RecordCursor cursor;
  cursor.table_filter = table;
  if (objdata::openCursor(tables, cursor, entity) != objdata::kStatusOk) return;
  bool stop = false;
  for (int number = 0; !objdata::cursorDone(cursor) && !stop; ++number) {
    if (objdata::readRecord(tables, cursor, record) != objdata::kStatusOk) return;
    if (!visit(cursor, record, number, stop)) objdata::nextRecord(tables, cursor);
  }
}

// The record's key field as lower-case text, or nothing when the record lacks the field.
std::optional<std::wstring> keyText(const objdata::TableRecord& record, const std::wstring& field) {
  int index = objdata::findField(record.fields, field);
  if (index < 0) return std::nullopt;
  return base::lowerCase(objdata::textOrEmpty(record.fields[index].value));
}

// The drawing's spelling of `table` among the records, or nothing.
const objdata::TableRecord* firstOf(std::span<const objdata::TableRecord> records,
                                    const TableDefinition& table) {
  for (const objdata::TableRecord& record : records) {
    if (base::equalsIgnoringCase(record.table_name, table.name)) return &record;
  }
  return nullptr;
}

}  // namespace

void selectDuplicatesCommand(CommandContext& context) {
  auto candidates =
      maintenanceCandidates(context, StringId::kErrorNoObjectsSelected, StringId::kSelectedCount);
  if (!candidates) return;
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  std::vector<host::ObjectId> found;
  std::set<std::wstring> names;  // plain character order
  std::map<const ObjectClass*, size_t> counts;
  for (host::ObjectId id : *candidates) {
    counts.clear();
    for (const objdata::TableRecord& record : classifier.records(id)) {
      if (const ObjectClass* cls = classifier.classOfRecord(record)) ++counts[cls];
    }
    for (const auto& [cls, count] : counts) {
      if (count <= cls->tables.size()) continue;
      found.push_back(id);
      names.insert(cls->display_name);
      break;
    }
  }
  std::wstring report =
      context.text(StringId::kDuplicatesSelected, {static_cast<int>(found.size())});
  for (const std::wstring& name : names)
    report += context.text(StringId::kDuplicatesClassName, {name});
  report += context.text(StringId::kDuplicatesEnd);
  context.editor().print(report);
  context.editor().setImpliedSelection(found);
  context.print(StringId::kSelectedCount, {static_cast<int>(found.size())});
}

void deleteDuplicatesCommand(CommandContext& context) {
  auto candidates =
      maintenanceCandidates(context, StringId::kCompletedCount, StringId::kCompletedCount);
  if (!candidates) return;
  // A cancelled answer is taken as an empty one, that is First, as the command always did.
  host::StringInput answer =
      context.editor().getString(true, context.text(StringId::kPromptDuplicatesMode));
  std::wstring mode =
      answer.status == host::InputStatus::kNormal ? base::lowerCase(answer.text) : L"";
  bool keep_last;
  if (std::wstring_view(L"first").starts_with(mode)) {
    keep_last = true;
  } else if (std::wstring_view(L"last").starts_with(mode)) {
    keep_last = false;
  } else {
    return;
  }
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  objdata::TableDirectory& tables = classifier.tables();
  std::vector<host::ObjectId> changed;
  objdata::TableRecord scratch;
  for (host::ObjectId id : *candidates) {
    // A duplicate needs two records: most entities are done at once.
    if (classifier.records(id).size() < 2) continue;
    std::vector<const ObjectClass*> classes = carriedClasses(classifier, classifier.records(id));
    for (const ObjectClass* cls : classes) {
      for (const TableDefinition& table : cls->tables) {
        std::span<const objdata::TableRecord> records = classifier.records(id);
        const objdata::TableRecord* first = firstOf(records, table);
        if (!first || std::count_if(records.begin(), records.end(), [&](const auto& record) {
                        return base::equalsIgnoringCase(record.table_name, table.name);
                      }) < 2)
          continue;
        const std::wstring stored_name = first->table_name;
        objdata::Classifier::Key key = classifier.keyOf(table, *cls);
        std::wstring key_value = base::lowerCase(key.value);
        std::vector<int> numbers;
        walkTable(tables, id, stored_name, scratch,
                  [&](auto&, const auto& record, int number, bool&) {
                    if (keyText(record, key.field) == key_value) numbers.push_back(number);
                    return false;
                  });
        if (numbers.size() < 2) continue;
        while (numbers.size() > 1) {
          int doomed = keep_last ? numbers.front() : numbers.back();
          walkTable(tables, id, stored_name, scratch,
                    [&](auto& cursor, const auto&, int number, bool& stop) {
                      if (number != doomed) return false;
                      objdata::deleteRecord(tables, cursor);
                      stop = true;
                      return true;
                    });
          if (keep_last) {
            numbers.erase(numbers.begin());
            for (int& number : numbers) --number;
          } else {
            numbers.pop_back();
          }
        }
        if (std::find(changed.begin(), changed.end(), id) == changed.end()) changed.push_back(id);
      }
    }
  }
  context.editor().setImpliedSelection(changed);
  context.print(StringId::kCompletedCount, {static_cast<int>(changed.size())});
}

void roundCommand(CommandContext& context) {
  auto candidates = maintenanceCandidates(context, StringId::kErrorNoObjectsSelected,
                                          StringId::kErrorNoObjectsSelected);
  if (!candidates) return;
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  objdata::TableDirectory& tables = classifier.tables();
  struct RealField {
    std::wstring name;
    int places = 0;
  };
  // The real fields of each table with their places, worked out once per run.
  std::map<const TableDefinition*, std::vector<RealField>> real_fields;
  auto realFieldsOf = [&](const TableDefinition& table) -> const std::vector<RealField>& {
    auto [it, inserted] = real_fields.try_emplace(&table);
    if (inserted) {
      for (const catalogue::FieldDefinition& field : table.fields) {
        if (field.type != catalogue::FieldType::kReal) continue;
        std::vector<std::wstring> texts = field.allowed;
        texts.push_back(field.value);
        it->second.push_back({field.name, maintenance::decimalPlaces(texts)});
      }
    }
    return it->second;
  };
  // A record that needs rounding, copied once it is known to (most already are rounded).
  objdata::TableRecord rounded;
  objdata::TableRecord scratch;
  try {
    for (host::ObjectId id : *candidates) {
      // Read once per entity: nothing below reads the classifier's records again.
      std::span<const objdata::TableRecord> records = classifier.records(id);
      std::vector<const ObjectClass*> classes = carriedClasses(classifier, records);
      for (const ObjectClass* cls : classes) {
        for (const TableDefinition& table : cls->tables) {
          const std::vector<RealField>& fields = realFieldsOf(table);
          if (fields.empty()) continue;
          const objdata::TableRecord* first = firstOf(records, table);
          if (!first) continue;
          const std::wstring stored_name = first->table_name;
          objdata::Classifier::Key key = classifier.keyOf(table, *cls);
          std::wstring key_value = base::lowerCase(key.value);
          walkTable(
              tables, id, stored_name, scratch, [&](auto& cursor, const auto& record, int, bool&) {
                if (key.field.empty() || keyText(record, key.field) != key_value) return false;
                bool changed = false;
                for (const RealField& field : fields) {
                  int index = objdata::findField(record.fields, field.name);
                  if (index < 0) continue;
                  const objdata::Value& value = record.fields[index].value;
                  double number = 0;
                  switch (value.type) {
                    case objdata::ValueType::kInteger:
                      number = value.integer;
                      break;
                    case objdata::ValueType::kReal:
                      number = value.real;
                      break;
                    case objdata::ValueType::kCharacter:
                      number = base::wtof(value.text ? *value.text : std::wstring());
                      break;
                    default:
                      throw objdata::ConversionFailure{objdata::kConversionFailed,
                                                       cls->display_name, table.name, field.name,
                                                       objdata::textOrEmpty(value)};
                  }
                  double result = maintenance::roundToPlaces(number, field.places);
                  if (value.type == objdata::ValueType::kReal && value.real == result) continue;
                  if (!changed) rounded = record;
                  changed = true;
                  objdata::Value& target = rounded.fields[index].value;
                  target = objdata::Value();
                  target.type = objdata::ValueType::kReal;
                  target.real = result;
                  // A field the drawing stores as text takes the number's text.
                  target.text = objdata::asText(target);
                }
                // A record already at its precision keeps its bytes in the saved drawing.
                if (changed) objdata::updateRecord(tables, cursor, rounded);
                return false;
              });
        }
      }
    }
  } catch (const objdata::ConversionFailure& failure) {
    reportConversionFailure(context, failure);
    return;
  }
  context.print(StringId::kCompleted);
}

void sortCommand(CommandContext& context) {
  auto candidates = maintenanceCandidates(context, StringId::kErrorNoObjectsSelected, std::nullopt);
  if (!candidates) return;
  host::Database& database = context.database();
  // Every draw-order use of the sort table switched on, other bits kept.
  if (auto sortents = database.getVar("SORTENTS")) {
    if (const auto* value = std::get_if<int16_t>(&sortents->value); value && (*value & 127) != 127)
      (void)database.setVar("SORTENTS", host::SysVar{static_cast<int16_t>(*value | 127)});
  }
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  std::vector<int32_t> ranks;
  ranks.reserve(candidates->size());
  for (host::ObjectId id : *candidates) {
    int32_t rank = INT32_MIN;
    for (const ObjectClass* cls : carriedClasses(classifier, classifier.records(id)))
      rank = std::max(rank, cls->draw_order);
    ranks.push_back(rank);
  }
  std::vector<host::ObjectId> ordered;
  ordered.reserve(candidates->size());
  for (size_t index : maintenance::exchangeSortOrder(ranks))
    ordered.push_back((*candidates)[index]);
  host::DocumentLock lock(context.host().document());
  if (!database.setRelativeDrawOrder(ordered)) return;
  context.host().document().sendStringToExecute(L"_.regen\n");
}

}  // namespace shell
