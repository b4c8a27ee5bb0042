// System variables of the headless host: `variable` lines of a class file loaded on the
// command line, set in the drawing's header or in the session, each with its own kind.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "base/status.h"
#include "dxf/sample_drawing.h"
#include "headless/dxf_database.h"
#include "headless/session.h"
#include "test_paths.h"

namespace {

namespace fs = std::filesystem;
using base::Code;
using host::Point2;
using host::Point3;
using host::SysVar;

// The sample drawing with a two-dimensional ($LIMMIN) and a three-dimensional ($INSBASE)
// point in its header.
std::string drawingWithPoints() {
  std::string compact = sample::readCompact("sample_drawing.txt");
  const std::string anchor = "9 $DWGCODEPAGE\n3 ANSI_1252\n";
  size_t at = compact.find(anchor);
  if (at == std::string::npos) return {};
  compact.insert(at + anchor.size(),
                 "9 $LIMMIN\n10 0.0\n20 0.0\n9 $INSBASE\n10 0.0\n20 0.0\n30 0.0\n");
  return sample::toDxf(compact);
}

TEST(SystemVariablesTest, ClassFileSettingsHaveTheVariablesKinds) {
  struct Case {
    const char* line;
    const char* messages;
    const char* variable;  // read back after the load; nullptr: unknown
    SysVar expected;       // its value in the session
    bool in_header;        // also its value in the saved and reopened drawing
  };
  const char* const kInvalid = "1: error: invalid 'variable' definition\n";
  const Case cases[] = {
      {"variable\tLIMMIN\t1,2\n", "", "LIMMIN", {Point2{1, 2}}, true},
      {"variable\tLIMMIN\t1,2,3\n", kInvalid, "LIMMIN", {Point2{0, 0}}, true},
      {"variable\tINSBASE\t1,2\n", kInvalid, "INSBASE", {Point3{0, 0, 0}}, true},
      {"variable\tINSBASE\t4, 5 ,6\n", "", "INSBASE", {Point3{4, 5, 6}}, true},
      {"variable\tpickbox\t5\n", "", "PICKBOX", {int16_t{5}}, false},
      {"variable\tSNAPBASE\t7,8\n", "", "SNAPBASE", {Point2{7, 8}}, false},
      {"variable\tNOSUCH\t1\n", "1: warning: invalid variable 'NOSUCH'\n", nullptr, {}, false},
  };
  const testing_paths::TempDir dir("taxor_variables");
  const fs::path file = dir / "variables.txt";
  for (const Case& c : cases) {
    std::ofstream(file, std::ios::binary) << c.line;
    testing_session::Session session(drawingWithPoints());
    session.run("TAXOR_LOAD\n" + file.string() + "\n");
    EXPECT_NE(session.out().find(file.string() + "\n" + c.messages + "Command: "),
              std::string::npos)
        << c.line << session.out();
    headless::DxfDatabase& database = session.host->dxfDatabase();
    if (!c.variable) {
      EXPECT_EQ(database.getVar("NOSUCH").status().code(), Code::kNotFound);
      continue;
    }
    auto got = database.getVar(c.variable);
    ASSERT_TRUE(got) << c.line;
    EXPECT_EQ(got->value, c.expected.value) << c.line;
    auto reopened = dxf::Document::parse(session.drawing.serialize(), "saved.dxf");
    ASSERT_TRUE(reopened) << c.line;
    headless::DxfDatabase saved(*reopened);
    auto kept = saved.getVar(c.variable);
    if (c.in_header) {
      ASSERT_TRUE(kept) << c.line;
      EXPECT_EQ(kept->value, c.expected.value) << c.line;
    } else {
      // A session variable is not written into the drawing; a new session starts afresh.
      EXPECT_EQ(reopened->headerVariable(std::string("$") + c.variable).size(), 0u) << c.line;
    }
  }
  fs::remove(file);
}

}  // namespace
