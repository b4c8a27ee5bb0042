#include "fakes/fake_database.h"

#include <algorithm>
#include <cctype>
#include <cwctype>
#include <numbers>
#include <optional>
#include <set>
#include <stdexcept>

#include "base/utf.h"

namespace fakes {

using base::Result;
using base::Status;
using host::EntityProperty;
using host::ObjectId;
using host::PropertyValue;

bool sameText(std::wstring_view a, std::wstring_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](wchar_t x, wchar_t y) {
    return x == y || std::towupper(x) == std::towupper(y);
  });
}

namespace {

using P = EntityProperty;

// What a property holds and shows when never set.
struct PropertyInfo {
  EntityProperty property;
  PropertyValue fallback;
  std::optional<host::SymbolTable> names = std::nullopt;  // the table a name must be in
  bool read_only = false;
};

using host::SymbolTable;
// clang-format off
const PropertyInfo kProperties[] = {
    {P::kColor, host::Color{256, std::nullopt}},
    {P::kLayer, std::wstring(L"0"), SymbolTable::kLayer},
    {P::kLinetype, std::wstring(L"ByLayer"), SymbolTable::kLinetype},
    {P::kLinetypeScale, 1.0},
    {P::kLineweight, int64_t{-1}},
    {P::kClosed, int64_t{0}},
    {P::kRotation, 0.0},
    {P::kBlockName, std::wstring(), SymbolTable::kBlock},
    {P::kScale, host::Point3{1, 1, 1}},
    {P::kRadius, 0.0},
    {P::kDimensionStyle, std::wstring(L"Standard"), SymbolTable::kDimensionStyle},
    {P::kDimensionType, int64_t{0}, std::nullopt, true},
    {P::kEllipseStart, 0.0},
    {P::kEllipseEnd, 2 * std::numbers::pi},
    {P::kPattern, std::wstring(L"SOLID")},
    {P::kPatternAngle, 0.0},
    {P::kPatternScale, 1.0},
    {P::kBackgroundColor, host::Color{-1, std::nullopt}},
    {P::kMLeaderStyle, std::wstring(L"Standard")},
    {P::kMlineStyle, std::wstring(L"Standard")},
    {P::kMlineScale, 1.0},
    {P::kMlineJustification, int64_t{0}},
    {P::kAttachment, int64_t{1}},
    {P::kTextHeight, 2.5},
    {P::kTextJustification, int64_t{0}},
    {P::kTextStyle, std::wstring(L"Standard"), SymbolTable::kTextStyle},
    {P::kContents, std::wstring()},
    {P::kConstantWidth, 0.0},
    {P::kElevation, 0.0},
};
// clang-format on

const PropertyInfo& info(EntityProperty property) {
  for (const PropertyInfo& row : kProperties) {
    if (row.property == property) return row;
  }
  throw std::invalid_argument("no such property " + std::to_string(static_cast<int>(property)));
}

// Properties beyond those every entity has, by host class.
struct ClassProperties {
  std::wstring_view entity_class;
  std::initializer_list<EntityProperty> properties;
};

const ClassProperties kClassProperties[] = {
    {L"AcDbPolyline", {P::kClosed, P::kConstantWidth, P::kElevation}},
    {L"AcDb2dPolyline", {P::kClosed}},
    {L"AcDb3dPolyline", {P::kClosed}},
    {L"AcDbPolygonMesh", {P::kClosed}},
    {L"AcDbSpline", {P::kClosed}},
    {L"AcDbMline", {P::kClosed, P::kMlineStyle, P::kMlineScale, P::kMlineJustification}},
    {L"AcDbBlockReference", {P::kRotation, P::kBlockName, P::kScale}},
    {L"AcDbMInsertBlock", {P::kRotation, P::kBlockName, P::kScale}},
    {L"AcDbText",
     {P::kRotation, P::kTextHeight, P::kTextJustification, P::kTextStyle, P::kContents}},
    {L"AcDbMText", {P::kRotation, P::kAttachment, P::kTextHeight, P::kTextStyle, P::kContents}},
    {L"AcDbCircle", {P::kRadius}},
    {L"AcDbArc", {P::kRadius}},
    {L"AcDbEllipse", {P::kEllipseStart, P::kEllipseEnd}},
    {L"AcDbHatch", {P::kPattern, P::kPatternAngle, P::kPatternScale, P::kBackgroundColor}},
    {L"AcDbMPolygon", {P::kPattern, P::kPatternAngle, P::kPatternScale, P::kBackgroundColor}},
    {L"AcDbMLeader", {P::kMLeaderStyle}},
};

// Dimension classes in the order of their kDimensionType values.
constexpr std::wstring_view kDimensionClasses[] = {
    L"AcDbRotatedDimension",   L"AcDbAlignedDimension", L"AcDb2LineAngularDimension",
    L"AcDbDiametricDimension", L"AcDbRadialDimension",  L"AcDb3PointAngularDimension",
    L"AcDbOrdinateDimension"};

std::optional<int64_t> dimensionType(std::wstring_view entity_class) {
  for (size_t i = 0; i < std::size(kDimensionClasses); ++i) {
    if (kDimensionClasses[i] == entity_class) return static_cast<int64_t>(i);
  }
  return std::nullopt;
}

// Objects that are not entities have no class and no properties.
bool hasProperty(std::wstring_view entity_class, EntityProperty property) {
  if (entity_class.empty()) return false;
  switch (property) {
    case P::kColor:
    case P::kLayer:
    case P::kLinetype:
    case P::kLinetypeScale:
    case P::kLineweight:
      return true;
    case P::kDimensionStyle:
    case P::kDimensionType:
      return dimensionType(entity_class).has_value();
    default:
      break;
  }
  for (const ClassProperties& row : kClassProperties) {
    if (row.entity_class == entity_class) {
      return std::find(row.properties.begin(), row.properties.end(), property) !=
             row.properties.end();
    }
  }
  return false;
}

std::string upper(std::string_view name) {
  std::string out(name);
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

Status noEntry(std::wstring_view key) {
  return Status::notFound("no entry '" + base::toUtf8(key) + "'");
}

}  // namespace

FakeDatabase::FakeDatabase() {
  named_objects_ = append(Object::make(Kind::kDictionary));
  addLayer(L"0");
  for (const wchar_t* name : {L"ByBlock", L"ByLayer", L"Continuous"}) {
    addSymbol(host::SymbolTable::kLinetype, name);
  }
  addSymbol(host::SymbolTable::kTextStyle, L"Standard");
  addSymbol(host::SymbolTable::kDimensionStyle, L"Standard");
  addSymbol(host::SymbolTable::kBlock, L"*Model_Space");
  addSymbol(host::SymbolTable::kBlock, L"*Paper_Space");
}

ObjectId FakeDatabase::append(Object object) {
  ObjectId id{next_id_++};
  objects_.emplace(id, std::move(object));
  return id;
}

void FakeDatabase::tellAppended(ObjectId id) {
  // A copy: a reactor may remove itself while told.
  for (host::DatabaseReactor* reactor : std::vector(reactors_)) reactor->objectAppended(id);
}

Result<FakeDatabase::Object*> FakeDatabase::find(ObjectId id) {
  auto it = objects_.find(id);
  if (it == objects_.end()) {
    return Status::notFound("object " + std::to_string(id.value) + " does not exist");
  }
  return &it->second;
}

Result<FakeDatabase::Object*> FakeDatabase::findOfKind(ObjectId id, Kind kind, const char* what) {
  auto object = find(id);
  if (object && (*object)->kind != kind) {
    return Status::invalid("object " + std::to_string(id.value) + " is not " + what);
  }
  return object;
}

host::ObjectId FakeDatabase::addEntity(std::wstring_view entity_class,
                                       const Properties& properties) {
  if (entity_class.empty()) throw std::invalid_argument("an entity needs a class");
  Object entity = Object::make(Kind::kEntity);
  entity.entity_class = entity_class;
  for (const auto& [property, value] : properties) {
    if (!hasProperty(entity_class, property)) {
      throw std::invalid_argument(base::toUtf8(entity_class) + " has no property " +
                                  std::to_string(static_cast<int>(property)));
    }
    if (value.index() != info(property).fallback.index()) {
      throw std::invalid_argument("wrong value type for property " +
                                  std::to_string(static_cast<int>(property)));
    }
    entity.properties[property] = value;
  }
  ObjectId id = append(std::move(entity));
  model_space_.push_back(id);
  draw_order_.push_back(id);
  tellAppended(id);
  return id;
}

FakeDatabase::Symbol* FakeDatabase::findSymbol(host::SymbolTable table, std::wstring_view name) {
  for (Symbol& symbol : symbols_[table]) {
    if (sameText(symbol.name, name)) return &symbol;
  }
  return nullptr;
}

void FakeDatabase::addSymbol(host::SymbolTable table, std::wstring_view name) {
  if (!findSymbol(table, name)) symbols_[table].push_back({std::wstring(name), {}});
}

void FakeDatabase::addAttributeBlock(std::wstring_view name) {
  addSymbol(host::SymbolTable::kBlock, name);
  findSymbol(host::SymbolTable::kBlock, name)->attributes = true;
}

void FakeDatabase::addLayer(std::wstring_view name, host::LayerState state) {
  addSymbol(host::SymbolTable::kLayer, name);
  findSymbol(host::SymbolTable::kLayer, name)->state = state;
}

void FakeDatabase::defineVar(std::string_view name, host::SysVar value) {
  vars_[upper(name)] = std::move(value);
}

Result<ObjectId> FakeDatabase::dictionaryGet(ObjectId dict, std::wstring_view key) {
  auto d = findOfKind(dict, Kind::kDictionary, "a dictionary");
  if (!d) return d.status();
  for (const auto& [entry_key, id] : (*d)->entries) {
    if (sameText(entry_key, key)) return id;
  }
  return noEntry(key);
}

Result<std::vector<std::pair<std::wstring, ObjectId>>> FakeDatabase::dictionaryEntries(
    ObjectId dict) {
  auto d = findOfKind(dict, Kind::kDictionary, "a dictionary");
  if (!d) return d.status();
  return (*d)->entries;
}

Status FakeDatabase::dictionaryRemove(ObjectId dict, std::wstring_view key) {
  auto d = findOfKind(dict, Kind::kDictionary, "a dictionary");
  if (!d) return d.status();
  auto& entries = (*d)->entries;
  auto it = std::find_if(entries.begin(), entries.end(),
                         [&](const auto& entry) { return sameText(entry.first, key); });
  if (it == entries.end()) return noEntry(key);
  entries.erase(it);
  return Status::ok();
}

Result<ObjectId> FakeDatabase::createEntry(ObjectId owner, std::wstring_view key, Kind kind,
                                           const host::ResBufChain& chain) {
  auto d = findOfKind(owner, Kind::kDictionary, "a dictionary");
  if (!d) return d.status();
  for (const auto& entry : (*d)->entries) {
    if (sameText(entry.first, key)) {
      return Status::invalid("entry '" + base::toUtf8(key) + "' exists already");
    }
  }
  Object made = Object::make(kind, owner);
  made.chain = chain;
  ObjectId id = append(std::move(made));
  // Map nodes stay where they are when others are added, so `d` still points at the owner.
  (*d)->entries.emplace_back(std::wstring(key), id);
  tellAppended(id);
  return id;
}

Result<ObjectId> FakeDatabase::createDictionary(ObjectId owner, std::wstring_view key) {
  return createEntry(owner, key, Kind::kDictionary);
}

Result<ObjectId> FakeDatabase::createXrecord(ObjectId owner, std::wstring_view key) {
  return createEntry(owner, key, Kind::kXrecord);
}

Result<ObjectId> FakeDatabase::createXrecordWith(ObjectId owner, std::wstring_view key,
                                                 const host::ResBufChain& chain) {
  return createEntry(owner, key, Kind::kXrecord, chain);
}

Result<host::ResBufChain> FakeDatabase::readXrecord(ObjectId xrecord) {
  auto x = findOfKind(xrecord, Kind::kXrecord, "an XRECORD");
  if (!x) return x.status();
  return (*x)->chain;
}

Status FakeDatabase::writeXrecord(ObjectId xrecord, const host::ResBufChain& chain) {
  auto x = findOfKind(xrecord, Kind::kXrecord, "an XRECORD");
  if (!x) return x.status();
  (*x)->chain = chain;
  return Status::ok();
}

Result<ObjectId> FakeDatabase::extensionDictionary(ObjectId object) {
  auto o = find(object);
  if (!o) return o.status();
  return (*o)->extension_dictionary;
}

Result<ObjectId> FakeDatabase::createExtensionDictionary(ObjectId object) {
  auto o = find(object);
  if (!o) return o.status();
  if ((*o)->extension_dictionary) return (*o)->extension_dictionary;
  ObjectId dict = append(Object::make(Kind::kDictionary, object));
  (*o)->extension_dictionary = dict;
  tellAppended(dict);
  return dict;
}

Result<bool> FakeDatabase::releaseExtensionDictionary(ObjectId object) {
  auto o = find(object);
  if (!o) return o.status();
  ObjectId dict = (*o)->extension_dictionary;
  if (!dict || !objects_.at(dict).entries.empty()) return false;
  if (Status status = erase(dict); !status) return status;
  return true;
}

Status FakeDatabase::erase(ObjectId object) {
  if (auto o = find(object); !o) return o.status();
  if (object == named_objects_) return Status::invalid("the named-objects dictionary stays");
  std::vector<ObjectId> erased;
  std::vector<ObjectId> pending = {object};
  while (!pending.empty()) {
    ObjectId id = pending.back();
    pending.pop_back();
    auto it = objects_.find(id);
    if (it == objects_.end()) continue;
    Object& current = it->second;
    if (current.extension_dictionary) pending.push_back(current.extension_dictionary);
    for (const auto& entry : current.entries) pending.push_back(entry.second);
    if (auto owner = objects_.find(current.owner); owner != objects_.end()) {
      std::erase_if(owner->second.entries, [&](const auto& entry) { return entry.second == id; });
      if (owner->second.extension_dictionary == id) owner->second.extension_dictionary = {};
    }
    std::erase(model_space_, id);
    std::erase(draw_order_, id);
    objects_.erase(it);
    erased.push_back(id);
  }
  // Told once everything is gone, so that a reactor sees the database as it ends up.
  for (ObjectId id : erased) {
    for (host::DatabaseReactor* reactor : std::vector(reactors_)) reactor->objectErased(id);
  }
  return Status::ok();
}

std::wstring FakeDatabase::entityClass(ObjectId entity) {
  auto it = objects_.find(entity);
  return it == objects_.end() ? std::wstring() : it->second.entity_class;
}

PropertyValue FakeDatabase::getProperty(ObjectId entity, EntityProperty property) {
  auto it = objects_.find(entity);
  if (it == objects_.end() || !hasProperty(it->second.entity_class, property)) return {};
  if (auto value = it->second.properties.find(property); value != it->second.properties.end()) {
    return value->second;
  }
  if (property == P::kDimensionType) return *dimensionType(it->second.entity_class);
  return info(property).fallback;
}

Status FakeDatabase::setProperty(ObjectId entity, EntityProperty property,
                                 const PropertyValue& value) {
  auto o = find(entity);
  if (!o) return o.status();
  const PropertyInfo& about = info(property);
  if (!hasProperty((*o)->entity_class, property)) {
    return Status::unsupported("the entity has no such property");
  }
  if (about.read_only) return Status::unsupported("the property is read only");
  if (value.index() != about.fallback.index()) {
    return Status::invalid("the property takes another type of value");
  }
  PropertyValue stored = value;
  if (about.names) {
    Symbol* symbol = findSymbol(*about.names, std::get<std::wstring>(value));
    if (!symbol) {
      return Status::notFound("'" + base::toUtf8(std::get<std::wstring>(value)) +
                              "' is not in its symbol table");
    }
    stored = symbol->name;
  }
  (*o)->properties[property] = std::move(stored);
  return Status::ok();
}

Status FakeDatabase::setRelativeDrawOrder(const std::vector<ObjectId>& entities) {
  std::vector<size_t> positions;
  for (ObjectId id : entities) {
    if (auto o = find(id); !o) return o.status();
    auto at = std::find(draw_order_.begin(), draw_order_.end(), id);
    if (at == draw_order_.end()) {
      return Status::invalid("object " + std::to_string(id.value) + " is not in model space");
    }
    positions.push_back(static_cast<size_t>(at - draw_order_.begin()));
  }
  if (std::set<size_t>(positions.begin(), positions.end()).size() != positions.size()) {
    return Status::invalid("an entity is listed twice");
  }
  std::sort(positions.begin(), positions.end());
  for (size_t i = 0; i < entities.size(); ++i) draw_order_[positions[i]] = entities[i];
  return Status::ok();
}

bool FakeDatabase::hasSymbol(host::SymbolTable table, std::wstring_view name) {
  return findSymbol(table, name) != nullptr;
}

bool FakeDatabase::hasAttributeDefinitions(std::wstring_view block) {
  Symbol* symbol = findSymbol(host::SymbolTable::kBlock, block);
  return symbol && symbol->attributes;
}

Result<host::LayerState> FakeDatabase::layerState(std::wstring_view layer) {
  Symbol* symbol = findSymbol(host::SymbolTable::kLayer, layer);
  if (!symbol) return Status::notFound("layer '" + base::toUtf8(layer) + "' does not exist");
  return symbol->state;
}

Result<host::SysVar> FakeDatabase::getVar(std::string_view name) {
  auto it = vars_.find(upper(name));
  if (it == vars_.end()) return Status::notFound("unknown variable " + upper(name));
  return it->second;
}

Status FakeDatabase::setVar(std::string_view name, const host::SysVar& value) {
  auto it = vars_.find(upper(name));
  if (it == vars_.end()) return Status::notFound("unknown variable " + upper(name));
  if (it->second.value.index() != value.value.index()) {
    return Status::invalid("variable " + upper(name) + " has another type");
  }
  it->second = value;
  return Status::ok();
}

void FakeDatabase::addReactor(host::DatabaseReactor* reactor) { reactors_.push_back(reactor); }

void FakeDatabase::removeReactor(host::DatabaseReactor* reactor) { std::erase(reactors_, reactor); }

}  // namespace fakes
