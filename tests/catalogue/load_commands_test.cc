// TAXOR_LOAD and TAXOR_RELOAD on the fake host: the dialog, the catalogue they make
// current, their messages and the recent and favorites files.
#include "shell/load_commands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "base/utf.h"
#include "catalogue/catalogue.h"
#include "catalogue/class_writer.h"
#include "fakes/fake_host.h"
#include "shell/application.h"
#include "test_paths.h"

namespace {

namespace fs = std::filesystem;

class LoadCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(app_.initialize()); }

  std::wstring write(const std::string& name, const std::string& text) {
    std::ofstream(dir_ / name, std::ios::binary) << text;
    return path(name);
  }
  std::wstring path(const std::string& name) { return base::fromUtf8((dir_ / name).string()); }
  std::string read(const std::string& name) { return testing_paths::readFile(dir_ / name); }
  // Runs `command` and returns what it added to the transcript.
  std::string run(const wchar_t* command) {
    size_t before = host_.transcript().size();
    EXPECT_TRUE(host_.runCommand(command));
    EXPECT_EQ(host_.resourceDepth(), 0);
    return base::toUtf8(host_.transcript().substr(before));
  }
  shell::ProcessState& state() { return app_.state(); }

  testing_paths::TempDir dir_{"taxor_load"};
  fakes::FakeHost host_;
  shell::Application app_{host_, shell::StringTable::builtIn()};
};

constexpr const char* kPipe = "obj_name\tPipe\t1\t1\nobj_type\tLine\n";

TEST_F(LoadCommandsTest, ReloadBeforeLoadAndCancelledDialogChangeNothing) {
  EXPECT_EQ(run(L"TAXOR_RELOAD"), "");
  EXPECT_EQ(state().catalogue, nullptr);
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

// What a class file's text decides in a catalogue, as text: its groups and its classes as
// they would be written.
std::string describe(const catalogue::Catalogue& catalogue) {
  std::wstring out;
  for (const catalogue::Group& g : catalogue.tree.children) {
    out += g.name + L"|" + g.text.value_or(L"-") + L"|" + std::to_wstring(g.flag) + L"|";
    for (const std::wstring& member : g.members) out += member + L",";
  }
  for (const auto& [key, cls] : catalogue.objects) {
    out += L"\n" + key + L"|" + catalogue::writeClassDefinition(cls, &catalogue, 3);
  }
  return base::toUtf8(out);
}

TEST_F(LoadCommandsTest, ByteOrderMarkAndCrLfLoadAsWithout) {
  // Values at the ends of lines, a warning that names its line, one at the end of the file.
  const char* lines[] = {
      "class\tNetwork\t1\tWater and sewer",
      "define\tnet\tWater main",
      "obj_name\t$(net)\t1\t7\tIcons/Line.png",
      "obj_type\tLine",
      "obj_prop\tcolour\t1",
      "vel_name\tPIPES",
      "vel_key\tCLASS",
      "vel_fld\tDN\tDiameter\tinteger\t100\t80,100",
      "vel_fld\tNOTE\tNote\tcharacter\tnone",
      "vel_key\tCLASS2",
      "/class",
  };
  std::string expected_out;
  std::string expected_catalogue;
  for (const char* bom : {"", "\xEF\xBB\xBF"}) {
    for (const char* eol : {"\n", "\r\n"}) {
      SCOPED_TRACE(std::string(*bom ? "BOM " : "") + (eol[0] == '\r' ? "CRLF" : "LF"));
      std::string text = bom;
      for (const char* line : lines) text += std::string(line) + eol;
      std::wstring file = write("classes.txt", text);
      host_.fileAnswers({file});
      std::string out = run(L"TAXOR_LOAD");
      ASSERT_NE(state().catalogue, nullptr);
      std::string catalogue = describe(*state().catalogue);
      if (expected_out.empty()) {
        EXPECT_EQ(out, "Text files (*.txt) file name: " + base::toUtf8(file) +
                           "\n5: warning: invalid 'obj_prop' definition\n"
                           "11: warning: table 'PIPES' ill-formed\n");
        EXPECT_NE(catalogue.find("Network|Water and sewer|1|water main,\nwater main|obj_name\t"
                                 "Water main\t1\t7\tIcons/Line.png\n\tobj_type\tLine\n"),
                  std::string::npos)
            << catalogue;
        expected_out = out;
        expected_catalogue = catalogue;
      }
      EXPECT_EQ(out, expected_out);
      EXPECT_EQ(catalogue, expected_catalogue);
    }
  }
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

TEST_F(LoadCommandsTest, UnwritableListsAreWarnedOfInTheOrderTheyAreWritten) {
  state().recent_list = std::make_unique<catalogue::RecentList>();
  state().recent_list->loaded = true;
  state().favorites_list = std::make_unique<catalogue::FavoritesList>();
  std::wstring file = write("classes.txt", kPipe);
  // A folder cannot be written as a file.
  fs::create_directories(dir_ / "classes.txt.recent");
  fs::create_directories(dir_ / "classes.txt.favorites");
  host_.fileAnswers({file});
  run(L"TAXOR_LOAD");
  const std::string recent = "warning: unable to open '" + base::toUtf8(file) + ".recent'\n";
  const std::string favorites = "warning: unable to open '" + base::toUtf8(file) + ".favorites'\n";
  EXPECT_EQ(run(L"TAXOR_RELOAD"), recent + favorites);
  size_t before = host_.transcript().size();
  app_.unload();
  EXPECT_EQ(base::toUtf8(host_.transcript().substr(before)), favorites + recent);
}

}  // namespace
