#include "shell/classify_commands.h"

#include <algorithm>
#include <climits>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "base/text_case.h"
#include "draw/conformity.h"
#include "draw/object_types.h"
#include "shell/classification_run.h"

namespace shell {

namespace {

using catalogue::ObjectClass;

// Shows the options dialog; false on Cancel.
bool askClassifyOptions(CommandContext& context, ClassifyOptions& options) {
  std::vector<host::CheckBox> boxes = {
      {context.text(StringId::kClassifyAssignProperties), options.assign_properties},
      {context.text(StringId::kClassifyAttachRecords), options.attach_records},
      {context.text(StringId::kClassifyReplaceClasses), options.replace_classes},
  };
  if (!context.host().dialogs().checkBoxes(context.text(StringId::kClassifyDialogTitle), boxes))
    return false;
  options.assign_properties = boxes[0].checked;
  options.attach_records = boxes[1].checked;
  // Replacing classes only means something while records are attached.
  options.replace_classes = boxes[1].checked && boxes[2].checked;
  return true;
}

// The names of the classes the entities carry, each once, in order of first appearance,
// reduced to those the user picks. Nothing on Cancel.
std::optional<std::vector<std::wstring>> classesToReplace(CommandContext& context,
                                                          objdata::Classifier& classifier,
                                                          const std::vector<host::ObjectId>& ids) {
  std::vector<std::wstring> names;
  for (host::ObjectId id : ids) {
    for (const objdata::TableRecord& record : classifier.records(id)) {
      const ObjectClass* cls = classifier.classOfRecord(record);
      if (cls && std::find(names.begin(), names.end(), cls->display_name) == names.end())
        names.push_back(cls->display_name);
    }
  }
  if (names.empty()) return names;
  auto chosen =
      context.host().dialogs().chooseItems(context.text(StringId::kRemoveDialogTitle), names);
  if (!chosen) return std::nullopt;
  std::erase_if(names, [&](const std::wstring& name) {
    return std::find(chosen->begin(), chosen->end(), name) == chosen->end();
  });
  return names;
}

// Notes the class's block when applying it changed the block an insert references.
void noteChangedBlock(const ObjectClass& cls, const std::wstring& old_block,
                      std::set<std::wstring>& blocks) {
  const auto& block = cls.properties.block_name;
  if (old_block.empty() || !block.isSet() || block.isAny(block.value)) return;
  if (!base::equalsIgnoringCase(old_block, block.value)) blocks.insert(block.value);
}

}  // namespace

void classifyCommand(CommandContext& context) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  std::optional<std::wstring> name = context.ask(true, context.text(StringId::kPromptObject));
  if (!name) return;
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  const ObjectClass* cls = classToApply(context, run, *name);
  if (!cls) return;
  ClassifyOptions& options = context.state().classify_options;
  if (!askClassifyOptions(context, options)) return;
  if (!options.assign_properties && !options.attach_records) return;

  auto candidates = selectCandidates(context, picked, maintenance::EmptyPick::kNothing);
  if (!candidates) return;
  host::Database& database = context.database();
  maintenance::pruneCandidates(database, *candidates);
  if (candidates->empty()) {
    context.print(StringId::kErrorNoObjectsSelected);
    return;
  }

  // The table dictionary is made by every run that gets this far; a drawing that cannot
  // keep one can still take the class's properties.
  if (!options.attach_records) {
    run.makeTableDictionary();
  } else if (!run.prepareWrites()) {
    return;
  }

  std::vector<std::wstring> replaced;
  if (options.replace_classes) {
    auto chosen = classesToReplace(context, classifier, *candidates);
    if (!chosen) return;
    replaced = std::move(*chosen);
  }

