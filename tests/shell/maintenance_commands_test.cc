// The repairing commands through the headless command line: duplicate records, rounding
// and draw order.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "dxf/sort_entities.h"
#include "shell/commands_fixture.h"
#include "test_paths.h"

namespace {

using commands_fixture::classify;
using commands_fixture::has;
using commands_fixture::kArc;
using commands_fixture::kCircle;
using commands_fixture::kLine;
using commands_fixture::kPolyline;

class MaintenanceCommandsTest : public commands_fixture::CommandsTest {
 protected:
  // Appends a CABLES record of class `cls` and kind `kind` to the line.
  void appendCable(const wchar_t* cls, const wchar_t* kind) {
    objdata::TableDirectory tables(database(), objdata::findTableDictionary(database()));
    const objdata::StoredTable* stored = tables.find(L"CABLES");
    ASSERT_NE(stored, nullptr);
    objdata::TableRecord record = objdata::blankRecord(*stored);
    record.fields[0].value = objdata::makeValue(objdata::ValueType::kCharacter, cls);
    record.fields[1].value = objdata::makeValue(objdata::ValueType::kCharacter, kind);
    ASSERT_EQ(objdata::appendRecord(tables, *stored, record, id(kLine)), objdata::kStatusOk);
  }
  // The line carries Cable three times (kinds power, a, b) and a record of another class.
  void classifyCablesThrice() {
    restart(sample::drawing());
    run(classify(kLine, "Cable") + classify(kPolyline, "Wall"));
    appendCable(L"Cable", L"a");
    appendCable(L"Wall", L"x");
    appendCable(L"Cable", L"b");
  }
};

TEST_F(MaintenanceCommandsTest, DuplicateRecordsAreFoundAndTheSurplusDeleted) {
  classifyCablesThrice();
  // Wall's one table holds one record, the other CABLES record is of Wall: no duplicate.
  EXPECT_TRUE(has(run("TAXOR_SEL_DUPLICATES\nALL\n\n"), "Selected: 1 ('Cable' )\nSelected: 1"));
  EXPECT_EQ(session().host->editor().impliedSelection(), std::vector{id(kLine)});

  struct Case {
    std::string answer;  // to "Mode (First, Last)<First>: "
    std::string printed;
    std::string records;  // of the line afterwards
  };
  const Case cases[] = {
      // First deletes the first of the duplicates until one is left: the last stays.
      {"F\n", "Completed: 1\n", "CABLES:Wall,x|CABLES:Cable,b"},
      {"\n", "Completed: 1\n", "CABLES:Wall,x|CABLES:Cable,b"},
      {"\x1b", "Completed: 1\n", "CABLES:Wall,x|CABLES:Cable,b"},
      {"la\n", "Completed: 1\n", "CABLES:Cable,power|CABLES:Wall,x"},
      {"firsts\n", "Mode (First, Last)<First>: firsts\nCommand: ",
       "CABLES:Cable,power|CABLES:Cable,a|CABLES:Wall,x|CABLES:Cable,b"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.answer);
    classifyCablesThrice();
    std::string out = run("TAXOR_DEL_DUPLICATES\nALL\n\n" + c.answer);
    EXPECT_TRUE(has(out, c.printed));
    EXPECT_EQ(records(kLine), c.records);
  }
  // Nothing left to delete the second time.
  run("TAXOR_DEL_DUPLICATES\nALL\n\nF\n");
  EXPECT_TRUE(has(run("TAXOR_DEL_DUPLICATES\nALL\n\nF\n"), "Completed: 0\n"));
  EXPECT_TRUE(has(run("TAXOR_SEL_DUPLICATES\nALL\n\n"), "Selected: 0 ()\nSelected: 0"));
}

TEST_F(MaintenanceCommandsTest, RoundingKeepsTheClassFilesDecimals) {
  run(classify(kPolyline, "Wall"));
  // HEIGHT is written 2.5, 2 and 3 in the class file: one place.
  struct Case {
    const wchar_t* stored;
    const char* rounded;
  };
  // How halves go is the rounding's own test (maintenance); here the places and the text.
  const Case cases[] = {{L"2.71828", "2.7"}, {L"3", "3.0"}};
  for (const Case& c : cases) {
    setField(kPolyline, L"WALLS", L"HEIGHT", c.stored);
    EXPECT_TRUE(has(run("TAXOR_ROUND\nALL\n\n"), "Completed\n"));
    EXPECT_EQ(records(kPolyline), "WALLS:Wall," + std::string(c.rounded) + ",brick,");
  }
}

TEST_F(MaintenanceCommandsTest, SortDrawsHigherClassesAbove) {
  restartWith({{"0 ENDSEC", "9 $SORTENTS\n280 128\n"}});
  run(classify(kPolyline, "Wall") + classify(kLine, "Cable") + classify(kArc, "Marker"));
  run("TAXOR_SORT\nALL\n\n");
  // Unclassified entities lowest, then Marker (1), Cable (5), Wall (10).
  std::vector<std::string> order;
  for (dxf::RecordId record : dxf::modelSpaceDrawOrder(session().drawing)) {
    for (const char* handle : {kCircle, kArc, kLine, kPolyline}) {
      if (session().host->dxfDatabase().toRecord(id(handle)) == record) order.push_back(handle);
    }
  }
  EXPECT_EQ(order, (std::vector<std::string>{kCircle, kArc, kLine, kPolyline}));
  EXPECT_EQ(database().getVar("SORTENTS").value(), host::SysVar{int16_t{255}});

  // Another program draws them so too, and finds nothing to repair.
  TAXOR_SKIP_WITHOUT_EZDXF();
  const testing_paths::TempDir dir("taxor_sort");
  const std::string saved = (dir / "sorted.dxf").string();
  ASSERT_TRUE(session().drawing.save(saved));
  std::string output;
  int status = testing_paths::runCommand(
      "/usr/bin/python3 -c \"import ezdxf, sys\n"
      "doc = ezdxf.readfile(sys.argv[1])\n"
      "known = ('100', '101', '103', '104')\n"
      "order = [e.dxf.handle for e in doc.modelspace().entities_in_redraw_order()]\n"
      "print(len(doc.audit().errors), *[h for h in order if h in known])\" " +
          saved,
      output);
  EXPECT_EQ(status, 0) << output;
  EXPECT_EQ(output, "0 103 104 100 101\n");
}

}  // namespace
