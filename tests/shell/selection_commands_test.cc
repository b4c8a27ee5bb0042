// The selecting commands through the headless command line: which entities each leaves
// selected, from the pick-first set or the whole model space.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "shell/commands_fixture.h"

namespace {

using commands_fixture::classify;
using commands_fixture::has;
using commands_fixture::kArc;
using commands_fixture::kCircle;
using commands_fixture::kClasses;
using commands_fixture::kLine;
using commands_fixture::kPolyline;

// The classes of the fixture in a tree: Network holds Cable and the group Building, which
// holds Wall and Partition; Marker stays at the root.
std::string groupedClasses() {
  std::string classes = kClasses;
  classes.insert(0, "class\tNetwork\t1\nclass\tBuilding\t1\n");
  classes.insert(classes.find("obj_name\tCable"), "/class\n");
  classes.insert(classes.find("obj_name\tMarker"), "/class\n");
  return classes;
}

class SelectionCommandsTest : public commands_fixture::CommandsTest {
 protected:
  void SetUp() override {
    CommandsTest::SetUp();
    writeClasses(groupedClasses());
    run(classify(kPolyline, "Wall") + classify(kLine, "Cable") + classify(kArc, "Marker"));
  }
  // The handles of the pick-first set among the four entities classified or not above.
  std::string selected() {
    std::vector<host::ObjectId> picked = session().host->editor().impliedSelection();
    std::string out;
    for (const char* handle : {kLine, kPolyline, kCircle, kArc}) {
      if (std::find(picked.begin(), picked.end(), id(handle)) == picked.end()) continue;
      out += (out.empty() ? "" : " ") + std::string(handle);
    }
    return out;
  }
};

TEST_F(SelectionCommandsTest, EachCommandLeavesItsSurvivorsSelected) {
  const size_t all = database().modelSpaceEntities().size();
  const std::string others = std::to_string(all - 3);
  struct Case {
    std::string script;
    std::string printed;
    std::string selected;  // the survivors among the four known entities ("other" else)
  };
  const Case cases[] = {
      // By class or group, over the whole model space without asking.
      {"TAXOR_SEL\nWALL\n", "Object: WALL\nSelected: 1", kPolyline},
      {"TAXOR_SEL\nbuilding\n", "Selected: 1", kPolyline},
      {"TAXOR_SEL\nNetwork\n", "Selected: 2", "100 101"},
      {"TAXOR_SEL\nnothing\n", "Selected: 0", ""},
      {"TAXOR_SEL_CLASS\nwall\n", "Selected: 0", ""},
      {"TAXOR_SEL_CLASS\nNETWORK\n", "Selected: 2", "100 101"},
      // Records and properties; the matching or the others.
      {"TAXOR_SEL_EXT\nWall\n1\n1\n1\nALL\n\n", "Selected: 1", kPolyline},
      {"TAXOR_SEL_EXT\nNetwork\n0\n1\n1\nALL\n\n", "Selected: 2", "100 101"},
      {"TAXOR_SEL_EXT\nCable\n0\n1\n0\nALL\n\n", "Selected: " + std::to_string(all - 1),
       "101 103 104"},
      // Partition accepts any colour on layer Walls: the wall conforms without its records.
      {"TAXOR_SEL_EXT\nPartition\n1\n0\n1\n" + std::string(kPolyline) + "\n\n", "Selected: 1",
       kPolyline},
      {"TAXOR_SEL_EXT\nPartition\n1\n1\n1\n" + std::string(kPolyline) + "\n\n", "Selected: 0", ""},
      {"TAXOR_SEL_EXT\nWall\n0\n0\n", "Use objects? [0/1]<1>: 0\nCommand:", ""},
      // Against their own classes.
      {"TAXOR_SEL_ALL\n1\n1\n1\nALL\n\n", "Selected: 3", "100 101 104"},
      {"TAXOR_SEL_ALL\n1\n1\n0\nALL\n\n", "Selected: " + others, kCircle},
      {"TAXOR_SEL_CLASSIFIED\n1\nALL\n\n", "Selected: 3", "100 101 104"},
      {"TAXOR_SEL_CLASSIFIED\n0\nALL\n\n", "Selected: " + others, kCircle},
      // The match prompt always shows 1; an empty answer keeps the 0 stored.
      {"TAXOR_SEL_CLASSIFIED\n\nALL\n\n", "Match [0/1]<1>: \nSelect objects: ", kCircle},
      // The wall's NOTE is empty, but not required.
      {"TAXOR_SEL_NULL\n1\nALL\n\n", "Selected: 1", kPolyline},
      {"TAXOR_SEL_NULL\n0\nALL\n\n", "Selected: 0", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.script);
    EXPECT_TRUE(has(run(c.script), c.printed));
    EXPECT_EQ(selected(), c.selected);
  }
}

}  // namespace
