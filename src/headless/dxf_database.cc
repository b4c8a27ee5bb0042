#include "headless/dxf_database.h"

#include <algorithm>
#include <charconv>

#include "base/utf.h"
#include "dxf/attributes.h"
#include "dxf/blocks.h"
#include "dxf/dictionary.h"
#include "dxf/entity_properties.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/resource_copy.h"
#include "dxf/sort_entities.h"
#include "dxf/symbol_tables.h"
#include "dxf/xrecord.h"
#include "headless/entity_class.h"

namespace headless {

using base::Result;
using base::Status;
using host::ObjectId;

DxfDatabase::DxfDatabase(dxf::Document& drawing) : drawing_(drawing) { drawing_.setObserver(this); }

DxfDatabase::~DxfDatabase() {
  if (drawing_.observer() == this) drawing_.setObserver(nullptr);
}

dxf::RecordId DxfDatabase::toRecord(ObjectId id) const {
  if (id.isNull() || id.value > dxf::kNoRecord) return dxf::kNoRecord;
  auto record = static_cast<dxf::RecordId>(id.value - 1);
  return drawing_.exists(record) ? record : dxf::kNoRecord;
}

Result<dxf::RecordId> DxfDatabase::record(ObjectId id, const char* what) const {
  dxf::RecordId r = toRecord(id);
  if (r == dxf::kNoRecord) {
    return Status::notFound(std::string(what) + " " + std::to_string(id.value) + " does not exist");
  }
  return r;
}

Result<dxf::RecordId> DxfDatabase::dictionaryRecord(ObjectId id) const {
  auto r = record(id, "dictionary");
  if (!r) return r;
  std::string_view type = drawing_.type(*r);
  if (type != "DICTIONARY" && type != "ACDBDICTIONARYWDFLT") {
    return Status::invalid("object " + std::to_string(id.value) + " is a " + std::string(type) +
                           ", not a dictionary");
  }
  return r;
}

ObjectId DxfDatabase::idForHandle(std::wstring_view hex) const {
  dxf::Handle handle = 0;
  std::string text = base::toUtf8(hex);
  auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), handle, 16);
  if (ec != std::errc() || ptr != text.data() + text.size()) return {};
  dxf::RecordId r = drawing_.byHandle(handle);
  return r == dxf::kNoRecord ? ObjectId{} : toId(r);
}

// Copies of the list: a reactor may remove itself while it is told.
void DxfDatabase::recordAdded(dxf::RecordId id) {
  for (host::DatabaseReactor* reactor : std::vector(reactors_)) reactor->objectAppended(toId(id));
}

void DxfDatabase::recordErased(dxf::RecordId id) {
  for (host::DatabaseReactor* reactor : std::vector(reactors_)) reactor->objectErased(toId(id));
}

ObjectId DxfDatabase::namedObjectsDictionary() {
  dxf::RecordId root = dxf::namedObjectsDictionary(drawing_);
  return root == dxf::kNoRecord ? ObjectId{} : toId(root);
}

Result<ObjectId> DxfDatabase::dictionaryGet(ObjectId dict, std::wstring_view key) {
  auto d = dictionaryRecord(dict);
  if (!d) return d.status();
  dxf::RecordId entry = dxf::dictionaryGet(drawing_, *d, key);
  if (entry == dxf::kNoRecord) return Status::notFound("no entry '" + base::toUtf8(key) + "'");
  return toId(entry);
}

Result<std::vector<std::pair<std::wstring, ObjectId>>> DxfDatabase::dictionaryEntries(
    ObjectId dict) {
  std::vector<std::pair<std::wstring, ObjectId>> out;
  if (Status status = dictionaryEntriesInto(dict, out); !status) return status;
  return out;
}

Status DxfDatabase::dictionaryEntriesInto(ObjectId dict,
                                          std::vector<std::pair<std::wstring, ObjectId>>& entries) {
  auto d = dictionaryRecord(dict);
  if (!d) return d.status();
  dxf::dictionaryEntries(drawing_, *d, entries_scratch_);
  entries_read_ = {*d, drawing_.revision()};
  size_t count = 0;
  for (dxf::DictionaryEntry& entry : entries_scratch_) {
    dxf::RecordId r = drawing_.byHandle(entry.value);
    // An entry naming nothing is dangling; callers can do nothing with it.
    if (r == dxf::kNoRecord) continue;
    if (count == entries.size()) entries.emplace_back();
    // Swapped, not copied: the key buffer taken out is refilled by the next read.
    entries[count].first.swap(entry.key);
    entries[count].second = toId(r);
    ++count;
  }
  entries.resize(count);
  return Status::ok();
}

