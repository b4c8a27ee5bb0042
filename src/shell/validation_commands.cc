#include "shell/validation_commands.h"

#include <algorithm>
#include <map>

#include "shell/classification_run.h"

namespace shell {

namespace {

// The candidates of both commands, pruned; nothing when the command ends here.
std::optional<std::vector<host::ObjectId>> validationCandidates(CommandContext& context) {
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  auto candidates = selectCandidates(context, picked, maintenance::EmptyPick::kModelSpace);
  if (candidates) maintenance::pruneCandidates(context.database(), *candidates);
  return candidates;
}

}  // namespace

void assertCommand(CommandContext& context) {
  std::optional<int> check_all = context.askMode(StringId::kPromptCheckNonRequired, 0, 1);
  if (!check_all) return;
  auto candidates = validationCandidates(context);
  if (!candidates) return;
  if (candidates->empty()) {
    context.print(StringId::kSelectedCount, {0});
    return;
  }
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();
  std::vector<objdata::Finding> findings;
  std::vector<host::ObjectId>& ids = *candidates;
  for (size_t i = 0; i < ids.size();) {
    findings.clear();
    classifier.findBrokenRules(classifier.records(ids[i]), *check_all == 0, findings);
    if (!findings.empty())
      ++i;
    else
      maintenance::removeBySwap(ids, i);
  }
  context.editor().setImpliedSelection(ids);
  context.print(StringId::kSelectedCount, {static_cast<int>(ids.size())});
}

void statCommand(CommandContext& context) {
  auto candidates = validationCandidates(context);
  if (!candidates) return;
  ClassificationRun run(context);
  objdata::Classifier& classifier = run.classifier();

  struct ClassCount {
    int entities = 0;
    int invalid = 0;
  };
  std::map<const catalogue::ObjectClass*, ClassCount> classes;
  int unclassified = 0;
  std::vector<objdata::Finding> findings;
  for (host::ObjectId id : *candidates) {
    std::span<const objdata::TableRecord> records = classifier.records(id);
    findings.clear();
    classifier.findBrokenRules(records, true, findings);
    std::vector<const catalogue::ObjectClass*> counted;
    for (const objdata::TableRecord& record : records) {
      const catalogue::ObjectClass* cls = classifier.classOfRecord(record);
      if (!cls || std::find(counted.begin(), counted.end(), cls) != counted.end()) continue;
      if (!classifier.isClassifiedAs(records, *cls)) continue;
      counted.push_back(cls);
      ClassCount& count = classes[cls];
      ++count.entities;
      if (std::any_of(findings.begin(), findings.end(),
                      [&](const objdata::Finding& finding) { return finding.cls == cls; }))
        ++count.invalid;
    }
    if (counted.empty()) ++unclassified;
  }

  std::wstring report =
      context.text(StringId::kStatObjects, {static_cast<int>(candidates->size()), unclassified});
  report += context.text(StringId::kStatClasses, {static_cast<int>(classes.size())});
  std::vector<std::wstring> lines;
  int invalid = 0;
  for (const auto& [cls, count] : classes) {
    invalid += count.invalid;
    // The per-class figure has always been printed as 0; the total is the one that counts.
    lines.push_back(context.text(StringId::kStatClassLine, {cls->display_name, count.entities, 0}));
  }
  std::sort(lines.begin(), lines.end());
  for (const std::wstring& line : lines) report += line + L"\n";
  if (!lines.empty()) report += L"\n";
  report += context.text(StringId::kStatInvalidDefinitions, {invalid});
  context.host().dialogs().textBox(context.text(StringId::kStatDialogTitle), report);
}

}  // namespace shell
