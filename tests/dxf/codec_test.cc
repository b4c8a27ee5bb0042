#include "dxf/codec.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "dxf/dictionary.h"
#include "dxf/document.h"
#include "dxf/objects.h"
#include "dxf/sample_drawing.h"
#include "dxf/xrecord.h"
#include "test_paths.h"

namespace dxf {
namespace {

Codec codecFor(std::string_view codepage, std::string_view acadver = "AC1015") {
  auto codec = Codec::forDrawing(acadver, codepage);
  EXPECT_TRUE(codec.isOk()) << codepage << ": " << codec.status().message();
  return codec.isOk() ? codec.value() : Codec();
}

// The code pages of real drawings are DecodesCorpusDrawings's.
TEST(CodecTest, ChoosesEncodingFromVersionAndCodePage) {
  struct Case {
    std::string_view acadver, codepage, name;
  };
  const Case cases[] = {
      {"AC1032", "no such page", "UTF-8"},  // code page ignored from AC1021 on
      {"AC1015", "", "CP1252"},
      {"", "", "CP1252"},
      {"AC1015", "ansi_1251", "CP1251"},
      {"AC1015", "DOS850", "CP850"},
      {"AC1018", "Macintosh", "MACINTOSH"},
  };
  for (const Case& c : cases) {
    Codec codec = codecFor(c.codepage, c.acadver);
    EXPECT_EQ(codec.name(), c.name) << c.acadver << " " << c.codepage;
    EXPECT_EQ(codec.isUtf8(), c.name == "UTF-8");
  }
  EXPECT_TRUE(Codec().isUtf8());

  auto bad = Codec::forDrawing("AC1015", "ANSI_9999");
  ASSERT_FALSE(bad.isOk());
  EXPECT_EQ(bad.status().code(), base::Code::kInvalid);
  EXPECT_NE(bad.status().message().find("ANSI_9999"), std::string::npos);
}

// What the code page lacks is written as an escape of its UTF-16 units.
TEST(CodecTest, CodePagesMapTheirCharactersAndEscapeTheRest) {
  struct Case {
    std::string_view codepage;
    std::wstring text;
    std::string bytes;
  };
  const std::vector<Case> mapped = {
      {"ANSI_1250", L"č", "\xE8"},        {"ANSI_1251", L"Ж", "\xC6"},
      {"ANSI_1252", L"Ø€", "\xD8\x80"},   {"ANSI_1253", L"Ω", "\xD9"},
      {"ANSI_1254", L"ş", "\xFE"},        {"ANSI_1255", L"א", "\xE0"},
      {"ANSI_1256", L"ع", "\xDA"},        {"ANSI_1257", L"ą", "\xE0"},
      {"ANSI_1258", L"ư", "\xFD"},        {"ANSI_874", L"ก", "\xA1"},
      {"dos850", L"é", "\x82"},           {"DOS866", L"Ж", "\x86"},
      {"MAC-ROMAN", L"é", "\x8E"},        {"ANSI_932", L"表", "\x95\x5C"},
      {"dos932", L"ｱ表", "\xB1\x95\x5C"}, {"ANSI_936", L"中", "\xD6\xD0"},
      {"ANSI_949", L"한", "\xC7\xD1"},    {"ANSI_950", L"中", "\xA4\xA4"},
      {"ANSI_1361", L"한", "\xD0\x65"},   {"", L"Ø", "\xD8"},
  };
  const std::vector<Case> escaped = {
      {"ANSI_1252", L"∅", "\\U+2205"},
      {"ANSI_1252", L"Ø∅Ø", "\xD8\\U+2205\xD8"},
      {"ANSI_1252", L"Čas", "\\U+010Cas"},
      {"ANSI_1252", L"\U0001F600", "\\U+D83D\\U+DE00"},
      {"ANSI_1251", L"Ж€ž", "\xC6\x88\\U+017E"},
      {"ANSI_932", L"表€表", "\x95\x5C\\U+20AC\x95\x5C"},
      {"ANSI_1361", L"\\한", "\\\xD0\x65"},
      {"UTF-8", L"∅\U0001F600", "\xE2\x88\x85\xF0\x9F\x98\x80"},
  };
  std::vector<Case> cases = mapped;
  cases.insert(cases.end(), escaped.begin(), escaped.end());
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.codepage));
    Codec codec = c.codepage == "UTF-8" ? Codec() : codecFor(c.codepage);
    const std::wstring text = L"a " + c.text + L" b";
    const std::string bytes = "a " + c.bytes + " b";
    EXPECT_EQ(codec.encode(text), bytes);
    std::wstring decoded;
    EXPECT_TRUE(codec.decode(bytes, decoded));
    EXPECT_EQ(decoded, text);
  }
}

