// The host's drawing database on a DXF drawing held in memory.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "dxf/dictionary.h"
#include "dxf/document.h"
#include "dxf/entity_properties.h"
#include "dxf/resource_copy.h"
#include "dxf/xrecord.h"
#include "host/database.h"

namespace headless {

// Announces to its reactors every object the drawing gains or loses, whoever changes it
// (this object, the drawing's own functions, a command of the host), by watching the drawing.
class DxfDatabase : public host::Database, private dxf::DocumentObserver {
 public:
  // Works on `drawing`, which must outlive this object, and watches it while this lives.
  explicit DxfDatabase(dxf::Document& drawing);
  ~DxfDatabase() override;

  dxf::Document& drawing() { return drawing_; }
  static host::ObjectId toId(dxf::RecordId record) { return host::ObjectId{uint64_t{record} + 1}; }
  // The record an id names, or kNoRecord for the null id, a foreign id or an erased record.
  dxf::RecordId toRecord(host::ObjectId id) const;
  // The entity whose handle is `hex`, or the null id.
  host::ObjectId idForHandle(std::wstring_view hex) const;

  host::ObjectId namedObjectsDictionary() override;
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
  base::Status readXrecordInto(host::ObjectId xrecord, host::ResBufChain& chain) override;
  base::Status dictionaryEntriesInto(
      host::ObjectId dict, std::vector<std::pair<std::wstring, host::ObjectId>>& entries) override;
  base::Status writeXrecord(host::ObjectId xrecord, const host::ResBufChain& chain) override;
  base::Result<host::ObjectId> extensionDictionary(host::ObjectId object) override;
  base::Result<host::ObjectId> createExtensionDictionary(host::ObjectId object) override;
  base::Result<host::ObjectId> attachXrecord(host::ObjectId object, std::wstring_view key,
                                             const host::ResBufChain& chain) override;
  base::Result<bool> releaseExtensionDictionary(host::ObjectId object) override;
  base::Status erase(host::ObjectId object) override;
  bool isValid(host::ObjectId id) override;
  std::wstring entityClass(host::ObjectId entity) override;
  void entityClassInto(host::ObjectId entity, std::wstring& out) override;
  bool isEntity(host::ObjectId id) override;
  std::vector<host::ObjectId> modelSpaceEntities() override;
  host::PropertyValue getProperty(host::ObjectId entity, host::EntityProperty property) override;
  void getPropertyInto(host::ObjectId entity, host::EntityProperty property,
                       host::PropertyValue& value) override;
  base::Status setProperty(host::ObjectId entity, host::EntityProperty property,
                           const host::PropertyValue& value) override;
  base::Status setRelativeDrawOrder(const std::vector<host::ObjectId>& entities) override;
  bool hasSymbol(host::SymbolTable table, std::wstring_view name) override;
  base::Result<host::LayerState> layerState(std::wstring_view layer) override;
  bool hasAttributeDefinitions(std::wstring_view block) override;
  bool isExternalReference(std::wstring_view block) override;
  // A variable the drawing's header holds is read from and written to the header (a point
  // stored without z is a Point2); one of session_variables.h the header lacks is kept in
  // this object, for as long as it lives; any other name is kNotFound.
  base::Result<host::SysVar> getVar(std::string_view name) override;
  base::Status setVar(std::string_view name, const host::SysVar& value) override;
  void addReactor(host::DatabaseReactor* reactor) override;
  void removeReactor(host::DatabaseReactor* reactor) override;

  // --- Resources from other files (see dxf::importResourceFile). Hatch patterns stay in
  // this object, since a drawing keeps no pattern library.
  base::Result<host::ResourceNames> importResources(const std::wstring& path, uint32_t mask,
                                                    const host::ResourceNames& needed) override;
  // The pattern of that name (case-insensitive) read from a .pat file, or nullptr.
  const dxf::PatternDefinition* pattern(std::wstring_view name) const;

 private:
  // dxf::DocumentObserver
  void recordAdded(dxf::RecordId id) override;
  void recordErased(dxf::RecordId id) override;

  base::Result<dxf::RecordId> record(host::ObjectId id, const char* what) const;
  // headless::isEntityRecord, with what each structure name says kept: commands ask it of
  // every entity they visit, often several times.
  bool isEntityRecord(dxf::RecordId r);
  base::Result<dxf::RecordId> dictionaryRecord(host::ObjectId id) const;
  // A DICTIONARY, or an XRECORD holding `data` when `data` is given.
  base::Result<host::ObjectId> createEntry(host::ObjectId owner, std::wstring_view key,
                                           const host::ResBufChain* data);
  // `chain` as the drawing's typed values, in values_scratch_.
  std::vector<dxf::TypedValue>& typedValues(const host::ResBufChain& chain);

  dxf::Document& drawing_;
  std::vector<host::DatabaseReactor*> reactors_;
  enum class TypeKind : uint8_t { kUnknown, kEntity, kByMarkers };
  struct TypeFacts {
    TypeKind kind = TypeKind::kUnknown;
    const wchar_t* fixed_class = nullptr;  // headless::fixedEntityClass
  };
  // What each structure name says of its records, by dxf::Record::type.
  const TypeFacts& typeFacts(dxf::RecordId r);
  std::vector<TypeFacts> type_facts_;
  // Session variables (session_variables.h) set since the drawing was opened; the others
  // keep their initial values.
  std::map<std::string, host::SysVar, std::less<>> session_vars_;
  // Hatch patterns read from .pat files by importResources.
  std::vector<dxf::PatternDefinition> patterns_;
  // Reused by the reads that walks repeat for every object.
  std::vector<dxf::TypedValue> values_scratch_;
  std::vector<dxf::DictionaryEntry> entries_scratch_;
  // The dictionary entries_scratch_ holds the entries of, and the drawing's revision then.
  std::pair<dxf::RecordId, uint64_t> entries_read_{dxf::kNoRecord, 0};
  std::vector<dxf::Tag> tags_scratch_;
  // The entity whose properties were read last, as of the drawing's revision then, and its
  // tags once a second property was read: commands read several of an entity in a row.
  std::optional<dxf::TagList> property_tags_;
  dxf::EntityGroupTags general_tags_;
  dxf::RecordId property_record_ = dxf::kNoRecord;
  uint64_t property_revision_ = 0;
};

}  // namespace headless