Status DxfDatabase::dictionaryRemove(ObjectId dict, std::wstring_view key) {
  auto d = dictionaryRecord(dict);
  if (!d) return d.status();
  if (!dxf::dictionaryRemove(drawing_, *d, key)) {
    return Status::notFound("no entry '" + base::toUtf8(key) + "'");
  }
  return Status::ok();
}

Result<ObjectId> DxfDatabase::createEntry(ObjectId owner, std::wstring_view key,
                                          const host::ResBufChain* data) {
  auto d = dictionaryRecord(owner);
  if (!d) return d.status();
  if (dxf::dictionaryHas(drawing_, *d, key)) {
    return Status::invalid("entry '" + base::toUtf8(key) + "' exists already");
  }
  Result<dxf::RecordId> created = dxf::kNoRecord;
  if (data == nullptr) {
    created = dxf::createDictionary(drawing_, *d, key);
  } else {
    std::vector<dxf::Tag>& tags = tags_scratch_;
    tags.clear();
    dxf::appendXrecordData(drawing_, typedValues(*data), tags);
    created = dxf::createXrecord(drawing_, *d, key, tags);
  }
  if (!created) return created.status();
  return toId(*created);
}

Result<ObjectId> DxfDatabase::createDictionary(ObjectId owner, std::wstring_view key) {
  return createEntry(owner, key, nullptr);
}

Result<ObjectId> DxfDatabase::createXrecord(ObjectId owner, std::wstring_view key) {
  return createXrecordWith(owner, key, {});
}

Result<ObjectId> DxfDatabase::createXrecordWith(ObjectId owner, std::wstring_view key,
                                                const host::ResBufChain& chain) {
  return createEntry(owner, key, &chain);
}

Result<host::ResBufChain> DxfDatabase::readXrecord(ObjectId xrecord) {
  host::ResBufChain chain;
  if (Status status = readXrecordInto(xrecord, chain); !status) return status;
  return chain;
}

namespace {

// Sets `rb` from `v`. Texts are swapped rather than copied: the buffer `rb` held goes back
// to the scratch values, to be filled by the next read.
void toResBuf(dxf::TypedValue& v, host::ResBuf& rb) {
  rb.code = v.code;
  switch (v.type) {
    case dxf::TypedValue::Type::kText:
      if (auto* text = std::get_if<std::wstring>(&rb.value)) {
        text->swap(v.text);
      } else {
        rb.value = std::move(v.text);
      }
      break;
    case dxf::TypedValue::Type::kPoint:
      rb.value = host::Point3{v.xyz[0], v.xyz[1], v.xyz[2]};
      break;
    case dxf::TypedValue::Type::kReal:
      rb.value = v.xyz[0];
      break;
    case dxf::TypedValue::Type::kInteger:
      rb.value = v.integer;
      break;
    case dxf::TypedValue::Type::kRaw:
      rb.value = v.raw;
      break;
  }
}

}  // namespace

Status DxfDatabase::readXrecordInto(ObjectId xrecord, host::ResBufChain& chain) {
  auto r = record(xrecord, "XRECORD");
  if (!r) return r.status();
  if (drawing_.type(*r) != "XRECORD") return Status::invalid("object is not an XRECORD");
  dxf::readXrecord(drawing_, *r, values_scratch_);
  chain.resize(values_scratch_.size());
  for (size_t i = 0; i < chain.size(); ++i) toResBuf(values_scratch_[i], chain[i]);
  return Status::ok();
}

Status DxfDatabase::writeXrecord(ObjectId xrecord, const host::ResBufChain& chain) {
  auto r = record(xrecord, "XRECORD");
  if (!r) return r.status();
  if (drawing_.type(*r) != "XRECORD") return Status::invalid("object is not an XRECORD");
  dxf::writeXrecord(drawing_, *r, typedValues(chain));
  return Status::ok();
}

