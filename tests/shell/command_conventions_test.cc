// What every command of the command line does alike, run through the headless command line:
// sticky switch prompts, cancelling, the host commands queued after classifying, the
// pick-first set one command leaves to the next, and the model-space fallback.
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/utf.h"
#include "dxf/entity_factory.h"
#include "dxf/sample_drawing.h"
#include "fakes/forwarding_host.h"
#include "shell/commands_fixture.h"

namespace {

using commands_fixture::classify;
using commands_fixture::has;
using commands_fixture::kCircle;
using commands_fixture::kClasses;
using commands_fixture::kInsert;
using commands_fixture::kLine;
using commands_fixture::kPolyline;

class CommandConventionsTest : public commands_fixture::CommandsTest {};

// Each switch runs with answers that change nothing but the switch: the circle carries no
// class and none fits it.
TEST_F(CommandConventionsTest, SwitchAnswersAreClampedAndShownByTheNextRun) {
  struct Switch {
    std::string prompt;  // "%i" stands for the value shown
    std::string before;  // the script up to the answer
    std::string after;   // and after it
  };
  const Switch switches[] = {
      {"Mode [0 (properties)/1 (classes)]<%i>: ", "TAXOR_CLASSIFY_AUTO\n", "\n\n103\n\n"},
      {"Undrawable [0/1]<%i>: ", "TAXOR_CLASSIFY_AUTO\n\n", "\n103\n\n"},
      {"Check non-required fields [0/1]<%i>: ", "TAXOR_ASSERT\n", "\n103\n\n"},
      {"Mode [0 (all)/1 (default)]<%i>: ", "TAXOR_RESTORE\n\n", "\n103\n\n"},
  };
  struct Answer {
    const char* text;
    int shown;  // the value the prompt shows before it
  };
  const Answer answers[] = {{"5", 0}, {"", 1}, {"x", 1}, {"5", 0}, {"-3", 1}, {"", 0}, {"1", 0}};
  for (const Switch& s : switches) {
    for (const Answer& answer : answers) {
      std::string out = run(s.before + answer.text + s.after);
      std::string prompt = s.prompt;
      prompt.replace(prompt.find("%i"), 2, std::to_string(answer.shown));
      EXPECT_TRUE(has(out, prompt + answer.text + "\n"));
      EXPECT_EQ(out.find("Error"), std::string::npos) << out;
    }
  }
}

// A cancel at any prompt, by Escape or by the end of the input, ends the command without a
// word and without a change; the next command runs.
TEST_F(CommandConventionsTest, CancellingAtAnyPromptEndsTheCommandSilently) {
  // Wall is carried, so that classifying again offers it for removal.
  run(classify(kPolyline, "Wall"));
  struct Case {
    std::string answers;  // the command and the answers before the cancelled prompt
    std::string prompt;
  };
  const Case cases[] = {
      {"TAXOR_LOAD\n", "File to open, Text files (*.txt): "},
      {"TAXOR_CLASSIFY\n", "Object: "},
      {"TAXOR_CLASSIFY\nWall\n", "Assign graphical properties [0/1] <1>: "},
      {"TAXOR_CLASSIFY\nWall\n\n", "Attach OD [0/1] <1>: "},
      {"TAXOR_CLASSIFY\nWall\n\n\n", "Change object [0/1] <1>: "},
      {"TAXOR_CLASSIFY\nWall\n\n\n\n", "Select objects: "},
      {"TAXOR_CLASSIFY\nWall\n\n\n\n101\n\n", "Remove\nSelect All [0/1] <0>: "},
      {"TAXOR_CLASSIFY\nWall\n\n\n\n101\n\n\n", "Wall [0/1] <0>: "},
      {"TAXOR_CLASSIFY_AUTO\n", "Mode [0 (properties)/1 (classes)]<0>: "},
      {"TAXOR_CLASSIFY_AUTO\n\n", "Undrawable [0/1]<0>: "},
      {"TAXOR_CLASSIFY_AUTO\n\n\n", "Select objects: "},
      {"TAXOR_CLASSIFY_AUTO\n\n\n101\n", "1 found, 1 total\nSelect objects: "},
      {"TAXOR_ASSERT\n", "Check non-required fields [0/1]<0>: "},
      {"TAXOR_ASSERT\n\n", "Select objects: "},
      {"TAXOR_STAT\n", "Select objects: "},
      {"TAXOR_REMOVE\n", "Object: "},
      {"TAXOR_REMOVE\nWall\n", "Select objects: "},
      {"TAXOR_REMOVE_ALL\n", "Select objects: "},
      {"TAXOR_REMOVE_ALL\n101\n", "1 found, 1 total\nSelect objects: "},
      {"TAXOR_RESTORE\n", "Object: "},
      {"TAXOR_RESTORE\nWall\n", "Mode [0 (all)/1 (default)]<0>: "},
      {"TAXOR_RESTORE\nWall\n\n", "Select objects: "},
      {"TAXOR_RESTORE\n\n\n", "Select objects: "},
  };
  shell::ProcessState& state = session().app->state();
  auto snapshot = [&] {
    const shell::ClassifyOptions& o = state.classify_options;
    return session().drawing.serialize() + base::toUtf8(state.class_file) +
           std::to_string(o.assign_properties) + std::to_string(o.attach_records) +
           std::to_string(o.replace_classes);
  };
  for (const Case& c : cases) {
    for (bool escape : {true, false}) {
      SCOPED_TRACE(c.answers + (escape ? "Escape" : "end of input"));
      const std::string before = snapshot();
      const auto defaults = state.prompt_defaults;
      const catalogue::Catalogue* catalogue = state.catalogue.get();
      std::string out;
      if (escape) {
        out = run(c.answers + "\x1b\nTAXOR_ABOUT\n");
      } else {
        out = run(c.answers);
        out += run("TAXOR_ABOUT\n", /*keep_pick_first=*/true);
      }
      size_t cancelled = out.find("*Cancel*");
      ASSERT_NE(cancelled, std::string::npos) << out;
      EXPECT_EQ(out.find(c.prompt + "*Cancel*\nCommand: \nCommand: TAXOR_ABOUT\nTAXOR message: "),
                cancelled - c.prompt.size())
          << out;
      for (const char* word : {"rror", "Completed", "Selected"})
        EXPECT_EQ(out.substr(0, cancelled).find(word), std::string::npos) << out;
      EXPECT_EQ(snapshot(), before);
      for (const auto& [prompt, value] : defaults) EXPECT_EQ(state.prompt_defaults[prompt], value);
      EXPECT_EQ(state.catalogue.get(), catalogue);
      EXPECT_EQ(session().host->resourceDepth(), 0);
    }
  }
}

// Notes each queued host command with the CMDECHO it was queued under.
class QueueWatcher : public fakes::ForwardingHost {
 public:
  using ForwardingHost::ForwardingHost;
  void sendStringToExecute(std::wstring_view text) override {
    auto echo = target().database().getVar("CMDECHO");
    queued.push_back(base::toUtf8(text) + "@" +
                     (echo ? std::to_string(std::get<int16_t>(echo->value)) : "?"));
    ForwardingHost::sendStringToExecute(text);
  }
  std::vector<std::string> queued;
};

TEST_F(CommandConventionsTest, ClassifyingQueuesAttsyncAndRegenWithCmdechoOff) {
  // Block Sign, whose attribute LABEL references must be synchronised with.
  auto doc = dxf::Document::parse(sample::drawing(), "sign.dxf");
  ASSERT_TRUE(doc && dxf::addBlock(*doc, L"Sign", {}) &&
              dxf::addAttributeDefinition(*doc, {.block = L"Sign"}, {.tag = L"LABEL"}));
  restart(doc->serialize());
  QueueWatcher* watcher = nullptr;
  wrap_ = [&](headless::HeadlessHost& headless) -> std::unique_ptr<host::Host> {
    auto made = std::make_unique<QueueWatcher>(headless);
    watcher = made.get();
    return made;
  };
  writeClasses(kClasses +
               "obj_name\tSignpost\t1\t2\nobj_type\tBlockReference\nobj_prop\tblockname\tSign\n"
               "vel_name\tSIGNS\nvel_key\tCLASS\n"
               "obj_name\tDoorway\t1\t1\nobj_type\tBlockReference\nobj_prop\tblockname\tDoor\n"
               "vel_name\tDOORS\nvel_key\tCLASS\n");
  struct Case {
    int16_t echo;  // CMDECHO before the command
    std::string script;
    std::vector<std::string> queued;  // each with the CMDECHO it was queued under
  };
  const Case cases[] = {
      // The insert of Door turns into one of Sign, which has attributes.
      {1, classify(kInsert, "Signpost", "1\n1\n0\n"), {"_.attsync _n sign\n@0", "_.regen\n@0"}},
      // Door has none.
      {0, classify(kInsert, "Doorway", "1\n1\n0\n"), {"_.regen\n@0"}},
      // Nothing processed, nothing to regenerate.
      {1, classify(kCircle, "Wall"), {}},
      // Signpost, of the greater draw order, gives its block back; auto-classifying never
      // regenerates.
      {1, "TAXOR_CLASSIFY_AUTO\n1\n0\n107\n\n", {"_.attsync _n sign\n@0"}},
      {0, "TAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n", {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.script);
    ASSERT_TRUE(database().setVar("CMDECHO", host::SysVar{c.echo}));
    ASSERT_NE(watcher, nullptr);
    watcher->queued.clear();
    std::string out = run(c.script);
    EXPECT_EQ(watcher->queued, c.queued);
    EXPECT_EQ(database().getVar("CMDECHO").value(), host::SysVar{c.echo});
    // The host ran what was queued.
    EXPECT_EQ(out.find("ATTSYNC block sign: ") != std::string::npos,
              !c.queued.empty() && c.queued[0].starts_with("_.attsync"))
        << out;
  }
}

// Without AI_DESELECT in between, the next command works on what the last one selected.
TEST_F(CommandConventionsTest, TheNextCommandTakesThePickFirstSetTheLastOneLeft) {
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable"));
  setField(kPolyline, L"WALLS", L"HEIGHT", L"9");
  struct Case {
    std::string first;
    std::string next;
    std::string expected;  // in the next command's output
    bool asks;             // whether the next command asks to select
  };
  const Case cases[] = {
      // Classifying leaves the entities that carry the class, not all it was given.
      {"TAXOR_CLASSIFY\nCable\n0\n1\n0\n100 103\n\n", "TAXOR_STAT\n",
       "Objects: 1 (0 unclassified)\nClasses: 1\n\tCable: 1", false},
      {"TAXOR_CLASSIFY\nCable\n0\n1\n0\n100 103\n\n", "TAXOR_CLASSIFY_AUTO\n1\n0\n",
       "Completed: 1/1\n", false},
      // Validation leaves the entities that break rules; none leaves nothing.
      {"TAXOR_ASSERT\n1\nALL\n\n", "TAXOR_STAT\n",
       "Objects: 1 (0 unclassified)\nClasses: 1\n\tWall: 1", false},
      {"TAXOR_ASSERT\n1\n100\n\n", "TAXOR_STAT\n101\n\n",
       "Objects: 1 (0 unclassified)\nClasses: 1\n\tWall: 1", true},
      {"TAXOR_SEL\nWall\n", "TAXOR_SEL_CLASSIFIED\n0\n", "Selected: 0", false},
      {"TAXOR_ASSERT\n1\nALL\n\n", "TAXOR_REMOVE\nWall\n", "Completed: 1\n", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.first + c.next);
    run(c.first);
    std::string out = run(c.next, /*keep_pick_first=*/true);
    EXPECT_TRUE(has(out, c.expected));
    EXPECT_EQ(out.find("Select objects: ") != std::string::npos, c.asks) << out;
  }
  EXPECT_EQ(records(kPolyline), "");
  EXPECT_EQ(records(kLine), "CABLES:Cable,power");
}

TEST_F(CommandConventionsTest, PaperSpaceIsNeverPartOfTheModelSpaceFallback) {
  restartWith({{"0 ENDSEC\n0 SECTION\n2 OBJECTS",
                "0 LWPOLYLINE\n5 120\n330 1B\n100 AcDbEntity\n67 1\n8 Walls\n62 3\n"
                "100 AcDbPolyline\n90 2\n70 0\n10 0.0\n20 0.0\n10 1.0\n20 1.0\n"}});
  const char* paper = "120";
  // The paper-space polyline alone carries a class, breaks its rules and shows another
  // colour than the class's.
  run(classify(paper, "Wall"));
  setField(paper, L"WALLS", L"HEIGHT", L"9");
  setColor(paper, 6);
  const std::string carried = records(paper);
  ASSERT_EQ(carried, "WALLS:Wall,9.0,brick,");
  const std::string all = std::to_string(database().modelSpaceEntities().size());
  struct Case {
    std::string script;  // each ends its selection with nothing picked
    std::string expected;
  };
  const Case cases[] = {
      {"TAXOR_STAT\n\n", "Objects: " + all + " (" + all + " unclassified)\nClasses: 0\n"},
      {"TAXOR_ASSERT\n1\n\n", "Selected: 0"},
      {"TAXOR_REMOVE_ALL\n\n", "Completed: 0\n"},
      {"TAXOR_RESTORE\n\n\n\n", "Completed: " + all + "/" + all + "\n"},
      {"TAXOR_CLASSIFY_AUTO\n1\n1\n\n", "Completed: 0/" + all + "\n"},
      {"TAXOR_CLASSIFY_AUTO\n0\n1\n\n", "/" + all + "\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.script);
    EXPECT_TRUE(has(run(c.script), c.expected));
    EXPECT_EQ(records(paper), carried);
    EXPECT_EQ(color(paper), 6);
  }
}

// A host whose model space cannot be listed, as one that runs out of memory or loses its
// drawing would fail.
class FailingModelSpace : public fakes::ForwardingHost {
 public:
  FailingModelSpace(host::Host& target, std::function<void()> fail)
      : ForwardingHost(target), fail_(std::move(fail)) {}
  std::vector<host::ObjectId> modelSpaceEntities() override {
    fail_();
    return {};
  }

 private:
  std::function<void()> fail_;
};

TEST_F(CommandConventionsTest, AFaultEndsOnlyTheCommandItHappenedIn) {
  struct Case {
    std::function<void()> fail;
    std::string reason;
  };
  const Case cases[] = {
      {[] { throw std::bad_alloc(); }, "out of memory"},
      {[] { throw std::runtime_error("the drawing went away"); }, "the drawing went away"},
      {[] { throw 6; }, "a value could not be converted (code 6)"},
  };
  for (const Case& c : cases) {
    wrap_ = [&](headless::HeadlessHost& headless) -> std::unique_ptr<host::Host> {
      return std::make_unique<FailingModelSpace>(headless, c.fail);
    };
    restart(sample::drawing());
    EXPECT_TRUE(has(run("TAXOR_STAT\n\nTAXOR_ABOUT\n"),
                    "Error: TAXOR_STAT stopped: " + c.reason +
                        ". What it changed before stays; the drawing can be saved and the next "
                        "command run.\nCommand: TAXOR_ABOUT\n"));
    EXPECT_TRUE(dxf::Document::parse(session().drawing.serialize(), "again.dxf"));
  }
}

}  // namespace
