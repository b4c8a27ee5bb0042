// Lengths counted in UTF-16 code units, whatever the size of wchar_t.
#include "base/utf.h"

#include <gtest/gtest.h>

namespace {

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