std::vector<dxf::TypedValue>& DxfDatabase::typedValues(const host::ResBufChain& chain) {
  std::vector<dxf::TypedValue>& values = values_scratch_;
  values.resize(chain.size());
  for (size_t i = 0; i < chain.size(); ++i) {
    const host::ResBuf& rb = chain[i];
    dxf::TypedValue& v = values[i];
    if (auto* text = std::get_if<std::wstring>(&rb.value)) {
      v.type = dxf::TypedValue::Type::kText;
      v.text.assign(*text);
    } else if (auto* point = std::get_if<host::Point3>(&rb.value)) {
      v.type = dxf::TypedValue::Type::kPoint;
      v.xyz[0] = point->x, v.xyz[1] = point->y, v.xyz[2] = point->z;
    } else if (auto* real = std::get_if<double>(&rb.value)) {
      v.type = dxf::TypedValue::Type::kReal;
      v.xyz[0] = *real;
    } else if (auto* integer = std::get_if<int32_t>(&rb.value)) {
      v.type = dxf::TypedValue::Type::kInteger;
      v.integer = *integer;
    } else {
      v.type = dxf::TypedValue::Type::kRaw;
      v.raw = std::get<std::string>(rb.value);
    }
    v.code = static_cast<int16_t>(rb.code);
  }
  return values;
}

Result<ObjectId> DxfDatabase::extensionDictionary(ObjectId object) {
  auto r = record(object, "object");
  if (!r) return r.status();
  dxf::RecordId dict = drawing_.byHandle(dxf::extensionDictionaryOf(drawing_, *r));
  return dict == dxf::kNoRecord ? ObjectId{} : toId(dict);
}

Result<ObjectId> DxfDatabase::createExtensionDictionary(ObjectId object) {
  auto r = record(object, "object");
  if (!r) return r.status();
  auto dict = dxf::ensureExtensionDictionary(drawing_, *r);
  if (!dict) return dict.status();
  return toId(*dict);
}

Result<ObjectId> DxfDatabase::attachXrecord(ObjectId object, std::wstring_view key,
                                            const host::ResBufChain& chain) {
  auto r = record(object, "object");
  if (!r) return r.status();
  dxf::RecordId dict = drawing_.byHandle(dxf::extensionDictionaryOf(drawing_, *r));
  if (dict != dxf::kNoRecord) return createXrecordWith(toId(dict), key, chain);
  auto made = dxf::attachXrecord(drawing_, *r, key, typedValues(chain));
  if (!made) return made.status();
  return toId(*made);
}

Result<bool> DxfDatabase::releaseExtensionDictionary(ObjectId object) {
  auto r = record(object, "object");
  if (!r) return r.status();
  return dxf::releaseExtensionDictionary(drawing_, *r);
}

Status DxfDatabase::erase(ObjectId object) {
  auto r = record(object, "object");
  if (!r) return r.status();
  if (*r == dxf::namedObjectsDictionary(drawing_)) {
    return Status::invalid("the named-objects dictionary cannot be erased");
  }
  if (entries_read_ == std::pair(*r, drawing_.revision())) {
    // A walk erases the dictionary whose entries it read just before: not read again.
    dxf::eraseObject(drawing_, *r, entries_scratch_);
  } else {
    dxf::eraseObject(drawing_, *r);
  }
  return Status::ok();
}

bool DxfDatabase::isValid(ObjectId id) { return toRecord(id) != dxf::kNoRecord; }

std::wstring DxfDatabase::entityClass(ObjectId entity) {
  dxf::RecordId r = toRecord(entity);
  if (r == dxf::kNoRecord) return std::wstring();
  if (const wchar_t* fixed = typeFacts(r).fixed_class) return fixed;
  return hostEntityClass(drawing_, r);
}

void DxfDatabase::entityClassInto(ObjectId entity, std::wstring& out) {
  dxf::RecordId r = toRecord(entity);
  const wchar_t* fixed = r == dxf::kNoRecord ? L"" : typeFacts(r).fixed_class;
  if (fixed) {
    out.assign(fixed);
  } else {
    out = hostEntityClass(drawing_, r);
  }
}

const DxfDatabase::TypeFacts& DxfDatabase::typeFacts(dxf::RecordId r) {
  uint16_t type = drawing_.record(r).type;
  if (type >= type_facts_.size()) type_facts_.resize(type + 1);
  TypeFacts& facts = type_facts_[type];
  if (facts.kind == TypeKind::kUnknown) {
    std::string_view name = drawing_.type(r);
    facts.kind = headless::isEntityType(name) ? TypeKind::kEntity : TypeKind::kByMarkers;
    facts.fixed_class = headless::fixedEntityClass(name);
  }
  return facts;
}

