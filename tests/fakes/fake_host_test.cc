// The fake host's command line, dialogs, document and commands against the contracts of
// host::Editor, host::Dialogs, host::Document, host::CommandStack and host::Host.
#include "fakes/fake_host.h"

#include <gtest/gtest.h>

#include "base/utf.h"

namespace {

using fakes::Answer;
using fakes::FakeHost;
using fakes::Selection;
using host::InputStatus;
using host::ObjectId;

std::string show(const std::wstring& text) { return testing::PrintToString(text); }

TEST(FakeEditorTest, GetStringTakesTheScriptedAnswers) {
  struct Case {
    bool allow_spaces;
    std::vector<Answer> script;
    InputStatus status;
    std::wstring text;
    std::wstring transcript;
  };
  // U+1F600 counts two UTF-16 units: too_long has kMaxInput characters, one unit too many.
  const std::wstring longest =
      std::wstring(host::Editor::kMaxInput - 2, L'y') + base::fromUtf8("\xF0\x9F\x98\x80");
  const std::wstring too_long = L"x" + longest;
  const Case cases[] = {
      {false, {L"1"}, InputStatus::kNormal, L"1", L"Name: 1\n"},
      {false, {L""}, InputStatus::kNormal, L"", L"Name: \n"},
      {true, {L"two words"}, InputStatus::kNormal, L"two words", L"Name: two words\n"},
      {false, {L"two words"}, InputStatus::kNormal, L"two", L"Name: two\n"},
      {true, {L"Potrubí"}, InputStatus::kNormal, L"Potrubí", L"Name: Potrubí\n"},
      {false, {Answer::cancel(), L"1"}, InputStatus::kCancel, L"", L"Name: *Cancel*\n"},
      {false, {Answer::error(), L"1"}, InputStatus::kError, L"", L"Name: *Invalid*\n"},
      {false, {}, InputStatus::kCancel, L"", L"Name: *Cancel*\n"},
      {true, {longest}, InputStatus::kNormal, longest, L"Name: " + longest + L"\n"},
      {true, {too_long}, InputStatus::kError, L"", L"Name: " + too_long + L"\n"},
  };
  for (const Case& c : cases) {
    FakeHost host;
    host.answers(c.script);
    host::StringInput got = host.editor().getString(c.allow_spaces, L"Name: ");
    EXPECT_EQ(got.status, c.status) << show(c.transcript);
    EXPECT_EQ(got.text, c.text) << show(c.transcript);
    EXPECT_EQ(host.transcript(), c.transcript);
  }
}

TEST(FakeEditorTest, BlankEndsAnAnswerAndTheRestAnswersTheNextPrompt) {
  FakeHost host;
  host.answers({L"a b c", L"d ", L"last"});
  host::Editor& editor = host.editor();
  editor.print(L"No newline");
  EXPECT_EQ(editor.getString(false, L"1: ").text, L"a");
  EXPECT_EQ(editor.getString(true, L"2: ").text, L"b c");
  EXPECT_EQ(editor.getString(false, L"3: ").text, L"d");
  // The blank ended "d"; the Enter after it answers the next prompt.
  host::StringInput empty = editor.getString(false, L"4: ");
  EXPECT_EQ(empty.status, InputStatus::kNormal);
  EXPECT_EQ(empty.text, L"");
  EXPECT_EQ(host.fakeEditor().answersLeft(), 1u);
  EXPECT_EQ(editor.getString(false, L"5: ").text, L"last");
  EXPECT_EQ(editor.getString(false, L"6: ").status, InputStatus::kCancel);
  EXPECT_EQ(host.fakeEditor().prompts(),
            (std::vector<std::wstring>{L"1: ", L"2: ", L"3: ", L"4: ", L"5: ", L"6: "}));
  editor.print(L"Done.\n");
  EXPECT_EQ(host.transcript(), L"No newline1: a\n2: b c\n3: d\n4: \n5: last\n6: *Cancel*\nDone.\n");
}

TEST(FakeEditorTest, GetPointReadsCoordinatesAndPromptsAgainOnNonsense) {
  struct Case {
    std::vector<Answer> script;
    InputStatus status;
    host::Point3 point;
    int prompts;
  };
  const Case cases[] = {
      {{L"1,2"}, InputStatus::kNormal, {1, 2, 0}, 1},
      {{L"1.5,-2,3"}, InputStatus::kNormal, {1.5, -2, 3}, 1},
      {{L""}, InputStatus::kNone, {}, 1},
      {{L"x", L"3,4"}, InputStatus::kNormal, {3, 4, 0}, 2},
      {{L"1", L"1,2,3,4", L"1,,2", L"5,6"}, InputStatus::kNormal, {5, 6, 0}, 4},
      {{L"1,y"}, InputStatus::kCancel, {}, 2},  // then the script runs out
      {{Answer::cancel()}, InputStatus::kCancel, {}, 1},
      {{Answer::error()}, InputStatus::kError, {}, 1},
  };
  for (const Case& c : cases) {
    FakeHost host;
    host.answers(c.script);
    host::PointInput got = host.editor().getPoint(L"Point: ");
    const std::string what = show(c.script.front().text);
    EXPECT_EQ(got.status, c.status) << what;
    if (c.status == InputStatus::kNormal) {
      EXPECT_EQ(got.point, c.point) << what;
    }
    EXPECT_EQ(host.fakeEditor().prompts().size(), static_cast<size_t>(c.prompts)) << what;
    EXPECT_EQ(host.transcript().find(L"Invalid point.\n") != std::wstring::npos, c.prompts > 1)
        << what;
  }
}

TEST(FakeEditorTest, SelectTakesTheScriptedSelections) {
  FakeHost host;
  ObjectId a = host.addEntity(L"AcDbLine");
  ObjectId b = host.addEntity(L"AcDbCircle");
  host.selections({{a, b}, Selection::cancel(), std::vector<ObjectId>{}, {b}});
  struct Expected {
    InputStatus status;
    std::vector<ObjectId> ids;
  };
  const Expected expected[] = {
      {InputStatus::kNormal, {a, b}}, {InputStatus::kCancel, {}}, {InputStatus::kNormal, {}},
      {InputStatus::kNormal, {b}},    {InputStatus::kCancel, {}},  // the script has run out
  };
  for (const Expected& e : expected) {
    host::SelectionInput got = host.editor().select();
    EXPECT_EQ(got.status, e.status);
    EXPECT_EQ(got.ids, e.ids);
  }
  EXPECT_EQ(host.fakeEditor().selectionsLeft(), 0u);
  EXPECT_EQ(host.transcript(),
            L"Select objects: 2 found\nSelect objects: *Cancel*\nSelect objects: 0 found\n"
            L"Select objects: 1 found\nSelect objects: *Cancel*\n");
}

TEST(FakeEditorTest, ImpliedSelectionLosesErasedObjects) {
  FakeHost host;
  ObjectId a = host.addEntity(L"AcDbLine");
  ObjectId b = host.addEntity(L"AcDbLine");
  host.editor().setImpliedSelection({a, b});
  ASSERT_TRUE(host.database().erase(a));
  EXPECT_EQ(host.editor().impliedSelection(), std::vector<ObjectId>{b});
}

TEST(FakeDialogsTest, FileDialogsReturnTheScriptedPathOrCancel) {
  enum class Kind { kOpen, kSave };
  struct Case {
    Kind kind;
    std::vector<fakes::FileAnswer> script;
    std::wstring default_extension;
    std::optional<std::wstring> expected;
  };
  const Case cases[] = {
      {Kind::kOpen, {L"/tmp/classes.txt"}, L"", L"/tmp/classes.txt"},
      {Kind::kOpen, {std::nullopt, L"/tmp/later.txt"}, L"", std::nullopt},
      {Kind::kOpen, {}, L"", std::nullopt},
      {Kind::kSave, {L"/tmp/out"}, L"txt", L"/tmp/out.txt"},
      {Kind::kSave, {L"/tmp/out.csv"}, L"txt", L"/tmp/out.csv"},
      {Kind::kSave, {L"/tmp/out"}, L"", L"/tmp/out"},
      {Kind::kSave, {std::nullopt}, L"txt", std::nullopt},
      {Kind::kSave, {}, L"txt", std::nullopt},
  };
  for (const Case& c : cases) {
    FakeHost host;
    host.fileAnswers(c.script);
    std::optional<std::wstring> got = c.kind == Kind::kOpen
                                          ? host.dialogs().openFile(L"Load", {L"txt"}, L"")
                                          : host.dialogs().saveFile(L"Load", c.default_extension);
    const std::string what = show(c.expected.value_or(L"cancel"));
    EXPECT_EQ(got, c.expected) << what;
    EXPECT_EQ(host.transcript().rfind(L"Load file name: ", 0), 0u) << what;
    EXPECT_NE(host.transcript().find(got ? L"/tmp/" : L"*Cancel*"), std::wstring::npos) << what;
  }
}

TEST(FakeDialogsTest, CheckBoxesTakeTheAnsweredStatesOrStayOnCancel) {
  struct Case {
    std::vector<fakes::CheckBoxAnswer> script;
    bool ok;
    std::vector<bool> states;
  };
  const Case cases[] = {
      {{std::vector<bool>{true, false}}, true, {true, false}},
      {{std::vector<bool>{true}}, true, {true, true}},  // the second keeps its state
      {{std::vector<bool>{false, false, true}}, true, {false, false}},
      {{std::nullopt}, false, {false, true}},
      {{}, false, {false, true}},
  };
  for (const Case& c : cases) {
    FakeHost host;
    host.checkBoxAnswers(c.script);
    std::vector<host::CheckBox> boxes = {{L"Layer", false}, {L"Color", true}};
    EXPECT_EQ(host.dialogs().checkBoxes(L"Properties", boxes), c.ok);
    std::vector<bool> states;
    for (const host::CheckBox& box : boxes) states.push_back(box.checked);
    EXPECT_EQ(states, c.states);
    EXPECT_EQ(boxes[0].label, L"Layer");
    EXPECT_EQ(host.transcript().find(L"*Cancel*") != std::wstring::npos, !c.ok);
  }
  FakeHost host;
  host.checkBoxAnswers({std::vector<bool>{true, false}});
  std::vector<host::CheckBox> boxes = {{L"Layer", false}, {L"Color", true}};
  (void)host.dialogs().checkBoxes(L"Properties", boxes);
  EXPECT_EQ(host.transcript(), L"Properties\n[x] Layer\n[ ] Color\n");
}

TEST(FakeDialogsTest, ChooseItemsReturnsTheOfferedItemsAnsweredInSortedOrder) {
  using Items = std::vector<std::wstring>;
  struct Case {
    std::vector<fakes::ItemsAnswer> script;
    std::optional<Items> expected;
  };
  const Case cases[] = {
      {{Items{L"Water", L"Gas"}}, Items{L"Gas", L"Water"}},
      {{Items{}}, Items{}},
      {{Items{L"Steam", L"Gas"}}, Items{L"Gas"}},  // Steam is not offered
      {{std::nullopt}, std::nullopt},
      {{}, std::nullopt},
  };
  for (const Case& c : cases) {
    FakeHost host;
    host.itemAnswers(c.script);
    EXPECT_EQ(host.dialogs().chooseItems(L"Classes", {L"Water", L"Air", L"Gas"}), c.expected);
  }
  FakeHost host;
  host.itemAnswers({Items{L"Gas"}});
  (void)host.dialogs().chooseItems(L"Classes", {L"Water", L"Air", L"Gas"});
  EXPECT_EQ(host.transcript(), L"Classes\n[ ] Air\n[x] Gas\n[ ] Water\n");
}

TEST(FakeDialogsTest, TextAndMessageBoxesAreRecorded) {
  FakeHost host;
  host.dialogs().textBox(L"About", L"TAXOR 0.1");
  host.dialogs().textBox(L"List", L"a\nb\n");
  host.dialogs().messageBox(L"TAXOR", L"No file loaded.", host::MessageKind::kError);
  host.dialogs().messageBox(L"TAXOR", L"Saved.\n", host::MessageKind::kInformation);
  EXPECT_EQ(host.transcript(),
            L"About\nTAXOR 0.1\nList\na\nb\nTAXOR: No file loaded.\nTAXOR: Saved.\n");
  const std::vector<fakes::Message> expected = {
      {L"TAXOR", L"No file loaded.", host::MessageKind::kError},
      {L"TAXOR", L"Saved.\n", host::MessageKind::kInformation},
  };
  EXPECT_EQ(host.fakeDialogs().messages(), expected);
}

TEST(FakeDocumentTest, FileNameQueueLockAndResourceDepth) {
  FakeHost host;
  host::Document& doc = host.document();
  EXPECT_EQ(doc.fileName(), L"");
  host.setFileName(L"/drawings/plan.dwg");
  EXPECT_EQ(doc.fileName(), L"/drawings/plan.dwg");

  doc.sendStringToExecute(L"_.REGEN\n");
  doc.sendStringToExecute(L"TAXOR_SEL ");
  EXPECT_EQ(host.queuedStrings(), (std::vector<std::wstring>{L"_.REGEN\n", L"TAXOR_SEL "}));

  EXPECT_EQ(host.lockDepth(), 0);
  {
    host::DocumentLock outer(doc);
    host::DocumentLock inner(doc);
    EXPECT_EQ(host.lockDepth(), 2);
  }
  EXPECT_EQ(host.lockDepth(), 0);
  doc.unlock();
  EXPECT_EQ(host.lockDepth(), -1);  // an unmatched unlock shows
  host.pushResourceHandle();
  host.pushResourceHandle();
  host.popResourceHandle();
  EXPECT_EQ(host.resourceDepth(), 1);
}

// The command contract is tested over every host in tests/host; runCommand is the fake's own.
TEST(FakeCommandStackTest, RunCommandTakesAnySpellingOfARegisteredNameAndKeepsItsFlags) {
  FakeHost host;
  int about = 0;
  const int flags = host::kCommandUsePickSet | host::kCommandRedraw;
  ASSERT_TRUE(host.commands().addCommand(L"TAXOR", L"TAXOR_ABOUT", flags, [&] { ++about; }));
  ASSERT_TRUE(host.commands().addCommand(L"TAXOR", L"TAXOR_STAT", 0, [] {}));
  EXPECT_EQ(host.fakeCommands().flags(L"taxor_about"), flags);
  EXPECT_EQ(host.fakeCommands().flags(L"NOSUCH"), std::nullopt);
  struct Case {
    const wchar_t* typed;
    base::Code expected;
  };
  const Case cases[] = {
      {L"TAXOR_ABOUT", base::Code::kOk},        {L"taxor_about", base::Code::kOk},
      {L"_TAXOR_ABOUT", base::Code::kOk},       {L"._taxor_about", base::Code::kOk},
      {L"_.Taxor_About", base::Code::kOk},      {L"TAXOR", base::Code::kNotFound},
      {L"TAXOR_ABOUTX", base::Code::kNotFound}, {L"", base::Code::kNotFound},
  };
  int runs = 0;
  for (const Case& c : cases) {
    EXPECT_EQ(host.runCommand(c.typed).code(), c.expected) << show(c.typed);
    if (c.expected == base::Code::kOk) ++runs;
    EXPECT_EQ(about, runs) << show(c.typed);
  }
  host.commands().removeGroup(L"TAXOR");
  EXPECT_EQ(host.runCommand(L"TAXOR_STAT").code(), base::Code::kNotFound);
}

}  // namespace
