#include "shell/string_table.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "test_paths.h"

namespace shell {
namespace {

using string_table_internal::applyFormat;
using string_table_internal::directiveKinds;

StringId idAt(int index) { return static_cast<StringId>(kFirstStringId + index); }

// Each identifier has its own non-empty text, with well-formed directives; parser messages
// say whether they are errors or warnings and end the line.
TEST(StringTableTest, BuiltInTextsAreDistinctAndFollowTheMessageConventions) {
  const StringTable& table = StringTable::builtIn();
  ASSERT_EQ(table.size(), static_cast<std::size_t>(kStringCount));
  std::set<std::wstring> seen;
  for (int i = 0; i < kStringCount; ++i) {
    SCOPED_TRACE(kFirstStringId + i);
    const std::wstring& text = table.get(idAt(i));
    EXPECT_FALSE(text.empty());
    EXPECT_TRUE(seen.insert(text).second) << "repeats a text";
    EXPECT_EQ(directiveKinds(text).find('?'), std::string::npos);
    if (text.starts_with(L"%i: ")) {
      EXPECT_TRUE(text.starts_with(L"%i: error: ") || text.starts_with(L"%i: warning: "));
      EXPECT_TRUE(text.ends_with(L"\n"));
    }
  }
  EXPECT_TRUE(table.get(idAt(-1)).empty());
  EXPECT_TRUE(table.get(idAt(kStringCount)).empty());
}

TEST(StringTableTest, IdentifiersAtGroupBoundariesNameTheirTexts) {
  // A text inserted or dropped in the middle of the table shifts every later identifier.
  struct Case {
    StringId id;
    int number;
    const wchar_t* text;
  };
  const Case cases[] = {
      {StringId::kErrorNoFileLoaded, 100, L"Error: no file loaded.\n"},
      {StringId::kPromptObject, 111, L"Object: "},
      {StringId::kParseInvalidBlockReference, 112,
       L"%i: error: invalid 'blockreference' definition\n"},
      {StringId::kParseTextStyleNotFound, 155, L"warning: textstyle '%s' not found\n"},
      {StringId::kWarnUnableToOpenList, 156, L"warning: unable to open '%s'\n"},
      {StringId::kStatClassLine, 164, L"\t%s: %i (%i invalid)"},
      {StringId::kPromptTextWithDefault, 183, L"Text<%s>:\n"},
      {StringId::kClassifyDialogTitle, 184, L"Classification parameters"},
      {StringId::kTextFileFilter, 192, L"Text files (*.txt)|*.txt||"},
      {StringId::kAboutVersion, 194, L"Version %s\n"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(static_cast<int>(c.id), c.number);
    EXPECT_EQ(StringTable::builtIn().get(c.id), c.text) << c.number;
  }
}

TEST(StringTableTest, ClassifiesDirectives) {
  const struct {
    const wchar_t* text;
    const char* kinds;
  } cases[] = {
      {L"no directive", ""},
      {L"%i and %d", "ii"},
      {L"%s %ls", "ss"},
      {L"%hs", "n"},
      {L"%lf %.3lf %e", "fff"},
      {L"%Lf", "F"},
      {L"%li %lli", "LL"},
      {L"%c", "c"},
      {L"100%% sure", ""},
      {L"%-5i|%05.2lf", "if"},
      {L"%*i", "ii"},
      {L"%.*s", "is"},
      {L"trailing %", "?"},
      {L"%n", "?"},
      {L"%q", "?"},
      {L"%5000i", "?"},
  };
  for (const auto& c : cases) EXPECT_EQ(directiveKinds(c.text), c.kinds) << c.text;
}

TEST(StringTableTest, FormatsEachDirectiveKind) {
  const struct {
    const wchar_t* format;
    std::vector<FormatArg> args;
    const wchar_t* expected;
  } cases[] = {
      {L"%i", {42}, L"42"},
      {L"%d", {-7}, L"-7"},
      {L"[%5i][%-4i]", {42, 42}, L"[   42][42  ]"},
      {L"%x", {255}, L"ff"},
      {L"%c", {65}, L"A"},
      {L"'%s'", {L"Wall"}, L"'Wall'"},
      {L"'%ls'", {L"Straße"}, L"'Straße'"},
      {L"[%6s][%-6s][%.2s]", {L"ab", L"ab", L"abcdef"}, L"[    ab][ab    ][ab]"},
      // U+1F600 counts two UTF-16 units and is not split.
      {L"[%4s][%.3s]", {L"a\U0001F600", L"ab\U0001F600"}, L"[ a\U0001F600][ab]"},
      {L"%lf", {2.5}, L"2.500000"},
      {L"%.2lf", {3.14159}, L"3.14"},
      {L"%.0lf", {2.7}, L"3"},
      {L"%lf", {3}, L"3.000000"},  // an integer widens for a real directive
      {L"100%%", {}, L"100%"},
      {L"%i%%%i", {1, 2}, L"1%2"},
      // Unfilled directives are left as written.
      {L"Completed: %i/%i", {3}, L"Completed: 3/%i"},  // too few
      {L"%i", {}, L"%i"},                              // none
      {L"%i", {1, 2, 3}, L"1"},                        // surplus ignored
      {L"%i %s", {L"x", L"y"}, L"%i y"},               // mismatch uses the argument up
      {L"%s", {7}, L"%s"},                             //
      {L"%i", {2.5}, L"%i"},                           // no silent truncation
      {L"%*i %i", {7}, L"%*i 7"},                      // '*' takes nothing
      {L"%5000i|%q|end%", {1}, L"%5000i|%q|end%"},     // malformed
  };
  for (const auto& c : cases) EXPECT_EQ(applyFormat(c.format, c.args), c.expected) << c.format;
}

TEST(StringTableTest, LoadsATranslation) {
  const testing_paths::TempDir dir("taxor_string_table");
  const std::filesystem::path path = dir / "de.txt";
  std::ofstream(path, std::ios::binary) << "\xEF\xBB\xBF# German\r\n"
                                           "\n"
                                           "100\tFehler: keine Datei geladen.\\n\r\n"
                                           "111\tObjekt: \n"
                                           "  \t \n"
                                           "107\tAusgewählt: %d\n"
                                           "115\t%i: Fehler: '%ls' # doppelt definiert\\n\n"
                                           "164\t\\t%s:\t%i (%i ungültig)";
  StringTable table;
  std::string error;
  ASSERT_TRUE(table.loadFile(path.string(), &error)) << error;
  EXPECT_EQ(table.get(StringId::kErrorNoFileLoaded), L"Fehler: keine Datei geladen.\n");
  EXPECT_EQ(table.get(StringId::kPromptObject), L"Objekt: ");  // trailing blank kept
  EXPECT_EQ(table.format(StringId::kSelectedCount, {4}), L"Ausgewählt: 4");
  EXPECT_EQ(table.get(StringId::kParseRedefinition), L"%i: Fehler: '%ls' # doppelt definiert\n");
  EXPECT_EQ(table.get(StringId::kStatClassLine), L"\t%s:\t%i (%i ungültig)");
  EXPECT_EQ(table.get(StringId::kCompleted), L"Completed\n");  // not in the file

  // A missing file is named and changes nothing.
  std::filesystem::remove(path);
  EXPECT_FALSE(table.loadFile(path.string(), &error));
  EXPECT_NE(error.find(path.string()), std::string::npos) << error;
  EXPECT_EQ(table.get(StringId::kPromptObject), L"Objekt: ");

  // A second file starts again from the built-in texts.
  ASSERT_TRUE(table.loadText("111\tObjet : ", "fr.txt", &error)) << error;
  EXPECT_EQ(table.get(StringId::kPromptObject), L"Objet : ");
  EXPECT_EQ(table.get(StringId::kErrorNoFileLoaded), L"Error: no file loaded.\n");
  EXPECT_EQ(StringTable::builtIn().get(StringId::kPromptObject), L"Object: ");
}

// Escapes beside those LoadsATranslation reads are decoded; directives of the built-in kinds
// are accepted whatever their flags.
TEST(StringTableTest, AcceptsEntries) {
  const struct {
    const char* line;
    StringId id;
    const wchar_t* text;
  } cases[] = {
      {"104\ta\\\\b", StringId::kCaptionError, L"a\\b"},
      {"104\ta\\\\nb", StringId::kCaptionError, L"a\\nb"},
      {"104\t\\\\\\n", StringId::kCaptionError, L"\\\n"},
      {"104\tC:\\\\dir\\\\", StringId::kCaptionError, L"C:\\dir\\"},
      {"104\tx\xE2\x82\xAC", StringId::kCaptionError, L"x\u20AC"},
      {"104\t\xF0\x9F\x99\x82", StringId::kCaptionError, L"\U0001F642"},
      {"115\t%3i: '%-10s' 100%%\\n", StringId::kParseRedefinition, L"%3i: '%-10s' 100%%\n"},
      {"175\tFehler: %%T/%%t und %%i fehlen.\\n", StringId::kErrorInvalidNameFormat,
       L"Fehler: %%T/%%t und %%i fehlen.\n"},
  };
  for (const auto& c : cases) {
    StringTable table;
    std::string error;
    ASSERT_TRUE(table.loadText(c.line, "de.txt", &error)) << c.line << ": " << error;
    EXPECT_EQ(table.get(c.id), c.text) << c.line;
  }
}

TEST(StringTableTest, RejectsBadEntriesNamingTheLine) {
  const std::string past_the_end = std::to_string(kFirstStringId + kStringCount);
  const struct {
    std::string third;  // the third line of the file
    std::string message;
  } cases[] = {
      {"107\tAusgewählt: %s", "107 has the directives '%s' where the built-in text has '%i'"},
      {"107\tAusgewählt", "'none' where the built-in text has '%i'"},
      {"107\t%i von %i", "'%i %i'"},
      {"107\t%lf", "'%lf'"},
      {"115\t'%s' in %i", "'%s %i'"},  // swapped
      {"107\t50% von %i", "directives"},
      {past_the_end + "\tzu viel", "unknown identifier " + past_the_end},
      {"99\tzu wenig", "unknown identifier 99"},
      {"1x0\tText", "malformed identifier '1x0'"},
      {"\tText", "malformed identifier ''"},
      {"100 Fehler", "no TAB"},
      {"100\tFehler", "already given on line 1"},
      {"104\tFehler\\q", "unknown escape '\\q'"},
      {"104\tFehler\\", "backslash at the end"},
      {"104\t\xC3(", "not valid UTF-8"},
      {"104\t\xED\xA0\x80", "not valid UTF-8"},  // a surrogate
      {"104\t", "empty text"},
  };
  for (const auto& c : cases) {
    StringTable table;
    std::string error;
    ASSERT_TRUE(table.loadText("111\tObjekt: ", "old.txt", &error)) << error;
    const std::string file = std::string("100\tFehler\n# comment\n") + c.third + "\n110\tFertig\n";
    EXPECT_FALSE(table.loadText(file, "de.txt", &error)) << c.third;
    EXPECT_EQ(error.rfind("de.txt:3: ", 0), 0u) << error;
    EXPECT_NE(error.find(c.message), std::string::npos) << error;
    // The failed file changes nothing, not even its valid first line.
    EXPECT_EQ(table.get(StringId::kPromptObject), L"Objekt: ");
    EXPECT_EQ(table.get(StringId::kErrorNoFileLoaded), L"Error: no file loaded.\n");
  }
}

}  // namespace
}  // namespace shell