  int processed = 0;
  std::set<std::wstring> blocks;
  std::vector<host::ObjectId> classified;
  try {
    for (host::ObjectId id : *candidates) {
      if (!draw::listsType(cls->properties, draw::objectTypeName(database, id))) continue;
      ++processed;
      for (const std::wstring& old : replaced) classifier.removeClass(old, id);
      std::wstring old_block = blockNameOf(database, id);
      bool attach =
          options.attach_records && !classifier.isClassifiedAs(classifier.records(id), *cls);
      if (run.applyClass(*cls, id, options.assign_properties, attach, draw::ApplyMode::kAll))
        noteChangedBlock(*cls, old_block, blocks);
    }
  } catch (const objdata::ConversionFailure& failure) {
    reportConversionFailure(context, failure);
    queueAttributeSync(context, blocks, /*regenerate=*/true);
    return;
  }
  queueAttributeSync(context, blocks, /*regenerate=*/processed > 0);

  for (host::ObjectId id : *candidates) {
    if (classifier.isClassifiedAs(classifier.records(id), *cls)) classified.push_back(id);
  }
  context.editor().setImpliedSelection(classified);
  context.print(StringId::kCompletedCount, {processed});
}

void classifyAutoCommand(CommandContext& context) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  std::optional<int> mode = context.askMode(StringId::kPromptAutoClassifyMode, 0, 1);
  if (!mode) return;
  std::optional<int> undrawable = context.askMode(StringId::kPromptUndrawable, 0, 1);
  if (!undrawable) return;
  auto candidates = maintenance::pickedOrSelected(context.editor(), context.database(), picked,
                                                  maintenance::EmptyPick::kModelSpace);
  if (!candidates) return;
  host::Database& database = context.database();
  maintenance::pruneCandidates(database, *candidates);
  if (candidates->empty()) return;

  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  auto allowed = [&](const ObjectClass& cls) { return cls.enabled || *undrawable == 1; };
  const int precision = draw::linearPrecision(database);
  int classified = 0;
  std::set<std::wstring> blocks;
  draw::EntityConformity entity(database, precision);
  // The classes that may take an entity of each type, in catalogue order: made once per type
  // rather than asking every class of every entity.
  std::map<std::wstring_view, std::vector<const ObjectClass*>> classes_by_type;
  auto classesOfType = [&](std::wstring_view type) -> const std::vector<const ObjectClass*>& {
    auto [it, made] = classes_by_type.try_emplace(type);
    if (made) {
      for (const auto& [key, cls] : run.catalogue().objects) {
        if (allowed(cls) && draw::listsType(cls.properties, type)) it->second.push_back(&cls);
      }
    }
    return it->second;
  };
  try {
    for (host::ObjectId id : *candidates) {
      if (*mode == 1) {
        // The bound is one above mode 0's, as it has always been.
        const ObjectClass* best = nullptr;
        int32_t best_order = -INT_MAX;
        for (const objdata::TableRecord& record : classifier.records(id)) {
          const ObjectClass* cls = classifier.classOfRecord(record);
          if (cls && allowed(*cls) && cls->draw_order > best_order) {
            best = cls;
            best_order = cls->draw_order;
          }
        }
        if (!best) continue;
        std::wstring old_block = blockNameOf(database, id);
        if (!run.applyClass(*best, id, true, false, draw::ApplyMode::kAll)) continue;
        ++classified;
        noteChangedBlock(*best, old_block, blocks);
      } else {
        entity.reset(id);
        const ObjectClass* best = nullptr;
        int64_t best_order = INT_MIN;
        for (const ObjectClass* cls : classesOfType(entity.type())) {
          if (cls->draw_order <= best_order || !entity.matches(cls->properties)) continue;
          best = cls;
          best_order = cls->draw_order;
        }
        if (!best || classifier.isClassifiedAs(classifier.records(id), *best)) continue;
        if (!run.prepareWrites()) return;
        if (run.applyClass(*best, id, false, true, draw::ApplyMode::kAll)) ++classified;
      }
    }
  } catch (const objdata::ConversionFailure& failure) {
    reportConversionFailure(context, failure);
    queueAttributeSync(context, blocks, /*regenerate=*/false);
    return;
  }
  queueAttributeSync(context, blocks, /*regenerate=*/false);
  context.print(StringId::kCompletedRatio, {classified, static_cast<int>(candidates->size())});
}

}  // namespace shell
