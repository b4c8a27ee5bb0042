// Damaged drawings: refused with the place and what is wrong, never half-read, unless a CAD
// program's audit would repair them.
#include <gtest/gtest.h>

#include "dxf/document.h"
#include "dxf/objects.h"
#include "dxf/sample_drawing.h"

namespace {

// A small valid R2000 drawing, one record per line.
std::string good() {
  return sample::pipes(R"(
0 SECTION|2 HEADER|9 $ACADVER|1 AC1015|9 $HANDSEED|5 30|0 ENDSEC|0 SECTION|2 ENTITIES
0 LINE|5 20|102 {ACAD_XDICTIONARY|360 21|102 }|330 1F|100 AcDbEntity|8 0|100 AcDbLine
10 1.5|20 2.5|30 0.0|11 3.0|21 4.0|31 0.0|0 ENDSEC|0 SECTION|2 OBJECTS
0 DICTIONARY|5 C|330 0|100 AcDbDictionary|281 1
0 DICTIONARY|5 21|330 20|100 AcDbDictionary|280 1|281 1|0 ENDSEC|0 EOF
)");
}

// `text` with `count` lines from line `first` on replaced by `with`, or dropped if it is empty.
std::string replaceLines(std::string text, int first, std::string with, int count = 1) {
  size_t begin = 0;
  for (int i = 1; i < first; ++i) begin = text.find('\n', begin) + 1;
  size_t end = begin;
  for (int i = 0; i < count; ++i) end = text.find('\n', end) + 1;
  return text.replace(begin, end - begin, with.empty() ? with : with + "\n");
}

// Valid (the faults below read its LINE 20 and extension dictionary 21); the header's 5 tag
// is $HANDSEED, the next handle to give out, not an object's.
TEST(ReaderErrorsTest, TheSampleIsValid) {
  auto doc = dxf::Document::parse(good(), "good.dxf");
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  EXPECT_EQ(doc->byHandle(0x30), dxf::kNoRecord);
  EXPECT_EQ(doc->allocateHandle(), 0x30u);

  // The largest handle there is, in use and as $HANDSEED: new handles are still new.
  std::string last =
      replaceLines(replaceLines(good(), 12, "FFFFFFFFFFFFFFFF"), 22, "FFFFFFFFFFFFFFFF");
  auto full = dxf::Document::parse(last, "full.dxf");
  ASSERT_TRUE(full.isOk()) << full.status().message();
  for (int i = 0; i < 2; ++i) {
    dxf::Handle fresh = full->allocateHandle();
    EXPECT_NE(fresh, 0u);
    EXPECT_EQ(full->byHandle(fresh), dxf::kNoRecord) << std::hex << fresh;
  }
}

TEST(ReaderErrorsTest, DamagedInputNamesFileLineAndFault) {
  const std::string text = good();
  struct Case {
    const char* what;
    std::string input;
    const char* message;  // expected in full, after "bad.dxf:"
  };
  const Case cases[] = {
      {"empty file", "", "1: the file is empty"},
      {"odd number of lines", text.substr(0, text.rfind("EOF")),
       "79: group code 0 has no value line; the file is truncated"},
      {"no EOF", text.substr(0, text.find("  0\nEOF")),
       "79: the file ends without 'EOF'; it is truncated"},
      {"non-numeric group code", replaceLines(text, 21, "x10"),
       "21: group code expected, found 'x10'"},
      {"code out of range", replaceLines(text, 21, "99999"),
       "21: group code expected, found '99999'"},
      {"text where a real belongs", replaceLines(text, 38, "one"),
       "38: group code 10 needs a number, found 'one'"},
      {"text where an integer belongs", replaceLines(text, 64, "yes"),
       "64: group code 281 needs a number, found 'yes'"},
      {"missing ENDSEC", replaceLines(text, 49, "", 2),
       "49: section ENTITIES is not closed by ENDSEC before the next SECTION"},
      {"ENDSEC outside a section", replaceLines(text, 16, "ENDSEC"),
       "15: ENDSEC without a SECTION"},
      {"truncated binary file",
       std::string("AutoCAD Binary DXF\r\n\x1a\0", 22) + std::string("\0\0SECTION\0", 10),
       " byte 32: the binary file is truncated"},
  };
  for (const Case& c : cases) {
    auto doc = dxf::Document::parse(c.input, "bad.dxf");
    ASSERT_FALSE(doc.isOk()) << c.what;
    EXPECT_EQ(doc.status().message(), std::string("bad.dxf:") + c.message) << c.what;
  }
}

// Faults that a CAD program's audit repairs or ignores do not refuse the drawing: it loads,
// names each fault once with its place, and writes back as it came. Changing the objects
// concerned repairs the first two; text that is not UTF-8 stays as it was.
TEST(ReaderErrorsTest, AuditableFaultsLoadAndAreReportedOnce) {
  const std::string text = good();
  const std::string not_utf8 = replaceLines(replaceLines(text, 8, "AC1021"), 34, "\xff\xfe");
  struct Case {
    const char* what;
    std::string input;
    std::vector<std::string> faults;  // after "bad.dxf:"
    size_t faults_after_changes;
  };
  const Case cases[] = {
      {"dangling extension dictionary",
       replaceLines(text, 26, "99"),
       {"26: warning: LINE 20: the extension dictionary handle '99' names no object; the object "
        "is read as having none, and attaching data to it gives it a new one"},
       0},
      {"handle used twice (which leaves the line's dictionary dangling)",
       replaceLines(text, 68, "20"),
       {"26: warning: LINE 20: the extension dictionary handle '21' names no object; the object "
        "is read as having none, and attaching data to it gives it a new one",
        "65: warning: DICTIONARY 20 uses the handle of LINE 20 at line 19; references to the "
        "handle mean the first, and this one is given a new handle when it is changed (an audit "
        "in a CAD program repairs the file)"},
       0},
      {"bytes that are not UTF-8",
       replaceLines(not_utf8, 36, "AcDb\xe9Line"),
       {"34: warning: group code 8 of LINE 20 holds bytes that are not UTF-8 (and 1 more "
        "values); they read as U+FFFD and are written back unchanged (save the drawing again "
        "from the program that made it to repair it)"},
       1},
  };
  for (const Case& c : cases) {
    auto doc = dxf::Document::parse(c.input, "bad.dxf");
    ASSERT_TRUE(doc.isOk()) << c.what << ": " << doc.status().message();
    std::vector<std::string> faults;
    for (const std::string& fault : c.faults) faults.push_back("bad.dxf:" + fault);
    EXPECT_EQ(doc->faults(), faults) << c.what;
    EXPECT_EQ(doc->serialize(), c.input) << c.what;

    dxf::RecordId line = doc->byHandle(0x20);
    ASSERT_EQ(doc->type(line), "LINE") << c.what;
    auto dict = dxf::ensureExtensionDictionary(*doc, line);
    ASSERT_TRUE(dict.isOk()) << c.what;
    EXPECT_EQ(doc->record(line).xdict, doc->record(*dict).handle) << c.what;
    for (dxf::RecordId id = doc->first(); id != dxf::kNoRecord; id = doc->next(id)) {
      doc->setTags(id, doc->tags(id));
    }
    // Erasing the dictionary leaves the line naming none, not a dangling one.
    dxf::eraseObject(*doc, *dict);
    EXPECT_EQ(doc->record(line).xdict, 0u) << c.what;
    auto again = dxf::Document::parse(doc->serialize(), "again.dxf");
    ASSERT_TRUE(again.isOk()) << c.what << ": " << again.status().message();
    EXPECT_EQ(again->faults().size(), c.faults_after_changes) << c.what;
    EXPECT_EQ(again->byHandle(0x20), line) << c.what;
  }
}

// Every truncation of a valid drawing is refused or read whole; none crashes or hangs.
TEST(ReaderErrorsTest, EveryTruncationIsHandled) {
  const std::string text = good();
  for (size_t n = 0; n < text.size(); ++n) {
    auto doc = dxf::Document::parse(text.substr(0, n), "cut.dxf");
    if (doc.isOk()) {
      EXPECT_EQ(doc->serialize(), text.substr(0, n));
    }
  }
}

}  // namespace
