#include "shell/selection_commands.h"

#include <algorithm>
#include <optional>

#include "base/text_case.h"
#include "draw/conformity.h"
#include "objdata/membership.h"
#include "shell/classification_run.h"

namespace shell {

namespace {

using catalogue::ObjectClass;

// The candidates of a selecting command, pruned; nothing when the command has ended.
// `ask` says whether an empty pick-first set makes the user select (else the whole model
// space is taken at once).
std::optional<std::vector<host::ObjectId>> selectionCandidates(
    CommandContext& context, const std::vector<host::ObjectId>& picked, bool ask) {
  std::optional<std::vector<host::ObjectId>> candidates;
  if (!picked.empty() || ask) {
    candidates = selectCandidates(context, picked, maintenance::EmptyPick::kModelSpace);
  } else {
    candidates = context.database().modelSpaceEntities();
    if (candidates->empty()) {
      context.print(StringId::kErrorNoObjectsSelected);
      return std::nullopt;
    }
  }
  if (!candidates) return std::nullopt;
  maintenance::pruneCandidates(context.database(), *candidates);
  if (candidates->empty()) {
    context.print(StringId::kSelectedCount, {0});
    return std::nullopt;
  }
  return candidates;
}

// Makes the survivors the pick-first set and says how many there are.
void finish(CommandContext& context, const std::vector<host::ObjectId>& survivors) {
  context.editor().setImpliedSelection(survivors);
  context.print(StringId::kSelectedCount, {static_cast<int>(survivors.size())});
}

// Keeps the candidates that pass, removing the others by swapping in the last candidate.
template <typename Test>
void keepBySwap(std::vector<host::ObjectId>& candidates, Test passes) {
  for (size_t i = 0; i < candidates.size();) {
    if (passes(candidates[i]))
      ++i;
    else
      maintenance::removeBySwap(candidates, i);
  }
}

// Keeps the candidates that pass, in their order.
template <typename Test>
void keepInOrder(std::vector<host::ObjectId>& candidates, Test passes) {
  std::erase_if(candidates, [&](host::ObjectId id) { return !passes(id); });
}

// One conformity test for a whole walk, turned to each entity as it is asked of one.
class ConformityTests {
 public:
  explicit ConformityTests(host::Database& database)
      : test_(database, draw::linearPrecision(database)) {}
  draw::EntityConformity& of(host::ObjectId entity) {
    if (entity != entity_) {
      test_.reset(entity);
      entity_ = entity;
    }
    return test_;
  }

 private:
  draw::EntityConformity test_;
  host::ObjectId entity_;
};

// The switches of TAXOR_SEL_EXT and TAXOR_SEL_ALL; nothing when the command ends here.
struct Switches {
  bool properties = true;
  bool objects = true;
  bool match = true;
};
std::optional<Switches> askSwitches(CommandContext& context) {
  std::optional<int> properties = context.askMode(StringId::kPromptUseProperties, 1, 1);
  if (!properties) return std::nullopt;
  std::optional<int> objects = context.askMode(StringId::kPromptUseObjects, 1, 1);
  if (!objects || (*properties == 0 && *objects == 0)) return std::nullopt;
  std::optional<int> match = context.askMode(StringId::kPromptMatch, 1, 1);
  if (!match) return std::nullopt;
  return Switches{*properties == 1, *objects == 1, *match == 1};
}

// Selection by the name of a class or group: `groups_only` for TAXOR_SEL_CLASS.
void selectByName(CommandContext& context, bool groups_only) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  std::optional<std::wstring> name = context.ask(true, context.text(StringId::kPromptObject));
  if (!name) return;
  auto candidates = selectionCandidates(context, picked, false);
  if (!candidates) return;
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  objdata::Membership membership(classifier);
  const catalogue::Catalogue& catalogue = run.catalogue();
  std::wstring lower = base::lowerCase(*name);
  const ObjectClass* cls = groups_only ? nullptr : catalogue.findObject(lower);
  const catalogue::Group* group = cls ? nullptr : catalogue.findGroup(lower);
  keepBySwap(*candidates, [&](host::ObjectId id) {
    if (cls) return classifier.isClassifiedAs(classifier.records(id), *cls);
    return group && membership.belongsTo(classifier.records(id), *group);
  });
  finish(context, *candidates);
}

// The skeleton of the commands with one switch: survivors are kept in candidate order.
template <typename Test>
void selectBySwitch(CommandContext& context, StringId prompt, int initial, Test passes) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  std::optional<int> value = context.askMode(prompt, initial, 1);
  if (!value) return;
  auto candidates = selectionCandidates(context, picked, true);
  if (!candidates) return;
  ClassificationRun run(context);
  keepInOrder(*candidates, [&](host::ObjectId id) { return passes(run.classifier(), id, *value); });
  finish(context, *candidates);
}

