#include "catalogue/resource_loader.h"

#include <algorithm>

#include "base/text_case.h"

namespace catalogue {

namespace {

void addName(host::ResourceNames& names, uint32_t kind, const std::wstring& name) {
  if (name.empty() || name == draw::kAnyText) return;
  std::vector<std::wstring>& list = names[kind];
  if (std::find(list.begin(), list.end(), name) == list.end()) list.push_back(name);
}

void addNames(host::ResourceNames& names, uint32_t kind,
              const draw::PropertyConstraint<std::wstring>& constraint) {
  addName(names, kind, constraint.value);
  for (const std::wstring& name : constraint.alternatives) addName(names, kind, name);
}

// The drawing's lookups, in the order the warnings are given.
struct Check {
  uint32_t kind;
  host::SymbolTable table;
  ParseMessage missing;
};
constexpr Check kChecks[] = {
    {host::kResourceBlocks, host::SymbolTable::kBlock, ParseMessage::kBlockNotFound},
    {host::kResourceDimensionStyles, host::SymbolTable::kDimensionStyle,
     ParseMessage::kDimensionStyleNotFound},
    {host::kResourceLayers, host::SymbolTable::kLayer, ParseMessage::kLayerNotFound},
    {host::kResourceLinetypes, host::SymbolTable::kLinetype, ParseMessage::kLinetypeNotFound},
    {host::kResourceMLeaderStyles, host::SymbolTable::kMLeaderStyle,
     ParseMessage::kMleaderStyleNotFound},
    {host::kResourceMlineStyles, host::SymbolTable::kMlineStyle, ParseMessage::kMlineStyleNotFound},
    {host::kResourcePatterns, host::SymbolTable::kHatchPattern, ParseMessage::kPatternNotFound},
    {host::kResourceTextStyles, host::SymbolTable::kTextStyle, ParseMessage::kTextStyleNotFound},
};

}  // namespace

host::ResourceNames neededResources(const Catalogue& catalogue) {
  host::ResourceNames names;
  for (const auto& [key, object] : catalogue.objects) {
    const draw::DrawingProperties& p = object.properties;
    addName(names, host::kResourceBlocks, p.block_name.value);
    addName(names, host::kResourceDimensionStyles, p.dimension_style.value);
    addNames(names, host::kResourceLayers, p.layer);
    addNames(names, host::kResourceLinetypes, p.linetype);
    addName(names, host::kResourceMLeaderStyles, p.mleader_style.value);
    addName(names, host::kResourceMlineStyles, p.mline_style.value);
    addName(names, host::kResourcePatterns, p.pattern.value);
    addName(names, host::kResourceTextStyles, p.text_style.value);
  }
  return names;
}

void planResources(Catalogue& catalogue, const DependencyTable& dependencies) {
  host::ResourceNames needed = neededResources(catalogue);

  std::map<std::wstring, BlockFile> block_files_in_use;
  if (auto blocks = needed.find(host::kResourceBlocks); blocks != needed.end()) {
    std::erase_if(blocks->second, [&](const std::wstring& name) {
      for (const auto& [key, file] : catalogue.block_files) {
        if (file.block_name == name) {
          block_files_in_use.emplace(key, file);
          return true;
        }
      }
      return false;
    });
    if (blocks->second.empty()) needed.erase(blocks);
  }
  catalogue.block_files = std::move(block_files_in_use);

  for (const auto& [key, file] : dependencies) {
    uint32_t mask = file.mask;
    for (uint32_t kind = 1; kind <= host::kResourceTextStyles; kind <<= 1) {
      if (kind != host::kResourceLayouts && !needed.contains(kind)) mask &= ~kind;
    }
    if (mask != 0) catalogue.imports.push_back({file.path, mask});
  }
  catalogue.needed_resources = std::move(needed);
}

bool loadResources(const Catalogue& catalogue, host::Database& database,
                   std::vector<Diagnostic>& messages, DrawingResources& loaded) {
  const host::ResourceNames& needed = catalogue.needed_resources;
  for (const ResourceFile& file : catalogue.imports) {
    auto provided = database.importResources(file.path, file.mask, needed);
    if (!provided) {
      messages.push_back({ParseMessage::kUnableToLoad, 0, file.path});
      return false;
    }
    for (const auto& [kind, names] : *provided) {
      ResourceMap& table = loaded.resource_tables[kind];
      for (const std::wstring& name : names)
        table.try_emplace(base::lowerCase(name), ResourceEntry{name, file.path});
    }
    loaded.loaded_files.push_back(file.path);
  }

  for (const Check& check : kChecks) {
    auto names = needed.find(check.kind);
    if (names == needed.end()) continue;
    for (const std::wstring& name : names->second) {
      if (!database.hasSymbol(check.table, name)) {
        messages.push_back({check.missing, 0, name});
      }
    }
  }
  return true;
}

}  // namespace catalogue
