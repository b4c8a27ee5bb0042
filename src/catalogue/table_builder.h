// Tables and fields as `vel_name`, `vel_key` and `vel_fld` lines declare them, and the tests
// a table passes when it is closed: agreement with the drawing's stored definition and with
// the tables other classes declared.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/macro_table.h"
#include "catalogue/table_definition.h"
#include "objdata/stored_table.h"

namespace catalogue {

// The key field `name`: character, no flags, value kKeyFieldTemplate.
FieldDefinition makeKeyField(std::wstring name);

// The field of a `vel_fld` line, `tokens` being the line's 4 to 6 tokens (keyword, FIELD,
// DESCRIPTION, TYPESPEC, [DEFAULT, [VALUES]]). TYPESPEC is read lower-cased as words
// separated by blanks: the last is the type (character, integer, real), those before it
// flags (const, notempty, required). VALUES is cut at every colon and comma: one colon makes
// a range of exactly two values, anything else a list. The default and allowed values are
// trimmed and expanded with `macros`. Nothing when the type, a flag or the range is wrong.
std::optional<FieldDefinition> makeField(const std::vector<std::wstring>& tokens,
                                         MacroTable& macros);

// Whether `table` declares what the drawing stored for it: the same fields, by name without
// regard to case and by type, in order. Fields that repeat an earlier name in another case
// are left out first, as the stored definition leaves them out.
bool matchesStoredTable(const TableDefinition& table, const objdata::StoredTable& stored);

// The tables closed so far, to tell a table that repeats another from one that contradicts
// it.
class TableCollection {
 public:
  enum class Result {
    kCollected,
    kAlreadyCollected,  // an identical table (same name as written, equal fields) was seen
    kConflict,          // a table of the same name in any case has other field names or types
  };
  Result add(const TableDefinition& table);

 private:
  std::map<std::wstring, std::vector<TableDefinition>> tables_;  // by lower-case name
};

}  // namespace catalogue