bool DxfDatabase::isEntityRecord(dxf::RecordId r) {
  return typeFacts(r).kind == TypeKind::kEntity || headless::isEntityRecord(drawing_, r);
}

bool DxfDatabase::isEntity(ObjectId id) {
  dxf::RecordId r = toRecord(id);
  return r != dxf::kNoRecord && isEntityRecord(r);
}

std::vector<ObjectId> DxfDatabase::modelSpaceEntities() {
  std::vector<dxf::RecordId> records = dxf::modelSpaceEntities(drawing_);
  std::vector<ObjectId> out;
  out.reserve(records.size());
  for (dxf::RecordId r : records) out.push_back(toId(r));
  return out;
}

// The two property enumerations list the same properties in the same order.
static_assert(static_cast<int>(host::EntityProperty::kElevation) ==
              static_cast<int>(dxf::Prop::kElevation));
static_assert(static_cast<int>(host::EntityProperty::kBackgroundColor) ==
              static_cast<int>(dxf::Prop::kBackgroundColor));

namespace {

host::PropertyValue toHost(dxf::PropValue value) {
  return std::visit(
      [](auto&& v) -> host::PropertyValue {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, dxf::Point3>) {
          return host::Point3{v.x, v.y, v.z};
        } else if constexpr (std::is_same_v<T, dxf::EntityColor>) {
          return host::Color{v.index, v.rgb};
        } else {
          return std::move(v);
        }
      },
      std::move(value));
}

dxf::PropValue toDxf(const host::PropertyValue& value) {
  return std::visit(
      [](auto&& v) -> dxf::PropValue {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, host::Point3>) {
          return dxf::Point3{v.x, v.y, v.z};
        } else if constexpr (std::is_same_v<T, host::Color>) {
          return dxf::EntityColor{v.index, v.rgb};
        } else {
          return v;
        }
      },
      value);
}

}  // namespace

host::PropertyValue DxfDatabase::getProperty(ObjectId entity, host::EntityProperty property) {
  host::PropertyValue value;
  getPropertyInto(entity, property, value);
  return value;
}

void DxfDatabase::getPropertyInto(ObjectId entity, host::EntityProperty property,
                                  host::PropertyValue& value) {
  dxf::RecordId r = toRecord(entity);
  if (r == dxf::kNoRecord || !isEntityRecord(r)) {
    value = std::monostate{};
    return;
  }
  // Every walk asks each entity for its layer and general properties, which the load noted
  // where to find: those reads do not count as ones that scan the entity.
  auto prop = static_cast<dxf::Prop>(property);
  if (property == host::EntityProperty::kLayer) {
    // Decoded into the value's own buffer.
    if (std::optional<std::string_view> layer = drawing_.knownLayer(r)) {
      auto* text = std::get_if<std::wstring>(&value);
      if (!text) text = &value.emplace<std::wstring>();
      drawing_.codec().decode(*layer, *text);
      return;
    }
  } else if (std::optional<dxf::PropValue> general =
                 dxf::getGeneralProperty(drawing_, r, prop, &general_tags_)) {
    value = toHost(std::move(*general));
    return;
  }
  if (r != property_record_ || drawing_.revision() != property_revision_) {
    // Who reads one property of an entity's own reads others: the entity is decoded once for
    // all of them. A property its type lacks is not looked for.
    if (!dxf::hasProperty(drawing_, r, prop)) {
      value = std::monostate{};
      return;
    }
    property_record_ = r;
    property_revision_ = drawing_.revision();
    property_tags_.emplace(drawing_.scan(r));
  }
  value = toHost(dxf::getProperty(drawing_, r, *property_tags_, prop));
}

Status DxfDatabase::setProperty(ObjectId entity, host::EntityProperty property,
                                const host::PropertyValue& value) {
  auto r = record(entity, "entity");
  if (!r) return r.status();
  if (!isEntityRecord(*r)) return Status::invalid("object is not an entity");
  return dxf::setProperty(drawing_, *r, static_cast<dxf::Prop>(property), toDxf(value));
}

Status DxfDatabase::setRelativeDrawOrder(const std::vector<ObjectId>& entities) {
  std::vector<dxf::RecordId> records;
  for (ObjectId id : entities) {
    auto r = record(id, "entity");
    if (!r) return r.status();
    if (!isEntityRecord(*r)) return Status::invalid("object is not an entity");
    records.push_back(*r);
  }
  dxf::RecordId model = dxf::modelSpaceBlockRecord(drawing_);
  if (model == dxf::kNoRecord)
    return Status::unsupported("the drawing has no model-space block record");
  auto table = dxf::ensureSortEntsTable(drawing_, model);
  if (!table) return table.status();
  return dxf::setRelativeDrawOrder(drawing_, *table, records);
}

