// What the classifying, validating and removing commands share: the classifier of one run,
// the candidate entities, and the attribute synchronisation they queue.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "maintenance/candidates.h"
#include "objdata/classification.h"
#include "shell/command_context.h"

namespace shell {

// The classifier of one command run over the current drawing and catalogue.
class ClassificationRun {
 public:
  // A drawing without a table dictionary is read as storing no table, and is left
  // unchanged until prepareWrites.
  explicit ClassificationRun(CommandContext& context);

  // Makes the drawing's table dictionary when missing. False when the drawing cannot keep
  // one (DXF R12).
  bool makeTableDictionary();
  // makeTableDictionary, called once the command is sure to attach records, so that a
  // command that stops early leaves the drawing as it was. False, after saying so, when the
  // drawing cannot keep records.
  bool prepareWrites();

  // Gives `entity` the class as the classifier does; when the class's resources cannot be
  // loaded, says so for each entity so that none goes unnoticed.
  bool applyClass(const catalogue::ObjectClass& cls, host::ObjectId entity, bool properties,
                  bool records, draw::ApplyMode mode);

  objdata::Classifier& classifier() { return classifier_; }
  const catalogue::Catalogue& catalogue() const { return *catalogue_; }

 private:
  CommandContext& context_;
  std::shared_ptr<const catalogue::Catalogue> catalogue_;
  std::shared_ptr<const catalogue::DrawingResources> resources_;
  objdata::TableDirectory tables_;
  objdata::TemplateEnvironment environment_;
  objdata::Classifier classifier_;
};

// The class named `name` (any case) with the resources it names loaded into the drawing.
// Prints "object not found" or "unable to load object dependencies" and gives null
// otherwise.
const catalogue::ObjectClass* classToApply(CommandContext& context, ClassificationRun& run,
                                           std::wstring_view name);

// The pick-first set or an interactive selection (see maintenance::pickedOrSelected). Prints
// "no objects selected" and gives nothing when the result is empty; gives nothing silently
// when the user cancels.
std::optional<std::vector<host::ObjectId>> selectCandidates(
    CommandContext& context, const std::vector<host::ObjectId>& picked_first,
    maintenance::EmptyPick empty_pick);

// The block an entity references, or an empty text for other entities.
std::wstring blockNameOf(host::Database& database, host::ObjectId entity);

// Queues "_.attsync _n NAME" for each block of `blocks` that defines attributes, and
// "_.regen" when `regenerate`, with CMDECHO off while they are queued.
void queueAttributeSync(CommandContext& context, const std::set<std::wstring>& blocks,
                        bool regenerate);

// Reports a value that a field could not hold (a thrown conversion code) in `cls`.
void reportConversionFailure(CommandContext& context, const objdata::ConversionFailure& failure);

}  // namespace shell
