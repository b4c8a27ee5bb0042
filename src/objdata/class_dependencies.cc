#include "objdata/class_dependencies.h"

#include <algorithm>

#include "base/text_case.h"
#include "draw/property_application.h"

namespace objdata {

namespace {

std::optional<host::SymbolTable> tableOf(uint32_t kind) {
  switch (kind) {
    case host::kResourceBlocks:
      return host::SymbolTable::kBlock;
    case host::kResourceDimensionStyles:
      return host::SymbolTable::kDimensionStyle;
    case host::kResourceLayers:
      return host::SymbolTable::kLayer;
    case host::kResourceLinetypes:
      return host::SymbolTable::kLinetype;
    case host::kResourceMLeaderStyles:
      return host::SymbolTable::kMLeaderStyle;
    case host::kResourceMlineStyles:
      return host::SymbolTable::kMlineStyle;
    case host::kResourcePatterns:
      return host::SymbolTable::kHatchPattern;
    case host::kResourceTextStyles:
      return host::SymbolTable::kTextStyle;
    default:
      return std::nullopt;
  }
}

// Imports `name` from the first of the catalogue's files for `kind` that provides it.
// False when none does or a file cannot be read.
bool importFromResourceFiles(host::Database& database, const catalogue::Catalogue& catalogue,
                             uint32_t kind, const std::wstring& name) {
  for (const catalogue::ResourceFile& file : catalogue.imports) {
    if ((file.mask & kind) == 0) continue;
    auto provided = database.importResources(file.path, kind, {{kind, {name}}});
    if (!provided) return false;
    auto names = provided->find(kind);
    if (names == provided->end()) continue;
    if (std::any_of(names->second.begin(), names->second.end(),
                    [&](const std::wstring& n) { return base::equalsIgnoringCase(n, name); })) {
      return true;
    }
  }
  return false;
}

// Imports `name` from the file the binding recorded for it; false when it recorded none.
bool importAsProvided(host::Database& database, const catalogue::DrawingResources& provided,
                      uint32_t kind, const std::wstring& name) {
  const catalogue::ResourceMap& names = provided.resources(kind);
  auto entry = names.find(base::lowerCase(name));
  return entry != names.end() &&
         database.importResources(entry->second.file, kind, {{kind, {entry->second.name}}});
}

}  // namespace

bool loadClassDependencies(host::Database& database, const catalogue::Catalogue& catalogue,
                           const catalogue::DrawingResources* provided,
                           const catalogue::ObjectClass& cls) {
  for (const auto& [kind, names] : draw::requiredResources(cls.properties)) {
    std::optional<host::SymbolTable> table = tableOf(kind);
    if (!table) continue;
    for (const std::wstring& name : names) {
      if (database.hasSymbol(*table, name)) continue;
      bool imported = provided ? importAsProvided(database, *provided, kind, name)
                               : importFromResourceFiles(database, catalogue, kind, name);
      if (!imported || !database.hasSymbol(*table, name)) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace objdata