// Whether a record of a class the file knows has an empty text in a field that counts:
// any field, or without `all_fields` the fields the class's table requires.
bool hasEmptyText(objdata::Classifier& classifier, const objdata::TableRecord& record,
                  bool all_fields) {
  const ObjectClass* cls = classifier.classOfRecord(record);
  if (!cls) return false;
  auto table = std::find_if(cls->tables.begin(), cls->tables.end(), [&](const auto& t) {
    return base::equalsIgnoringCase(t.name, record.table_name);
  });
  if (table == cls->tables.end()) return false;
  for (const objdata::FieldValue& field : record.fields) {
    const objdata::Value& value = field.value;
    if (value.type != objdata::ValueType::kCharacter || (value.text && !value.text->empty()))
      continue;
    if (all_fields) return true;
    auto definition = std::find_if(table->fields.begin(), table->fields.end(), [&](const auto& f) {
      return base::equalsIgnoringCase(f.name, field.name);
    });
    if (definition != table->fields.end() && (definition->flags & catalogue::kFieldRequired))
      return true;
  }
  return false;
}

}  // namespace

void selectCommand(CommandContext& context) { selectByName(context, false); }

void selectGroupCommand(CommandContext& context) { selectByName(context, true); }

void selectExtendedCommand(CommandContext& context) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  std::optional<std::wstring> name = context.ask(true, context.text(StringId::kPromptObject));
  if (!name) return;
  std::optional<Switches> switches = askSwitches(context);
  if (!switches) return;
  auto candidates = selectionCandidates(context, picked, true);
  if (!candidates) return;
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  objdata::Membership membership(classifier);
  host::Database& database = context.database();
  const ObjectClass* cls = run.catalogue().findObject(*name);
  ConformityTests conformity(database);
  keepBySwap(*candidates, [&](host::ObjectId id) {
    bool matches = true;
    if (switches->objects) matches = membership.carries(classifier.records(id), *name);
    // A name that is no class prescribes no properties: nothing conforms to it.
    if (matches && switches->properties) matches = cls && conformity.of(id).matches(cls->properties);
    return matches == switches->match;
  });
  finish(context, *candidates);
}

void selectAllCommand(CommandContext& context) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  std::optional<Switches> switches = askSwitches(context);
  if (!switches) return;
  auto candidates = selectionCandidates(context, picked, true);
  if (!candidates) return;
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  ConformityTests conformity(context.database());
  keepBySwap(*candidates, [&](host::ObjectId id) {
    std::span<const objdata::TableRecord> records = classifier.records(id);
    bool matches = false;
    for (const objdata::TableRecord& record : records) {
      const ObjectClass* cls = classifier.classOfRecord(record);
      if (!cls) continue;
      if (switches->properties && !conformity.of(id).matches(cls->properties)) continue;
      if (!switches->objects || classifier.isClassifiedAs(records, *cls)) {
        matches = true;
        break;
      }
    }
    return matches == switches->match;
  });
  finish(context, *candidates);
}

void selectClassifiedCommand(CommandContext& context) {
  selectBySwitch(context, StringId::kPromptMatch, 1,
                 [](objdata::Classifier& classifier, host::ObjectId id, int match) {
                   std::span<const objdata::TableRecord> records = classifier.records(id);
                   bool classified =
                       std::any_of(records.begin(), records.end(), [&](const auto& record) {
                         const ObjectClass* cls = classifier.classOfRecord(record);
                         return cls && classifier.isClassifiedAs(records, *cls);
                       });
                   return classified == (match == 1);
                 });
}

void selectNullCommand(CommandContext& context) {
  selectBySwitch(context, StringId::kPromptCheckNonRequired, 0,
                 [](objdata::Classifier& classifier, host::ObjectId id, int all_fields) {
                   for (const objdata::TableRecord& record : classifier.records(id)) {
                     if (hasEmptyText(classifier, record, all_fields == 1)) return true;
                   }
                   return false;
                 });
}

}  // namespace shell
