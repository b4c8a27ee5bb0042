#include "catalogue/table_definition.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <optional>

#include "base/crt_numbers.h"
#include "base/text_case.h"

namespace catalogue {

namespace {

// A text converted to a field's type, for comparing list values. A point text that is not
// three numbers converts to the integer 0, as record values do.
struct Converted {
  FieldType type = FieldType::kNone;
  std::array<double, 3> v{};
  bool operator==(const Converted&) const = default;
};

Converted convert(FieldType type, const std::wstring& text) {
  Converted out;
  switch (type) {
    case FieldType::kInteger:
      out.type = type;
      out.v[0] = base::wtoi(text);
      break;
    case FieldType::kReal:
      out.type = type;
      out.v[0] = base::wtof(text);
      break;
    case FieldType::kPoint:
      if (std::swscanf(text.c_str(), L"%lf,%lf,%lf", &out.v[0], &out.v[1], &out.v[2]) == 3) {
        out.type = type;
      } else {
        out = Converted{FieldType::kInteger, {}};
      }
      break;
    default:
      break;
  }
  return out;
}

// x, y and z of a point text: before the first comma, between the first and the last, and
// after the last. Nothing without two commas.
std::optional<std::array<double, 3>> pointCoordinates(std::wstring_view text) {
  size_t first = text.find(L',');
  size_t last = text.rfind(L',');
  if (first == std::wstring_view::npos || first == last) return std::nullopt;
  return std::array<double, 3>{base::wtof(text.substr(0, first)),
                               base::wtof(text.substr(first + 1, last - first - 1)),
                               base::wtof(text.substr(last + 1))};
}

bool isListValid(const FieldDefinition& field) {
  if (field.type == FieldType::kCharacter) {
    return std::any_of(field.allowed.begin(), field.allowed.end(), [&](const std::wstring& a) {
      return base::equalsIgnoringCase(a, field.value);
    });
  }
  Converted value = convert(field.type, field.value);
  return std::any_of(field.allowed.begin(), field.allowed.end(),
                     [&](const std::wstring& a) { return convert(field.type, a) == value; });
}

bool isRangeValid(const FieldDefinition& field) {
  if (field.allowed.size() != 2) return false;
  const std::wstring& min = field.allowed.front();
  const std::wstring& max = field.allowed.back();
  switch (field.type) {
    case FieldType::kCharacter: {
      std::wstring value = base::lowerCase(field.value);
      return base::lowerCase(min) <= value && value <= base::lowerCase(max);
    }
    case FieldType::kInteger:
    case FieldType::kReal: {
      double value = base::wtof(field.value);
      return base::wtof(min) <= value && value <= base::wtof(max);
    }
    case FieldType::kPoint: {
      auto lo = pointCoordinates(min), value = pointCoordinates(field.value),
           hi = pointCoordinates(max);
      if (!lo || !value || !hi) return false;
      for (size_t i = 0; i < 3; ++i) {
        if (!((*lo)[i] <= (*value)[i] && (*value)[i] <= (*hi)[i])) return false;
      }
      return true;
    }
    default:
      return false;
  }
}

}  // namespace

bool isFieldValid(const FieldDefinition& field) {
  if (field.type == FieldType::kNone) return false;
  switch (field.kind) {
    case ValueKind::kList:
      return isListValid(field);
    case ValueKind::kRange:
      return isRangeValid(field);
    default:
      return true;
  }
}

bool isWellFormed(const TableDefinition& table) {
  if (table.fields.empty()) return false;
  size_t keys = 0;
  for (const FieldDefinition& field : table.fields) {
    if (field.kind == ValueKind::kKey) {
      ++keys;
    } else if (!isFieldValid(field)) {
      return false;
    }
  }
  return keys == 1;
}

}  // namespace catalogue
