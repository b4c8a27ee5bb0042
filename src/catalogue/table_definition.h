// The object-data tables of a class as the class file declares them, and the validity of
// their fields.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace catalogue {

// Numbered as the stored definitions and record values number them.
enum class FieldType : uint32_t { kNone = 0, kInteger = 1, kReal = 2, kCharacter = 3, kPoint = 4 };

enum class ValueKind : uint32_t {
  kFree = 0,     // no default
  kKey = 1,      // the key field: character, value kKeyFieldTemplate
  kList = 2,     // a default and the list of allowed values
  kRange = 3,    // a default and a range: allowed holds the minimum, then the maximum
  kDefault = 4,  // a default only
};

// Field flag bits.
inline constexpr uint32_t kFieldConst = 1;
inline constexpr uint32_t kFieldNotEmpty = 2;
inline constexpr uint32_t kFieldRequired = 4;

// The value of every key field: replaced by the class name when a record is made.
inline constexpr std::wstring_view kKeyFieldTemplate = L"$(obj_name)";

// Longest names the class file accepts, in UTF-16 code units.
inline constexpr size_t kMaxFieldName = 31;
inline constexpr size_t kMaxTableName = 25;

struct FieldDefinition {
  std::wstring description;
  ValueKind kind = ValueKind::kFree;
  std::wstring name;
  uint32_t flags = 0;
  FieldType type = FieldType::kNone;
  // The default value, or kKeyFieldTemplate for the key field.
  std::wstring value;
  std::vector<std::wstring> allowed;

  bool operator==(const FieldDefinition&) const = default;
};

struct TableDefinition {
  std::wstring name;  // as written
  std::vector<FieldDefinition> fields;

  bool operator==(const TableDefinition&) const = default;
};

// Whether the default of `field` fits its type and its allowed values. Free, key and
// default-only fields are valid when they have a type. A list field is valid when its
// default is one of the allowed values (characters compared without regard to case,
// numbers and points after conversion to the field's type); a range field when the default
// lies between the minimum and the maximum (characters in case-insensitive text order,
// numbers read as reals, points coordinate by coordinate).
bool isFieldValid(const FieldDefinition& field);

// A table is well formed when it has at least one field, exactly one key field, and every
// other field is valid.
bool isWellFormed(const TableDefinition& table);

}  // namespace catalogue
