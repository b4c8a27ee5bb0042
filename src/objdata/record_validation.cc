#include "objdata/record_validation.h"

#include "base/text_case.h"
#include "objdata/classification.h"

namespace objdata {

namespace {

using catalogue::FieldDefinition;
using catalogue::ValueKind;

std::wstring normalised(std::wstring_view text) { return base::lowerCase(text); }

// Whether two values of one type are equal; unset values never are.
bool sameValue(const Value& a, const Value& b) {
  if (a.type != b.type) return false;
  switch (a.type) {
    case ValueType::kInteger:
      return a.integer == b.integer;
    case ValueType::kReal:
      return a.real == b.real;
    case ValueType::kCharacter:
      return normalised(textOrEmpty(a)) == normalised(textOrEmpty(b));
    case ValueType::kPoint:
      return a.point == b.point;
    case ValueType::kNone:
      return false;
  }
  return false;
}

// `text` read as a value of `type`; unset when it cannot be (a point without two commas).
Value valueOfType(ValueType type, std::wstring_view text) {
  Value out;
  out.type = type;
  try {
    assign(out, makeValue(ValueType::kCharacter, text));
  } catch (int) {
    return {};
  }
  return out;
}

bool inRange(const Value& value, std::wstring_view min_text, std::wstring_view max_text) {
  if (value.type == ValueType::kCharacter) {
    std::wstring text = normalised(textOrEmpty(value));
    return !(text < normalised(min_text)) && !(normalised(max_text) < text);
  }
  Value low = valueOfType(value.type, min_text);
  Value high = valueOfType(value.type, max_text);
  switch (value.type) {
    case ValueType::kInteger:
      return low.integer <= value.integer && value.integer <= high.integer;
    case ValueType::kReal:
      return low.real <= value.real && value.real <= high.real;
    case ValueType::kPoint: {
      if (low.type == ValueType::kNone || high.type == ValueType::kNone) return false;
      auto between = [](double v, double a, double b) { return a <= v && v <= b; };
      return between(value.point.x, low.point.x, high.point.x) &&
             between(value.point.y, low.point.y, high.point.y) &&
             between(value.point.z, low.point.z, high.point.z);
    }
    default:
      return false;
  }
}

bool fieldKeepsRules(const Value& value, const FieldDefinition& field, const TextExpander& expand) {
  if ((field.flags & catalogue::kFieldNotEmpty) && textOrEmpty(value).empty()) return false;
  switch (field.kind) {
    case ValueKind::kFree:
    case ValueKind::kDefault:
      return true;
    case ValueKind::kKey:
      return value.type != ValueType::kNone &&
             normalised(textOrEmpty(value)) == normalised(expand(field.value));
    case ValueKind::kList:
      for (const std::wstring& allowed : field.allowed) {
        std::wstring text = expand(allowed);
        if (value.type == ValueType::kCharacter ? normalised(textOrEmpty(value)) == normalised(text)
                                                : sameValue(value, makeValue(value.type, text)))
          return true;
      }
      return false;
    case ValueKind::kRange:
      return field.allowed.size() >= 2 && value.type != ValueType::kNone &&
             inRange(value, expand(field.allowed[0]), expand(field.allowed[1]));
  }
  return false;
}

}  // namespace

bool recordKeepsRules(const TableRecord& record, const catalogue::TableDefinition& table,
                      const TextExpander& expand, bool required_only) {
  for (const FieldDefinition& field : table.fields) {
    if (required_only && !(field.flags & catalogue::kFieldRequired)) continue;
    int index = findField(record.fields, field.name);
    if (index < 0) return false;
    if (!fieldKeepsRules(record.fields[index].value, field, expand)) return false;
  }
  return true;
}

}  // namespace objdata