TEST(CodecTest, SingleBytePagesRoundTripEveryValidByte) {
  for (std::string_view codepage :
       {"ANSI_874", "ANSI_1250", "ANSI_1251", "ANSI_1252", "ANSI_1253", "ANSI_1254", "ANSI_1255",
        "ANSI_1256", "ANSI_1257", "ANSI_1258", "DOS437", "DOS850", "MAC-ROMAN"}) {
    Codec codec = codecFor(codepage);
    for (int b = 1; b < 256; ++b) {
      if (b == '\r' || b == '\n') continue;  // no value holds them; written as escapes
      const std::string raw(1, static_cast<char>(b));
      std::wstring text;
      if (!codec.decode(raw, text)) continue;
      EXPECT_EQ(codec.encode(text), raw) << codepage << " byte " << b;
    }
  }
}

TEST(CodecTest, DecodesEscapesKeepsMalformedOnesAndFlagsInvalidBytes) {
  struct Case {
    std::string_view codepage;
    std::string raw;
    std::wstring text;
    bool clean;
  };
  const Case cases[] = {
      {"ANSI_1252", "x\\U+2205y", L"x∅y", true},
      {"ANSI_1252", "\\U+010cas", L"Čas", true},
      {"ANSI_1252", "\\U+D83D\\U+DE00!", L"\U0001F600!", true},
      {"ANSI_1252", "\\M+19286", L"中", true},
      {"ANSI_1252", "\\M+2A4A4\\M+3C7D1\\M+4D065\\M+5D6D0", L"中한한中", true},
      {"ANSI_1252", "\\M+1FFFF", L"\uFFFD", false},
      {"ANSI_949", "\\M+19286\xC7\xD1", L"中한", true},
      {"AC1021", "\xD0\x96\\U+0416", L"ЖЖ", true},
      // Not escapes: MTEXT codes, short or bad hex, lone surrogates, wrong page numbers.
      {"ANSI_1252", "\\P\\U0041\\u+0041\\U+12", L"\\P\\U0041\\u+0041\\U+12", true},
      {"ANSI_1252", "\\U+12G4\\U+D83D\\U+DE00x", L"\\U+12G4\U0001F600x", true},
      {"ANSI_1252", "\\U+D83Dx\\U+DE00\\U+0000", L"\\U+D83Dx\\U+DE00\\U+0000", true},
      {"ANSI_1252", "\\M+6ABCD\\M+19Z86\\M+10041\\", L"\\M+6ABCD\\M+19Z86\\M+10041\\", true},
      // 0x5C trailing a CP932 lead byte is part of the character, not an escape.
      {"ANSI_932", "\x95\x5CU+0041", L"表U+0041", true},
      // Invalid bytes.
      {"AC1021", "a\xFF-", L"a\uFFFD-", false},
      {"AC1021", "\xE2\x88", L"\uFFFD\uFFFD", false},
      {"AC1021", "\\U+2205\xC0\xAF", L"∅\uFFFD\uFFFD", false},
      {"ANSI_1252", "a\x81", L"a\uFFFD", false},
      {"ANSI_932", "\x81 \x95\x5C\x81", L"\uFFFD 表\uFFFD", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.raw);
    Codec codec = c.codepage == "AC1021" ? Codec() : codecFor(c.codepage);
    std::wstring text;
    EXPECT_EQ(codec.decode(c.raw, text), c.clean);
    EXPECT_EQ(text, c.text);
  }
}