bool DxfDatabase::hasSymbol(host::SymbolTable table, std::wstring_view name) {
  switch (table) {
    case host::SymbolTable::kLayer:
      return dxf::findTableEntry(drawing_, "LAYER", name) != dxf::kNoRecord;
    case host::SymbolTable::kLinetype:
      return dxf::findTableEntry(drawing_, "LTYPE", name) != dxf::kNoRecord;
    case host::SymbolTable::kTextStyle:
      return dxf::findTableEntry(drawing_, "STYLE", name) != dxf::kNoRecord;
    case host::SymbolTable::kDimensionStyle:
      return dxf::findTableEntry(drawing_, "DIMSTYLE", name) != dxf::kNoRecord;
    case host::SymbolTable::kBlock:
      return dxf::findBlock(drawing_, name) != dxf::kNoRecord;
    case host::SymbolTable::kMLeaderStyle:
      return dxf::findStyle(drawing_, L"ACAD_MLEADERSTYLE", name) != dxf::kNoRecord;
    case host::SymbolTable::kMlineStyle:
      return dxf::findStyle(drawing_, L"ACAD_MLINESTYLE", name) != dxf::kNoRecord;
    case host::SymbolTable::kHatchPattern:
      return dxf::isPredefinedPattern(name) || pattern(name) != nullptr;
  }
  return false;
}

bool DxfDatabase::hasAttributeDefinitions(std::wstring_view block) {
  return dxf::hasAttributeDefinitions(drawing_, block);
}

bool DxfDatabase::isExternalReference(std::wstring_view block) {
  // The BLOCK's flags: 4 an attached reference, 8 an overlay.
  constexpr int kExternalFlags = 4 | 8;
  dxf::RecordId r = dxf::findBlock(drawing_, block);
  if (r == dxf::kNoRecord) return false;
  std::string_view flags = drawing_.value(r, 70);
  while (!flags.empty() && flags.front() == ' ') flags.remove_prefix(1);
  int value = 0;
  std::from_chars(flags.data(), flags.data() + flags.size(), value);
  return (value & kExternalFlags) != 0;
}

Result<host::LayerState> DxfDatabase::layerState(std::wstring_view layer) {
  dxf::RecordId r = dxf::findTableEntry(drawing_, "LAYER", layer);
  if (r == dxf::kNoRecord)
    return Status::notFound("layer '" + base::toUtf8(layer) + "' does not exist");
  dxf::LayerState state = dxf::layerState(drawing_, r);
  host::LayerState out;
  out.frozen = state.frozen;
  out.locked = state.locked;
  out.off = state.off;
  return out;
}

void DxfDatabase::addReactor(host::DatabaseReactor* reactor) { reactors_.push_back(reactor); }

void DxfDatabase::removeReactor(host::DatabaseReactor* reactor) {
  reactors_.erase(std::remove(reactors_.begin(), reactors_.end(), reactor), reactors_.end());
}

// --- Resources from other files.

static_assert(host::kResourceBlocks == dxf::resource::kBlocks &&
              host::kResourceDimensionStyles == dxf::resource::kDimensionStyles &&
              host::kResourceLayers == dxf::resource::kLayers &&
              host::kResourceLayouts == dxf::resource::kLayouts &&
              host::kResourceLinetypes == dxf::resource::kLinetypes &&
              host::kResourceMLeaderStyles == dxf::resource::kMLeaderStyles &&
              host::kResourceMlineStyles == dxf::resource::kMlineStyles &&
              host::kResourcePatterns == dxf::resource::kPatterns &&
              host::kResourceTextStyles == dxf::resource::kTextStyles);

Result<host::ResourceNames> DxfDatabase::importResources(const std::wstring& path, uint32_t mask,
                                                         const host::ResourceNames& needed) {
  return dxf::importResourceFile(drawing_, patterns_, base::toUtf8(path), mask, needed);
}

const dxf::PatternDefinition* DxfDatabase::pattern(std::wstring_view name) const {
  for (const dxf::PatternDefinition& known : patterns_) {
    if (dxf::sameName(known.name, name)) return &known;
  }
  return nullptr;
}

}  // namespace headless
