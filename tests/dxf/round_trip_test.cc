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

// Every way a record can be kept after an edit, over every record of every real drawing:
// tags set again unchanged (a new encoding; binary drawings must still give the file
// itself), one tag inserted into an unchanged record (the file's lines around it), an
// insertion edited again, tags set again edited again at once (rewritten in place), and an
// insertion taken out again (the file's bytes once more). The drawing written must read
// back to the tags that were set; where they are the file's own, it must be the file.
enum class Edit { kSame, kInsert, kInsertTwice, kSameTwice, kInsertRemoved };

TEST_P(CorpusRoundTrip, EditedRecordsReadBackAsSet) {
  std::string bytes = testing_paths::readFile(GetParam());
  for (Edit edit : {Edit::kSame, Edit::kInsert, Edit::kInsertTwice, Edit::kSameTwice,
                    Edit::kInsertRemoved}) {
    SCOPED_TRACE(static_cast<int>(edit));
    auto doc = dxf::Document::parse(bytes, GetParam());
    ASSERT_TRUE(doc.isOk()) << doc.status().message();
    std::vector<std::vector<std::pair<int, std::string>>> expected;
    for (dxf::RecordId id = doc->first(); id != dxf::kNoRecord; id = doc->next(id)) {
      dxf::TagList list = doc->tags(id);
      std::vector<dxf::Tag> tags(list.begin(), list.end());
      // EOF carries whatever trails the file; a comment after it would be read as such.
      if (doc->type(id) != "EOF") {
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
    if (edit == Edit::kInsertRemoved ||
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

}  // namespace
