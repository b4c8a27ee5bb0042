// The classifying, validating and removing commands, run through the headless command line
// on a small DXF drawing with scripted answers.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "base/utf.h"
#include "dxf/sample_drawing.h"
#include "headless/session.h"
#include "objdata/record_cursor.h"

namespace {

namespace fs = std::filesystem;

// Walls and partitions are polylines on layer Walls that only their colour tells apart;
// cables are lines.
constexpr const char* kClasses =
    "obj_name\tWall\t1\t10\n"
    "obj_type\tPolyline\n"
    "obj_prop\tlayer\tWalls\n"
    "obj_prop\tcolor\t1\t*\n"
    "vel_name\tWALLS\n"
    "vel_key\tCLASS\n"
    "vel_fld\tHEIGHT\tHeight\trequired real\t2.5\t2:3\n"
    "vel_fld\tMATERIAL\tMaterial\tcharacter\tbrick\tbrick,concrete\n"
    "vel_fld\tNOTE\tNote\tcharacter\n"
    "\n"
    "obj_name\tPartition\t1\t10\n"
    "obj_type\tPolyline\n"
    "obj_prop\tlayer\tWalls\n"
    "obj_prop\tcolor\t2\t*\n"
    "vel_name\tWALLS\n"
    "vel_key\tCLASS\n"
    "vel_fld\tHEIGHT\tHeight\trequired real\t2.5\t2:3\n"
    "vel_fld\tMATERIAL\tMaterial\tcharacter\tbrick\tbrick,concrete\n"
    "vel_fld\tNOTE\tNote\tcharacter\n"
    "\n"
    "obj_name\tCable\t1\t5\n"
    "obj_type\tLine\n"
    "vel_name\tCABLES\n"
    "vel_key\tCLASS\n"
    "vel_fld\tKIND\tKind\tcharacter\tpower\n";

constexpr const char* kPolyline = "101";  // layer Walls, colour 3
constexpr const char* kLine = "100";      // layer 0
constexpr const char* kCircle = "103";

class ClassificationCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() /
           ("taxor_classify_" +
            std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::create_directories(dir_);
    writeClasses(kClasses);
  }
  void TearDown() override { fs::remove_all(dir_); }

  void writeClasses(const std::string& text) { std::ofstream(dir_ / "classes.txt") << text; }

  // Loads the class file, runs `script`, and returns what the commands printed after
  // loading.
  std::string run(const std::string& script) {
    if (!loaded_) {
      session_.run("TAXOR_LOAD\n" + (dir_ / "classes.txt").string() + "\n");
      loaded_ = true;
    }
    // Commands that select leave a pick-first set behind; each script starts without one.
    session_.run("AI_DESELECT\n");
    size_t before = session_.out().size();
    session_.run(script);
    return session_.out().substr(before);
  }

  host::ObjectId id(const char* handle) {
    return session_.host->dxfDatabase().idForHandle(base::fromUtf8(handle));
  }
  host::Database& database() { return session_.host->dxfDatabase(); }

  // The records of an entity as "TABLE:value,value|TABLE:..." for short comparisons.
  std::string records(const char* handle) {
    objdata::TableDirectory tables(database(), objdata::findTableDictionary(database()));
    objdata::RecordCursor cursor;
    std::string out;
    if (objdata::openCursor(tables, cursor, id(handle)) != objdata::kStatusOk) return out;
    for (; !objdata::cursorDone(cursor); objdata::nextRecord(tables, cursor)) {
      objdata::TableRecord record;
      objdata::readRecord(tables, cursor, record);
      if (!out.empty()) out += "|";
      out += base::toUtf8(record.table_name) + ":";
      for (size_t i = 0; i < record.fields.size(); ++i) {
        out += (i ? "," : "") + base::toUtf8(objdata::asText(record.fields[i].value));
      }
    }
    return out;
  }

