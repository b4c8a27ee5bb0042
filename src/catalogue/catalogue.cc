#include "catalogue/catalogue.h"

#include <algorithm>

#include "base/text_case.h"

namespace catalogue {

namespace {

const Group* findGroupIn(const Group& group, std::wstring_view name) {
  if (base::lowerCase(group.name) == name) return &group;
  for (const Group& child : group.children) {
    if (const Group* found = findGroupIn(child, name)) return found;
  }
  return nullptr;
}

}  // namespace

const ObjectClass* Catalogue::findObject(std::wstring_view name) const {
  auto it = objects.find(base::lowerCase(name));
  return it == objects.end() ? nullptr : &it->second;
}

const TableEntry* Catalogue::findTable(std::wstring_view name) const {
  auto it = tables.find(base::lowerCase(name));
  return it == tables.end() ? nullptr : &it->second;
}

const Group* Catalogue::findGroup(std::wstring_view name) const { return findGroupIn(tree, name); }

bool DrawingResources::hasResource(uint32_t kind, std::wstring_view name) const {
  auto table = resource_tables.find(kind);
  return table != resource_tables.end() && table->second.contains(base::lowerCase(name));
}

const ResourceMap& DrawingResources::resources(uint32_t kind) const {
  static const ResourceMap kNone;
  auto table = resource_tables.find(kind);
  return table == resource_tables.end() ? kNone : table->second;
}

bool DrawingResources::isLoadedFile(std::wstring_view path) const {
  return std::any_of(loaded_files.begin(), loaded_files.end(), [&](const std::wstring& file) {
    return base::equalsIgnoringCase(file, path);
  });
}

bool Catalogue::empty() const {
  return objects.empty() && tables.empty() && tree.children.empty() && tree.members.empty() &&
         global_settings.empty() && block_files.empty() && needed_resources.empty() &&
         imports.empty();
}

void Catalogue::clear() {
  std::wstring path = std::move(class_file);
  *this = Catalogue();
  class_file = std::move(path);
}

}  // namespace catalogue
