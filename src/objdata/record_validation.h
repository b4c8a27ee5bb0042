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

// Whether `record` keeps the rules of every field (only the required fields with
// `required_only`): the field is stored; a not-empty field's text is not empty; a key field
// holds its value; a list field one of its allowed values; a range field lies between its
// minimum and maximum, both included. Texts compare without regard to case; numbers and
// points as values of the record's type. Default-only and free fields take any value.
bool recordKeepsRules(const TableRecord& record, const std::vector<FieldRules>& rules,
                      bool required_only);

// The same, compiling the rules of `table` first.
bool recordKeepsRules(const TableRecord& record, const catalogue::TableDefinition& table,
                      const TextExpander& expand, bool required_only);

}  // namespace objdata
