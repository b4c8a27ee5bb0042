// The drawing database as the system sees it: objects by id, dictionaries, XRECORDs,
// extension dictionaries, entities and their properties, symbol tables, system variables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "host/entity_property.h"
#include "host/resources.h"
#include "host/types.h"

namespace host {

// Told of changes to the database while registered (see Database::addReactor).
//
// objectAppended is called once for every object that joins the database, whoever creates
// it: entities (and their attributes and vertices), dictionaries, XRECORDs, extension
// dictionaries, symbol tables and their records, objects brought in by importResources.
// It comes after the object is complete and reachable: its data written and, for an object
// a dictionary lists, the entry written too.
//
// objectErased is called once for every object that leaves it. Erasing an object erases what
// it owns (its extension dictionary, the entries a dictionary owns, an entity's attributes
// and vertices), and each of those is announced too, owner first, then what it owned; the
// whole cascade is done before the first call, so isValid is false for all of them.
//
// Objects appended during a host command are announced before the editor announces that
// command's end (see EditorReactor). A reactor may add or remove reactors while it is told,
// itself included, but must not change the database: it notes ids and acts later.
class DatabaseReactor {
 public:
  virtual ~DatabaseReactor() = default;
  virtual void objectAppended(ObjectId /*id*/) {}
  virtual void objectErased(ObjectId /*id*/) {}
};

// What a layer's flags say about its entities.
struct LayerState {
  bool frozen = false;
  bool off = false;
  bool locked = false;
  bool hidden = false;  // false where the host has no such state
};

enum class SymbolTable : uint8_t {
  kLayer,
  kLinetype,
  kTextStyle,
  kDimensionStyle,
  kBlock,
  kMLeaderStyle,  // the multileader style dictionary
  kMlineStyle,    // the multiline style dictionary
  kHatchPattern,  // patterns a hatch accepts: predefined ones and those made available
};

// Every method reports failure through its Status: kNotFound when the object, key or name
// does not exist, kUnsupported when this drawing or host cannot do it (for example
// dictionaries in a drawing format that has none), kInvalid for a wrong argument.
// Out-values are unspecified on failure. Ids come from this database only.
class Database {
 public:
  Database() = default;
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  virtual ~Database() = default;

  // --- Dictionaries. Keys compare case-insensitively.
  // The root dictionary of named objects; null when the drawing has none (R12).
  virtual ObjectId namedObjectsDictionary() = 0;
  // Entry `key` of `dict`: kNotFound when absent.
  virtual base::Result<ObjectId> dictionaryGet(ObjectId dict, std::wstring_view key) = 0;
  // Entries in the dictionary's own order, as (key, object) pairs.
  virtual base::Result<std::vector<std::pair<std::wstring, ObjectId>>> dictionaryEntries(
      ObjectId dict) = 0;
  // The same into `entries`, whose storage a host may reuse.
  virtual base::Status dictionaryEntriesInto(
      ObjectId dict, std::vector<std::pair<std::wstring, ObjectId>>& entries) {
    auto read = dictionaryEntries(dict);
    if (!read) return read.status();
    entries = std::move(read.value());
    return base::Status::ok();
  }
  // Removes the entry `key` (the object stays); kNotFound when absent.
  virtual base::Status dictionaryRemove(ObjectId dict, std::wstring_view key) = 0;
  // Creates an empty dictionary or XRECORD owned by `owner` under `key`; an existing entry of
  // that key is an kInvalid error and nothing changes.
  virtual base::Result<ObjectId> createDictionary(ObjectId owner, std::wstring_view key) = 0;
  virtual base::Result<ObjectId> createXrecord(ObjectId owner, std::wstring_view key) = 0;

  // --- XRECORDs.
  virtual base::Result<ResBufChain> readXrecord(ObjectId xrecord) = 0;
  // The same into `chain`, whose storage a host may reuse: the form for walks over many
  // objects. Hosts that can should override both this and dictionaryEntriesInto.
  virtual base::Status readXrecordInto(ObjectId xrecord, ResBufChain& chain) {
    auto read = readXrecord(xrecord);
    if (!read) return read.status();
    chain = std::move(read.value());
    return base::Status::ok();
  }
  virtual base::Status writeXrecord(ObjectId xrecord, const ResBufChain& chain) = 0;
  // createXrecord and writeXrecord in one: the XRECORD is made holding `chain`, and is
  // announced once, with it. This default announces it empty, as createXrecord does: hosts
  // override it, also because commands attach a record to every entity they classify so.
  virtual base::Result<ObjectId> createXrecordWith(ObjectId owner, std::wstring_view key,
                                                   const ResBufChain& chain) {
    auto made = createXrecord(owner, key);
    if (!made) return made;
    if (base::Status written = writeXrecord(*made, chain); !written) return written;
    return made;
  }

