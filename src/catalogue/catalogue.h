// The in-memory form of one class-definition file: the classification tree, the object
// classes, the table index, the global settings and the resource files the classes draw on.
// Built whole by the parser and never edited afterwards, so that one catalogue serves any
// number of drawings and threads; what binding it to a drawing brings is kept apart, in
// DrawingResources. Names are looked up without regard to case through lower-case keys,
// while display forms keep their case.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/sysvar_setting.h"
#include "catalogue/table_definition.h"
#include "draw/object_properties.h"
#include "host/resources.h"

namespace catalogue {

// The longest class name a class file may give, in UTF-16 units.
inline constexpr size_t kMaxObjectName = 132;

// A node of the classification tree.
struct Group {
  std::vector<Group> children;  // file order
  // Lower-case names of the classes attached to this group, in order of attachment.
  std::vector<std::wstring> members;
  // 0 disables every class declared inside the group.
  int flag = 1;
  // Optional text of the `class` line, for the tree palette.
  std::optional<std::wstring> text;
  std::wstring name;  // as written; empty for the root
};

struct ObjectClass {
  std::wstring display_name;  // as written on the `obj_name` line
  bool enabled = true;
  int32_t draw_order = 0;
  // A path relative to the class file's folder; empty when none was given.
  std::wstring icon;
  // Types, colours and every other drawing property; the types are properties.object_types.
  draw::DrawingProperties properties;
  std::vector<TableDefinition> tables;  // file order
  std::vector<SysVarSetting> settings;  // applied when the class is drawn

  const std::vector<std::wstring>& objectTypes() const { return properties.object_types; }
};

// One entry of the table index.
struct TableEntry {
  // Lower-case names of the classes that use the table, in order of first use.
  std::vector<std::wstring> objects;
};

// A drawing resource made available for the classes.
struct ResourceEntry {
  std::wstring name;  // as the file that provided it spells it
  std::wstring file;  // full path of that file
};
using ResourceMap = std::map<std::wstring, ResourceEntry>;  // by lower-case name

// A file named by a resource keyword, with the host::ResourceKind bits it serves.
struct ResourceFile {
  std::wstring path;  // full path
  uint32_t mask = 0;
  bool operator==(const ResourceFile&) const = default;
};

// What binding a catalogue to one drawing brought into that drawing.
struct DrawingResources {
  // Whether a resource of `kind` (one host::ResourceKind bit) named `name` in any case was
  // made available.
  bool hasResource(uint32_t kind, std::wstring_view name) const;
  const ResourceMap& resources(uint32_t kind) const;
  bool isLoadedFile(std::wstring_view path) const;

  // Resources by host::ResourceKind bit.
  std::map<uint32_t, ResourceMap> resource_tables;
  // Files whose resources were loaded, in load order.
  std::vector<std::wstring> loaded_files;
};

// A drawing declared with `blockreferencefile`: a block by itself.
struct BlockFile {
  std::wstring path;        // full path
  std::wstring block_name;  // the file name without folder and extension
  bool operator==(const BlockFile&) const = default;
};

class Catalogue {
 public:
  // The class whose name is `name` in any case; null when there is none.
  const ObjectClass* findObject(std::wstring_view name) const;
  // The index entry of the table `name` in any case; null when no class uses it.
  const TableEntry* findTable(std::wstring_view name) const;
  // The first group, depth first from the root, whose lower-cased name equals `name`
  // exactly (so a name given in upper case finds nothing); null when there is none.
  const Group* findGroup(std::wstring_view name) const;
  // True when no class, group, table, setting or resource file was loaded.
  bool empty() const;
  // Empties every container; the class-file path stays.
  void clear();

  // Full path of the file parsed; relative resource paths are resolved against its folder.
  std::wstring class_file;
  // Every class by lower-case name.
  std::map<std::wstring, ObjectClass> objects;
  // The table index by lower-case table name.
  std::map<std::wstring, TableEntry> tables;
  // The root of the classification tree: no name, flag 1.
  Group tree;
  // Settings declared before the first class, applied once when loading succeeds.
  std::vector<SysVarSetting> global_settings;
  // The block files that serve a needed block, by lower-case full path.
  std::map<std::wstring, BlockFile> block_files;
  // The resource names the classes need and no block file serves, by kind (see
  // neededResources): what is imported and what a drawing is warned to lack.
  host::ResourceNames needed_resources;
  // The files to import into each drawing, in order, each with the kinds it serves that
  // some class needs (always its layouts).
  std::vector<ResourceFile> imports;
};

}  // namespace catalogue
