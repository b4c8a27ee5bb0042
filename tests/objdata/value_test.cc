#include "objdata/value.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

namespace objdata {
namespace {

Value typed(ValueType type) {
  Value v;
  v.type = type;
  return v;
}
Value integerValue(int32_t i) { return {ValueType::kInteger, i, 0.0, {}, {}}; }
Value realValue(double d) { return {ValueType::kReal, 0, d, {}, {}}; }
Value textValue(std::wstring s) { return {ValueType::kCharacter, 0, 0.0, {}, std::move(s)}; }
Value pointValue(double x, double y, double z) {
  return {ValueType::kPoint, 0, 0.0, {x, y, z}, {}};
}
Value nullTextValue() { return typed(ValueType::kCharacter); }

constexpr int kNoThrow = -1;

// Returns the code thrown by `f`, or kNoThrow.
template <typename F>
int thrownCode(F f) {
  try {
    f();
  } catch (int code) {
    return code;
  }
  return kNoThrow;
}

// Every field, reals bit for bit: a conversion must touch nothing it does not convert.
void expectSame(const Value& got, const Value& want) {
  EXPECT_EQ(got.type, want.type);
  EXPECT_EQ(got.integer, want.integer);
  EXPECT_EQ(got.real, want.real);
  EXPECT_EQ(got.point, want.point);
  EXPECT_EQ(got.text, want.text);
}

// Numbers are read as the conversions from text read them (ConversionTest).
TEST(MakeValueTest, ParsesEachType) {
  struct Case {
    ValueType type;
    std::wstring text;
    Value want;
  };
  const Case cases[] = {
      {ValueType::kInteger, L"42", integerValue(42)},
      {ValueType::kInteger, L"3.9", integerValue(3)},
      {ValueType::kReal, L"2.5", realValue(2.5)},
      {ValueType::kPoint, L"1,2,3", pointValue(1, 2, 3)},
      {ValueType::kPoint, L"1.5, -2, 3e1", pointValue(1.5, -2, 30)},
      // The quiet fallback: a point text that does not give three numbers is Integer 0.
      {ValueType::kPoint, L"1,2", integerValue(0)},
      {ValueType::kPoint, L"", integerValue(0)},
      {ValueType::kCharacter, L" Ab, 1 ", textValue(L" Ab, 1 ")},
      {ValueType::kNone, L"5", Value{}},
      {static_cast<ValueType>(9), L"5", Value{}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(c.type) << " " << c.text);
    expectSame(makeValue(c.type, c.text), c.want);
  }
}

// asInteger, asReal, asText and asPoint over every type of source, and assign into a
// destination of the target type, which converts alike and is left as it was by a throw.
TEST(ConversionTest, ConvertsOrThrowsFromEachType) {
  const Value to_integer = typed(ValueType::kInteger), to_real = typed(ValueType::kReal),
              to_text = typed(ValueType::kCharacter), to_point = typed(ValueType::kPoint);
  struct Case {
    const char* name;
    Value source;
    Value want;  // of the target type; for a throw, only that type counts
    int code = kNoThrow;
  };
  const Case cases[] = {
      {"unset", Value{}, integerValue(0)},
      {"integer", integerValue(-12), integerValue(-12)},
      {"real positive", realValue(2.9), integerValue(2)},
      {"real negative truncates toward zero", realValue(-2.9), integerValue(-2)},
      {"real max", realValue(2147483647.9), integerValue(INT_MAX)},
      {"real min", realValue(-2147483648.9), integerValue(INT_MIN)},
      {"real too big", realValue(2147483648.0), integerValue(INT_MIN)},
      {"text", textValue(L" 17abc"), integerValue(17)},
      {"text not a number", textValue(L"abc"), integerValue(0)},
      {"text real", textValue(L"-3.7"), integerValue(-3)},
      {"null text", nullTextValue(), integerValue(0)},
      {"point", pointValue(1, 2, 3), to_integer, kConversionFailed},

      {"integer", integerValue(-5), realValue(-5.0)},
      {"real", realValue(0.125), realValue(0.125)},
      {"text", textValue(L" 2.75m"), realValue(2.75)},
      {"text not a number", textValue(L"m"), realValue(0.0)},
      {"null text", nullTextValue(), realValue(0.0)},
      {"point", pointValue(1, 2, 3), to_real, kConversionFailed},
      {"unset", Value{}, to_real, kConversionFailed},

      {"integer", integerValue(42), textValue(L"42")},
      {"integer min", integerValue(INT_MIN), textValue(L"-2147483648")},
      {"real trailing zeros trimmed", realValue(2.5), textValue(L"2.5")},
      {"real whole keeps one digit", realValue(3.0), textValue(L"3.0")},
      {"real negative", realValue(-0.25), textValue(L"-0.25")},
      {"real twelve decimals", realValue(1.0 / 3.0), textValue(L"0.333333333333")},
      {"real rounded at twelve", realValue(0.1234567890126), textValue(L"0.123456789013")},
      {"real below twelve decimals", realValue(1e-13), textValue(L"0.0")},
      {"real large", realValue(1e15), textValue(L"1000000000000000.0")},
      {"text", textValue(L"Ab c"), textValue(L"Ab c")},
      {"null text", nullTextValue(), textValue(L"")},
      {"point", pointValue(1, -2.5, 0), textValue(L"1.000000,-2.500000,0.000000")},
      {"unset", Value{}, to_text, kConversionFailed},

      {"point", pointValue(1, 2, 3), pointValue(1, 2, 3)},
      {"text", textValue(L"1,2,3"), pointValue(1, 2, 3)},
      {"text with blanks", textValue(L" 1.5 , -2 , 3e1"), pointValue(1.5, -2, 30)},
      // y is everything between the first and the last comma, read as _wtof reads it.
      {"text with four parts", textValue(L"1,2,9,3"), pointValue(1, 2, 3)},
      {"text not numbers", textValue(L"a,b,c"), pointValue(0, 0, 0)},
      {"text empty parts", textValue(L",,"), pointValue(0, 0, 0)},
      {"text with one comma", textValue(L"1,2"), to_point, kNotAPoint},
      {"text without comma", textValue(L"123"), to_point, kNotAPoint},
      {"empty text", textValue(L""), to_point, kNotAPoint},
      {"null text", nullTextValue(), to_point, kNotAPoint},
      {"integer", integerValue(1), to_point, kConversionFailed},
      {"real", realValue(1.0), to_point, kConversionFailed},
      {"unset", Value{}, to_point, kConversionFailed},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name << " to type " << static_cast<int>(c.want.type));
    Value got = typed(c.want.type);
    // A payload no conversion here gives, so that a destination left alone shows.
    Value destination = c.want.type == ValueType::kInteger ? integerValue(77)
                        : c.want.type == ValueType::kReal  ? realValue(77.5)
                        : c.want.type == ValueType::kPoint ? pointValue(5, 5, 5)
                                                           : textValue(L"old");
    const Value before = destination;
    EXPECT_EQ(thrownCode([&] {
                switch (c.want.type) {
                  case ValueType::kInteger:
                    got.integer = asInteger(c.source);
                    break;
                  case ValueType::kReal:
                    got.real = asReal(c.source);
                    break;
                  case ValueType::kCharacter:
                    got.text = asText(c.source);
                    break;
                  default:
                    got.point = asPoint(c.source);
                }
              }),
              c.code);
    EXPECT_EQ(thrownCode([&] { assign(destination, c.source); }), c.code);
    if (c.code != kNoThrow) {
      expectSame(destination, before);
      continue;
    }
    expectSame(got, c.want);
    expectSame(destination, c.want);
  }
}

// An unset destination takes the source's tag and payload unconverted; one of no known
// type takes nothing.
TEST(AssignTest, UnsetDestinationTakesTheSourceAsItIs) {
  Value unset_with_integer;
  unset_with_integer.integer = 77;
  Value null_text_keeping_integer = nullTextValue();
  null_text_keeping_integer.integer = 77;
  const Value unknown = typed(static_cast<ValueType>(7));
  struct Case {
    const char* name;
    Value destination;
    Value source;
    Value want;
    int code = kNoThrow;
  };
  const Case cases[] = {
      {"int", Value{}, integerValue(-4), integerValue(-4)},
      {"real", Value{}, realValue(2.000000000001), realValue(2.000000000001)},
      {"text", Value{}, textValue(L"Text"), textValue(L"Text")},
      {"point", Value{}, pointValue(1, 2, 3), pointValue(1, 2, 3)},
      {"null text", unset_with_integer, nullTextValue(), null_text_keeping_integer},
      {"unknown destination type", unknown, integerValue(1), unknown, kConversionFailed},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Value destination = c.destination;
    EXPECT_EQ(thrownCode([&] { assign(destination, c.source); }), c.code);
    expectSame(destination, c.want);
  }
}

TEST(FindFieldTest, FindsFirstMatchIgnoringCase) {
  std::vector<FieldValue> fields(4);
  fields[0].name = L"Id";
  fields[1].name = L"Name";
  fields[2].name = L"NAME";
  fields[3].name = L"Délka";
  const std::pair<std::wstring, int> cases[] = {
      {L"id", 0}, {L"ID", 0}, {L"name", 1}, {L"DÉLKA", 3}, {L"Nam", -1}, {L"", -1}, {L"Names", -1},
  };
  for (const auto& [name, want] : cases) EXPECT_EQ(findField(fields, name), want) << name;
  EXPECT_EQ(findField({}, L"id"), -1);
}

}  // namespace
}  // namespace objdata
