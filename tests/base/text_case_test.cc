// Names compare without regard to case in every script class files and drawings use.
#include "base/text_case.h"

#include <gtest/gtest.h>

#include "dxf/symbol_tables.h"

namespace {

TEST(TextCaseTest, NamesMatchAcrossCaseInManyScripts) {
  struct Case {
    const wchar_t* a;
    const wchar_t* b;
    bool same;
  };
  const Case cases[] = {
      {L"POTRUBÍ", L"potrubí", true},
      {L"ДОРОГА", L"дорога", true},
      {L"ΟΔΟΣ", L"οδοσ", true},
      {L"Müll", L"MÜLL", true},
      {L"ŽELEZNICE", L"železnice", true},
      {L"Walls", L"walls", true},
      {L"Walls", L"Wall", false},
      {L"ß", L"ss", false},
      {L"Ą", L"ą", true},
      {L"Ą", L"a", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(base::equalsIgnoringCase(c.a, c.b), c.same) << c.a << " " << c.b;
    // The DXF layer's symbol lookups use the same rule.
    EXPECT_EQ(dxf::sameName(c.a, c.b), c.same) << c.a << " " << c.b;
  }
}

}  // namespace
