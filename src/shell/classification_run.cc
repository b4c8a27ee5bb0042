#include "shell/classification_run.h"

#include <type_traits>

#include "objdata/stored_table.h"

namespace shell {

ClassificationRun::ClassificationRun(CommandContext& context)
    : context_(context),
      catalogue_(context.state().catalogue),
      resources_(context.state().resources),
      tables_(context.database(), objdata::findTableDictionary(context.database())),
      environment_(objdata::templateEnvironment(context.host())),
      classifier_(context.database(), *catalogue_, tables_, environment_, resources_.get()) {}

bool ClassificationRun::makeTableDictionary() {
  if (tables_.id().isNull()) tables_.setId(objdata::getTableDictionary(context_.host().document()));
  return !tables_.id().isNull();
}

bool ClassificationRun::prepareWrites() {
  if (!makeTableDictionary()) {
    context_.print(StringId::kErrorNoObjectData);
    return false;
  }
  return true;
}

bool ClassificationRun::applyClass(const catalogue::ObjectClass& cls, host::ObjectId entity,
                                   bool properties, bool records, draw::ApplyMode mode) {
  auto applied = classifier_.applyClass(cls, entity, properties, records, mode);
  if (applied == objdata::Classifier::Applied::kResourcesMissing)
    context_.print(StringId::kErrorUnableToLoadClassDependencies, {cls.display_name});
  return applied == objdata::Classifier::Applied::kYes;
}

const catalogue::ObjectClass* classToApply(CommandContext& context, ClassificationRun& run,
                                           std::wstring_view name) {
  const catalogue::ObjectClass* cls = run.catalogue().findObject(name);
  if (!cls) {
    context.print(StringId::kErrorObjectNotFound);
    return nullptr;
  }
  if (!run.classifier().loadDependencies(*cls)) {
    context.print(StringId::kErrorUnableToLoadObjectDependencies);
    return nullptr;
  }
  return cls;
}

std::optional<std::vector<host::ObjectId>> selectCandidates(
    CommandContext& context, const std::vector<host::ObjectId>& picked_first,
    maintenance::EmptyPick empty_pick) {
  auto candidates =
      maintenance::pickedOrSelected(context.editor(), context.database(), picked_first, empty_pick);
  if (!candidates) return std::nullopt;
  if (candidates->empty()) {
    context.print(StringId::kErrorNoObjectsSelected);
    return std::nullopt;
  }
  return candidates;
}

std::wstring blockNameOf(host::Database& database, host::ObjectId entity) {
  host::PropertyValue name = database.getProperty(entity, host::EntityProperty::kBlockName);
  const std::wstring* text = std::get_if<std::wstring>(&name);
  return text ? *text : std::wstring();
}

void queueAttributeSync(CommandContext& context, const std::set<std::wstring>& blocks,
                        bool regenerate) {
  host::Database& database = context.database();
  auto echo = database.getVar("CMDECHO");
  if (echo) {
    host::SysVar off = *echo;
    std::visit(
        [](auto& value) {
          if constexpr (std::is_arithmetic_v<std::decay_t<decltype(value)>>) value = 0;
        },
        off.value);
    (void)database.setVar("CMDECHO", off);
  }
  for (const std::wstring& block : blocks) {
    if (database.hasAttributeDefinitions(block))
      context.host().document().sendStringToExecute(L"_.attsync _n " + block + L"\n");
  }
  if (regenerate) context.host().document().sendStringToExecute(L"_.regen\n");
  if (echo) (void)database.setVar("CMDECHO", *echo);
}

void reportConversionFailure(CommandContext& context, const objdata::ConversionFailure& failure) {
  context.print(StringId::kErrorConversion,
                {failure.value, failure.field, failure.table, failure.class_name});
}

}  // namespace shell