  // Overwrites field `field` of the entity's first record of `table`.
  void setField(const char* handle, const wchar_t* table, const wchar_t* field,
                std::wstring_view text) {
    objdata::TableDirectory tables(database(), objdata::findTableDictionary(database()));
    objdata::RecordCursor cursor;
    cursor.table_filter = table;
    ASSERT_EQ(objdata::openCursor(tables, cursor, id(handle)), objdata::kStatusOk);
    objdata::TableRecord record;
    ASSERT_EQ(objdata::readRecord(tables, cursor, record), objdata::kStatusOk);
    int index = objdata::findField(record.fields, field);
    ASSERT_GE(index, 0);
    objdata::assign(record.fields[index].value,
                    objdata::makeValue(objdata::ValueType::kCharacter, text));
    ASSERT_EQ(objdata::updateRecord(tables, cursor, record), objdata::kStatusOk);
  }

  int color(const char* handle) {
    return std::get<host::Color>(database().getProperty(id(handle), host::EntityProperty::kColor))
        .index;
  }

  fs::path dir_;
  testing_session::Session session_{sample::drawing()};
  bool loaded_ = false;
};

// Answers to the classification dialog: assign properties, attach records, change object.
std::string classify(const char* handle, const char* name, const char* boxes = "1\n1\n1\n") {
  return std::string("AI_DESELECT\nTAXOR_CLASSIFY\n") + name + "\n" + boxes + handle + "\n\n";
}

TEST_F(ClassificationCommandsTest, ClassifyTwiceAttachesOneSetOfRecords) {
  std::string first = run(classify(kPolyline, "wall"));
  EXPECT_NE(first.find("Completed: 1\n"), std::string::npos) << first;
  // Nothing was classified yet: no list of classes to take off.
  EXPECT_EQ(first.find("Remove"), std::string::npos) << first;
  EXPECT_EQ(records(kPolyline), "WALLS:Wall,2.0,brick,");
  EXPECT_EQ(color(kPolyline), 1);

  // The second time the class is offered for removal; keeping it attaches nothing new.
  std::string second = run(classify(kPolyline, "WALL") + "0\n0\n");
  EXPECT_NE(second.find("Remove\nSelect All [0/1] <0>: "), std::string::npos) << second;
  EXPECT_EQ(records(kPolyline), "WALLS:Wall,2.0,brick,");
}

TEST_F(ClassificationCommandsTest, ClassifyRefusals) {
  struct Case {
    std::string script;
    std::string expected;
  };
  const Case cases[] = {
      {classify(kPolyline, "Pipe"), "Error: object not found.\n"},
      // A line is no polyline: selected, but not processed.
      {classify(kLine, "Wall"), "Completed: 0\n"},
      {std::string("TAXOR_CLASSIFY\nWall\n0\n0\n0\n"), ""},
      {std::string("TAXOR_CLASSIFY\nWall\n1\n1\n1\n\n"), "Error: no objects selected.\n"},
  };
  for (const Case& c : cases) {
    std::string out = run(c.script);
    if (c.expected.empty()) {
      EXPECT_EQ(out.find("Completed"), std::string::npos) << out;
    } else {
      EXPECT_NE(out.find(c.expected), std::string::npos) << c.script << "\n" << out;
    }
  }
  EXPECT_EQ(records(kPolyline), "");
  EXPECT_EQ(records(kLine), "");
  // Nothing was attached, so the drawing did not even get its table dictionary.
  EXPECT_TRUE(objdata::findTableDictionary(database()).isNull());
}

TEST_F(ClassificationCommandsTest, ChangeObjectReplacesTheChosenClass) {
  run(classify(kPolyline, "Wall"));
  std::string out = run(classify(kPolyline, "Partition") + "0\n1\n");
  EXPECT_NE(out.find("Completed: 1\n"), std::string::npos) << out;
  EXPECT_EQ(records(kPolyline), "WALLS:Partition,2.0,brick,");
  EXPECT_EQ(color(kPolyline), 2);
}

