// System variables of the headless host: `variable` lines of a class file loaded on the
// command line, set in the drawing's header or in the session, each with its own kind.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "dxf/sample_drawing.h"
#include "headless/dxf_database.h"
#include "headless/session.h"
#include "test_paths.h"

namespace {

namespace fs = std::filesystem;
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

// Malformed lines and unknown variables are the parser's (catalogue/parser_test.cc), the kinds
// of the host's variables its contract's (host/entity_contract_test.cc); here a setting reaches
// the drawing's header or stays in the session.
TEST(SystemVariablesTest, ClassFileSettingsGoToTheHeaderOrTheSession) {
  struct Case {
    const char* line;
    const char* variable;
    SysVar expected;  // its value in the session
    bool in_header;   // also its value in the saved and reopened drawing
  };
  const Case cases[] = {
      {"variable\tLIMMIN\t1,2\n", "LIMMIN", {Point2{1, 2}}, true},
      {"variable\tINSBASE\t4, 5 ,6\n", "INSBASE", {Point3{4, 5, 6}}, true},
      {"variable\tpickbox\t5\n", "PICKBOX", {int16_t{5}}, false},
  };
  const testing_paths::TempDir dir("taxor_variables");
  const fs::path file = dir / "variables.txt";
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    std::ofstream(file, std::ios::binary) << c.line;
    testing_session::Session session(drawingWithPoints());
    session.run("TAXOR_LOAD\n" + file.string() + "\n");
    EXPECT_NE(session.out().find(file.string() + "\nCommand: "), std::string::npos)
        << session.out();
    auto got = session.host->dxfDatabase().getVar(c.variable);
    ASSERT_TRUE(got);
    EXPECT_EQ(got->value, c.expected.value);
    auto reopened = dxf::Document::parse(session.drawing.serialize(), "saved.dxf");
    ASSERT_TRUE(reopened);
    if (c.in_header) {
      auto kept = headless::DxfDatabase(*reopened).getVar(c.variable);
      ASSERT_TRUE(kept);
      EXPECT_EQ(kept->value, c.expected.value);
    } else {
      EXPECT_EQ(reopened->headerVariable(std::string("$") + c.variable).size(), 0u);
    }
  }
}

}  // namespace
