#include "dxf/xrecord.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dxf/blocks.h"
#include "dxf/dictionary.h"
#include "dxf/document.h"
#include "dxf/objects.h"
#include "dxf/sample_drawing.h"
#include "dxf/sort_entities.h"

namespace dxf {
namespace {

TypedValue raw(int code, std::string text) {
  TypedValue v;
  v.code = static_cast<int16_t>(code);
  v.raw = std::move(text);
  return v;
}

// Data tags as another program may have written them, and the values they read as.
TEST(XrecordTest, DataTagsReadAsTypedValuesOrAsWritten) {
  struct Case {
    const char* version;
    std::vector<std::pair<int, std::string>> data;
    std::vector<TypedValue> values;
  };
  const Case cases[] = {
      {"AC1027", {{10, "1"}, {20, "2"}, {30, "3"}}, {TypedValue::ofPoint(1, 2, 3)}},
      {"AC1027",
       {{10, "1"}, {20, "2"}, {40, "2.5"}},
       {raw(10, "1"), raw(20, "2"), TypedValue::ofReal(2.5)}},
      {"AC1027", {{10, "x"}, {20, "2"}, {30, "3"}}, {raw(10, "x"), raw(20, "2"), raw(30, "3")}},
      {"AC1027",
       {{10, "1"}, {10, "4"}, {20, "5"}, {30, "6"}},
       {raw(10, "1"), TypedValue::ofPoint(4, 5, 6)}},
      {"AC1027", {{10, "1"}, {20, "2"}}, {raw(10, "1"), raw(20, "2")}},
      {"AC1027",
       {{90, "12"}, {1, "abc"}, {70, "5"}, {90, "x"}},
       {TypedValue::ofInteger(12), TypedValue::ofText(L"abc"), raw(70, "5"), raw(90, "x")}},
      // The cloning flag is not data; before R2000 there is none, and a 280 is data.
      {"AC1027", {{280, "3"}}, {raw(280, "3")}},
      {"AC1014", {{280, "3"}, {40, "1"}}, {raw(280, "3"), TypedValue::ofReal(1)}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.version) + " case " + std::to_string(&c - cases));
    auto doc = Document::parse(sample::withVersion(sample::drawing(), c.version), "sample.dxf");
    ASSERT_TRUE(doc.isOk()) << doc.status().message();
    std::vector<Tag> data;
    for (const auto& [code, value] : c.data) data.push_back(doc->makeTag(code, value));
    auto xdict = ensureExtensionDictionary(*doc, doc->byHandle(0x100));
    ASSERT_TRUE(xdict.isOk());
    auto xrecord = createXrecord(*doc, *xdict, L"DATA", data);
    ASSERT_TRUE(xrecord.isOk());
    EXPECT_EQ(readXrecord(*doc, *xrecord), c.values);
  }
}

// Records are kept in chunks of a megabyte; a longer one (a draw order table of a large
// drawing) must read back whole, value by value, before and after a save.
TEST(XrecordTest, DataLongerThanAStoreChunkReadsBack) {
  auto doc = Document::parse(sample::drawing(), "sample.dxf");
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  std::vector<TypedValue> values;
  for (int i = 0; i < 200000; ++i) values.push_back(TypedValue::ofInteger(1000000 + i));
  auto xdict = ensureExtensionDictionary(*doc, doc->byHandle(0x100));
  ASSERT_TRUE(xdict.isOk());
  auto xrecord = createXrecord(*doc, *xdict, L"LONG");
  ASSERT_TRUE(xrecord.isOk());
  writeXrecord(*doc, *xrecord, values);
  EXPECT_EQ(readXrecord(*doc, *xrecord), values);
  auto again = Document::parse(doc->serialize(), "written.dxf");
  ASSERT_TRUE(again.isOk()) << again.status().message();
  EXPECT_EQ(readXrecord(*again, again->byHandle(doc->record(*xrecord).handle)), values);
}

// An R12 drawing cannot hold objects: each way of asking for one is a clear error and
// changes nothing.
TEST(XrecordTest, R12DrawingsRefuseObjectsAndStayAsTheyWere) {
  const std::string bytes = sample::r12Drawing();
  Document doc = sample::parse(bytes);
  ASSERT_FALSE(modelSpaceEntities(doc).empty());
  RecordId line = modelSpaceEntities(doc).front();
  const base::Status refusals[] = {
      ensureExtensionDictionary(doc, line).status(),
      createXrecord(doc, line, L"TAXOR").status(),
      appendObject(doc, {doc.makeTag(0, "XRECORD"), doc.makeTag(100, "AcDbXrecord")}).status(),
      ensureSortEntsTable(doc, findBlockRecord(doc, L"*Model_Space")).status(),
  };
  for (const base::Status& status : refusals) {
    EXPECT_EQ(status.code(), base::Code::kUnsupported);
    EXPECT_NE(status.message().find("R2000 or later"), std::string::npos) << status.message();
  }
  EXPECT_TRUE(doc.serialize() == bytes);
}

}  // namespace
}  // namespace dxf
