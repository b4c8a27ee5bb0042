#include "objdata/record_validation.h"

#include <optional>

#include "base/crt_numbers.h"
#include "base/text_case.h"
#include "objdata/classification.h"

namespace objdata {

namespace {

using catalogue::ValueKind;

// The text of a Character value without copying it; empty for other types.
std::wstring_view characterText(const Value& value) {
  return value.type == ValueType::kCharacter && value.text ? std::wstring_view(*value.text)
                                                           : std::wstring_view();
}

bool isEmptyText(const Value& value) {
  if (value.type == ValueType::kNone) return true;
  if (value.type == ValueType::kCharacter) return characterText(value).empty();
  return false;  // numbers and points always print something
}

// Compares lower-case forms character by character: <0, 0 or >0.
int compareIgnoringCase(std::wstring_view a, std::wstring_view b) {
  size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    wchar_t x = base::lowerChar(a[i]);
    wchar_t y = base::lowerChar(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool sameValue(const Value& value, const Value& other) {
  if (value.type != other.type) return false;
  switch (value.type) {
    case ValueType::kInteger:
      return value.integer == other.integer;
    case ValueType::kReal:
      return value.real == other.real;
    case ValueType::kPoint:
      return value.point == other.point;
    default:
      return false;
  }
}

// Whether the value, as text, equals `text` ignoring case.
bool textEquals(const Value& value, std::wstring_view text) {
  if (value.type == ValueType::kCharacter)
    return base::equalsIgnoringCase(characterText(value), text);
  return value.type != ValueType::kNone && base::equalsIgnoringCase(textOrEmpty(value), text);
}

bool pointBetween(const Value& value, std::wstring_view min_text, std::wstring_view max_text) {
  Value low, high;
  low.type = high.type = ValueType::kPoint;
  try {
    assign(low, makeValue(ValueType::kCharacter, min_text));
    assign(high, makeValue(ValueType::kCharacter, max_text));
  } catch (int) {
    return false;
  }
  auto between = [](double v, double a, double b) { return a <= v && v <= b; };
  return between(value.point.x, low.point.x, high.point.x) &&
         between(value.point.y, low.point.y, high.point.y) &&
         between(value.point.z, low.point.z, high.point.z);
}

bool inRange(const Value& value, const FieldRules& field) {
  switch (value.type) {
    case ValueType::kCharacter: {
      std::wstring_view text = characterText(value);
      return compareIgnoringCase(text, field.texts[0]) >= 0 &&
             compareIgnoringCase(text, field.texts[1]) <= 0;
    }
    case ValueType::kInteger:
      return field.integers[0] <= value.integer && value.integer <= field.integers[1];
    case ValueType::kReal:
      return field.reals[0] <= value.real && value.real <= field.reals[1];
    case ValueType::kPoint:
      return pointBetween(value, field.texts[0], field.texts[1]);
    case ValueType::kNone:
      return false;
  }
  return false;
}

bool inList(const Value& value, const FieldRules& field) {
  for (size_t i = 0; i < field.texts.size(); ++i) {
    switch (value.type) {
      case ValueType::kCharacter:
        if (textEquals(value, field.texts[i])) return true;
        break;
      case ValueType::kInteger:
        if (value.integer == field.integers[i]) return true;
        break;
      case ValueType::kReal:
        if (value.real == field.reals[i]) return true;
        break;
      default:
        if (sameValue(value, makeValue(value.type, field.texts[i]))) return true;
        break;
    }
  }
  return false;
}

// The rule the value breaks, or nothing.
std::optional<BrokenRule> brokenRule(const Value& value, const FieldRules& field) {
  if ((field.flags & catalogue::kFieldNotEmpty) && isEmptyText(value)) return BrokenRule::kEmpty;
  switch (field.kind) {
    case ValueKind::kFree:
    case ValueKind::kDefault:
      return std::nullopt;
    case ValueKind::kKey:
      if (!field.texts.empty() && textEquals(value, field.texts[0])) return std::nullopt;
      return BrokenRule::kWrongKey;
    case ValueKind::kList:
      if (inList(value, field)) return std::nullopt;
      return BrokenRule::kNotAllowed;
    case ValueKind::kRange:
      if (field.texts.size() >= 2 && inRange(value, field)) return std::nullopt;
      return BrokenRule::kOutOfRange;
  }
  return BrokenRule::kNotAllowed;
}

}  // namespace

std::vector<FieldRules> compileRules(const catalogue::TableDefinition& table,
                                     const TextExpander& expand) {
  std::vector<FieldRules> rules;
  rules.reserve(table.fields.size());
  for (const catalogue::FieldDefinition& field : table.fields) {
    FieldRules& rule = rules.emplace_back();
    rule.name = field.name;
    rule.flags = field.flags;
    rule.kind = field.kind;
    if (field.kind == ValueKind::kKey) {
      rule.texts.push_back(expand(field.value));
    } else if (field.kind == ValueKind::kList || field.kind == ValueKind::kRange) {
      for (const std::wstring& allowed : field.allowed) rule.texts.push_back(expand(allowed));
    }
    for (const std::wstring& text : rule.texts) {
      rule.integers.push_back(base::wtoi(text));
      rule.reals.push_back(base::wtof(text));
    }
  }
  return rules;
}

bool checkRecord(const TableRecord& record, const std::vector<FieldRules>& rules,
                 bool required_only, std::vector<FieldFinding>* findings) {
  bool kept = true;
  for (size_t i = 0; i < rules.size(); ++i) {
    const FieldRules& field = rules[i];
    if (required_only && !(field.flags & catalogue::kFieldRequired)) continue;
    // Records are mostly stored in the order the class file declares: look there first.
    int index =
        i < record.fields.size() && base::equalsIgnoringCase(record.fields[i].name, field.name)
            ? static_cast<int>(i)
            : findField(record.fields, field.name);
    std::optional<BrokenRule> broken =
        index < 0 ? BrokenRule::kFieldMissing : brokenRule(record.fields[index].value, field);
    if (!broken) continue;
    kept = false;
    if (!findings) return false;
    findings->push_back(
        {*broken, field.name, index < 0 ? std::wstring() : textOrEmpty(record.fields[index].value)});
  }
  return kept;
}

bool recordKeepsRules(const TableRecord& record, const catalogue::TableDefinition& table,
                      const TextExpander& expand, bool required_only) {
  return recordKeepsRules(record, compileRules(table, expand), required_only);
}

}  // namespace objdata
