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

}  // namespace objdata
