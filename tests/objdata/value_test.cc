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
Value integerValue(int32_t i) {
  Value v = typed(ValueType::kInteger);
  v.integer = i;
  return v;
}
Value realValue(double d) {
  Value v = typed(ValueType::kReal);
  v.real = d;
  return v;
}
Value textValue(std::wstring s) {
  Value v = typed(ValueType::kCharacter);
  v.text = std::move(s);
  return v;
}
Value pointValue(double x, double y, double z) {
  Value v = typed(ValueType::kPoint);
  v.point = {x, y, z};
  return v;
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

TEST(MakeValueTest, ParsesEachType) {
  struct Case {
    ValueType type;
    std::wstring text;
    Value want;
  };
  const Case cases[] = {
      {ValueType::kInteger, L"42", integerValue(42)},
      {ValueType::kInteger, L"  -7xyz", integerValue(-7)},
      {ValueType::kInteger, L"abc", integerValue(0)},
      {ValueType::kInteger, L"3.9", integerValue(3)},
      {ValueType::kReal, L"2.5", realValue(2.5)},
      {ValueType::kReal, L" -1e3z", realValue(-1000.0)},
      {ValueType::kReal, L"x", realValue(0.0)},
      {ValueType::kPoint, L"1,2,3", pointValue(1, 2, 3)},
      {ValueType::kPoint, L"1.5, -2, 3e1", pointValue(1.5, -2, 30)},
      // The quiet fallback: a point text that does not give three numbers is Integer 0.
      {ValueType::kPoint, L"1,2", integerValue(0)},
      {ValueType::kPoint, L"", integerValue(0)},
      {ValueType::kPoint, L"a,b,c", integerValue(0)},
      {ValueType::kCharacter, L" Ab, 1 ", textValue(L" Ab, 1 ")},
      {ValueType::kCharacter, L"", textValue(L"")},
      {ValueType::kNone, L"5", Value{}},
      {static_cast<ValueType>(9), L"5", Value{}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(c.type) << " " << c.text);
    expectSame(makeValue(c.type, c.text), c.want);
  }
}

// asInteger, asReal, asText and asPoint, each over every type of source.
TEST(ConversionTest, ConvertsOrThrowsFromEachType) {
  enum To { kInteger, kReal, kText, kPoint };
  struct Case {
    const char* name;
    To to;
    Value source;
    Value want;  // its field of the target type holds the result
    int code = kNoThrow;
  };
  const Case cases[] = {
      {"unset", kInteger, Value{}, integerValue(0)},
      {"integer", kInteger, integerValue(-12), integerValue(-12)},
      {"real positive", kInteger, realValue(2.9), integerValue(2)},
      {"real negative truncates toward zero", kInteger, realValue(-2.9), integerValue(-2)},
      {"real max", kInteger, realValue(2147483647.9), integerValue(INT_MAX)},
      {"real min", kInteger, realValue(-2147483648.9), integerValue(INT_MIN)},
      {"real too big", kInteger, realValue(2147483648.0), integerValue(INT_MIN)},
      {"real too small", kInteger, realValue(-2147483649.0), integerValue(INT_MIN)},
      {"real huge", kInteger, realValue(1e300), integerValue(INT_MIN)},
      {"text", kInteger, textValue(L" 17abc"), integerValue(17)},
      {"text not a number", kInteger, textValue(L"abc"), integerValue(0)},
      {"text real", kInteger, textValue(L"-3.7"), integerValue(-3)},
      {"null text", kInteger, nullTextValue(), integerValue(0)},
      {"point", kInteger, pointValue(1, 2, 3), {}, kConversionFailed},

      {"integer", kReal, integerValue(-5), realValue(-5.0)},
      {"integer min", kReal, integerValue(INT_MIN), realValue(-2147483648.0)},
      {"real", kReal, realValue(0.125), realValue(0.125)},
      {"text", kReal, textValue(L" 2.75m"), realValue(2.75)},
      {"text not a number", kReal, textValue(L"m"), realValue(0.0)},
      {"null text", kReal, nullTextValue(), realValue(0.0)},
      {"point", kReal, pointValue(1, 2, 3), {}, kConversionFailed},
      {"unset", kReal, Value{}, {}, kConversionFailed},

      {"integer", kText, integerValue(42), textValue(L"42")},
      {"integer negative", kText, integerValue(-7), textValue(L"-7")},
      {"integer min", kText, integerValue(INT_MIN), textValue(L"-2147483648")},
      {"real trailing zeros trimmed", kText, realValue(2.5), textValue(L"2.5")},
      {"real whole keeps one digit", kText, realValue(3.0), textValue(L"3.0")},
      {"real zero", kText, realValue(0.0), textValue(L"0.0")},
      {"real negative", kText, realValue(-0.25), textValue(L"-0.25")},
      {"real twelve decimals", kText, realValue(1.0 / 3.0), textValue(L"0.333333333333")},
      {"real rounded at twelve", kText, realValue(0.1234567890126), textValue(L"0.123456789013")},
      {"real below twelve decimals", kText, realValue(1e-13), textValue(L"0.0")},
      {"real large", kText, realValue(1e15), textValue(L"1000000000000000.0")},
      {"real ten", kText, realValue(10.0), textValue(L"10.0")},
      {"text", kText, textValue(L"Ab c"), textValue(L"Ab c")},
      {"null text", kText, nullTextValue(), textValue(L"")},
      {"point", kText, pointValue(1, -2.5, 0), textValue(L"1.000000,-2.500000,0.000000")},
      {"unset", kText, Value{}, {}, kConversionFailed},

      {"point", kPoint, pointValue(1, 2, 3), pointValue(1, 2, 3)},
      {"text", kPoint, textValue(L"1,2,3"), pointValue(1, 2, 3)},
      {"text with blanks", kPoint, textValue(L" 1.5 , -2 , 3e1"), pointValue(1.5, -2, 30)},
      // y is everything between the first and the last comma, read as _wtof reads it.
      {"text with four parts", kPoint, textValue(L"1,2,9,3"), pointValue(1, 2, 3)},
      {"text not numbers", kPoint, textValue(L"a,b,c"), pointValue(0, 0, 0)},
      {"text empty parts", kPoint, textValue(L",,"), pointValue(0, 0, 0)},
      {"text with one comma", kPoint, textValue(L"1,2"), {}, kNotAPoint},
      {"text without comma", kPoint, textValue(L"123"), {}, kNotAPoint},
      {"empty text", kPoint, textValue(L""), {}, kNotAPoint},
      {"null text", kPoint, nullTextValue(), {}, kNotAPoint},
      {"integer", kPoint, integerValue(1), {}, kConversionFailed},
      {"real", kPoint, realValue(1.0), {}, kConversionFailed},
      {"unset", kPoint, Value{}, {}, kConversionFailed},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name << " to " << c.to);
    Value got;
    EXPECT_EQ(thrownCode([&] {
                switch (c.to) {
                  case kInteger:
                    got.integer = asInteger(c.source);
                    break;
                  case kReal:
                    got.real = asReal(c.source);
                    break;
                  case kText:
                    got.text = asText(c.source);
                    break;
                  case kPoint:
                    got.point = asPoint(c.source);
                    break;
                }
              }),
              c.code);
    if (c.code != kNoThrow) continue;
    EXPECT_EQ(got.integer, c.want.integer);
    EXPECT_DOUBLE_EQ(got.real, c.want.real);
    EXPECT_EQ(got.text.value_or(L""), c.want.text.value_or(L""));
    EXPECT_EQ(got.point, c.want.point);
  }
}

