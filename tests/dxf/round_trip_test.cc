// Every real drawing loads, and an unchanged drawing is written back byte for byte.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "dxf/document.h"
#include "dxf/sample_drawing.h"
#include "test_paths.h"

namespace {

class CorpusRoundTrip : public testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusRoundTrip, testing::ValuesIn(testing_paths::corpusFiles()),
                         [](const auto& info) { return sample::testName(info.param); });

// Every real drawing loads and is written back byte for byte when unchanged; and so is every
// way a record can be kept after an edit, over all its records: tags set again unchanged (a
// new encoding; binary drawings must still give the file itself), one tag inserted into an
// unchanged record (the file's lines around it), an insertion edited again, tags set again edited
// again at once (rewritten in place), and an insertion taken out again (the file's bytes once
// more). The drawing written must read back to the tags that were set; where they are the file's
// own, it must be the file.
enum class Edit { kNone, kSame, kInsert, kInsertTwice, kSameTwice, kInsertRemoved };

TEST_P(CorpusRoundTrip, EditedRecordsReadBackAsSet) {
  std::string bytes = testing_paths::readFile(GetParam());
  ASSERT_FALSE(bytes.empty());
  for (Edit edit : {Edit::kNone, Edit::kSame, Edit::kInsert, Edit::kInsertTwice, Edit::kSameTwice,
                    Edit::kInsertRemoved}) {
    SCOPED_TRACE(static_cast<int>(edit));
    auto doc = dxf::Document::parse(bytes, GetParam());
    ASSERT_TRUE(doc.isOk()) << doc.status().message();
    std::vector<std::vector<std::pair<int, std::string>>> expected;
    for (dxf::RecordId id = doc->first(); id != dxf::kNoRecord; id = doc->next(id)) {
      dxf::TagList list = doc->tags(id);
      std::vector<dxf::Tag> tags(list.begin(), list.end());
      // EOF carries whatever trails the file; a comment after it would be read as such.
      if (edit != Edit::kNone && doc->type(id) != "EOF") {
        std::vector<dxf::Tag> original = tags;
        if (edit == Edit::kInsert || edit == Edit::kInsertTwice || edit == Edit::kInsertRemoved) {
          size_t at = std::min<size_t>(2, tags.size());
          tags.insert(tags.begin() + static_cast<std::ptrdiff_t>(at), doc->makeTag(999, "TAXOR"));
        }
        doc->setTags(id, tags);
        if (edit == Edit::kInsertRemoved) {
          tags = original;
          doc->setTags(id, tags);
        }
        if (edit == Edit::kInsertTwice || edit == Edit::kSameTwice) {
          tags.push_back(doc->makeTag(999, "again"));
          doc->setTags(id, tags);
        }
      }
      auto& want = expected.emplace_back();
      for (const dxf::Tag& tag : tags) want.emplace_back(tag.code, doc->text(tag));
    }
    std::string out = doc->serialize();
    if (edit == Edit::kNone || edit == Edit::kInsertRemoved ||
        (edit == Edit::kSame && doc->format() == dxf::Format::kBinary)) {
      EXPECT_TRUE(out == bytes);
      continue;
    }
    auto again = dxf::Document::parse(out, "rewritten");
    ASSERT_TRUE(again.isOk()) << again.status().message();
    size_t index = 0;
    for (dxf::RecordId b = again->first(); b != dxf::kNoRecord; b = again->next(b), ++index) {
      ASSERT_LT(index, expected.size());
      std::vector<std::pair<int, std::string>> got;
      for (const dxf::Tag& tag : again->scan(b)) got.emplace_back(tag.code, again->text(tag));
      ASSERT_EQ(got, expected[index]) << "record " << index;
    }
    EXPECT_EQ(index, expected.size());
  }
}

// A drawing whose bytes are few enough to lie inside a string object (its short-string
// buffer) reads its own texts after it was returned and moved, when the stack it was read on
// has long been used for other things (another drawing read).
TEST(TinyDrawing, ReadsItsTextsAfterItWasMoved) {
  using namespace std::string_literals;  // the binary bytes hold NULs
  const std::string cases[] = {"  0\nEOF\n",
                               "  0\nEOF\nS\x06"
                               "B",
                               "0\r\nEOF\r\n", "AutoCAD Binary DXF\r\n\x1a\0\0\0EOF\0"s};
  for (const std::string& bytes : cases) {
    SCOPED_TRACE(bytes);
    auto parsed = dxf::Document::parse(bytes, "tiny.dxf");
    ASSERT_TRUE(parsed.isOk()) << parsed.status().message();
    dxf::Document moved = std::move(parsed.value());
    dxf::Document drawing = std::move(moved);
    ASSERT_TRUE(dxf::Document::parse("  0\nXYZ\n  0\nEOF\n", "other.dxf").isOk());
    std::vector<std::pair<int, std::string>> read;
    for (const dxf::Tag& tag : drawing.scan(drawing.first())) {
      read.emplace_back(tag.code, std::string(drawing.text(tag)));
    }
    EXPECT_EQ(read, (std::vector<std::pair<int, std::string>>{{0, "EOF"}}));
    EXPECT_EQ(drawing.serialize(), bytes);
  }
}

