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
      {"taxor_stat\n", "Command: taxor_stat\nError: no file loaded.\n", ""},
      {"_.TAXOR_STAT\n", "Error: no file loaded.\n", ""},
      {"._Taxor_Stat\n", "Error: no file loaded.\n", ""},
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

TEST(HeadlessHostTest, StringInputEndsAsTheCallerAsks) {
  struct Case {
    bool allow_spaces;
    std::string input;
    host::InputStatus status;
    std::wstring text;
  };
  // 132 characters, one of them beyond the BMP: 133 UTF-16 units, one too many.
  const std::string beyond_bmp = "\xF0\x9F\x98\x80";  // U+1F600
  const std::string longest = std::string(130, 'y') + beyond_bmp;
  const Case cases[] = {
      {false, "two words\n", host::InputStatus::kNormal, L"two"},
      {true, "two words\n", host::InputStatus::kNormal, L"two words"},
      {false, "\n", host::InputStatus::kNormal, L""},
      {false,
       "\x1b"
       "abc\n",
       host::InputStatus::kCancel, L""},
      {true, "", host::InputStatus::kCancel, L""},
      {false, "y" + longest + "\n", host::InputStatus::kError, L""},
      {false, longest + "\n", host::InputStatus::kNormal, base::fromUtf8(longest)},
      {true, "Potrubí\n", host::InputStatus::kNormal, L"Potrubí"},
  };
  for (const Case& c : cases) {
    Session session(sample::drawing());
    session.input.addText(c.input);
    host::StringInput answer = session.host->editor().getString(c.allow_spaces, L"Answer: ");
    EXPECT_EQ(answer.status, c.status) << c.input;
    EXPECT_EQ(answer.text, c.text) << c.input;
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

TEST(HeadlessHostTest, InteractiveSelectionAnswers) {
  constexpr size_t kAll = SIZE_MAX;  // every entity of model space
  struct Case {
    const char* answers;
    size_t expected;
    const char* transcript;
  };
  const Case cases[] = {
      {"100\n\n", 1, "1 found, 1 total\n"},    {"100 101 100\n\n", 2, "1 found, 2 total\n"},
      {"ALL\n\n", kAll, " found, "},           {"nonsense\n\n", 0, "*Invalid selection*\n"},
      {"100\nP\n\n", 1, "1 found, 1 total\n"},
  };
  for (const Case& c : cases) {
    Session session(sample::drawing());
    session.input.addText(c.answers);
    host::SelectionInput got = session.host->editor().select();
    ASSERT_EQ(got.status, host::InputStatus::kNormal) << c.answers;
    EXPECT_EQ(got.ids.size(), c.expected == kAll
                                  ? session.host->dxfDatabase().modelSpaceEntities().size()
                                  : c.expected)
        << c.answers;
    EXPECT_NE(session.out().find(c.transcript), std::string::npos) << c.answers << session.out();
  }
  Session cancelled(sample::drawing());
  cancelled.input.addText("100\n\x1b");
  EXPECT_EQ(cancelled.host->editor().select().status, host::InputStatus::kCancel);
}

TEST(HeadlessHostTest, DialogsBecomePromptsWithDefaults) {
  Session session(sample::drawing());
  std::vector<host::CheckBox> boxes = {{L"Assign graphical properties", true},
                                       {L"Attach OD", true}};
  session.input.addText("\n0\n");
  ASSERT_TRUE(session.host->dialogs().checkBoxes(L"Classification parameters", boxes));
  EXPECT_TRUE(boxes[0].checked);
  EXPECT_FALSE(boxes[1].checked);
  EXPECT_NE(session.out().find("Attach OD [0/1] <1>: 0\n"), std::string::npos);

  session.input.addText("1\n\x1b");
  EXPECT_FALSE(session.host->dialogs().checkBoxes(L"Classification parameters", boxes));
  EXPECT_FALSE(boxes[1].checked);  // a cancelled dialog changes nothing

  // Each scripted line ends with a newline; the one after the Escape is still pending.
  session.input.addText("0\n1\n\n");
  auto chosen = session.host->dialogs().chooseItems(L"Remove", {L"pipe", L"cable"});
  ASSERT_TRUE(chosen.has_value());
  EXPECT_EQ(*chosen, std::vector<std::wstring>{L"pipe"});  // offered sorted: cable, pipe

  session.input.addText("\n");
  EXPECT_FALSE(session.host->dialogs().openFile(L"Classes", {L"txt"}, L"").has_value());
}

TEST(HeadlessHostTest, TheDocumentIsNamedByItsFullPath) {
  Session session(sample::drawing());  // opened as "test.dxf"
  EXPECT_EQ(session.host->document().fileName(),
            (std::filesystem::current_path() / "test.dxf").wstring());
}

}  // namespace
