#include "shell/template_commands.h"

#include <set>
#include <variant>

#include "base/utf.h"
#include "draw/conformity.h"
#include "draw/entity_definition.h"
#include "draw/object_types.h"
#include "maintenance/candidates.h"
#include "maintenance/class_template.h"
#include "objdata/stored_table.h"
#include "shell/classification_run.h"

namespace shell {

namespace {

constexpr const char* kUtf8ByteOrderMark = "\xEF\xBB\xBF";

std::wstring sysVarText(const host::SysVar& var) {
  return std::visit(
      [](const auto& v) -> std::wstring {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::wstring>) {
          return v;
        } else if constexpr (std::is_same_v<T, host::Point3>) {
          return std::to_wstring(v.x) + L"," + std::to_wstring(v.y) + L"," + std::to_wstring(v.z);
        } else if constexpr (std::is_same_v<T, host::Point2>) {
          return std::to_wstring(v.x) + L"," + std::to_wstring(v.y);
        } else {
          return std::to_wstring(v);
        }
      },
      var.value);
}

std::vector<std::pair<std::wstring, std::wstring>> templateVariables(host::Database& database) {
  std::vector<std::pair<std::wstring, std::wstring>> variables;
  for (const char* name : {"INSUNITS", "LUPREC"}) {
    auto value = database.getVar(name);
    variables.emplace_back(base::fromUtf8(name), value ? sysVarText(*value) : std::wstring());
  }
  return variables;
}

std::vector<maintenance::StoredTableOutline> storedTables(host::Database& database) {
  std::vector<maintenance::StoredTableOutline> outlines;
  host::ObjectId dictionary = objdata::findTableDictionary(database);
  if (!dictionary) return outlines;
  std::vector<std::wstring> names;
  objdata::listStoredTables(database, names, 7);
  for (const std::wstring& name : names) {
    objdata::StoredTable table;
    if (objdata::readStoredTable(database, dictionary, name, table) != objdata::kStatusOk) continue;
    maintenance::StoredTableOutline& outline = outlines.emplace_back();
    outline.name = name;
    for (const objdata::StoredField& field : table.fields) {
      outline.fields.emplace_back(field.name, static_cast<int>(field.type));
    }
  }
  return outlines;
}

// Whether a definition may become a class: it has a type, and a block reference names a
// block of its own drawing that is not anonymous.
bool isTemplateClass(host::Database& database, const draw::DrawingProperties& definition) {
  if (definition.object_types.empty() || definition.object_types.front().empty()) return false;
  if (definition.object_types.front() != L"BlockReference") return true;
  const std::wstring& block = definition.block_name.isSet() ? definition.block_name.value : L"";
  return !block.empty() && !block.starts_with(L'*') && !database.isExternalReference(block);
}

}  // namespace

void templateCommand(CommandContext& context) {
  host::Database& database = context.database();
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  auto candidates = maintenance::pickedOrSelected(context.editor(), database, picked,
                                                  maintenance::EmptyPick::kModelSpace);
  if (!candidates) return;
  maintenance::pruneCandidates(database, *candidates);
  if (candidates->empty()) return;

  ProcessState& state = context.state();
  std::optional<std::wstring> format =
      context.ask(true, context.text(StringId::kPromptNameFormat, {state.template_name_format}));
  if (!format) return;
  if (!format->empty()) {
    if (!maintenance::isValidNameFormat(*format)) {
      context.print(StringId::kErrorInvalidNameFormat);
      return;
    }
    state.template_name_format = *format;
  }
  // The dialog's title is the description part of the file filter ("Text files (*.txt)").
  std::wstring filter = context.text(StringId::kTextFileFilter);
  std::optional<std::wstring> path =
      context.host().dialogs().saveFile(filter.substr(0, filter.find(L'|')), L"txt");
  if (!path) return;

  const int precision = draw::linearPrecision(database);
  maintenance::DefinitionList definitions;
  for (host::ObjectId id : *candidates) {
    if (!database.isEntity(id)) continue;
    draw::DrawingProperties definition = draw::buildDefinitionFromEntity(database, id, precision);
    if (isTemplateClass(database, definition)) definitions.add(std::move(definition));
  }

  maintenance::TemplateSource source;
  source.drawing_path = context.host().document().fileName();
  source.variables = templateVariables(database);
  source.definitions = definitions.take();
  source.tables = storedTables(database);
  source.name_format = state.template_name_format;
  source.precision = precision;
  const auto written = static_cast<int>(source.definitions.size());
  std::string text =
      kUtf8ByteOrderMark + base::toUtf8(maintenance::composeTemplate(std::move(source)));
  if (!context.host().writeTextFile(*path, text)) {
    // The message is shown as the string table has it: its placeholder is not filled.
    context.host().dialogs().messageBox(context.text(StringId::kCaptionError),
                                        context.strings().get(StringId::kErrorUnableToOpenFile),
                                        host::MessageKind::kError);
    return;
  }
  context.print(StringId::kCompletedRatio, {written, static_cast<int>(candidates->size())});
}

void typeCommand(CommandContext& context) {
  host::Database& database = context.database();
  std::vector<host::ObjectId> picked = context.editor().impliedSelection();
  auto candidates = selectCandidates(context, picked, maintenance::EmptyPick::kNothing);
  if (!candidates) return;
  maintenance::pruneCandidates(database, *candidates);
  std::set<std::wstring> types;
  for (host::ObjectId id : *candidates) {
    if (database.isEntity(id)) types.insert(draw::objectTypeName(database, id));
  }
  for (const std::wstring& type : types) context.print(StringId::kTypeReportLine, {type});
}

}  // namespace shell
