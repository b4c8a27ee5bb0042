// Typed values of object-data records and the conversions between value types. A failed
// conversion throws a plain int (kConversionFailed or kNotAPoint) so that it unwinds to the
// command, which decides what to report.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "objdata/stored_table.h"

namespace objdata {

// Thrown codes.
inline constexpr int kConversionFailed = 6;  // no conversion between the two types
inline constexpr int kNotAPoint = 11;        // a text to be read as a point has under two commas

struct Point {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;
  bool operator==(const Point&) const = default;
};

// A typed value. Only the member matching `type` is meaningful; for a Character value the
// text is the value, and a null text (std::nullopt) is distinct from an empty one.
struct Value {
  ValueType type = ValueType::kNone;
  int32_t integer = 0;
  double real = 0.0;
  Point point;
  std::optional<std::wstring> text;
};

struct FieldValue {
  std::wstring name;
  // Copied along with the field but never read or written to a drawing; null by default.
  std::optional<std::wstring> extra;
  Value value;
};

// One record of an entity: its table and the field values in stored-table order.
struct TableRecord {
  std::wstring table_name;
  std::vector<FieldValue> fields;
};

// Parses `text` as a value of `type`: Integer and Real as _wtoi/_wtof, Character as a copy,
// Point as "x,y,z" (anything not giving exactly three numbers yields Integer 0). Any other
// type gives an unset value.
Value makeValue(ValueType type, std::wstring_view text);

// Converts `source` into the type of `destination`. An unset destination takes the
// source's type and payload as they are (for a Character source with a null text, only the
// type). Throws kConversionFailed or kNotAPoint.
void assign(Value& destination, const Value& source);

// Conversions of a value; each throws kConversionFailed where no conversion exists, and
// asPoint throws kNotAPoint for a text without two distinct commas. asInteger of an unset
// value is 0; asText of it throws.
int32_t asInteger(const Value& value);
double asReal(const Value& value);
std::wstring asText(const Value& value);
Point asPoint(const Value& value);

// Index of the first field named `name` (compared without regard to case), or -1.
int findField(const std::vector<FieldValue>& fields, std::wstring_view name);

}  // namespace objdata
