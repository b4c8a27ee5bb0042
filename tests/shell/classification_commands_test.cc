// The classifying, validating and removing commands, run through the headless command line
// on a small DXF drawing with scripted answers.
#include <gtest/gtest.h>

#include <map>
#include <vector>

#include "base/utf.h"
#include "dxf/sample_drawing.h"
#include "objdata/record_cursor.h"
#include "shell/commands_fixture.h"

namespace {

using commands_fixture::classify;
using commands_fixture::has;
using commands_fixture::kArc;
using commands_fixture::kCircle;
using commands_fixture::kClasses;
using commands_fixture::kLine;
using commands_fixture::kPolyline;

class ClassificationCommandsTest : public commands_fixture::CommandsTest {};

TEST_F(ClassificationCommandsTest, ClassifyingAgainKeepsOrReplacesTheCarriedClass) {
  std::string out = run(classify(kPolyline, "wall"));
  EXPECT_TRUE(has(out, "Completed: 1\n"));
  EXPECT_EQ(out.find("Remove"), std::string::npos) << out;  // nothing carried to take off
  EXPECT_EQ(records(kPolyline), "WALLS:Wall,2.0,brick,");
  EXPECT_EQ(color(kPolyline), 1);
  // The carried class is offered for removal; keeping it attaches nothing new.
  EXPECT_TRUE(has(run(classify(kPolyline, "WALL") + "0\n0\n"), "Remove\nSelect All [0/1] <0>: "));
  EXPECT_EQ(records(kPolyline), "WALLS:Wall,2.0,brick,");
  // Changing object replaces the class chosen.
  EXPECT_TRUE(has(run(classify(kPolyline, "Partition") + "0\n1\n"), "Completed: 1\n"));
  EXPECT_EQ(records(kPolyline), "WALLS:Partition,2.0,brick,");
  EXPECT_EQ(color(kPolyline), 2);
}

TEST_F(ClassificationCommandsTest, ClassifyRefusals) {
  struct Case {
    std::string script;
    std::string expected;
    bool past_selection;  // the run makes the drawing's table dictionary
  };
  const Case cases[] = {
      {classify(kPolyline, "Pipe"), "Error: object not found.\n", false},
      {"TAXOR_CLASSIFY\nWall\n0\n0\n0\n", "Change object [0/1] <1>: 0\nCommand: ", false},
      {"TAXOR_CLASSIFY\nWall\n1\n1\n1\n\n", "Error: no objects selected.\n", false},
      // A line is no polyline: selected, but not processed.
      {classify(kLine, "Wall"), "Completed: 0\n", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.script);
    std::string out = run(c.script);
    EXPECT_TRUE(has(out, c.expected));
    EXPECT_EQ(objdata::findTableDictionary(database()).isNull(), !c.past_selection);
  }
  EXPECT_EQ(records(kPolyline) + records(kLine), "");
}

TEST_F(ClassificationCommandsTest, AutoClassifyByPropertiesTakesTheFirstNameOnATie) {
  // Wall and Partition have the same draw order and both accept any colour on layer Walls.
  EXPECT_TRUE(has(run("TAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n"), "Completed: 2/"));
  EXPECT_EQ(records(kPolyline), "WALLS:Partition,2.0,brick,");
  EXPECT_EQ(records(kLine), "CABLES:Cable,power");
  EXPECT_EQ(records(kCircle), "");
  // Already classified: nothing more.
  EXPECT_TRUE(has(run("TAXOR_CLASSIFY_AUTO\n\n\nALL\n\n"), "Completed: 0/"));
}

TEST_F(ClassificationCommandsTest, AutoClassifyByClassesTakesTheFirstRecordOnATie) {
  run(classify(kPolyline, "Wall", "0\n1\n0\n") + classify(kPolyline, "Partition", "0\n1\n0\n"));
  EXPECT_EQ(color(kPolyline), 3);
  std::string out = run("TAXOR_CLASSIFY_AUTO\n1\n\n" + std::string(kPolyline) + "\n\n");
  EXPECT_TRUE(has(out, "Completed: 1/1\n"));
  EXPECT_EQ(color(kPolyline), 1);  // Wall's, the first record's class
  EXPECT_EQ(records(kPolyline), "WALLS:Wall,2.0,brick,|WALLS:Partition,2.0,brick,");
}

// Hidden is disabled by its group; Above's exact colour fits no entity here. The two lowest
// draw orders sit at the starting bounds of the two modes.
constexpr const char* kRankedClasses =
    "class\tRetired\t0\n"
    "obj_name\tHidden\t1\t100\nobj_type\tLine\nobj_prop\tcolor\t1\t*\n"
    "vel_name\tMARKS\nvel_key\tCLASS\n"
    "/class\n"
    "obj_name\tAbove\t1\t-2147483646\nobj_type\tLine\nobj_prop\tcolor\t4\n"
    "vel_name\tMARKS\nvel_key\tCLASS\n"
    "obj_name\tLow\t1\t-2147483647\nobj_type\tLine\nobj_prop\tcolor\t2\t*\n"
    "vel_name\tMARKS\nvel_key\tCLASS\n"
    "obj_name\tLowest\t1\t-2147483648\nobj_type\tCircle\nobj_prop\tcolor\t3\t*\n"
    "vel_name\tMARKS\nvel_key\tCLASS\n";

TEST_F(ClassificationCommandsTest, AutoClassifyChoosesAllowedClassesAboveTheStartingBound) {
  writeClasses(kRankedClasses);
  const std::map<std::string, int> colors = {
      {"Hidden", 1}, {"Low", 2}, {"Lowest", 3}, {"Above", 4}};
  struct Case {
    int mode;
    int undrawable;
    const char* handle;
    std::vector<const char*> carried;  // classes attached beforehand, in order
    const char* chosen;                // null: none
  };
  const Case cases[] = {
      // By properties the bound is -2147483648, and only a greater draw order passes it.
      {0, 0, kLine, {}, "Low"},
      {0, 1, kLine, {}, "Hidden"},
      {0, 1, kCircle, {}, nullptr},
      // By classes the bound is -2147483647.
      {1, 1, kLine, {"Low"}, nullptr},
      {1, 1, kCircle, {"Lowest"}, nullptr},
      {1, 0, kLine, {"Hidden", "Above"}, "Above"},
      {1, 1, kLine, {"Above", "Hidden"}, "Hidden"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.mode) + " " + std::to_string(c.undrawable) + " " + c.handle);
    run("TAXOR_REMOVE_ALL\nALL\n\n");
    for (const char* cls : c.carried) run(classify(c.handle, cls, "0\n1\n0\n"));
    setColor(c.handle, 7);
    std::string out = run("TAXOR_CLASSIFY_AUTO\n" + std::to_string(c.mode) + "\n" +
                          std::to_string(c.undrawable) + "\n" + c.handle + "\n\n");
    EXPECT_TRUE(has(out, std::string("Completed: ") + (c.chosen ? "1" : "0") + "/1\n"));
    if (c.mode == 0) {
      EXPECT_EQ(records(c.handle), c.chosen ? std::string("MARKS:") + c.chosen : "");
    } else {
      EXPECT_EQ(color(c.handle), c.chosen ? colors.at(c.chosen) : 7);
    }
  }
}

