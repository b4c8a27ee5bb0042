#include "objdata/class_dependencies.h"

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

}  // namespace

bool loadClassDependencies(host::Database& database, const catalogue::Catalogue& catalogue,
                           const catalogue::ObjectClass& cls) {
  for (const auto& [kind, names] : draw::requiredResources(cls.properties)) {
    std::optional<host::SymbolTable> table = tableOf(kind);
    if (!table) continue;
    const catalogue::ResourceMap& provided = catalogue.resources(kind);
    for (const std::wstring& name : names) {
      if (database.hasSymbol(*table, name)) continue;
      auto entry = provided.find(base::lowerCase(name));
      if (entry == provided.end()) return false;
      auto imported =
          database.importResources(entry->second.file, kind, {{kind, {entry->second.name}}});
      if (!imported || !database.hasSymbol(*table, name)) return false;
    }
  }
  return true;
}

}  // namespace objdata