TEST_F(ClassificationCommandsTest, AutoClassifyByPropertiesTakesTheFirstNameOnATie) {
  // Wall and Partition have the same draw order and both accept any colour on layer Walls.
  std::string out = run("TAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n");
  EXPECT_NE(out.find("Completed: 2/"), std::string::npos) << out;
  EXPECT_EQ(records(kPolyline), "WALLS:Partition,2.0,brick,");
  EXPECT_EQ(records(kLine), "CABLES:Cable,power");
  EXPECT_EQ(records(kCircle), "");
  // Already classified: nothing more.
  out = run("TAXOR_CLASSIFY_AUTO\n\n\nALL\n\n");
  EXPECT_NE(out.find("Completed: 0/"), std::string::npos) << out;
}

TEST_F(ClassificationCommandsTest, AutoClassifyByClassesTakesTheFirstRecordOnATie) {
  run(classify(kPolyline, "Wall", "0\n1\n0\n"));
  run(classify(kPolyline, "Partition", "0\n1\n0\n"));
  EXPECT_EQ(color(kPolyline), 3);
  std::string out = run("TAXOR_CLASSIFY_AUTO\n1\n\n" + std::string(kPolyline) + "\n\n");
  EXPECT_NE(out.find("Completed: 1/1\n"), std::string::npos) << out;
  EXPECT_EQ(color(kPolyline), 1);  // Wall's, the first record's class
  EXPECT_EQ(records(kPolyline), "WALLS:Wall,2.0,brick,|WALLS:Partition,2.0,brick,");
}

TEST_F(ClassificationCommandsTest, AssertFindsBrokenRulesOfTheFieldsAsked) {
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable"));
  struct Case {
    const wchar_t* field;
    const wchar_t* value;
    const char* required_only;  // selected with "check non-required fields" 0
    const char* all_fields;     // and with 1
  };
  const Case cases[] = {
      {L"MATERIAL", L"brick", "Selected: 0", "Selected: 0"},
      {L"MATERIAL", L"wood", "Selected: 0", "Selected: 1"},
      {L"HEIGHT", L"3.0", "Selected: 0", "Selected: 0"},
      {L"HEIGHT", L"3.5", "Selected: 1", "Selected: 1"},
  };
  for (const Case& c : cases) {
    setField(kPolyline, L"WALLS", c.field, c.value);
    EXPECT_NE(run("TAXOR_ASSERT\n0\nALL\n\n").find(c.required_only), std::string::npos)
        << base::toUtf8(c.value);
    EXPECT_NE(run("TAXOR_ASSERT\n1\nALL\n\n").find(c.all_fields), std::string::npos)
        << base::toUtf8(c.value);
    setField(kPolyline, L"WALLS", c.field, c.field == std::wstring(L"HEIGHT") ? L"2.5" : L"brick");
  }
}

TEST_F(ClassificationCommandsTest, StatReportsClassesSortedWithTheRealInvalidTotal) {
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable"));
  setField(kPolyline, L"WALLS", L"HEIGHT", L"9");
  std::string out =
      run("TAXOR_STAT\n" + std::string(kPolyline) + "\n" + kLine + "\n" + kCircle + "\n\n");
  EXPECT_NE(out.find("TAXOR_STAT\n"
                     "Objects: 3 (1 unclassified)\n"
                     "Classes: 2\n"
                     "\tCable: 1 (0 invalid)\n"
                     "\tWall: 1 (0 invalid)\n"
                     "\n"
                     "Invalid definitions: 1\n"),
            std::string::npos)
      << out;
}

TEST_F(ClassificationCommandsTest, RemoveTakesOffOneClass) {
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable"));
  std::string out = run("TAXOR_REMOVE\nwall\nALL\n\n");
  EXPECT_NE(out.find("Completed: 1\n"), std::string::npos) << out;
  EXPECT_EQ(records(kPolyline), "");
  EXPECT_EQ(records(kLine), "CABLES:Cable,power");
  // The emptied extension dictionary went with the last record.
  EXPECT_TRUE(database().extensionDictionary(id(kPolyline)).value().isNull());
}