// The conversion table row by row: destination type against source type. A throw leaves
// the destination as it was.
TEST(AssignTest, ConvertsIntoDestinationTypeOrThrows) {
  Value unset_with_integer;
  unset_with_integer.integer = 77;
  Value null_text_keeping_integer = nullTextValue();
  null_text_keeping_integer.integer = 77;
  struct Case {
    const char* name;
    Value destination;
    Value source;
    Value want;
    int code = kNoThrow;
  };
  const Case cases[] = {
      {"int<-int", integerValue(1), integerValue(9), integerValue(9)},
      {"int<-real", integerValue(1), realValue(-9.99), integerValue(-9)},
      {"int<-real out of range", integerValue(1), realValue(3e9), integerValue(INT_MIN)},
      {"int<-text", integerValue(1), textValue(L"12px"), integerValue(12)},
      {"int<-unset", integerValue(5), Value{}, integerValue(0)},
      {"real<-int", realValue(1), integerValue(4), realValue(4.0)},
      {"real<-real", realValue(1), realValue(0.5), realValue(0.5)},
      {"real<-text", realValue(1), textValue(L"6.25"), realValue(6.25)},
      {"text<-int", textValue(L"old"), integerValue(-3), textValue(L"-3")},
      {"text<-real", textValue(L"old"), realValue(2.5), textValue(L"2.5")},
      {"text<-real whole", textValue(L"old"), realValue(3), textValue(L"3.0")},
      {"text<-text", textValue(L"old"), textValue(L"new"), textValue(L"new")},
      {"text<-point", textValue(L"old"), pointValue(1, 2, 3),
       textValue(L"1.000000,2.000000,3.000000")},
      {"point<-text", pointValue(0, 0, 0), textValue(L"4,5,6"), pointValue(4, 5, 6)},
      {"point<-point", pointValue(0, 0, 0), pointValue(7, 8, 9), pointValue(7, 8, 9)},
      // An unset destination takes the source's tag and payload unconverted.
      {"unset<-int", Value{}, integerValue(-4), integerValue(-4)},
      {"unset<-real", Value{}, realValue(2.000000000001), realValue(2.000000000001)},
      {"unset<-text", Value{}, textValue(L"Text"), textValue(L"Text")},
      {"unset<-point", Value{}, pointValue(1, 2, 3), pointValue(1, 2, 3)},
      {"unset<-null text", unset_with_integer, nullTextValue(), null_text_keeping_integer},
      {"int<-point", integerValue(5), pointValue(1, 2, 3), integerValue(5), kConversionFailed},
      {"real<-point", realValue(5), pointValue(1, 2, 3), realValue(5), kConversionFailed},
      {"point<-int", pointValue(5, 5, 5), integerValue(1), pointValue(5, 5, 5), kConversionFailed},
      {"point<-real", pointValue(5, 5, 5), realValue(1), pointValue(5, 5, 5), kConversionFailed},
      {"point<-text one comma", pointValue(5, 5, 5), textValue(L"1,2"), pointValue(5, 5, 5),
       kNotAPoint},
      {"point<-text no comma", pointValue(5, 5, 5), textValue(L"1"), pointValue(5, 5, 5),
       kNotAPoint},
      {"text<-unset", textValue(L"keep"), Value{}, textValue(L"keep"), kConversionFailed},
      {"real<-unset", realValue(5), Value{}, realValue(5), kConversionFailed},
      {"point<-unset", pointValue(5, 5, 5), Value{}, pointValue(5, 5, 5), kConversionFailed},
      {"unknown destination type", typed(static_cast<ValueType>(7)), integerValue(1),
       typed(static_cast<ValueType>(7)), kConversionFailed},
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
      {L"id", 0},    {L"ID", 0},   {L"name", 1}, {L"NaMe", 1},
      {L"DÉLKA", 3}, {L"Nam", -1}, {L"", -1},    {L"Names", -1},
  };
  for (const auto& [name, want] : cases) EXPECT_EQ(findField(fields, name), want) << name;
  EXPECT_EQ(findField({}, L"id"), -1);
}

TEST(IsTopologyTableTest, MatchesPrefixes) {
  const std::pair<std::wstring, bool> cases[] = {
      {L"TPMCNTR_roads", true}, {L"TPMDESC_x", true}, {L"TPMID_", true},   {L"TPMLINK_a", true},
      {L"TPMNODE_b", true},     {L"CNTR_c", true},    {L"TPMCNTR", false}, {L"TPMX_a", false},
      {L"XCNTR_c", false},      {L"ROADS", false},    {L"", false},        {L"CNTR", false},
  };
  for (const auto& [name, want] : cases) EXPECT_EQ(isTopologyTable(name), want) << name;
}

}  // namespace
}  // namespace objdata
