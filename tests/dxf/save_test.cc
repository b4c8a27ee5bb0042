// Saving replaces a drawing only by a complete write; a failed save leaves it untouched.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "dxf/document.h"
#include "dxf/sample_drawing.h"
#include "test_paths.h"

namespace {

namespace fs = std::filesystem;

class SaveTest : public testing::Test {
 protected:
  testing_paths::TempDir temp_dir_{"taxor_save"};
  fs::path dir_ = temp_dir_.path();
};

// How a file is replaced (its mode kept, nothing left beside it) is the atomic write's
// (base/atomic_file_test.cc).
TEST_F(SaveTest, WritesNewFilesAndReplacesOldOnes) {
  auto doc = dxf::Document::parse(sample::drawing(), "sample.dxf");
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  fs::path fresh = dir_ / "fresh.dxf";
  fs::path existing = dir_ / "existing.dxf";
  std::ofstream(existing) << "old content";
  for (const fs::path& path : {fresh, existing}) {
    ASSERT_TRUE(doc->save(path.string()));
    EXPECT_EQ(testing_paths::readFile(path.string()), sample::drawing());
  }
}

// Failed saves, and loads of missing files, say why.
TEST_F(SaveTest, FailuresSayWhyAndChangeNothing) {
  auto doc = dxf::Document::parse(sample::drawing(), "sample.dxf");
  ASSERT_TRUE(doc.isOk());
  fs::path not_a_dir = dir_ / "file";
  std::ofstream(not_a_dir) << "x";
  const fs::path targets[] = {dir_ / "missing" / "out.dxf", not_a_dir / "out.dxf"};
  for (const fs::path& target : targets) {
    base::Status status = doc->save(target.string());
    EXPECT_FALSE(status.isOk()) << target;
    EXPECT_EQ(status.code(), base::Code::kIo);
    EXPECT_NE(status.message().find("cannot create a temporary file"), std::string::npos)
        << status.message();
  }
  // A target that is a folder cannot be replaced; the folder stays and no temporary remains.
  fs::path folder = dir_ / "folder.dxf";
  fs::create_directory(folder);
  base::Status status = doc->save(folder.string());
  EXPECT_FALSE(status.isOk());
  EXPECT_NE(status.message().find("was left unchanged"), std::string::npos) << status.message();
  EXPECT_TRUE(fs::is_directory(folder));
  EXPECT_EQ(std::distance(fs::directory_iterator(dir_), fs::directory_iterator()), 2);

  auto absent = dxf::Document::load((dir_ / "absent.dxf").string());
  ASSERT_FALSE(absent.isOk());
  EXPECT_EQ(absent.status().code(), base::Code::kIo);
  EXPECT_NE(absent.status().message().find("absent.dxf': No such file"), std::string::npos);
}

}  // namespace
