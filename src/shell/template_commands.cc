#include "shell/template_commands.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

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

// The kind keys met so far. Open addressing over one buffer of keys: a drawing asks it once
// per entity, and most keys are found.
class KindSet {
 public:
  // Whether `key` was not there before; it is now.
  bool insert(std::string_view key) {
    if (2 * (entries_.size() + 1) > slots_.size()) grow();
    size_t hash = std::hash<std::string_view>()(key);
    size_t mask = slots_.size() - 1;
    for (size_t i = hash & mask;; i = (i + 1) & mask) {
      uint32_t slot = slots_[i];
      if (slot == 0) {
        entries_.push_back({hash, keys_.size(), key.size()});
        keys_ += key;
        slots_[i] = static_cast<uint32_t>(entries_.size());
        return true;
      }
      const Entry& entry = entries_[slot - 1];
      if (entry.hash == hash && keyOf(entry) == key) return false;
    }
  }

 private:
  struct Entry {
    size_t hash;
    size_t offset;
    size_t size;
  };

  std::string_view keyOf(const Entry& entry) const {
    return std::string_view(keys_).substr(entry.offset, entry.size);
  }

  void grow() {
    std::vector<uint32_t> slots(std::max<size_t>(1024, 2 * slots_.size()), 0);
    size_t mask = slots.size() - 1;
    for (size_t e = 0; e < entries_.size(); ++e) {
      size_t i = entries_[e].hash & mask;
      while (slots[i] != 0) i = (i + 1) & mask;
      slots[i] = static_cast<uint32_t>(e + 1);
    }
    slots_ = std::move(slots);
  }

  std::vector<uint32_t> slots_;  // 1 + an index into entries_; 0 is free
  std::vector<Entry> entries_;
  std::string keys_;
};

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
  maintenance::TemplateWriter writer(state.template_name_format, precision);
  // Entities far outnumber their kinds: a definition is built for the first of each kind
  // only, and equal keys are equal definitions, so no class comes twice.
  draw::DefinitionReader reader(database, precision);
  KindSet kinds;
  for (host::ObjectId id : *candidates) {
    if (!database.isEntity(id) || !kinds.insert(reader.kindKey(id))) continue;
    draw::DrawingProperties definition = reader.build(id);
    if (isTemplateClass(database, definition)) writer.add(definition);
  }

  std::string text = kUtf8ByteOrderMark;
  writer.finish(context.host().document().fileName(), templateVariables(database),
                storedTables(database), text);
  const int written = writer.classes();
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
