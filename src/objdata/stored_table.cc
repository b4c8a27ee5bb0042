#include "objdata/stored_table.h"

#include <algorithm>

#include "base/text_case.h"

namespace objdata {

namespace {

ValueType typeOfCode(int code) {
  switch (code) {
    case 1:
      return ValueType::kCharacter;
    case 10:
      return ValueType::kPoint;
    case 40:
      return ValueType::kReal;
    case 90:
      return ValueType::kInteger;
    default:
      return ValueType::kNone;
  }
}

}  // namespace

host::ObjectId findTableDictionary(host::Database& database) {
  host::ObjectId root = database.namedObjectsDictionary();
  if (root.isNull()) return {};
  auto dictionary = database.dictionaryGet(root, kTableDictionaryName);
  return dictionary ? *dictionary : host::ObjectId{};
}

int listStoredTables(host::Database& database, std::vector<std::wstring>& names, int mode) {
  if (mode != 7) return kStatusOk;
  host::ObjectId dictionary = findTableDictionary(database);
  if (dictionary.isNull()) return kStatusOk;
  auto entries = database.dictionaryEntries(dictionary);
  if (!entries) return kStatusOk;
  for (auto& [key, id] : *entries) names.push_back(key);
  return kStatusOk;
}

int readStoredTable(host::Database& database, host::ObjectId dictionary, std::wstring_view name,
                    StoredTable& table) {
  if (dictionary.isNull()) return kStatusNothing;
  auto entries = database.dictionaryEntries(dictionary);
  if (!entries) return kStatusOpenFailed;
  auto entry = std::find_if(entries->begin(), entries->end(),
                            [&](const auto& e) { return base::equalsIgnoringCase(e.first, name); });
  if (entry == entries->end()) return kStatusNothing;
  auto chain = database.readXrecord(entry->second);
  if (!chain) return kStatusOpenFailed;

  table = StoredTable{entry->first, entry->second, {}};
  for (size_t i = 0; i + 1 < chain->size(); i += 2) {
    const auto* field_name = std::get_if<std::wstring>(&(*chain)[i].value);
    ValueType type = typeOfCode((*chain)[i + 1].code);
    if (field_name == nullptr || type == ValueType::kNone) continue;
    bool known = std::any_of(table.fields.begin(), table.fields.end(), [&](const StoredField& f) {
      return base::equalsIgnoringCase(f.name, *field_name);
    });
    if (!known) table.fields.push_back({*field_name, type});
  }
  return kStatusOk;
}

bool hasStoredTable(host::Database& database, host::ObjectId dictionary, std::wstring_view name) {
  if (dictionary.isNull()) return false;
  return database.dictionaryGet(dictionary, name).isOk();
}

namespace {

host::ResBuf placeholder(ValueType type) {
  switch (type) {
    case ValueType::kInteger:
      return host::ResBuf::integer(0);
    case ValueType::kReal:
      return host::ResBuf::real(0.0);
    case ValueType::kPoint:
      return host::ResBuf::point({0, 0, 0});
    default:
      return host::ResBuf::text(L"");
  }
}

}  // namespace

host::ObjectId getTableDictionary(host::Document& document) {
  host::Database& database = document.database();
  // Looked up each time rather than cached per database: the lookup is one entry of a small
  // dictionary, and a cache keyed by database could hand a new drawing a closed one's id.
  host::ObjectId dictionary = findTableDictionary(database);
  if (dictionary.isNull()) {
    host::ObjectId root = database.namedObjectsDictionary();
    if (root.isNull()) return {};
    host::DocumentLock lock(document);
    auto made = database.createDictionary(root, kTableDictionaryName);
    if (!made) return {};
    dictionary = *made;
  }
  return dictionary;
}

int writeStoredTable(host::Database& database, host::ObjectId dictionary, std::wstring_view name,
                     const std::vector<StoredField>& fields) {
  if (hasStoredTable(database, dictionary, name)) return kStatusKeyExists;
  host::ResBufChain chain;
  chain.reserve(fields.size() * 2);
  for (const StoredField& field : fields) {
    chain.push_back(host::ResBuf::text(field.name));
    chain.push_back(placeholder(field.type));
  }
  return database.createXrecordWith(dictionary, name, chain) ? kStatusOk : kStatusNothing;
}

int ensureStoredTable(host::Database& database, host::ObjectId dictionary, std::wstring_view name,
                      const std::vector<StoredField>& fields) {
  if (hasStoredTable(database, dictionary, name)) return 0;
  std::vector<StoredField> unique;
  for (const StoredField& field : fields) {
    bool repeated = std::any_of(unique.begin(), unique.end(), [&](const StoredField& kept) {
      return base::equalsIgnoringCase(kept.name, field.name);
    });
    if (!repeated) unique.push_back(field);
  }
  return writeStoredTable(database, dictionary, name, unique) == kStatusOk ? 2 : 1;
}

}  // namespace objdata
