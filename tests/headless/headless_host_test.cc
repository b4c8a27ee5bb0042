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

}  // namespace