TEST_F(ClassificationCommandsTest, RemoveAllKeepsRecordsOfTablesNoClassNames) {
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable"));
  // A record of a table the catalogue does not know, stored beside Cable's.
  objdata::TableDirectory tables(database(), objdata::findTableDictionary(database()));
  ASSERT_EQ(objdata::ensureStoredTable(database(), tables.id(), L"SURVEY",
                                       {{L"POINT_ID", objdata::ValueType::kInteger}}),
            2);
  objdata::TableRecord survey;
  ASSERT_EQ(objdata::appendRecord(tables, *tables.find(L"SURVEY"), survey, id(kLine)),
            objdata::kStatusOk);

  std::string out = run("TAXOR_REMOVE_ALL\nALL\n\n");
  EXPECT_NE(out.find("Completed: 2\n"), std::string::npos) << out;
  EXPECT_EQ(records(kPolyline), "");
  EXPECT_EQ(records(kLine), "SURVEY:0");
}

TEST_F(ClassificationCommandsTest, RestoreAppliesTheCarriedClassesAgain) {
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable"));
  ASSERT_TRUE(database().setProperty(id(kPolyline), host::EntityProperty::kColor, host::Color{6}));
  // Nobody carries Partition; the count is of the entities selected.
  const std::string all = std::to_string(database().modelSpaceEntities().size());
  std::string out = run("TAXOR_RESTORE\nPartition\n\nALL\n\n");
  EXPECT_NE(out.find("Completed: 0/" + all + "\n"), std::string::npos) << out;
  EXPECT_EQ(color(kPolyline), 6);
  out = run("TAXOR_RESTORE\n\n1\nALL\n\n");
  EXPECT_NE(out.find("Mode [0 (all)/1 (default)]<0>: 1"), std::string::npos) << out;
  EXPECT_NE(out.find("Completed: " + all + "/" + all + "\n"), std::string::npos) << out;
  EXPECT_EQ(color(kPolyline), 1);
  EXPECT_NE(run("TAXOR_RESTORE\nWall\n\nALL\n\n").find("Mode [0 (all)/1 (default)]<1>: "),
            std::string::npos);
}

TEST_F(ClassificationCommandsTest, AValueItsStoredFieldCannotHoldEndsTheCommand) {
  writeClasses(std::string(kClasses) +
               "\nobj_name\tBeacon\t1\t1\n"
               "obj_type\tLine\n"
               "vel_name\tCABLES\n"
               "vel_key\tCLASS\n"
               "vel_fld\tKIND\tKind\tcharacter\tpower\n"
               "vel_name\tBEACONS\n"
               "vel_key\tCLASS\n"
               "vel_fld\tAT\tPosition\tcharacter\tnorth\n");
  run("");
  // Another program stored the table since, with a point where the class file has a text.
  ASSERT_EQ(objdata::ensureStoredTable(
                database(), objdata::getTableDictionary(*session_.host), L"BEACONS",
                {{L"CLASS", objdata::ValueType::kCharacter}, {L"AT", objdata::ValueType::kPoint}}),
            2);
  std::string out = run(classify(kLine, "Beacon"));
  EXPECT_NE(out.find("Error: the value 'north' does not fit field 'AT' of table 'BEACONS' "
                     "(class 'Beacon')"),
            std::string::npos)
      << out;
  EXPECT_EQ(out.find("Completed"), std::string::npos) << out;
  // The first table's record was written and stays; the drawing is still whole.
  EXPECT_EQ(records(kLine), "CABLES:Beacon,power");
  EXPECT_TRUE(dxf::Document::parse(session_.drawing.serialize(), "again.dxf"));
}

TEST(ClassificationCommandsR12Test, ADrawingWithoutDictionariesIsRefusedWithAReason) {
  fs::path file = fs::temp_directory_path() / "taxor_classify_r12.txt";
  std::ofstream(file) << kClasses;
  testing_session::Session session(sample::r12Drawing());
  session.run("TAXOR_LOAD\n" + file.string() + "\nTAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n");
  fs::remove(file);
  EXPECT_NE(session.out().find("Error: this drawing cannot keep object data; save it as DXF "
                               "R2000 or later and run the command again.\n"),
            std::string::npos)
      << session.out();
  EXPECT_EQ(session.out().find("Completed"), std::string::npos) << session.out();
}

}  // namespace
