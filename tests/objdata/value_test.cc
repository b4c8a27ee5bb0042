#include "objdata/value.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

namespace objdata {
namespace {

Value makeTyped(ValueType type) {
  Value v;
  v.type = type;
  return v;
}
Value integerValue(int32_t i) {
  Value v = makeTyped(ValueType::kInteger);
  v.integer = i;
  return v;
}
Value realValue(double d) {
  Value v = makeTyped(ValueType::kReal);
  v.real = d;
  return v;
}
Value textValue(std::wstring s) {
  Value v = makeTyped(ValueType::kCharacter);
  v.text = std::move(s);
  return v;
}
Value pointValue(double x, double y, double z) {
  Value v = makeTyped(ValueType::kPoint);
  v.point = {x, y, z};
  return v;
}
Value nullTextValue() { return makeTyped(ValueType::kCharacter); }

// Returns the code thrown by `f`, or -1 when nothing was thrown.
template <typename F>
int thrownCode(F f) {
  try {
    f();
  } catch (int code) {
    return code;
  }
  return -1;
}

TEST(MakeValueTest, ParsesEachType) {
  struct Case {
    ValueType type;
    std::wstring text;
    ValueType want_type;
    int32_t want_integer;
    double want_real;
    Point want_point;
  };
  const Case cases[] = {
      {ValueType::kInteger, L"42", ValueType::kInteger, 42, 0, {}},
      {ValueType::kInteger, L"  -7xyz", ValueType::kInteger, -7, 0, {}},
      {ValueType::kInteger, L"abc", ValueType::kInteger, 0, 0, {}},
      {ValueType::kInteger, L"3.9", ValueType::kInteger, 3, 0, {}},
      {ValueType::kReal, L"2.5", ValueType::kReal, 0, 2.5, {}},
      {ValueType::kReal, L" -1e3z", ValueType::kReal, 0, -1000.0, {}},
      {ValueType::kReal, L"x", ValueType::kReal, 0, 0.0, {}},
      {ValueType::kPoint, L"1,2,3", ValueType::kPoint, 0, 0, {1, 2, 3}},
      {ValueType::kPoint, L"1.5, -2, 3e1", ValueType::kPoint, 0, 0, {1.5, -2, 30}},
      // The quiet fallback: a point text that does not give three numbers is Integer 0.
      {ValueType::kPoint, L"1,2", ValueType::kInteger, 0, 0, {}},
      {ValueType::kPoint, L"", ValueType::kInteger, 0, 0, {}},
      {ValueType::kPoint, L"a,b,c", ValueType::kInteger, 0, 0, {}},
      {ValueType::kNone, L"5", ValueType::kNone, 0, 0, {}},
      {static_cast<ValueType>(9), L"5", ValueType::kNone, 0, 0, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << static_cast<int>(c.type) << " " << c.text);
    Value v = makeValue(c.type, c.text);
    EXPECT_EQ(v.type, c.want_type);
    EXPECT_EQ(v.integer, c.want_integer);
    EXPECT_DOUBLE_EQ(v.real, c.want_real);
    EXPECT_EQ(v.point, c.want_point);
  }
}

TEST(MakeValueTest, CharacterCopiesTextAsItStands) {
  Value v = makeValue(ValueType::kCharacter, L" Ab, 1 ");
  EXPECT_EQ(v.type, ValueType::kCharacter);
  ASSERT_TRUE(v.text.has_value());
  EXPECT_EQ(*v.text, L" Ab, 1 ");
  Value empty = makeValue(ValueType::kCharacter, L"");
  ASSERT_TRUE(empty.text.has_value());
  EXPECT_EQ(*empty.text, L"");
}

TEST(AsIntegerTest, ConvertsFromEachType) {
  struct Case {
    const char* name;
    Value source;
    int32_t want;
  };
  const Case cases[] = {
      {"unset", Value{}, 0},
      {"integer", integerValue(-12), -12},
      {"real positive", realValue(2.9), 2},
      {"real negative truncates toward zero", realValue(-2.9), -2},
      {"real max", realValue(2147483647.9), INT_MAX},
      {"real min", realValue(-2147483648.9), INT_MIN},
      {"real too big", realValue(2147483648.0), INT_MIN},
      {"real too small", realValue(-2147483649.0), INT_MIN},
      {"real huge", realValue(1e300), INT_MIN},
      {"text", textValue(L" 17abc"), 17},
      {"text not a number", textValue(L"abc"), 0},
      {"text real", textValue(L"-3.7"), -3},
      {"null text", nullTextValue(), 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(asInteger(c.source), c.want);
  }
  EXPECT_EQ(thrownCode([] { asInteger(pointValue(1, 2, 3)); }), kConversionFailed);
}

TEST(AsRealTest, ConvertsFromEachType) {
  struct Case {
    const char* name;
    Value source;
    double want;
  };
  const Case cases[] = {
      {"integer", integerValue(-5), -5.0},
      {"integer min", integerValue(INT_MIN), -2147483648.0},
      {"real", realValue(0.125), 0.125},
      {"text", textValue(L" 2.75m"), 2.75},
      {"text not a number", textValue(L"m"), 0.0},
      {"null text", nullTextValue(), 0.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_DOUBLE_EQ(asReal(c.source), c.want);
  }
  EXPECT_EQ(thrownCode([] { asReal(pointValue(1, 2, 3)); }), kConversionFailed);
  EXPECT_EQ(thrownCode([] { asReal(Value{}); }), kConversionFailed);
}

TEST(AsTextTest, FormatsEachType) {
  struct Case {
    const char* name;
    Value source;
    std::wstring want;
  };
  const Case cases[] = {
      {"integer", integerValue(42), L"42"},
      {"integer negative", integerValue(-7), L"-7"},
      {"integer min", integerValue(INT_MIN), L"-2147483648"},
      {"real trailing zeros trimmed", realValue(2.5), L"2.5"},
      {"real whole keeps one digit", realValue(3.0), L"3.0"},
      {"real zero", realValue(0.0), L"0.0"},
      {"real negative", realValue(-0.25), L"-0.25"},
      {"real twelve decimals", realValue(1.0 / 3.0), L"0.333333333333"},
      {"real rounded at twelve", realValue(0.1234567890126), L"0.123456789013"},
      {"real below twelve decimals", realValue(1e-13), L"0.0"},
      {"real large", realValue(1e15), L"1000000000000000.0"},
      {"real ten", realValue(10.0), L"10.0"},
      {"text", textValue(L"Ab c"), L"Ab c"},
      {"null text", nullTextValue(), L""},
      {"point", pointValue(1, -2.5, 0), L"1.000000,-2.500000,0.000000"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(asText(c.source), c.want);
  }
  EXPECT_EQ(thrownCode([] { asText(Value{}); }), kConversionFailed);
}

TEST(AsPointTest, ConvertsFromEachType) {
  struct Case {
    const char* name;
    Value source;
    Point want;
  };
  const Case cases[] = {
      {"point", pointValue(1, 2, 3), {1, 2, 3}},
      {"text", textValue(L"1,2,3"), {1, 2, 3}},
      {"text with blanks", textValue(L" 1.5 , -2 , 3e1"), {1.5, -2, 30}},
      // y is everything between the first and the last comma, read as _wtof reads it.
      {"text with four parts", textValue(L"1,2,9,3"), {1, 2, 3}},
      {"text not numbers", textValue(L"a,b,c"), {0, 0, 0}},
      {"text empty parts", textValue(L",,"), {0, 0, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(asPoint(c.source), c.want);
  }
}

TEST(AsPointTest, ThrowsCodes) {
  struct Case {
    const char* name;
    Value source;
    int want_code;
  };
  const Case cases[] = {
      {"text with one comma", textValue(L"1,2"), kNotAPoint},
      {"text without comma", textValue(L"123"), kNotAPoint},
      {"empty text", textValue(L""), kNotAPoint},
      {"null text", nullTextValue(), kNotAPoint},
      {"integer", integerValue(1), kConversionFailed},
      {"real", realValue(1.0), kConversionFailed},
      {"unset", Value{}, kConversionFailed},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(thrownCode([&] { asPoint(c.source); }), c.want_code);
  }
}

// The conversion table row by row: destination type against source type.
TEST(AssignTest, ConvertsIntoDestinationType) {
  struct Case {
    const char* name;
    Value destination;
    Value source;
    Value want;
  };
  const Case cases[] = {
      {"int<-int", integerValue(1), integerValue(9), integerValue(9)},
      {"int<-real", integerValue(1), realValue(-9.99), integerValue(-9)},
      {"int<-real out of range", integerValue(1), realValue(3e9), integerValue(INT_MIN)},
      {"int<-text", integerValue(1), textValue(L"12px"), integerValue(12)},
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
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Value destination = c.destination;
    assign(destination, c.source);
    EXPECT_EQ(destination.type, c.want.type);
    switch (c.want.type) {
      case ValueType::kInteger:
        EXPECT_EQ(destination.integer, c.want.integer);
        break;
      case ValueType::kReal:
        EXPECT_DOUBLE_EQ(destination.real, c.want.real);
        break;
      case ValueType::kCharacter:
        EXPECT_EQ(destination.text, c.want.text);
        break;
      default:
        EXPECT_EQ(destination.point, c.want.point);
        break;
    }
  }
}

TEST(AssignTest, ThrowsCodesAndLeavesDestination) {
  struct Case {
    const char* name;
    Value destination;
    Value source;
    int want_code;
  };
  const Case cases[] = {
      {"int<-point", integerValue(5), pointValue(1, 2, 3), kConversionFailed},
      {"real<-point", realValue(5), pointValue(1, 2, 3), kConversionFailed},
      {"point<-int", pointValue(5, 5, 5), integerValue(1), kConversionFailed},
      {"point<-real", pointValue(5, 5, 5), realValue(1), kConversionFailed},
      {"point<-text one comma", pointValue(5, 5, 5), textValue(L"1,2"), kNotAPoint},
      {"point<-text no comma", pointValue(5, 5, 5), textValue(L"1"), kNotAPoint},
      {"text<-unset", textValue(L"keep"), Value{}, kConversionFailed},
      {"real<-unset", realValue(5), Value{}, kConversionFailed},
      {"point<-unset", pointValue(5, 5, 5), Value{}, kConversionFailed},
      {"unknown destination type", makeTyped(static_cast<ValueType>(7)), integerValue(1),
       kConversionFailed},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Value destination = c.destination;
    EXPECT_EQ(thrownCode([&] { assign(destination, c.source); }), c.want_code);
    EXPECT_EQ(destination.type, c.destination.type);
    EXPECT_EQ(destination.point, c.destination.point);
    EXPECT_EQ(destination.real, c.destination.real);
    EXPECT_EQ(destination.text, c.destination.text);
  }
}

TEST(AssignTest, IntegerFromUnsetIsZero) {
  Value destination = integerValue(5);
  assign(destination, Value{});
  EXPECT_EQ(destination.type, ValueType::kInteger);
  EXPECT_EQ(destination.integer, 0);
}

TEST(AssignTest, UnsetDestinationCopiesTagAndPayload) {
  struct Case {
    const char* name;
    Value source;
  };
  const Case cases[] = {
      {"integer", integerValue(-4)},
      {"real", realValue(2.000000000001)},
      {"text", textValue(L"Text")},
      {"point", pointValue(1, 2, 3)},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Value destination;
    assign(destination, c.source);
    EXPECT_EQ(destination.type, c.source.type);
    EXPECT_EQ(destination.integer, c.source.integer);
    EXPECT_EQ(destination.real, c.source.real);  // bit for bit: nothing converted
    EXPECT_EQ(destination.point, c.source.point);
    if (c.source.type == ValueType::kCharacter) {
      EXPECT_EQ(destination.text, c.source.text);
    }
  }
}

TEST(AssignTest, UnsetDestinationFromNullTextTakesOnlyTheTag) {
  Value destination;
  destination.integer = 77;
  assign(destination, nullTextValue());
  EXPECT_EQ(destination.type, ValueType::kCharacter);
  EXPECT_FALSE(destination.text.has_value());
  EXPECT_EQ(destination.integer, 77);
  EXPECT_EQ(asText(destination), L"");
}

TEST(FindFieldTest, FindsFirstMatchIgnoringCase) {
  std::vector<FieldValue> fields(4);
  fields[0].name = L"Id";
  fields[1].name = L"Name";
  fields[2].name = L"NAME";
  fields[3].name = L"Délka";
  struct Case {
    std::wstring name;
    int want;
  };
  const Case cases[] = {
      {L"id", 0},    {L"ID", 0},   {L"name", 1}, {L"NaMe", 1},
      {L"DÉLKA", 3}, {L"Nam", -1}, {L"", -1},    {L"Names", -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name);
    EXPECT_EQ(findField(fields, c.name), c.want);
  }
  EXPECT_EQ(findField({}, L"id"), -1);
}

TEST(IsTopologyTableTest, MatchesPrefixes) {
  struct Case {
    std::wstring name;
    bool want;
  };
  const Case cases[] = {
      {L"TPMCNTR_roads", true}, {L"TPMDESC_x", true}, {L"TPMID_", true},   {L"TPMLINK_a", true},
      {L"TPMNODE_b", true},     {L"CNTR_c", true},    {L"TPMCNTR", false}, {L"TPMX_a", false},
      {L"XCNTR_c", false},      {L"ROADS", false},    {L"", false},        {L"CNTR", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name);
    EXPECT_EQ(isTopologyTable(c.name), c.want);
  }
}

}  // namespace
}  // namespace objdata
