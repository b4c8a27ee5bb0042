// Every real drawing loads, and an unchanged drawing is written back byte for byte.
#include <gtest/gtest.h>

#include <filesystem>

#include "dxf/document.h"
#include "test_paths.h"

namespace {

class CorpusRoundTrip : public testing::TestWithParam<std::string> {};

TEST_P(CorpusRoundTrip, LoadsAndWritesBackByteForByte) {
  std::string bytes = testing_paths::readFile(GetParam());
  ASSERT_FALSE(bytes.empty());
  auto doc = dxf::Document::parse(bytes, GetParam());
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  std::string out = doc->serialize();
  ASSERT_EQ(out.size(), bytes.size());
  EXPECT_TRUE(out == bytes);
}

std::string fileLabel(const testing::TestParamInfo<std::string>& info) {
  std::string name = std::filesystem::path(info.param).stem().string();
  for (char& c : name) {
    if (!isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusRoundTrip, testing::ValuesIn(testing_paths::corpusFiles()),
                         fileLabel);

}  // namespace

namespace {

// Records written from their tags rather than copied: binary drawings have one encoding per
// value, so the result must still be the file itself; ASCII ones re-read to the same tags.
TEST_P(CorpusRoundTrip, RecordsWrittenFromTagsReadBackTheSame) {
  std::string bytes = testing_paths::readFile(GetParam());
  auto doc = dxf::Document::parse(bytes, GetParam());
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  for (dxf::RecordId id = doc->first(); id != dxf::kNoRecord; id = doc->next(id)) {
    if (doc->type(id) == "EOF") continue;  // carries whatever trails the file
    dxf::TagList list = doc->tags(id);
    std::vector<dxf::Tag> tags(list.begin(), list.end());
    doc->setTags(id, tags);
  }
  std::string out = doc->serialize();
  if (doc->format() == dxf::Format::kBinary) {
    EXPECT_TRUE(out == bytes);
    return;
  }
  auto again = dxf::Document::parse(out, "rewritten");
  ASSERT_TRUE(again.isOk()) << again.status().message();
  dxf::RecordId a = doc->first(), b = again->first();
  for (; a != dxf::kNoRecord && b != dxf::kNoRecord; a = doc->next(a), b = again->next(b)) {
    auto ta = doc->tags(a), tb = again->tags(b);
    ASSERT_EQ(ta.size(), tb.size());
    for (size_t i = 0; i < ta.size(); ++i) {
      ASSERT_EQ(ta[i].code, tb[i].code);
      ASSERT_EQ(doc->text(ta[i]), again->text(tb[i]));
    }
  }
  EXPECT_EQ(a, dxf::kNoRecord);
  EXPECT_EQ(b, dxf::kNoRecord);
}

}  // namespace
