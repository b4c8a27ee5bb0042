#include "shell/remove_commands.h"

#include <algorithm>

#include "shell/classification_run.h"

namespace shell {

namespace {

// The candidates after pruning; prints "no objects selected" when none is left. `selected`,
// when given, receives how many were selected before pruning.
std::optional<std::vector<host::ObjectId>> prunedCandidates(
    CommandContext& context, const std::vector<host::ObjectId>& picked,
    maintenance::EmptyPick empty_pick, int* selected = nullptr) {
  auto candidates = selectCandidates(context, picked, empty_pick);
  if (!candidates) return std::nullopt;
  if (selected) *selected = static_cast<int>(candidates->size());
  maintenance::pruneCandidates(context.database(), *candidates);
  if (candidates->empty()) {
    context.print(StringId::kErrorNoObjectsSelected);
    return std::nullopt;
  }
  return candidates;
}

}  // namespace

void removeCommand(CommandContext& context) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  std::optional<std::wstring> name = context.ask(true, context.text(StringId::kPromptObject));
  if (!name) return;
  auto candidates = prunedCandidates(context, picked, maintenance::EmptyPick::kNothing);
  if (!candidates) return;
  ClassificationRun run(context);
  int removed = 0;
  for (host::ObjectId id : *candidates) {
    if (run.classifier().removeClass(*name, id)) ++removed;
  }
  context.print(StringId::kCompletedCount, {removed});
}

void removeAllCommand(CommandContext& context) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  auto candidates = prunedCandidates(context, picked, maintenance::EmptyPick::kModelSpace);
  if (!candidates) return;
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  objdata::TableDirectory& tables = classifier.tables();
  int deleted = 0;
  // Their buffers serve every entity and record read.
  objdata::TableRecord record;
  objdata::RecordCursor cursor;
  for (host::ObjectId id : *candidates) {
    if (objdata::openCursor(tables, cursor, id) != objdata::kStatusOk) continue;
    while (!objdata::cursorDone(cursor)) {
      if (objdata::readRecord(tables, cursor, record) == objdata::kStatusOk &&
          classifier.classOfRecord(record)) {
        // The cursor then stands on the record that followed.
        objdata::deleteRecord(tables, cursor);
        ++deleted;
      } else {
        objdata::nextRecord(tables, cursor);
      }
    }
  }
  context.print(StringId::kCompletedCount, {deleted});
}

void restoreCommand(CommandContext& context) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  std::optional<std::wstring> name = context.ask(true, context.text(StringId::kPromptObject));
  if (!name) return;
  std::optional<int> mode = context.askMode(StringId::kPromptRestoreMode, 0, 1);
  if (!mode) return;
  auto apply_mode = static_cast<draw::ApplyMode>(*mode);
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  int restored = 0;

  if (!name->empty()) {
    const catalogue::ObjectClass* cls = classToApply(context, run, *name);
    if (!cls) return;
    int selected = 0;
    auto candidates =
        prunedCandidates(context, picked, maintenance::EmptyPick::kNothing, &selected);
    if (!candidates) return;
    for (host::ObjectId id : *candidates) {
      if (!classifier.isClassifiedAs(classifier.records(id), *cls)) continue;
      run.applyClass(*cls, id, true, false, apply_mode);
      ++restored;
    }
    context.print(StringId::kCompletedRatio, {restored, selected});
    return;
  }

  auto candidates = selectCandidates(context, picked, maintenance::EmptyPick::kModelSpace);
  if (!candidates) return;
  int selected = static_cast<int>(candidates->size());
  maintenance::pruneCandidates(context.database(), *candidates);
  for (host::ObjectId id : *candidates) {
    std::vector<const catalogue::ObjectClass*> classes;
    for (const objdata::TableRecord& record : classifier.records(id)) {
      const catalogue::ObjectClass* cls = classifier.classOfRecord(record);
      if (cls && std::find(classes.begin(), classes.end(), cls) == classes.end())
        classes.push_back(cls);
    }
    for (const catalogue::ObjectClass* cls : classes) {
      run.applyClass(*cls, id, true, false, apply_mode);
    }
    ++restored;
  }
  context.print(StringId::kCompletedRatio, {restored, selected});
}

}  // namespace shell