// The conformity tolerance is 0.1 to the power of the drawing's LUPREC.
TEST_F(ClassificationCommandsTest, AutoClassifyMatchesNumbersWithinTheDrawingsPrecision) {
  writeClasses(
      "obj_name\tScaled\t1\t1\nobj_type\tPolyline\nobj_prop\tlinetypescale\t2.001\n"
      "vel_name\tSCALED\nvel_key\tCLASS\n"
      "obj_name\tHeading\t1\t1\nobj_type\tText\nobj_prop\ttextheight\t3.001\n"
      "vel_name\tHEADINGS\nvel_key\tCLASS\n");
  // The polyline's linetype scale is 2, the text's height 3.
  const std::pair<const char*, const char*> cases[] = {{"2", "Completed: 2/2\n"},
                                                       {"6", "Completed: 0/2\n"}};
  for (const auto& [luprec, expected] : cases) {
    restartWith({{"0 ENDSEC", std::string("9 $LUPREC\n70 ") + luprec + "\n"}});
    EXPECT_TRUE(has(run("TAXOR_CLASSIFY_AUTO\n0\n0\n101 105\n\n"), expected)) << luprec;
  }
}

TEST_F(ClassificationCommandsTest, AssertFindsBrokenRulesOfTheFieldsAsked) {
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable") + classify(kArc, "Marker"));
  struct Case {
    const char* handle;
    const wchar_t* table;
    const wchar_t* field;
    const wchar_t* value;
    const char* required_only;  // selected with "check non-required fields" 0
    const char* all_fields;     // and with 1
  };
  // The rules themselves are the classifier's (objdata); here the switch and templates.
  const Case cases[] = {
      {kPolyline, L"WALLS", L"MATERIAL", L"wood", "Selected: 0", "Selected: 1"},
      {kPolyline, L"WALLS", L"HEIGHT", L"3.5", "Selected: 1", "Selected: 1"},
      // Templates in allowed values and bounds are expanded as the defaults were.
      {kArc, L"MARKERS", L"OWNER", L"nobody", "Selected: 0", "Selected: 0"},
      {kArc, L"MARKERS", L"OWNER", L"somebody", "Selected: 0", "Selected: 1"},
      {kArc, L"MARKERS", L"LABEL", L"Marker-m", "Selected: 0", "Selected: 0"},
      {kArc, L"MARKERS", L"LABEL", L"Marker-x", "Selected: 0", "Selected: 1"},
      {kArc, L"MARKERS", L"UNTIL", L"2999", "Selected: 0", "Selected: 0"},
      {kArc, L"MARKERS", L"UNTIL", L"1999", "Selected: 0", "Selected: 1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(base::toUtf8(std::wstring(c.field) + L" = " + c.value));
    std::wstring held = setField(c.handle, c.table, c.field, c.value);
    EXPECT_TRUE(has(run("TAXOR_ASSERT\n0\nALL\n\n"), c.required_only));
    EXPECT_TRUE(has(run("TAXOR_ASSERT\n1\nALL\n\n"), c.all_fields));
    setField(c.handle, c.table, c.field, held);
  }
}

TEST_F(ClassificationCommandsTest, RemoveAndRemoveAll) {
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable"));
  EXPECT_TRUE(has(run("TAXOR_REMOVE\nwall\nALL\n\n"), "Completed: 1\n"));
  EXPECT_EQ(records(kPolyline), "");
  EXPECT_EQ(records(kLine), "CABLES:Cable,power");
  // The emptied extension dictionary went with the last record.
  EXPECT_TRUE(database().extensionDictionary(id(kPolyline)).value().isNull());

  // TAXOR_REMOVE_ALL keeps a record of a table the catalogue does not know.
  run(classify(kPolyline, "Wall"));
  objdata::TableDirectory tables(database(), objdata::findTableDictionary(database()));
  ASSERT_EQ(objdata::ensureStoredTable(database(), tables.id(), L"SURVEY",
                                       {{L"POINT_ID", objdata::ValueType::kInteger}}),
            2);
  objdata::TableRecord survey;
  ASSERT_EQ(objdata::appendRecord(tables, *tables.find(L"SURVEY"), survey, id(kLine)),
            objdata::kStatusOk);
  EXPECT_TRUE(has(run("TAXOR_REMOVE_ALL\nALL\n\n"), "Completed: 2\n"));
  EXPECT_EQ(records(kPolyline), "");
  EXPECT_EQ(records(kLine), "SURVEY:0");
}

TEST_F(ClassificationCommandsTest, RestoreAppliesTheCarriedClassesAgain) {
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable"));
  setColor(kPolyline, 6);
  // Nobody carries Partition; the count is of the entities selected.
  const std::string all = std::to_string(database().modelSpaceEntities().size());
  EXPECT_TRUE(has(run("TAXOR_RESTORE\nPartition\n\nALL\n\n"), "Completed: 0/" + all + "\n"));
  EXPECT_EQ(color(kPolyline), 6);
  EXPECT_TRUE(has(run("TAXOR_RESTORE\n\n1\nALL\n\n"), "Completed: " + all + "/" + all + "\n"));
  EXPECT_EQ(color(kPolyline), 1);
}

TEST_F(ClassificationCommandsTest, AValueItsStoredFieldCannotHoldEndsTheCommand) {
  // Another program stored table BEACONS with a point where the class file has a text. No
  // default is no point either: nothing is made up for it.
  const std::pair<const char*, const char*> cases[] = {
      {"character\tnorth", "north"}, {"character", ""}, {"integer", ""}};
  for (const auto& [field, value] : cases) {
    SCOPED_TRACE(field);
    writeClasses(kClasses +
                 "\nobj_name\tBeacon\t1\t1\nobj_type\tLine\n"
                 "vel_name\tCABLES\nvel_key\tCLASS\nvel_fld\tKIND\tKind\tcharacter\tpower\n"
                 "vel_name\tBEACONS\nvel_key\tCLASS\nvel_fld\tAT\tPosition\t" +
                 field + "\n");
    restart(sample::drawing());
    run("");
    ASSERT_EQ(
        objdata::ensureStoredTable(
            database(), objdata::getTableDictionary(session().host->document()), L"BEACONS",
            {{L"CLASS", objdata::ValueType::kCharacter}, {L"AT", objdata::ValueType::kPoint}}),
        2);
    std::string out = run(classify(kLine, "Beacon"));
    EXPECT_TRUE(has(out, std::string("Error: the value '") + value +
                             "' does not fit field 'AT' of table 'BEACONS' (class 'Beacon')"));
    EXPECT_EQ(out.find("Completed"), std::string::npos) << out;
    // The first table's record was written and stays; the drawing is still whole.
    EXPECT_EQ(records(kLine), "CABLES:Beacon,power");
    EXPECT_TRUE(dxf::Document::parse(session().drawing.serialize(), "again.dxf"));
  }
}

TEST_F(ClassificationCommandsTest, AClassWhoseResourcesCannotBeLoadedIsNeverApplied) {
  // The line lies on layer Ghost, which the layer table lacks, and which the class Ghost line
  // asks for while no file provides it.
  std::string compact = sample::readCompact("sample_drawing.txt");
  const std::string on_layer_0 = "5 100\n330 1F\n100 AcDbEntity\n8 0\n";
  ASSERT_NE(compact.find(on_layer_0), std::string::npos);
  compact.replace(compact.find(on_layer_0), on_layer_0.size(),
                  "5 100\n330 1F\n100 AcDbEntity\n8 Ghost\n");
  restart(sample::toDxf(compact));
  writeClasses(kClasses +
               "\nobj_name\tGhost line\t1\t20\nobj_type\tLine\nobj_prop\tlayer\tGhost\n"
               "obj_prop\tcolor\t3\t*\nvel_name\tCABLES\nvel_key\tCLASS\n"
               "vel_fld\tKIND\tKind\tcharacter\tghost\n");
  const std::string refused = "error: unable to load dependecies for object 'Ghost line'\n";

  // By properties the line is a Ghost line (the higher draw order), which cannot be applied.
  EXPECT_TRUE(has(run("TAXOR_CLASSIFY_AUTO\n0\n0\n100\n\n"), refused + "Completed: 0/1\n"));
  EXPECT_EQ(records(kLine), "");
  // An entity on a layer the table lacks is a candidate like any other.
  EXPECT_TRUE(has(run(classify(kLine, "Cable", "1\n1\n0\n")), "Completed: 1\n"));
  EXPECT_EQ(records(kLine), "CABLES:Cable,power");

  // A record of Ghost line, written by someone else, makes it the class of mode 1 and of
  // TAXOR_RESTORE, which still refuse it and leave the colour alone.
  setField(kLine, L"CABLES", L"CLASS", L"Ghost line");
  setColor(kLine, 6);
  const std::pair<std::string, std::string> cases[] = {
      {"TAXOR_CLASSIFY_AUTO\n1\n0\n100\n\n", refused + "Completed: 0/1\n"},
      {"TAXOR_RESTORE\n\n0\n100\n\n", refused + "Completed: 1/1\n"},
      {"TAXOR_RESTORE\nGhost line\n0\n", "Error: unable to load object dependencies.\n"},
  };
  for (const auto& [script, expected] : cases) EXPECT_TRUE(has(run(script), expected)) << script;
  EXPECT_EQ(color(kLine), 6);
  EXPECT_EQ(records(kLine), "CABLES:Ghost line,power");
}

// A drawing with faults a CAD program's audit repairs: the polyline's extension dictionary
// names nothing and a second line reuses the first line's handle. Both are told once when
// the drawing opens; classifying gives the polyline a dictionary in place of the dangling
// one and the second line a handle of its own, so the saved drawing has neither fault.
TEST_F(ClassificationCommandsTest, FaultsOfTheDrawingAreToldOnceAndRepairedByClassifying) {
  restartWith({{"330 1F\n100 AcDbEntity\n8 Walls", "102 {ACAD_XDICTIONARY\n360 9999\n102 }\n"},
               {"0 LWPOLYLINE",
                "0 LINE\n5 100\n330 1F\n100 AcDbEntity\n8 0\n100 AcDbLine\n"
                "10 0\n20 0\n30 0\n11 5\n21 5\n31 0\n"}});
  std::string opened = session().out();
  EXPECT_TRUE(has(opened, "warning: LWPOLYLINE 101: the extension dictionary handle '9999'"));
  EXPECT_TRUE(has(opened, "warning: LINE 100 uses the handle of LINE 100"));

  run(classify(kPolyline, "Wall"));
  EXPECT_EQ(records(kPolyline), "WALLS:Wall,2.0,brick,");
  std::string out = run("TAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n");
  auto again = dxf::Document::parse(session().drawing.serialize(), "again.dxf");
  ASSERT_TRUE(again.isOk()) << again.status().message();
  EXPECT_EQ(again->faults(), std::vector<std::string>()) << out;
  size_t cables = 0;
  for (dxf::RecordId r = again->first(); r != dxf::kNoRecord; r = again->next(r)) {
    if (again->type(r) != "XRECORD") continue;
    for (const dxf::Tag& tag : again->scan(r)) cables += again->text(tag) == "Cable";
  }
  EXPECT_EQ(cables, 2u) << out;
}

TEST_F(ClassificationCommandsTest, ADrawingWithoutDictionariesIsRefusedWithAReason) {
  restart(sample::r12Drawing());
  std::string out = run("TAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n");
  EXPECT_TRUE(has(out,
                  "Error: this drawing cannot keep object data; save it as DXF R2000 or "
                  "later and run the command again.\n"));
  EXPECT_EQ(out.find("Completed"), std::string::npos) << out;
}

}  // namespace