  // --- Extension dictionaries.
  // The object's extension dictionary, or the null id when it has none.
  virtual base::Result<ObjectId> extensionDictionary(ObjectId object) = 0;
  // Creates it when missing and returns it.
  virtual base::Result<ObjectId> createExtensionDictionary(ObjectId object) = 0;
  // createExtensionDictionary and createXrecordWith in one: an XRECORD holding `chain` is
  // entered under `key` in the object's extension dictionary, made when missing. A taken
  // key is a kInvalid error and nothing changes. Hosts that can should override it: it is
  // how a record is attached to an entity that has none.
  virtual base::Result<ObjectId> attachXrecord(ObjectId object, std::wstring_view key,
                                               const ResBufChain& chain) {
    auto dict = createExtensionDictionary(object);
    if (!dict) return dict.status();
    return createXrecordWith(*dict, key, chain);
  }
  // Removes it when it has no entries; returns true iff it was removed.
  virtual base::Result<bool> releaseExtensionDictionary(ObjectId object) = 0;

  // --- Objects and entities.
  // Erases an object together with what it owns (extension dictionary, attributes...).
  virtual base::Status erase(ObjectId object) = 0;
  // True while `id` names an object that is not erased.
  virtual bool isValid(ObjectId id) = 0;
  // The entity's class as the host names it ("AcDbLine", "AcDbPolyline",
  // "AcDbRotatedDimension"...); empty for objects that are not entities.
  virtual std::wstring entityClass(ObjectId entity) = 0;
  // The same into `out`, whose buffer a host may reuse: the form for walks over every entity.
  virtual void entityClassInto(ObjectId entity, std::wstring& out) { out = entityClass(entity); }
  // Whether `id` names an entity that is not erased.
  virtual bool isEntity(ObjectId id) { return !entityClass(id).empty(); }
  // Model-space entities in drawing order.
  virtual std::vector<ObjectId> modelSpaceEntities() = 0;
  virtual PropertyValue getProperty(ObjectId entity, EntityProperty property) = 0;
  // The same into `value`, whose storage (a text's buffer) a host may reuse: the form for
  // walks that read a property of every entity.
  virtual void getPropertyInto(ObjectId entity, EntityProperty property, PropertyValue& value) {
    value = getProperty(entity, property);
  }
  virtual base::Status setProperty(ObjectId entity, EntityProperty property,
                                   const PropertyValue& value) = 0;
  // Draws `entities` in the given order relative to one another (first lowest), through the
  // model-space sort table, which is made when missing.
  virtual base::Status setRelativeDrawOrder(const std::vector<ObjectId>& entities) = 0;

  // --- Symbol tables.
  virtual bool hasSymbol(SymbolTable table, std::wstring_view name) = 0;
  virtual base::Result<LayerState> layerState(std::wstring_view layer) = 0;
  // Whether block `block` defines attributes that its inserts carry (constant ones aside);
  // false for a block that does not exist.
  virtual bool hasAttributeDefinitions(std::wstring_view block) = 0;
  // Whether block `block` is an external reference (attached or overlaid); false for a
  // block that does not exist and where the host cannot tell.
  virtual bool isExternalReference(std::wstring_view block) {
    (void)block;
    return false;
  }

  // --- System variables. kNotFound for a name the host does not know.
  virtual base::Result<SysVar> getVar(std::string_view name) = 0;
  // The value must have the variable's own type; kInvalid otherwise.
  virtual base::Status setVar(std::string_view name, const SysVar& value) = 0;

  // --- Resources from other files.
  // Makes the resources of the kinds in `mask` named in `needed` available in this
  // drawing from the file `path` (a drawing, or a linetype, multiline-style or pattern
  // file), and returns, by kind, the names it provided. Layouts (kResourceLayouts) are
  // taken whole. Fails, changing nothing, when the file cannot be read.
  virtual base::Result<ResourceNames> importResources(const std::wstring& path, uint32_t mask,
                                                      const ResourceNames& needed) {
    (void)path, (void)mask, (void)needed;
    return base::Status::unsupported("this host cannot import resources");
  }

  // --- Reactors. A reactor stays registered until removed; the caller keeps it alive.
  virtual void addReactor(DatabaseReactor* reactor) = 0;
  virtual void removeReactor(DatabaseReactor* reactor) = 0;
};

}  // namespace host
