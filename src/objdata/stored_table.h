// The table definitions a drawing stores: the dictionary "VELEMUDATA" of the named-objects
// dictionary holds one XRECORD per table, keyed by the table name, made of pairs
// (code 1 field name, typed placeholder whose code gives the field type).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/database.h"
#include "host/document.h"

namespace objdata {

// Status codes of the record operations.
inline constexpr int kStatusOk = 0;
inline constexpr int kStatusOpenFailed = 3;  // an object could not be opened while reading
inline constexpr int kStatusNothing = 11;    // nothing there: no dictionary, no such key
inline constexpr int kStatusKeyExists = 20;  // the key is taken already

// Field and value types; the numbering is also the catalogue's field types.
enum class ValueType : uint32_t { kNone = 0, kInteger = 1, kReal = 2, kCharacter = 3, kPoint = 4 };

inline constexpr wchar_t kTableDictionaryName[] = L"VELEMUDATA";

struct StoredField {
  std::wstring name;
  ValueType type = ValueType::kNone;
  bool operator==(const StoredField&) const = default;
};

// A table definition as a drawing stores it.
struct StoredTable {
  std::wstring name;  // the dictionary key, as the drawing spells it
  host::ObjectId xrecord;
  std::vector<StoredField> fields;
};

// The table dictionary of `database`, or the null id when the drawing has none yet. Never
// creates it: reading must not change the drawing.
host::ObjectId findTableDictionary(host::Database& database);

// With `mode` 7, appends the name of every stored table, in dictionary order, to `names`;
// any other mode, or a drawing without the dictionary, appends nothing. Returns kStatusOk.
int listStoredTables(host::Database& database, std::vector<std::wstring>& names, int mode);

// Reads the stored table `name` (compared without regard to case) of the table dictionary
// `dictionary`. Pairs whose placeholder has a code other than 1, 10, 40 or 90, and names
// already read (compared without regard to case), are skipped. Returns kStatusNothing when
// the dictionary or the key is absent, kStatusOpenFailed when the XRECORD cannot be read.
int readStoredTable(host::Database& database, host::ObjectId dictionary, std::wstring_view name,
                    StoredTable& table);

bool hasStoredTable(host::Database& database, host::ObjectId dictionary, std::wstring_view name);

// The table dictionary of the document's database, made (under the document's lock) when
// missing. The null id when the drawing cannot hold dictionaries.
host::ObjectId getTableDictionary(host::Document& document);

// Stores the definition of table `name`: per field its name (code 1) and a zero
// placeholder whose code gives its type (90, 40, 1 with empty text, 10). Returns
// kStatusKeyExists, changing nothing, when the table is stored already, kStatusNothing when
// the XRECORD cannot be made.
int writeStoredTable(host::Database& database, host::ObjectId dictionary, std::wstring_view name,
                     const std::vector<StoredField>& fields);

// Stores table `name` unless it is stored: 0 when it was there (nothing written), 2 when it
// was written, 1 when the write was refused. A field whose name repeats an earlier one
// (without regard to case) is left out; the first wins. A stored table is never rewritten.
int ensureStoredTable(host::Database& database, host::ObjectId dictionary, std::wstring_view name,
                      const std::vector<StoredField>& fields);

}  // namespace objdata
