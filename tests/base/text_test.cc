// Text rules of class files and drawings: names compare without regard to case in every
// script they use, and lengths count UTF-16 code units, whatever the size of wchar_t.
#include <gtest/gtest.h>

#include "base/text_case.h"
#include "base/utf.h"
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

TEST(UtfTest, LengthsAndPrefixesCountUtf16Units) {
  struct Case {
    std::wstring text;
    size_t length;
    size_t max_units;
    std::wstring prefix;
  };
  // U+1F600 counts two units and is never split.
  const Case cases[] = {
      {L"", 0, 5, L""},
      {L"Potrubí", 7, 3, L"Pot"},
      {L"ab\U0001F600c", 5, 4, L"ab\U0001F600"},
      {L"ab\U0001F600c", 5, 3, L"ab"},
      {L"ab\U0001F600c", 5, 9, L"ab\U0001F600c"},
      {L"\U0001F600", 2, 1, L""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(base::utf16Length(c.text), c.length) << base::toUtf8(c.text);
    EXPECT_EQ(c.text.substr(0, base::utf16Prefix(c.text, c.max_units)), c.prefix)
        << base::toUtf8(c.text) << " in " << c.max_units;
  }
}

}  // namespace
