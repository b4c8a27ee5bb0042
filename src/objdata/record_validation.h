// The rules a record's values keep when they are valid for their class: required and
// non-empty fields, fixed values, allowed lists and ranges.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/table_definition.h"
#include "objdata/value.h"

namespace objdata {

// Expands the variables of a default or allowed text for the record's class.
using TextExpander = std::function<std::wstring(std::wstring_view)>;

// The rules of one field with their texts expanded for one class, made once and applied to
// many records.
struct FieldRules {
  std::wstring name;
  uint32_t flags = 0;
  catalogue::ValueKind kind = catalogue::ValueKind::kFree;
  // Key field: its value; list: the allowed values; range: the minimum and the maximum.
  std::vector<std::wstring> texts;
  // The texts read as integers and as reals, for records whose values are numbers.
  std::vector<int32_t> integers;
  std::vector<double> reals;
};

std::vector<FieldRules> compileRules(const catalogue::TableDefinition& table,
                                     const TextExpander& expand);

// A rule a record breaks.
enum class BrokenRule : uint8_t {
  kNoRecord,      // the entity carries no record of the table that names the class
  kFieldMissing,  // the drawing's table has no such field
  kEmpty,         // a not-empty field is empty
  kWrongKey,      // a key field does not name the class
  kNotAllowed,    // a list field holds none of its allowed values
  kOutOfRange,    // a range field lies outside its minimum and maximum
};

// One rule broken by one field of a record (no field for kNoRecord).
struct FieldFinding {
  BrokenRule rule = BrokenRule::kNoRecord;
  std::wstring field;
  std::wstring value;  // the field's value as text; empty when unset
};

// Checks `record` against the rules of every field (only the required fields with
// `required_only`): the field is stored; a not-empty field's text is not empty; a key field
// holds its value; a list field one of its allowed values; a range field lies between its
// minimum and maximum, both included. Texts compare without regard to case; numbers and
// points as values of the record's type. Default-only and free fields take any value.
// True when every rule is kept. With `findings`, every broken rule is appended to it;
// without, the check stops at the first.
bool checkRecord(const TableRecord& record, const std::vector<FieldRules>& rules,
                 bool required_only, std::vector<FieldFinding>* findings = nullptr);

inline bool recordKeepsRules(const TableRecord& record, const std::vector<FieldRules>& rules,
                             bool required_only) {
  return checkRecord(record, rules, required_only);
}

// The same, compiling the rules of `table` first.
bool recordKeepsRules(const TableRecord& record, const catalogue::TableDefinition& table,
                      const TextExpander& expand, bool required_only);

}  // namespace objdata
