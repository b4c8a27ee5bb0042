// The drawing database of FakeHost: objects are plain structs in a map, built by tests in a
// few lines.
//
// Left out: DXF (nothing is read or written), paper space and block contents (every entity
// is in model space), geometry, value ranges (a property takes any value of its type; only
// names are checked, and multileader and multiline style names not at all), soft-pointer
// dictionary entries (every entry is owned by its dictionary), undo.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/database.h"

namespace fakes {

using Properties = std::vector<std::pair<host::EntityProperty, host::PropertyValue>>;

class FakeDatabase : public host::Database {
 public:
  // Starts with the named-objects dictionary, layer "0", linetypes "ByBlock", "ByLayer"
  // and "Continuous", text and dimension style "Standard", blocks "*Model_Space" and
  // "*Paper_Space", and no system variables.
  FakeDatabase();

  // --- Building the drawing. Mistakes here are the test's own and throw
  // std::invalid_argument.
  // Appends a model-space entity of host class `entity_class` ("AcDbLine") with the given
  // properties, stored as given (names need not exist yet); tells the reactors. A property
  // the class does not have, or a value of the wrong type, throws.
  host::ObjectId addEntity(std::wstring_view entity_class, const Properties& properties = {});
  // Adds `name` to a symbol table; a name already there (in any case) is kept.
  void addSymbol(host::SymbolTable table, std::wstring_view name);
  // Adds block `name` whose inserts carry attributes (see hasAttributeDefinitions).
  void addAttributeBlock(std::wstring_view name);
  // Adds the layer, or sets its state when it exists.
  void addLayer(std::wstring_view name, host::LayerState state = {});
  // Creates or replaces a system variable; its type is the alternative `value` holds.
  void defineVar(std::string_view name, host::SysVar value);

  // --- Reading back.
  // Model-space entities in the order they are drawn, lowest first.
  const std::vector<host::ObjectId>& drawOrder() const { return draw_order_; }
  // How many objects exist (dictionaries and XRECORDs included).
  size_t objectCount() const { return objects_.size(); }

  // host::Database
  host::ObjectId namedObjectsDictionary() override { return named_objects_; }
  base::Result<host::ObjectId> dictionaryGet(host::ObjectId dict, std::wstring_view key) override;
  base::Result<std::vector<std::pair<std::wstring, host::ObjectId>>> dictionaryEntries(
      host::ObjectId dict) override;
  base::Status dictionaryRemove(host::ObjectId dict, std::wstring_view key) override;
  base::Result<host::ObjectId> createDictionary(host::ObjectId owner,
                                                std::wstring_view key) override;
  base::Result<host::ObjectId> createXrecord(host::ObjectId owner, std::wstring_view key) override;
  base::Result<host::ObjectId> createXrecordWith(host::ObjectId owner, std::wstring_view key,
                                                 const host::ResBufChain& chain) override;
  base::Result<host::ResBufChain> readXrecord(host::ObjectId xrecord) override;
  base::Status writeXrecord(host::ObjectId xrecord, const host::ResBufChain& chain) override;
  base::Result<host::ObjectId> extensionDictionary(host::ObjectId object) override;
  base::Result<host::ObjectId> createExtensionDictionary(host::ObjectId object) override;
  base::Result<bool> releaseExtensionDictionary(host::ObjectId object) override;
  // Erases the object, its extension dictionary and every dictionary entry below them, takes
  // it out of its owner, and then tells the reactors of each object, the given one first.
  // The named-objects dictionary cannot be erased (kInvalid).
  base::Status erase(host::ObjectId object) override;
  bool isValid(host::ObjectId id) override { return objects_.contains(id); }
  std::wstring entityClass(host::ObjectId entity) override;
  std::vector<host::ObjectId> modelSpaceEntities() override { return model_space_; }
  // The value stored, or the default a CAD application shows for a property never set.
  host::PropertyValue getProperty(host::ObjectId entity, host::EntityProperty property) override;
  // kUnsupported for a property the entity does not have or cannot change, kInvalid for a
  // value of another type, kNotFound for a name missing from its symbol table. A name is
  // stored as the table spells it.
  base::Status setProperty(host::ObjectId entity, host::EntityProperty property,
                           const host::PropertyValue& value) override;
  // The positions in the draw order that `entities` hold are dealt out again in the given
  // order; other entities keep their places. kInvalid for an object that is not a
  // model-space entity or one listed twice, and nothing changes.
  base::Status setRelativeDrawOrder(const std::vector<host::ObjectId>& entities) override;
  bool hasSymbol(host::SymbolTable table, std::wstring_view name) override;
  bool hasAttributeDefinitions(std::wstring_view block) override;
  base::Result<host::LayerState> layerState(std::wstring_view layer) override;
  // Variable names compare case-insensitively.
  base::Result<host::SysVar> getVar(std::string_view name) override;
  base::Status setVar(std::string_view name, const host::SysVar& value) override;
  // Reactors hear of every object appended (entities, dictionaries, XRECORDs) and erased.
  void addReactor(host::DatabaseReactor* reactor) override;
  void removeReactor(host::DatabaseReactor* reactor) override;

 private:
  enum class Kind : uint8_t { kEntity, kDictionary, kXrecord };

  struct Object {
    static Object make(Kind kind, host::ObjectId owner = {}) {
      Object out;
      out.kind = kind;
      out.owner = owner;
      return out;
    }

    Kind kind = Kind::kEntity;
    std::wstring entity_class;
    host::ObjectId owner;  // the dictionary holding it, or the object of an extension dictionary
    host::ObjectId extension_dictionary;
    std::vector<std::pair<std::wstring, host::ObjectId>> entries;
    host::ResBufChain chain;
    std::map<host::EntityProperty, host::PropertyValue> properties;
  };

  struct Symbol {
    std::wstring name;
    host::LayerState state;
    bool attributes = false;  // blocks: inserts carry attributes
  };

  host::ObjectId append(Object object);
  base::Result<Object*> find(host::ObjectId id);
  base::Result<Object*> findOfKind(host::ObjectId id, Kind kind, const char* what);
  base::Result<host::ObjectId> createEntry(host::ObjectId owner, std::wstring_view key, Kind kind,
                                           const host::ResBufChain& chain = {});
  Symbol* findSymbol(host::SymbolTable table, std::wstring_view name);
  void tellAppended(host::ObjectId id);

  std::map<host::ObjectId, Object> objects_;
  uint64_t next_id_ = 1;
  host::ObjectId named_objects_;
  std::vector<host::ObjectId> model_space_;
  std::vector<host::ObjectId> draw_order_;
  std::map<host::SymbolTable, std::vector<Symbol>> symbols_;
  std::map<std::string, host::SysVar, std::less<>> vars_;  // by upper-case name
  std::vector<host::DatabaseReactor*> reactors_;
};

// True when `a` and `b` are the same apart from letter case.
bool sameText(std::wstring_view a, std::wstring_view b);

}  // namespace fakes