// A line may end in more than one CR: the value keeps all but the one before the line feed,
// and an edited record writes it so that it reads back the same, with LF or CRLF lines. Its
// other tags, with codes of each width an edited record keeps, read back too.
TEST(ValueEndingInCr, ReadsBackFromAnEditedRecord) {
  for (const char* eol : {"\n", "\r\n"}) {
    SCOPED_TRACE(eol[0] == '\r' ? "CRLF" : "LF");
    // The value line "5" CR, then the line end (its CR, if any, is the line end's).
    const char* value_line = eol[0] == '\r' ? "5\r" : "5\r\r";
    std::string bytes = std::string("  0") + eol + "XYZ" + eol + " 70" + eol + value_line + eol +
                        "  0" + eol + "EOF" + eol;
    auto drawing = dxf::Document::parse(bytes, "cr.dxf");
    ASSERT_TRUE(drawing.isOk()) << drawing.status().message();
    EXPECT_EQ(drawing->value(drawing->first(), 70), "5\r");
    dxf::TagList tags = drawing->tags(drawing->first());
    std::vector<dxf::Tag> edited(tags.begin(), tags.end());
    // Tags added at two places: the record is written from its tags, not its file bytes.
    edited.insert(edited.begin() + 1, drawing->makeTag(999, "note"));
    edited.push_back(drawing->makeTag(998, "more"));
    for (int code : {-5, 119, 120, 1071}) edited.push_back(drawing->makeTag(code, "7"));
    drawing->setTags(drawing->first(), edited);
    auto again = dxf::Document::parse(drawing->serialize(), "written.dxf");
    ASSERT_TRUE(again.isOk()) << again.status().message();
    EXPECT_EQ(again->value(again->first(), 70), "5\r");
    EXPECT_EQ(again->value(again->first(), 998), "more");
    for (int code : {-5, 119, 120, 1071}) {
      EXPECT_EQ(drawing->value(drawing->first(), code), "7") << code;
      EXPECT_EQ(again->value(again->first(), code), "7") << code;
    }
  }
}

// $HANDSEED is written above every handle given out, as a handle (code 5), whatever code
// the file gave it: written with an integer's code, a binary file would hold another number.
TEST(HandleSeed, IsWrittenAsAHandleAboveTheHandlesGivenOut) {
  const std::string ascii = "  0\nSECTION\n  2\nHEADER\n  9\n$HANDSEED\n";
  const std::string ascii_end = "\n  0\nENDSEC\n  0\nEOF\n";
  using namespace std::string_literals;  // the binary bytes hold NULs
  const std::string binary =
      "AutoCAD Binary DXF\r\n\x1a\0\0SECTION\0\x02HEADER\0\x09$ACADVER\0\x01"
      "AC2020\0\x09$HANDSEED\0"s;
  const std::string binary_end = "\0ENDSEC\0\0EOF\0"s;
  const struct {
    const char* name;
    std::string bytes;
  } cases[] = {
      {"ASCII, as a handle", ascii + "  5\n20" + ascii_end},
      {"ASCII, as an integer", ascii + " 70\n6" + ascii_end},
      {"ASCII, as a real", ascii + " 40\n0" + ascii_end},
      {"binary, as an integer", binary + "F\x06\0"s + binary_end},
      {"binary, as a handle", binary + "\x05" + "20\0"s + binary_end},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto doc = dxf::Document::parse(c.bytes, "seed.dxf");
    ASSERT_TRUE(doc.isOk()) << doc.status().message();
    const dxf::Handle given = doc->allocateHandle();
    auto again = dxf::Document::parse(doc->serialize(), "written.dxf");
    ASSERT_TRUE(again.isOk()) << again.status().message();
    std::vector<dxf::Tag> seed = again->headerVariable("$HANDSEED");
    ASSERT_EQ(seed.size(), 1u);
    EXPECT_EQ(seed[0].code, 5);
    EXPECT_GT(std::stoull(std::string(again->text(seed[0])), nullptr, 16), given);
  }
}

}  // namespace
