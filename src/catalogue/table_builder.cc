#include "catalogue/table_builder.h"

#include <algorithm>

#include "base/text_case.h"

namespace catalogue {

namespace {

std::wstring trimValue(std::wstring_view text) {
  size_t first = text.find_first_not_of(L' ');
  if (first == std::wstring_view::npos) return {};
  size_t last = text.find_last_not_of(L" \n\r");
  return std::wstring(text.substr(first, last - first + 1));
}

std::wstring fieldValue(std::wstring_view text, MacroTable& macros) {
  std::wstring value = trimValue(text);
  macros.expand(value);
  return value;
}

// Reads TYPESPEC into `field`; false for an unknown word or a missing type.
bool readTypeSpec(std::wstring_view type_spec, FieldDefinition& field) {
  std::wstring lower = base::lowerCase(type_spec);
  std::vector<std::wstring_view> words;
  std::wstring_view rest = lower;
  while (!rest.empty()) {
    size_t blank = std::min(rest.find(L' '), rest.size());
    if (blank > 0) words.push_back(rest.substr(0, blank));
    rest.remove_prefix(std::min(blank + 1, rest.size()));
  }
  if (words.empty()) return false;
  std::wstring_view type = words.back();
  if (type == L"character") {
    field.type = FieldType::kCharacter;
  } else if (type == L"integer") {
    field.type = FieldType::kInteger;
  } else if (type == L"real") {
    field.type = FieldType::kReal;
  } else {
    return false;
  }
  for (size_t i = 0; i + 1 < words.size(); ++i) {
    if (words[i] == L"const") {
      field.flags |= kFieldConst;
    } else if (words[i] == L"notempty") {
      field.flags |= kFieldNotEmpty;
    } else if (words[i] == L"required") {
      field.flags |= kFieldRequired;
    } else {
      return false;
    }
  }
  return true;
}

bool sameShape(const TableDefinition& a, const TableDefinition& b) {
  return a.fields.size() == b.fields.size() &&
         std::equal(a.fields.begin(), a.fields.end(), b.fields.begin(),
                    [](const FieldDefinition& x, const FieldDefinition& y) {
                      return x.type == y.type && base::equalsIgnoringCase(x.name, y.name);
                    });
}

}  // namespace

FieldDefinition makeKeyField(std::wstring name) {
  FieldDefinition field;
  field.kind = ValueKind::kKey;
  field.name = std::move(name);
  field.type = FieldType::kCharacter;
  field.value = kKeyFieldTemplate;
  return field;
}

std::optional<FieldDefinition> makeField(const std::vector<std::wstring>& tokens,
                                         MacroTable& macros) {
  FieldDefinition field;
  field.name = tokens[1];
  field.description = trimValue(tokens[2]);
  if (!readTypeSpec(tokens[3], field)) return std::nullopt;
  if (tokens.size() == 4) return field;
  field.value = fieldValue(tokens[4], macros);
  if (tokens.size() == 5) {
    field.kind = ValueKind::kDefault;
    return field;
  }
  std::wstring_view values = tokens[5];
  size_t colons = std::count(values.begin(), values.end(), L':');
  size_t start = 0;
  for (;;) {
    size_t cut = values.find_first_of(L":,", start);
    field.allowed.push_back(fieldValue(values.substr(start, cut - start), macros));
    if (cut == std::wstring_view::npos) break;
    start = cut + 1;
  }
  field.kind = colons == 1 ? ValueKind::kRange : ValueKind::kList;
  if (field.kind == ValueKind::kRange && field.allowed.size() != 2) return std::nullopt;
  return field;
}

bool matchesStoredTable(const TableDefinition& table, const objdata::StoredTable& stored) {
  std::vector<const FieldDefinition*> fields;
  for (const FieldDefinition& field : table.fields) {
    bool repeated = std::any_of(fields.begin(), fields.end(), [&](const FieldDefinition* f) {
      return base::equalsIgnoringCase(f->name, field.name);
    });
    if (!repeated) fields.push_back(&field);
  }
  return fields.size() == stored.fields.size() &&
         std::equal(fields.begin(), fields.end(), stored.fields.begin(),
                    [](const FieldDefinition* f, const objdata::StoredField& s) {
                      return static_cast<uint32_t>(f->type) == static_cast<uint32_t>(s.type) &&
                             base::equalsIgnoringCase(f->name, s.name);
                    });
}

TableCollection::Result TableCollection::add(const TableDefinition& table) {
  std::vector<TableDefinition>& same_name = tables_[base::lowerCase(table.name)];
  if (std::find(same_name.begin(), same_name.end(), table) != same_name.end()) {
    return Result::kAlreadyCollected;
  }
  for (const TableDefinition& other : same_name) {
    if (!sameShape(other, table)) return Result::kConflict;
  }
  same_name.push_back(table);
  return Result::kCollected;
}

}  // namespace catalogue
