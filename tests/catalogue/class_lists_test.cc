// The recent and favorites files beside a class file.
#include "catalogue/class_lists.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>

#include "base/utf.h"
#include "test_paths.h"

namespace {

namespace fs = std::filesystem;

class ClassListsTest : public ::testing::Test {
 protected:
  std::wstring write(const std::string& name, const std::string& text) {
    std::ofstream(dir_ / name, std::ios::binary) << text;
    return path(name);
  }
  std::string read(const std::wstring& path) { return testing_paths::readFile(base::toUtf8(path)); }
  std::wstring path(const std::string& name) { return base::fromUtf8((dir_ / name).string()); }

  testing_paths::TempDir dir_{"taxor_lists"};
};

TEST_F(ClassListsTest, RecentLines) {
  std::wstring file = write("a.recent",
                            "Water Pipe\t12\n"
                            "Pipe 12\n"           // no TAB: skipped
                            "Cable\tx\n"          // not a number: 0
                            "  Potrubí\t3  \r\n"  // trimmed; CR LF read as a line end
                            "\n"
                            "Lamp\t\t7\n");
  catalogue::RecentList list;
  ASSERT_TRUE(catalogue::readRecentFile(file, list));
  EXPECT_TRUE(list.loaded);
  EXPECT_EQ(list.entries, (std::vector<catalogue::RecentEntry>{
                              {L"Water Pipe", L"water pipe", 12},
                              {L"Cable", L"cable", 0},
                              {L"Potrubí", L"potrubí", 3},
                              {L"Lamp", L"lamp", 7},  // _wtoi skips the second TAB
                          }));

  // A file that cannot be read, or is too large to be a list, leaves the list as it was.
  EXPECT_FALSE(catalogue::readRecentFile(path("missing.recent"), list));
  EXPECT_EQ(list.entries.size(), 4u);
  const std::string at_limit =
      "Lamp\t1" + std::string(catalogue::kMaxListFileBytes - 7, ' ') + "\n";
  catalogue::RecentList largest;
  EXPECT_TRUE(catalogue::readRecentFile(write("largest.recent", at_limit), largest));
  EXPECT_EQ(largest.entries.size(), 1u);
  EXPECT_FALSE(catalogue::readRecentFile(write("huge.recent", at_limit + "\n"), list));
  EXPECT_EQ(list.entries.size(), 4u);

  std::wstring out = path("out.recent");
  ASSERT_TRUE(catalogue::writeRecentFile(out, list));
  EXPECT_EQ(read(out), "Water Pipe\t12\nCable\t0\nPotrubí\t3\nLamp\t7\n");
  EXPECT_FALSE(catalogue::writeRecentFile(path("no/such/folder/x.recent"), list));
}

TEST_F(ClassListsTest, Favorites) {
  std::wstring file = write("a.favorites", "Pipe\t1\n\nno tab\nCable\t-2\n");
  catalogue::FavoritesList list;
  ASSERT_TRUE(catalogue::readFavoritesFile(file, list));
  EXPECT_EQ(list.entries, (std::vector<catalogue::FavoriteEntry>{{L"Pipe", 1}, {L"Cable", -2}}));
  EXPECT_EQ(list.path, file);
  EXPECT_EQ(list.text(), L"Pipe\t1\nCable\t-2\n");

  // Written only under the file it was read from, compared without regard to case.
  std::wstring other = path("b.favorites");
  EXPECT_EQ(catalogue::writeFavoritesFile(other, list), catalogue::WriteResult::kSkipped);
  EXPECT_FALSE(fs::exists(dir_ / "b.favorites"));
  list.entries.push_back({L"Lamp", 0});
  std::wstring upper = file;
  upper.replace(upper.size() - 9, 9, L"FAVORITES");
  EXPECT_EQ(catalogue::writeFavoritesFile(upper, list), catalogue::WriteResult::kWritten);
  EXPECT_EQ(read(upper), "Pipe\t1\nCable\t-2\nLamp\t0\n");

  // A missing file empties the list and still makes it belong there.
  ASSERT_FALSE(catalogue::readFavoritesFile(other, list));
  EXPECT_TRUE(list.entries.empty());
  EXPECT_EQ(list.path, other);

  catalogue::FavoritesList never_read;
  EXPECT_EQ(catalogue::writeFavoritesFile(file, never_read), catalogue::WriteResult::kSkipped);
  list.path = path("no/such/folder/x.favorites");
  EXPECT_EQ(catalogue::writeFavoritesFile(list.path, list), catalogue::WriteResult::kFailed);
}

// Each list replaces its file whole: killed in the middle of the write, it leaves the old
// file, and the next write succeeds.
TEST_F(ClassListsTest, AListWriterKilledMidwayLeavesTheOldFile) {
  catalogue::RecentList recent;
  catalogue::FavoritesList favorites;
  for (int i = 0; i < 20000; ++i) {
    recent.entries.push_back({L"Class " + std::to_wstring(i), L"", i});
    favorites.entries.push_back({L"Class " + std::to_wstring(i), i});
  }
  for (const std::string kind : {"recent", "favorites"}) {
    SCOPED_TRACE(kind);
    const std::wstring file = write("list." + kind, "Old\t1\n");
    favorites.path = file;
    auto writeList = [&] {
      return kind == "recent" ? catalogue::writeRecentFile(file, recent)
                              : catalogue::writeFavoritesFile(file, favorites) ==
                                    catalogue::WriteResult::kWritten;
    };
    // The child dies of the file-size limit in the middle of the list.
    EXPECT_EQ(testing_paths::runChildUntilKilled(
                  [&](const testing_paths::MidwaySignal&) { return writeList() ? 0 : 1; }, 4096),
              SIGXFSZ);
    EXPECT_EQ(read(file), "Old\t1\n");
    ASSERT_TRUE(writeList());
    EXPECT_TRUE(read(file).ends_with("Class 19999\t19999\n"));
  }
}

}  // namespace
