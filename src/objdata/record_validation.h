// The rules a record's values keep when they are valid for their class: required and
// non-empty fields, fixed values, allowed lists and ranges.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "catalogue/table_definition.h"
#include "objdata/value.h"

namespace objdata {

// Expands the variables of a default or allowed text for the record's class.
using TextExpander = std::function<std::wstring(std::wstring_view)>;

// Whether `record` keeps the rules of every field of `table` (only the required fields
// with `required_only`): the field is stored; a not-empty field's text is not empty; a key
// field holds its expanded value; a list field one of its expanded allowed values; a range
// field lies between its expanded minimum and maximum, both included. Texts compare
// without regard to case; numbers and points as values of the record's type. Default-only
// and free fields take any value.
bool recordKeepsRules(const TableRecord& record, const catalogue::TableDefinition& table,
                      const TextExpander& expand, bool required_only);

}  // namespace objdata
