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
