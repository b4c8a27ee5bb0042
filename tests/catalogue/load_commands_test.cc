// TAXOR_LOAD and TAXOR_RELOAD on the fake host: the dialog, the catalogue they make
// current, their messages and the recent and favorites files.
#include "shell/load_commands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/utf.h"
#include "catalogue/catalogue.h"
#include "fakes/fake_host.h"
#include "shell/application.h"

namespace {

namespace fs = std::filesystem;

class LoadCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("taxor_load_" +
            std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(dir_);
    fs::create_directories(dir_);
    ASSERT_TRUE(app_.initialize());
  }
  void TearDown() override { fs::remove_all(dir_); }

  std::wstring write(const std::string& name, const std::string& text) {
    std::ofstream(dir_ / name, std::ios::binary) << text;
    return path(name);
  }
  std::wstring path(const std::string& name) { return base::fromUtf8((dir_ / name).string()); }
  std::string read(const std::string& name) {
    std::ifstream in(dir_ / name, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
  // Runs `command` and returns what it added to the transcript.
  std::string run(const wchar_t* command) {
    size_t before = host_.transcript().size();
    EXPECT_TRUE(host_.runCommand(command));
    EXPECT_EQ(host_.resourceDepth(), 0);
    return base::toUtf8(host_.transcript().substr(before));
  }
  shell::ProcessState& state() { return app_.state(); }

  fs::path dir_;
  fakes::FakeHost host_;
  shell::Application app_{host_, shell::StringTable::builtIn()};
};

constexpr const char* kPipe = "obj_name\tPipe\t1\t1\nobj_type\tLine\n";

TEST_F(LoadCommandsTest, ReloadBeforeLoadDoesNothing) {
  EXPECT_EQ(run(L"TAXOR_RELOAD"), "");
  EXPECT_EQ(state().catalogue, nullptr);
}

TEST_F(LoadCommandsTest, CancelledDialogChangesNothing) {
  host_.fileAnswers({std::nullopt});
  EXPECT_EQ(run(L"TAXOR_LOAD"), "Text files (*.txt) file name: *Cancel*\n");
  EXPECT_EQ(state().catalogue, nullptr);
  EXPECT_TRUE(state().class_file.empty());
}

TEST_F(LoadCommandsTest, LoadMakesTheFileCurrentAndPrintsTheParsersMessages) {
  std::wstring file = write("classes.txt", std::string(kPipe) + "obj_prop\tcolour\t1\n");
  host_.fakeEditor().setImpliedSelection({host_.addEntity(L"AcDbLine")});
  host_.fileAnswers({file});
  EXPECT_EQ(run(L"TAXOR_LOAD"), "Text files (*.txt) file name: " + base::toUtf8(file) +
                                    "\n3: warning: invalid 'obj_prop' definition\n");
  EXPECT_EQ(state().class_file, file);
  ASSERT_NE(state().catalogue, nullptr);
  EXPECT_NE(state().catalogue->findObject(L"PIPE"), nullptr);
  EXPECT_TRUE(host_.fakeEditor().impliedSelection().empty());

  // A file that fails still makes an (empty) catalogue current.
  write("classes.txt", "bogus\n");
  EXPECT_EQ(run(L"TAXOR_RELOAD"), "1: error: invalid syntax: 'bogus'\n");
  ASSERT_NE(state().catalogue, nullptr);
  EXPECT_TRUE(state().catalogue->empty());
}

TEST_F(LoadCommandsTest, ListsAreReadByLoadAndWrittenByReload) {
  // The palettes exist.
  state().recent_list = std::make_unique<catalogue::RecentList>();
  state().favorites_list = std::make_unique<catalogue::FavoritesList>();
  std::wstring first = write("first.txt", kPipe);
  write("first.txt.recent", "Pipe\t4\n");
  write("first.txt.favorites", "Pipe\t1\n");
  std::wstring second = write("second.txt", kPipe);

  host_.fileAnswers({first, second});
  run(L"TAXOR_LOAD");
  EXPECT_EQ(state().recent_list->entries.size(), 1u);
  EXPECT_EQ(state().favorites_list->entries.size(), 1u);
  state().recent_list->entries[0].counter = 5;
  state().favorites_list->entries.push_back({L"Duct", 2});

  // Another file: its missing recent file keeps the entries on show, its missing favorites
  // file empties the favorites; the first file's lists are not written.
  run(L"TAXOR_LOAD");
  EXPECT_EQ(read("first.txt.recent"), "Pipe\t4\n");
  EXPECT_EQ(read("first.txt.favorites"), "Pipe\t1\n");
  EXPECT_EQ(state().recent_list->entries[0].counter, 5);
  EXPECT_TRUE(state().favorites_list->entries.empty());

  state().favorites_list->entries.push_back({L"Pipe", 9});
  EXPECT_EQ(run(L"TAXOR_RELOAD"), "");
  EXPECT_EQ(read("second.txt.recent"), "Pipe\t5\n");
  EXPECT_EQ(read("second.txt.favorites"), "Pipe\t9\n");
  EXPECT_EQ(state().recent_list->entries[0].counter, 5);  // not read again
}

TEST_F(LoadCommandsTest, UnwritableListsAreWarnedOf) {
  state().recent_list = std::make_unique<catalogue::RecentList>();
  state().recent_list->loaded = true;
  std::wstring file = write("classes.txt", kPipe);
  fs::create_directories(dir_ / "classes.txt.recent");  // a folder cannot be written as a file
  host_.fileAnswers({file});
  run(L"TAXOR_LOAD");
  EXPECT_EQ(run(L"TAXOR_RELOAD"), "warning: unable to open '" + base::toUtf8(file) + ".recent'\n");
}

}  // namespace