// CR and LF would end a value in the file, and NUL a value of a binary one: a text holding
// them is written so that the drawing reads back whole, the line breaks as escapes and NUL,
// which no drawing text holds, left out.
TEST(CodecTest, TextsWithLineBreaksReadBackFromAWrittenDrawing) {
  struct Case {
    std::string_view acadver;  // AC1027 is UTF-8, AC1015 the sample's ANSI_1252
    std::wstring text;
    std::string bytes;
    std::wstring read_back;
  };
  const Case cases[] = {
      {"AC1015", std::wstring(L"\nE\0\x03@", 5), "\\U+000AE\x03@", L"\nE\x03@"},
      {"AC1015", L"a\r\nb\r", "a\\U+000D\\U+000Ab\\U+000D", L"a\r\nb\r"},
      {"AC1015", L"Ø\n∅", "\xD8\\U+000A\\U+2205", L"Ø\n∅"},
      {"AC1027", L"Ø\n\r", "\xC3\x98\\U+000A\\U+000D", L"Ø\n\r"},
      {"AC1027", std::wstring(L"\n\0", 2), "\\U+000A", L"\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.acadver) + " " + c.bytes);
    auto doc = Document::parse(sample::withVersion(sample::drawing(), c.acadver), "sample.dxf");
    ASSERT_TRUE(doc.isOk()) << doc.status().message();
    EXPECT_EQ(doc->codec().encode(c.text), c.bytes);

    RecordId line = doc->byHandle(0x100);
    auto xdict = ensureExtensionDictionary(*doc, line);
    ASSERT_TRUE(xdict.isOk());
    auto xrecord = createXrecord(*doc, *xdict, L"NOTE");
    ASSERT_TRUE(xrecord.isOk());
    writeXrecord(*doc, *xrecord, {TypedValue::ofText(c.text), TypedValue::ofInteger(7)});
    auto again = Document::parse(doc->serialize(), "written.dxf");
    ASSERT_TRUE(again.isOk()) << again.status().message();
    EXPECT_EQ(readXrecord(*again, again->byHandle(doc->record(*xrecord).handle)),
              (std::vector<TypedValue>{TypedValue::ofText(c.read_back), TypedValue::ofInteger(7)}));
  }
}

// Real drawings: every line decodes cleanly, lines without escapes round-trip, and a known
// text value comes out right.
TEST(CodecTest, DecodesCorpusDrawings) {
  const std::filesystem::path dir = testing_paths::corpusDir();
  struct Case {
    std::string_view file;
    std::string_view name;
    std::wstring sample;  // empty: the drawing has no non-ASCII text
  };
  const Case cases[] = {
      {"libredwg__entities-2d_cp1250.dxf", "CP1250", L""},
      {"libredwg__PolyLine2D_cyrillic.dxf", "CP1251", L"Аннотативный"},
      {"ezdxf__small_r13_dos932.dxf", "CP932", L""},
      {"skymakerolof__polylines_macroman.dxf", "MACINTOSH", L""},
      {"libredwg__example_r14.dxf", "CP1252", L"108°"},
      {"qcad__tehnoloski_list_slovenian.dxf", "CP1252", L"Za\u0161\u010dita"},
      {"dxf-json__tc1_korean_xclip.dxf", "UTF-8", L"주석"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.file));
    std::ifstream in(dir / c.file, std::ios::binary);
    if (!in) GTEST_SKIP() << "corpus not available";
    Codec codec = sample::parse(testing_paths::readFile(dir / c.file), "corpus").codec();
    EXPECT_EQ(codec.name(), c.name);
    bool found = c.sample.empty();
    for (std::string line; std::getline(in, line);) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      std::wstring text;
      EXPECT_TRUE(codec.decode(line, text)) << line;
      if (line.find('\\') == std::string::npos) {
        EXPECT_EQ(codec.encode(text), line);
      }
      found = found || text == c.sample;
    }
    EXPECT_TRUE(found);
  }
}

}  // namespace
}  // namespace dxf
