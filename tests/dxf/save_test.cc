// Saving replaces a drawing only by a complete write; a failed save leaves it untouched.
#include <gtest/gtest.h>
#include <sys/stat.h>

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

TEST_F(SaveTest, WritesNewFilesAndReplacesOldOnesKeepingTheirMode) {
  auto doc = dxf::Document::parse(sample::drawing(), "sample.dxf");
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  fs::path fresh = dir_ / "fresh.dxf";
  ASSERT_TRUE(doc->save(fresh.string()));
  EXPECT_EQ(testing_paths::readFile(fresh.string()), sample::drawing());

  fs::path existing = dir_ / "existing.dxf";
  std::ofstream(existing) << "old content";
  ::chmod(existing.c_str(), 0640);
  ASSERT_TRUE(doc->save(existing.string()));
  EXPECT_EQ(testing_paths::readFile(existing.string()), sample::drawing());
  EXPECT_EQ(fs::status(existing).permissions() & fs::perms::all,
            fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  // No temporary file is left behind.
  EXPECT_EQ(std::distance(fs::directory_iterator(dir_), fs::directory_iterator()), 2);
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
