// The example job of the README, end to end: the bundled drawing and class file through
// examples/demo.scr, then the saved drawing read back by ezdxf (tests/shell/check_records.py).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "base/utf.h"
#include "catalogue/catalogue.h"
#include "headless/session.h"
#include "test_paths.h"

namespace {

namespace fs = std::filesystem;

const std::string kExamples = std::string(TAXOR_SOURCE_DIR) + "/examples/";

// Entities per class as TAXOR_STAT reports them, and as ezdxf must count them.
const std::map<std::string, int> kClassCounts = {
    {"Building", 6},    {"Building hatch", 6}, {"Centre line", 1},   {"House number", 6},
    {"Manhole", 11},    {"Paving", 1},         {"Power cable", 9},   {"Road edge", 2},
    {"Sewer pipe", 10}, {"Street lamp", 8},    {"Street name", 1},   {"Survey note", 1},
    {"Tree", 24},       {"Water main", 10},    {"Water service", 6},
};

// {"class": {"TABLE": "KEY FIELD", ...}, ...} for every class of the catalogue. The example's
// names need no escapes; one that did would fail the reading script.
std::string classesJson(const catalogue::Catalogue& catalogue) {
  std::string out;
  for (const auto& [lower, object] : catalogue.objects) {
    out += (out.empty() ? "{\"" : ",\"") + base::toUtf8(object.display_name) + "\":{";
    for (size_t t = 0; t < object.tables.size(); ++t) {
      std::wstring key;
      for (const auto& field : object.tables[t].fields)
        if (field.kind == catalogue::ValueKind::kKey) key = field.name;
      out += (t ? ",\"" : "\"") + base::toUtf8(object.tables[t].name) + "\":\"" +
             base::toUtf8(key) + "\"";
    }
    out += "}";
  }
  return out + "}";
}

class ExampleJobTest : public ::testing::Test {
 protected:
  // What `taxor --classes examples/classes.txt --script examples/demo.scr` does.
  void SetUp() override {
    session_.run("TAXOR_LOAD\n" + kExamples + "classes.txt\n" +
                 testing_paths::readFile(kExamples + "demo.scr"));
  }

  testing_session::Session session_{testing_paths::readFile(kExamples + "site.dxf")};
};

// Neither loading the class file nor the job has anything to report, and the resources the
// classes need are in the drawing.
TEST_F(ExampleJobTest, ClassesLoadCleanlyAndBringInTheirResources) {
  const std::string out = session_.out();
  EXPECT_EQ(out.find("error"), std::string::npos) << out;
  EXPECT_EQ(out.find("warning"), std::string::npos) << out;
  const auto& catalogue = session_.app->state().catalogue;
  ASSERT_NE(catalogue, nullptr);
  EXPECT_GE(catalogue->objects.size(), 20u);
  EXPECT_EQ(catalogue->tree.children.size(), 3u);
  const catalogue::ObjectClass* gas = catalogue->findObject(L"GAS MAIN");
  ASSERT_NE(gas, nullptr);
  EXPECT_FALSE(gas->enabled);
  ASSERT_NE(catalogue->findTable(L"water_pipes"), nullptr);
  EXPECT_EQ(catalogue->findTable(L"water_pipes")->objects,
            (std::vector<std::wstring>{L"water main", L"water service"}));
  EXPECT_EQ(catalogue->imports.size(), 3u);  // resources.dxf, linetypes.lin, patterns.pat
  for (const auto& [table, name] : {std::pair{host::SymbolTable::kBlock, L"HYDRANT"},
                                    {host::SymbolTable::kLayer, L"HYDRANTS"},
                                    {host::SymbolTable::kTextStyle, L"NOTES"},
                                    {host::SymbolTable::kLinetype, L"FIBRE"},
                                    {host::SymbolTable::kLinetype, L"GAS"},
                                    {host::SymbolTable::kHatchPattern, L"PAVING"}}) {
    EXPECT_TRUE(session_.host->database().hasSymbol(table, name)) << base::toUtf8(name);
  }
}

TEST_F(ExampleJobTest, TranscriptShowsWhatWasClassifiedAndWhatIsInvalid) {
  const std::string out = session_.out();
  EXPECT_EQ(session_.err(), "");
  // All but the cable drawn on layer 0, and the two entities the drawing brought classified.
  EXPECT_NE(out.find("\nCompleted: 100/103\n"), std::string::npos) << out;
  // The records brought with the drawing: a water main of DN 125 and a manhole 9.6 m deep.
  EXPECT_NE(out.find("\nSelected: 2Command: "), std::string::npos) << out;

  std::string report = "TAXOR_STAT\nObjects: 103 (1 unclassified)\nClasses: 15\n";
  std::vector<std::string> lines;
  for (const auto& [name, count] : kClassCounts) {
    lines.push_back("\t" + name + ": " + std::to_string(count) + " (0 invalid)\n");
  }
  std::sort(lines.begin(), lines.end());
  for (const std::string& line : lines) report += line;
  // Only the water main breaks a required field.
  report += "\nInvalid definitions: 1\n";
  EXPECT_NE(out.find(report), std::string::npos) << out;
}

TEST_F(ExampleJobTest, EzdxfReadsTheRecordsOfEveryClassifiedEntity) {
  TAXOR_SKIP_WITHOUT_EZDXF();
  const testing_paths::TempDir dir("taxor_example_job");
  const fs::path saved = dir / "example_job.dxf";
  const fs::path classes = dir / "example_job.json";
  ASSERT_TRUE(session_.drawing.save(saved.string()));
  std::ofstream(classes) << classesJson(*session_.app->state().catalogue);

  std::string output;
  int status = testing_paths::runCommand("/usr/bin/python3 " + std::string(TAXOR_SOURCE_DIR) +
                                             "/tests/shell/check_records.py " + saved.string() +
                                             " " + classes.string(),
                                         output);
  std::string expected;
  for (const auto& [name, count] : kClassCounts) {
    expected += name + "\t" + std::to_string(count) + "\n";
  }
  EXPECT_EQ(status, 0) << output;
  EXPECT_EQ(output, expected);
}

}  // namespace
