// The headless command line, driven with scripted input and checked by its transcript.
#include <gtest/gtest.h>

#include <filesystem>

#include "base/utf.h"
#include "dxf/sample_drawing.h"
#include "headless/session.h"
#include "shell/command_context.h"
#include "shell/command_table.h"

namespace {

using testing_session::Session;

// Each command refuses before a file is loaded when it needs one, and is gone once unloaded.
TEST(HeadlessHostTest, CommandsAreGuardedBeforeLoadingAndGoneAfterUnloading) {
  Session unloaded(sample::drawing());
  EXPECT_EQ(unloaded.host->commands().commandsOf(shell::kCommandGroup).size(), 28u);
  unloaded.app->unload();
  EXPECT_TRUE(unloaded.host->commands().commandsOf(shell::kCommandGroup).empty());
  for (const shell::CommandSpec& command : shell::commandTable()) {
    Session session(sample::drawing());
    std::string name = base::toUtf8(command.name);
    session.run(name + "\n");
    std::string refused = "Command: " + name + "\nError: no file loaded.\n";
    EXPECT_EQ(session.out().find(refused) != std::string::npos, command.needs_catalogue) << name;
    EXPECT_EQ(session.host->resourceDepth(), 0) << name;
    unloaded.run(name + "\n");
    EXPECT_NE(unloaded.err().find("Unknown command \"" + name + "\""), std::string::npos) << name;
  }
}

TEST(HeadlessHostTest, CommandNamesAndBlankLines) {
  struct Case {
    const char* script;
    const char* expected_out;
    const char* expected_err;
  };
  const Case cases[] = {
      {"._Taxor_Stat\n", "Command: ._Taxor_Stat\nError: no file loaded.\n", ""},
      {"\n\n", "Command: \nCommand: \nCommand: \n", ""},
      {"nosuch\ntaxor_stat\n", "Command: taxor_stat\nError: no file loaded.\n",
       "Unknown command \"NOSUCH\""},
      {"taxor_stat taxor_stat\n",
       "Error: no file loaded.\nCommand: taxor_stat\nError: no file loaded.\n", ""},
  };
  for (const Case& c : cases) {
    Session session(sample::drawing());
    session.run(c.script);
    EXPECT_NE(session.out().find(c.expected_out), std::string::npos) << c.script << session.out();
    EXPECT_NE(session.err().find(c.expected_err), std::string::npos) << c.script << session.err();
  }
}

// The switch prompts as the commands' tests leave them out: each command keeps its own
// default for the same prompt, a cancel keeps the default, and answers are read as _wtoi
// reads them.
TEST(HeadlessHostTest, ModePromptDefaultsAreKeptPerCommand) {
  Session session(sample::drawing());
  shell::CommandContext context(*session.host, session.app->state(), shell::StringTable::builtIn(),
                                L"TAXOR_SEL");
  shell::CommandContext other(*session.host, session.app->state(), shell::StringTable::builtIn(),
                              L"TAXOR_SEL_EXT");
  auto ask = [&](shell::CommandContext& c, const char* answer) {
    session.input.addText(answer);
    return c.askMode(shell::StringId::kPromptUseProperties, 1, 1);
  };
  EXPECT_EQ(ask(context, "-3\n"), 0);
  EXPECT_EQ(ask(other, "\n"), 1);
  EXPECT_FALSE(ask(context, "\x1b").has_value());
  EXPECT_EQ(ask(context, ""), 0);  // the rest of the Escape's line: an empty answer
  EXPECT_EQ(ask(context, "1abc\n"), 1);
}

TEST(HeadlessHostTest, QueuedTextRunsBeforeTheRestOfTheInput) {
  Session session(sample::drawing());
  std::vector<std::wstring> ran;
  auto record = [&](const wchar_t* name) { return [&ran, name] { ran.push_back(name); }; };
  ASSERT_TRUE(session.host->commands().addCommand(L"TEST", L"FIRST", 0, [&] {
    ran.push_back(L"FIRST");
    session.host->document().sendStringToExecute(L"SECOND\n");
  }));
  ASSERT_TRUE(session.host->commands().addCommand(L"TEST", L"SECOND", 0, record(L"SECOND")));
  ASSERT_TRUE(session.host->commands().addCommand(L"TEST", L"THIRD", 0, record(L"THIRD")));
  session.run("FIRST\nTHIRD\n");
  EXPECT_EQ(ran, (std::vector<std::wstring>{L"FIRST", L"SECOND", L"THIRD"}));
}

// Handles and ALL are answered in the commands' tests (shell/), and the dialogs' check boxes
// cancelled at each of them (shell/command_conventions_test.cc); here, that such a cancel
// leaves the boxes as they were.
TEST(HeadlessHostTest, SelectionDialogsAndTheDocumentsName) {
  struct Case {
    const char* answers;
    host::InputStatus status;
    size_t selected;
    const char* transcript;
  };
  const Case cases[] = {
      {"100 101 100\n\n", host::InputStatus::kNormal, 2, "1 found, 2 total\n"},
      {"nonsense\n\n", host::InputStatus::kNormal, 0, "*Invalid selection*\n"},
      {"100\nP\n\n", host::InputStatus::kNormal, 1, "1 found, 1 total\n"},
      {"100\n\x1b", host::InputStatus::kCancel, 0, ""},
  };
  for (const Case& c : cases) {
    Session session(sample::drawing());
    session.input.addText(c.answers);
    host::SelectionInput got = session.host->editor().select();
    EXPECT_EQ(got.status, c.status) << c.answers;
    EXPECT_EQ(got.ids.size(), c.selected) << c.answers;
    EXPECT_NE(session.out().find(c.transcript), std::string::npos) << c.answers << session.out();
  }

  Session session(sample::drawing());
  // P selects the previous selection again, in its order.
  session.input.addText("104 100 ALL\n\nP\n\n");
  host::SelectionInput first = session.host->editor().select();
  EXPECT_GT(first.ids.size(), 2u);
  EXPECT_EQ(session.host->editor().select().ids, first.ids);

  session.input.addText("0\n0\n1\n");  // Select All, then each item
  auto chosen = session.host->dialogs().chooseItems(L"Remove", {L"pipe", L"cable"});
  ASSERT_TRUE(chosen.has_value());
  EXPECT_EQ(*chosen, std::vector<std::wstring>{L"pipe"});  // offered sorted: cable, pipe
  // Check boxes cancelled at the second keep what they held before the first was answered.
  std::vector<host::CheckBox> boxes = {{L"Layer", false}, {L"Colour", false}};
  session.input.addText("1\n\x1b");
  EXPECT_FALSE(session.host->dialogs().checkBoxes(L"Apply", boxes));
  EXPECT_FALSE(boxes[0].checked);
  session.input.addText("\n");
  EXPECT_FALSE(session.host->dialogs().openFile(L"Classes", {L"txt"}, L"").has_value());
  // Opened as "test.dxf", the document is named by its full path.
  EXPECT_EQ(session.host->document().fileName(),
            (std::filesystem::current_path() / "test.dxf").wstring());
}

// An entity whose class depends on its data is named as the application that made it would.
TEST(HeadlessHostTest, EntityClassesFollowTheirData) {
  const std::string insert =
      "0 INSERT|5 50|330 1F|100 AcDbEntity|8 0|100 AcDbBlockReference|2 Door";
  const std::string polyline = "0 POLYLINE|5 50|330 1F|100 AcDbEntity|8 0|100 AcDb2dPolyline|66 1";
  const std::string seqend = "|0 SEQEND|5 51|330 50|100 AcDbEntity|8 0";
  const std::string dimension =
      "0 DIMENSION|5 50|330 1F|100 AcDbEntity|8 0|100 AcDbDimension|2 *D1|10 0|20 0|30 0";
  const struct {
    std::string record;
    const wchar_t* host_class;
  } cases[] = {
      {insert + "|10 0|20 0|30 0", L"AcDbBlockReference"},
      {insert + "|10 0|20 0|30 0|70 1|71 1", L"AcDbBlockReference"},
      {insert + "|10 0|20 0|30 0|70 3", L"AcDbMInsertBlock"},
      {insert + "|10 0|20 0|30 0|70 1|71 2", L"AcDbMInsertBlock"},
      {insert + "|71 2|10 0|20 0|30 0|70 1", L"AcDbMInsertBlock"},
      {polyline + "|10 0|20 0|30 0|70 0" + seqend, L"AcDb2dPolyline"},
      {polyline + "|10 0|20 0|30 0|70 9" + seqend, L"AcDb3dPolyline"},
      {polyline + "|10 0|20 0|30 0|70 64" + seqend, L"AcDbPolyFaceMesh"},
      {polyline + "|10 0|20 0|30 0|70 16" + seqend, L"AcDbPolygonMesh"},
      {dimension + "|70 33", L"AcDbAlignedDimension"},
      {dimension + "|70 6", L"AcDbOrdinateDimension"},
      {dimension + "|70 7", L"AcDbDimension"},
  };
  const std::string line =
      "0 LINE|5 40|330 1F|100 AcDbEntity|8 0|100 AcDbLine|10 0.0|20 0.0|30 0.0|11 1.0|21 1.0|31 "
      "0.0";
  for (const auto& c : cases) {
    std::string records(sample::kSmall);
    size_t at = records.find(line);
    ASSERT_NE(at, std::string::npos);
    records.replace(at, line.size(), c.record);
    Session session(sample::withVersion(sample::pipes(records), "AC1015", "AC1015"));
    headless::DxfDatabase& db = session.host->dxfDatabase();
    host::ObjectId id = db.idForHandle(L"50");
    EXPECT_EQ(db.entityClass(id), c.host_class) << c.record;
  }
}

}  // namespace
