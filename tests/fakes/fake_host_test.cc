// What only the fake host does: its scripted command line and dialogs, what it records, and
// runCommand. The contract it shares with the other hosts is tested in tests/host.
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

// Each row answers the prompts "1: ", "2: "... in turn, one per entry of `spaces`. A plain
// answer and a script run out, as a command sees them, are tested over every host.
TEST(FakeEditorTest, GetStringTakesTheScriptedAnswersInTurn) {
  struct Case {
    std::vector<Answer> script;
    std::vector<bool> spaces;       // allow_spaces of each prompt
    std::vector<std::wstring> got;  // each prompt's text, or "!cancel" / "!error"
    std::wstring transcript;
  };
  // U+1F600 counts two UTF-16 units: too_long has kMaxInput characters, one unit too many.
  const std::wstring longest =
      std::wstring(host::Editor::kMaxInput - 2, L'y') + base::fromUtf8("\xF0\x9F\x98\x80");
  const std::wstring too_long = L"x" + longest;
  const Case cases[] = {
      {{L""}, {false}, {L""}, L"1: \n"},
      {{L"two words"}, {true}, {L"two words"}, L"1: two words\n"},
      {{L"Potrubí"}, {true}, {L"Potrubí"}, L"1: Potrubí\n"},
      {{Answer::cancel(), L"1"}, {false}, {L"!cancel"}, L"1: *Cancel*\n"},
      {{Answer::error(), L"1"}, {false}, {L"!error"}, L"1: *Invalid*\n"},
      {{longest}, {true}, {longest}, L"1: " + longest + L"\n"},
      {{too_long}, {true}, {L"!error"}, L"1: " + too_long + L"\n"},
      // A blank ends an answer and the rest answers the next prompt, the Enter after "d " too.
      {{L"a b c", L"d ", L"last"},
       {false, true, false, false, false, false},
       {L"a", L"b c", L"d", L"", L"last", L"!cancel"},
       L"1: a\n2: b c\n3: d\n4: \n5: last\n6: *Cancel*\n"},
  };
  for (const Case& c : cases) {
    FakeHost host;
    host.answers(c.script);
    std::vector<std::wstring> got;
    for (size_t i = 0; i < c.spaces.size(); ++i) {
      host::StringInput in = host.editor().getString(c.spaces[i], std::to_wstring(i + 1) + L": ");
      got.push_back(in.status == InputStatus::kNormal   ? in.text
                    : in.status == InputStatus::kCancel ? L"!cancel"
                    : in.status == InputStatus::kError  ? L"!error"
                                                        : L"!other");
    }
    EXPECT_EQ(got, c.got) << show(c.transcript);
    EXPECT_EQ(host.transcript(), c.transcript);
  }
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

// Setting and reading the pick-first set is the contract suite's; losing erased objects is
// the fake's own.
TEST(FakeEditorTest, SelectTakesTheScriptedSelectionsAndThePickFirstSetLosesErasedObjects) {
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
    std::wstring transcript;
  };
  const Case cases[] = {
      {{std::vector<bool>{true, false}}, true, {true, false}, L"Use\n[x] A\n[ ] B\n"},
      // B keeps its state; states beyond the boxes are dropped.
      {{std::vector<bool>{true}}, true, {true, true}, L"Use\n[x] A\n[x] B\n"},
      {{std::vector<bool>{false, false, true}}, true, {false, false}, L"Use\n[ ] A\n[ ] B\n"},
      {{std::nullopt}, false, {false, true}, L"Use\n[ ] A\n[x] B\n*Cancel*\n"},
      {{}, false, {false, true}, L"Use\n[ ] A\n[x] B\n*Cancel*\n"},
  };
  for (const Case& c : cases) {
    FakeHost host;
    host.checkBoxAnswers(c.script);
    std::vector<host::CheckBox> boxes = {{L"A", false}, {L"B", true}};
    EXPECT_EQ(host.dialogs().checkBoxes(L"Use", boxes), c.ok) << show(c.transcript);
    std::vector<bool> states;
    for (const host::CheckBox& box : boxes) states.push_back(box.checked);
    EXPECT_EQ(states, c.states) << show(c.transcript);
    EXPECT_EQ(host.transcript(), c.transcript);
  }
}

TEST(FakeDialogsTest, ChooseItemsReturnsTheOfferedItemsAnsweredInSortedOrder) {
  using Items = std::vector<std::wstring>;
  struct Case {
    std::vector<fakes::ItemsAnswer> script;
    std::optional<Items> expected;
    std::wstring transcript;
  };
  const Case cases[] = {
      {{Items{L"Water", L"Gas"}}, Items{L"Gas", L"Water"}, L"Pick\n[ ] Air\n[x] Gas\n[x] Water\n"},
      {{Items{}}, Items{}, L"Pick\n[ ] Air\n[ ] Gas\n[ ] Water\n"},
      // Steam is not offered.
      {{Items{L"Steam", L"Gas"}}, Items{L"Gas"}, L"Pick\n[ ] Air\n[x] Gas\n[ ] Water\n"},
      {{std::nullopt}, std::nullopt, L"Pick\n[ ] Air\n[ ] Gas\n[ ] Water\n*Cancel*\n"},
      {{}, std::nullopt, L"Pick\n[ ] Air\n[ ] Gas\n[ ] Water\n*Cancel*\n"},
  };
  for (const Case& c : cases) {
    FakeHost host;
    host.itemAnswers(c.script);
    EXPECT_EQ(host.dialogs().chooseItems(L"Pick", {L"Water", L"Air", L"Gas"}), c.expected)
        << show(c.transcript);
    EXPECT_EQ(host.transcript(), c.transcript);
  }
}

// What the code under test printed, showed, queued and holds, as tests read it back.
TEST(FakeHostTest, WhatIsShownQueuedAndHeldIsRecorded) {
  FakeHost host;
  host.editor().print(L"No newline");
  host.dialogs().textBox(L"About", L"TAXOR 0.1");
  host.dialogs().textBox(L"List", L"a\nb\n");
  host.dialogs().messageBox(L"TAXOR", L"No file loaded.", host::MessageKind::kError);
  host.dialogs().messageBox(L"TAXOR", L"Saved.\n", host::MessageKind::kInformation);
  EXPECT_EQ(host.transcript(),
            L"No newlineAbout\nTAXOR 0.1\nList\na\nb\nTAXOR: No file loaded.\nTAXOR: Saved.\n");
  const std::vector<fakes::Message> expected = {
      {L"TAXOR", L"No file loaded.", host::MessageKind::kError},
      {L"TAXOR", L"Saved.\n", host::MessageKind::kInformation},
  };
  EXPECT_EQ(host.fakeDialogs().messages(), expected);

  host::Document& doc = host.document();
  EXPECT_EQ(doc.fileName(), L"");
  host.setFileName(L"/drawings/plan.dwg");
  EXPECT_EQ(doc.fileName(), L"/drawings/plan.dwg");
  doc.sendStringToExecute(L"_.REGEN\n");
  doc.sendStringToExecute(L"TAXOR_SEL ");
  EXPECT_EQ(host.queuedStrings(), (std::vector<std::wstring>{L"_.REGEN\n", L"TAXOR_SEL "}));
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

// The command contract, and runCommand with "_." and in any case, are tested over every
// host in tests/host; the rest of runCommand and the recorded flags are the fake's own.
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
      {L"_TAXOR_ABOUT", base::Code::kOk}, {L"._taxor_about", base::Code::kOk},
      {L"TAXOR", base::Code::kNotFound},  {L"TAXOR_ABOUTX", base::Code::kNotFound},
      {L"", base::Code::kNotFound},
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
