#include "objdata/value.h"

#include <climits>
#include <cwchar>

#include "base/crt_numbers.h"
#include "base/text_case.h"

namespace objdata {

namespace {

// Large enough for "%.12lf" of the largest double (309 digits before the point).
constexpr size_t kFormatBufferSize = 512;

std::wstring format(const wchar_t* pattern, auto... args) {
  wchar_t buffer[kFormatBufferSize];
  int written = std::swprintf(buffer, kFormatBufferSize, pattern, args...);
  return written < 0 ? std::wstring() : std::wstring(buffer, static_cast<size_t>(written));
}

// Reals are written with twelve decimals, then trailing zeros go but one digit stays after
// the point so that the text still reads as a real.
std::wstring realText(double real) {
  std::wstring text = format(L"%.12lf", real);
  size_t point = text.find(L'.');
  if (point == std::wstring::npos) return text;  // inf, nan
  size_t last = text.find_last_not_of(L'0');
  if (last == point) last = point + 1;
  text.erase(last + 1);
  return text;
}

// Truncation toward zero; anything not representable (NaN too) gives INT_MIN, as the
// processor's own conversion does.
int32_t truncateReal(double real) {
  if (!(real > -2147483649.0 && real < 2147483648.0)) return INT_MIN;
  return static_cast<int32_t>(real);
}

std::wstring_view textOf(const Value& value) {
  return value.text ? std::wstring_view(*value.text) : std::wstring_view();
}

Point textToPoint(std::wstring_view text) {
  size_t first = text.find(L',');
  size_t last = text.rfind(L',');
  if (first == last) throw kNotAPoint;  // no comma, or only one
  return Point{base::wtof(text.substr(0, first)),
               base::wtof(text.substr(first + 1, last - first - 1)),
               base::wtof(text.substr(last + 1))};
}

}  // namespace

Value makeValue(ValueType type, std::wstring_view text) {
  Value value;
  switch (type) {
    case ValueType::kInteger:
      value.type = type;
      value.integer = base::wtoi(text);
      break;
    case ValueType::kReal:
      value.type = type;
      value.real = base::wtof(text);
      break;
    case ValueType::kCharacter:
      value.type = type;
      value.text = std::wstring(text);
      break;
    case ValueType::kPoint: {
      std::wstring copy(text);  // swscanf needs a terminated string
      Point point;
      if (std::swscanf(copy.c_str(), L"%lf,%lf,%lf", &point.x, &point.y, &point.z) == 3) {
        value.type = type;
        value.point = point;
      } else {
        // A malformed point quietly becomes Integer 0, unlike assign, which throws.
        value.type = ValueType::kInteger;
        value.integer = 0;
      }
      break;
    }
    default:
      break;
  }
  return value;
}

void assign(Value& destination, const Value& source) {
  switch (destination.type) {
    case ValueType::kNone:
      destination.type = source.type;
      if (source.type == ValueType::kCharacter) {
        if (source.text) destination.text = source.text;
      } else {
        destination.integer = source.integer;
        destination.real = source.real;
        destination.point = source.point;
      }
      return;
    case ValueType::kInteger:
      destination.integer = asInteger(source);
      return;
    case ValueType::kReal:
      destination.real = asReal(source);
      return;
    case ValueType::kCharacter:
      destination.text = asText(source);
      return;
    case ValueType::kPoint:
      destination.point = asPoint(source);
      return;
  }
  throw kConversionFailed;
}

int32_t asInteger(const Value& value) {
  switch (value.type) {
    case ValueType::kNone:
      return 0;
    case ValueType::kInteger:
      return value.integer;
    case ValueType::kReal:
      return truncateReal(value.real);
    case ValueType::kCharacter:
      return base::wtoi(textOf(value));
    default:
      throw kConversionFailed;
  }
}

double asReal(const Value& value) {
  switch (value.type) {
    case ValueType::kInteger:
      return value.integer;
    case ValueType::kReal:
      return value.real;
    case ValueType::kCharacter:
      return base::wtof(textOf(value));
    default:
      throw kConversionFailed;
  }
}

std::wstring asText(const Value& value) {
  switch (value.type) {
    case ValueType::kInteger:
      return format(L"%i", value.integer);
    case ValueType::kReal:
      return realText(value.real);
    case ValueType::kCharacter:
      return std::wstring(textOf(value));
    case ValueType::kPoint:
      return format(L"%lf,%lf,%lf", value.point.x, value.point.y, value.point.z);
    default:
      throw kConversionFailed;
  }
}

Point asPoint(const Value& value) {
  switch (value.type) {
    case ValueType::kCharacter:
      return textToPoint(textOf(value));
    case ValueType::kPoint:
      return value.point;
    default:
      throw kConversionFailed;
  }
}

int findField(const std::vector<FieldValue>& fields, std::wstring_view name) {
  for (size_t i = 0; i < fields.size(); ++i) {
    if (base::equalsIgnoringCase(fields[i].name, name)) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace objdata
