// Resource files: parsing .lin, .mln and .pat files, adding what they define to a drawing,
// and importing files of every kind through the headless database.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

#include "base/utf.h"
#include "dxf/blocks.h"
#include "dxf/resource_copy.h"
#include "dxf/sample_drawing.h"
#include "dxf/symbol_tables.h"
#include "headless/dxf_database.h"
#include "test_paths.h"

namespace dxf {
namespace {

namespace fs = std::filesystem;

using sample::dataPath;
std::string readData(const std::string& file) { return testing_paths::readFile(dataPath(file)); }

Document drawing(const std::string& file = "resource_target.dxf") {
  return sample::parse(readData(file), file);
}

TEST(LinetypeFile, ParsesTextsShapesAndRotationUnits) {
  auto defs =
      parseLinetypeFile(readData("sample.lin") +
                            "*TURNS\nA,1,[\"T\",S,R=90],1,[\"T\",S,A=1.5707963267948966r],1,"
                            "[\"T\",S,U=100g]\n*dashed2,again\nA,9\n",
                        "sample.lin");
  ASSERT_TRUE(defs.isOk()) << defs.status().message();
  ASSERT_EQ(defs->size(), 4u);  // the second DASHED2 is ignored
  const LinetypeDefinition& dashed = (*defs)[0];
  EXPECT_EQ(dashed.name, L"DASHED2");
  EXPECT_EQ(dashed.description, L"Dashed (.5x) __ __ __ __");
  ASSERT_EQ(dashed.elements.size(), 2u);
  EXPECT_EQ(dashed.elements[1].length, -0.125);

  const LinetypeElement& gas = (*defs)[1].elements[1];
  EXPECT_EQ(gas.embedded, LinetypeElement::Embedded::kText);
  EXPECT_EQ(gas.text, L"GAS");
  EXPECT_EQ(gas.style, L"STANDARD");
  EXPECT_EQ(gas.scale, 0.1);
  EXPECT_EQ(gas.x_offset, -0.1);
  EXPECT_EQ(gas.y_offset, -0.05);

  const LinetypeElement& fence = (*defs)[2].elements[1];
  EXPECT_EQ(fence.embedded, LinetypeElement::Embedded::kShape);
  EXPECT_EQ(fence.text, L"CIRC1");
  EXPECT_EQ(fence.style, L"ltypeshp.shx");
  EXPECT_EQ((*defs)[2].elements.size(), 4u);

  const auto& turns = (*defs)[3].elements;
  for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(turns[i].rotation_deg, 90, 1e-9) << i;
  EXPECT_FALSE(turns[0].absolute_rotation);
  EXPECT_TRUE(turns[1].absolute_rotation);
}

TEST(MlineFile, ParsesStylesAndTheirElements) {
  auto defs = parseMlineFile("; a comment\n" + readData("sample.mln"), "sample.mln");
  ASSERT_TRUE(defs.isOk()) << defs.status().message();
  ASSERT_EQ(defs->size(), 2u);
  const MlineStyleDefinition& wall = (*defs)[0];
  EXPECT_EQ(wall.name, L"DOUBLE_WALL");
  EXPECT_EQ(wall.description, L"Two walls");
  EXPECT_EQ(wall.fill_color, 256);
  ASSERT_EQ(wall.elements.size(), 2u);
  EXPECT_EQ(wall.elements[1].offset, -0.5);
  EXPECT_EQ(wall.elements[1].color, 1);
  EXPECT_EQ(wall.elements[1].linetype, L"DASHED2");
  EXPECT_EQ((*defs)[1].name, L"AXIS");
  EXPECT_EQ((*defs)[1].description, L"");
}

TEST(PatternFile, ParsesDefinitionLinesAndKnowsThePredefinedNames) {
  auto defs = parsePatternFile(readData("sample.pat") + "*my_brick\n0,0,0,0,9\n", "sample.pat");
  ASSERT_TRUE(defs.isOk()) << defs.status().message();
  ASSERT_EQ(defs->size(), 2u);
  const PatternDefinition& brick = (*defs)[0];
  EXPECT_EQ(brick.description, L"Brick courses");
  ASSERT_EQ(brick.lines.size(), 2u);
  EXPECT_EQ(brick.lines[1].angle, 90);
  EXPECT_EQ(brick.lines[1].delta_x, 0.25);
  EXPECT_EQ(brick.lines[1].dashes, (std::vector<double>{0.25, -0.25}));
  EXPECT_EQ((*defs)[1].description, L"ANSI Iron, Brick, Stone masonry");

  for (const wchar_t* name : {L"SOLID", L"ansi31", L"JIS_STN_2.5", L"ISO09W100", L"AR-B816C"}) {
    EXPECT_TRUE(isPredefinedPattern(name)) << name;
  }
  for (const wchar_t* name : {L"MY_BRICK", L"ANSI39", L"ISO16W100", L""}) {
    EXPECT_FALSE(isPredefinedPattern(name)) << name;
  }
}

// Every malformed file is refused with its name, the line and what is wrong.
TEST(ResourceFiles, MalformedFilesNameTheLineAndTheFault) {
  using Parse = std::function<base::Status(std::string_view, const std::string&)>;
  Parse lin = [](auto text, auto& name) { return parseLinetypeFile(text, name).status(); };
  Parse mln = [](auto text, auto& name) { return parseMlineFile(text, name).status(); };
  Parse pat = [](auto text, auto& name) { return parsePatternFile(text, name).status(); };
  struct Case {
    Parse parse;
    const char* text;
    const char* error;
  };
  const Case cases[] = {
      {lin, "A,.5,-.25\n", "f:1: a pattern line must follow a *NAME line"},
      {lin, ";c\n*X,first\n*Y\nA,1\n", "f:2: linetype 'X' has no pattern line"},
      {lin, "*X\n", "f:1: linetype 'X' has no pattern line"},
      {lin, "*X\nB,1\n", "f:2: a pattern line starts with 'A,'"},
      {lin, "*X\nA,1,abc\n", "f:2: 'abc' is not a number"},
      {lin, "*X\nA,[\"T\",STANDARD],1\n", "f:2: a complex element must follow a dash"},
      {lin, "*X\nA,1,[\"T\",STANDARD,Q=1]\n", "f:2: unknown parameter 'Q'"},
      {lin, "*X\nA,1,[\"T\",STANDARD,S=1\n", "f:2: a '[' is not closed by ']'"},
      {lin, "*X\nA,1,[\"T\"]\n", "f:2: a complex element needs"},
      {lin, "*A<B\nA,1\n", "f:1: 'A<B' is not a valid linetype name"},
      {mln, "STYLE\n", "f:1: expected MLSTYLE"},
      {mln, "MLSTYLE\nxx\n", "f:2: 'xx' is not a group code"},
      {mln, "MLSTYLE\n2\nA\n70\nabc\n", "f:5: 'abc' is not a valid value for group code 70"},
      {mln, "MLSTYLE\n2\nA\n71\n2\n49\n0.5\n0\n", "f:1: multiline style 'A' declares 2 elements"},
      {mln, "MLSTYLE\n2\nA\n0\n", "f:1: multiline style 'A' has no elements"},
      {mln, "MLSTYLE\n49\n1\n0\n", "f:1: a multiline style needs a name"},
      {mln, "MLSTYLE\n2\n", "f:2: group code 2 has no value"},
      {mln, "MLSTYLE\n2\nA\n6\nX\n", "f:5: a linetype (code 6) before the first offset"},
      {mln, "MLSTYLE\n2\nA\n49\n1\n0\nJUNK\n", "f:7: expected MLSTYLE after group code 0"},
      {pat, "0,0,0,0,1\n", "f:1: a definition line must follow a *NAME line"},
      {pat, "*P\n*Q\n0,0,0,0,1\n", "f:1: pattern 'P' has no definition lines"},
      {pat, "*P ; nothing follows\n", "f:1: pattern 'P' has no definition lines"},
      {pat, "*P\n0,0,0,1\n", "f:2: a definition line needs angle"},
      {pat, "*P\n0,0,x,0,1\n", "f:2: 'x' is not a number"},
      {pat, "*, nameless\n0,0,0,0,1\n", "f:1: a pattern needs a name"},
  };
  for (const Case& c : cases) {
    base::Status status = c.parse(c.text, "f");
    ASSERT_FALSE(status.isOk()) << c.text;
    EXPECT_EQ(status.message().rfind(c.error, 0), 0u) << c.text << " -> " << status.message();
  }
}

// --- Adding to a drawing, through the headless database.

auto import(headless::DxfDatabase& db, const char* file, uint32_t kind,
            std::vector<std::wstring> needed) {
  return db.importResources(base::fromUtf8(dataPath(file)), kind, {{kind, needed}});
}

TEST(ImportResources, ProvidesTheNeededNamesThatTheFileOrTheDrawingHas) {
  using enum host::SymbolTable;
  const struct {
    const char* file;
    uint32_t kind;
    std::vector<std::wstring> needed, provided;
    host::SymbolTable table;
  } cases[] = {
      {"sample.lin",
       host::kResourceLinetypes,
       {L"dashed2", L"Gas_Line", L"NOPE", L"CONTINUOUS"},
       {L"dashed2", L"Gas_Line", L"CONTINUOUS"},
       kLinetype},
      {"sample.mln",
       host::kResourceMlineStyles,
       {L"DOUBLE_WALL", L"NOPE"},
       {L"DOUBLE_WALL"},
       kMlineStyle},
      {"sample.pat",
       host::kResourcePatterns,
       {L"MY_BRICK", L"ANSI31", L"SOLID", L"NOPE"},
       {L"MY_BRICK", L"ANSI31", L"SOLID"},
       kHatchPattern},
      {"resources.dxf", host::kResourceBlocks, {L"DOOR", L"NOPE"}, {L"DOOR"}, kBlock},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    Document doc = drawing();
    headless::DxfDatabase db(doc);
    auto provided = import(db, c.file, c.kind, c.needed);
    ASSERT_TRUE(provided.isOk()) << provided.status().message();
    EXPECT_EQ(provided->at(c.kind), c.provided);
    for (const std::wstring& name : c.provided) EXPECT_TRUE(db.hasSymbol(c.table, name));
    EXPECT_FALSE(db.hasSymbol(c.table, L"NOPE"));
    sample::parse(doc.serialize(), "again");
  }
}

TEST(ImportResources, KeepsPatternsAndWritesWhatTheDrawingHolds) {
  Document doc = drawing();
  headless::DxfDatabase db(doc);
  ASSERT_TRUE(import(db, "sample.pat", host::kResourcePatterns, {L"my_brick"}).isOk());
  ASSERT_NE(db.pattern(L"MY_BRICK"), nullptr);
  EXPECT_EQ(db.pattern(L"MY_BRICK")->lines.size(), 2u);
  EXPECT_EQ(db.pattern(L"ANSI31"), nullptr);  // needed by nobody, so not kept
  EXPECT_TRUE(db.hasSymbol(host::SymbolTable::kHatchPattern, L"ansi37"));

  // A text element keeps its style; a shape becomes its dash; a missing linetype of a
  // multiline element becomes BYLAYER.
  ASSERT_TRUE(import(db, "sample.lin", host::kResourceLinetypes, {L"GAS_LINE", L"FENCE"}).isOk());
  ASSERT_TRUE(import(db, "sample.mln", host::kResourceMlineStyles, {L"DOUBLE_WALL"}).isOk());
  RecordId gas = findTableEntry(doc, "LTYPE", L"GAS_LINE");
  EXPECT_EQ(doc.value(gas, 9), "GAS");
  EXPECT_EQ(doc.value(gas, 340), "11");  // the drawing's "Standard"
  EXPECT_EQ(doc.intValue(gas, 73, 0), 3);
  EXPECT_NEAR(doc.realValue(gas, 40, 0), 0.95, 1e-12);
  EXPECT_FALSE(doc.find(findTableEntry(doc, "LTYPE", L"FENCE"), 340));
  RecordId wall = findStyle(doc, L"ACAD_MLINESTYLE", L"DOUBLE_WALL");
  ASSERT_NE(wall, kNoRecord);
  std::vector<std::string> linetypes;
  for (const Tag& tag : doc.tags(wall)) {
    if (tag.code == 6) linetypes.emplace_back(doc.text(tag));
  }
  EXPECT_EQ(linetypes, (std::vector<std::string>{"BYLAYER", "BYLAYER"}));
}

TEST(ImportResources, FailsWithoutChangingTheDrawing) {
  const testing_paths::TempDir dir("taxor_resfile");
  auto write = [&](const char* name, const std::string& text, bool executable = false) {
    std::string file = (dir / name).string();
    std::ofstream(file, std::ios::binary) << text;
    if (executable) chmod(file.c_str(), 0755);
    return file;
  };
  std::string bad_lin = write("bad.lin", "*X\nA,1,oops\n");
  std::string dwg = write("door.dwg", readData("resources.dxf"));
  std::string converter = write("convert.sh", "#!/bin/sh\ncp \"$1\" \"$2\"\n", true);
  std::string failing = write("fail.sh", "#!/bin/sh\nexit 3\n", true);
  // Sparse, so its size costs no disk space; refused before it is in memory.
  std::string huge_pat = write("huge.pat", "");
  fs::resize_file(huge_pat, (size_t{64} << 20) + 1);
  struct Case {
    std::string path;
    const char* converter;  // TAXOR_DWG_CONVERTER, or null for unset
    std::string error;
  };
  const Case cases[] = {
      {bad_lin, nullptr, bad_lin + ":2: 'oops' is not a number"},
      {write("x.txt", ""), nullptr, "not a resource file"},
      {(dir / "missing.lin").string(), nullptr, "cannot read"},
      {huge_pat, nullptr, "cannot read '" + huge_pat + "': larger than 64 MB"},
      {dwg, nullptr,
       "cannot read '" + dwg +
           "': DWG files need a converter; set TAXOR_DWG_CONVERTER or save the drawing as DXF"},
      {dwg, failing.c_str(), "failed with exit code 3"},
  };
  for (const Case& c : cases) {
    Document doc = drawing();
    std::string before = doc.serialize();
    headless::DxfDatabase db(doc);
    if (c.converter) setenv("TAXOR_DWG_CONVERTER", c.converter, 1);
    auto result =
        db.importResources(base::fromUtf8(c.path), 0x1FF, {{host::kResourceLinetypes, {L"X"}}});
    unsetenv("TAXOR_DWG_CONVERTER");
    ASSERT_FALSE(result.isOk()) << c.path;
    EXPECT_NE(result.status().message().find(c.error), std::string::npos)
        << result.status().message();
    EXPECT_EQ(doc.serialize(), before);
  }
  // With a converter, a DWG is read as the DXF it turns into.
  Document doc = drawing();
  headless::DxfDatabase db(doc);
  setenv("TAXOR_DWG_CONVERTER", converter.c_str(), 1);
  auto result = db.importResources(base::fromUtf8(dwg), host::kResourceBlocks,
                                   {{host::kResourceBlocks, {L"KNOB"}}});
  unsetenv("TAXOR_DWG_CONVERTER");
  ASSERT_TRUE(result.isOk()) << result.status().message();
  EXPECT_NE(findBlock(doc, L"KNOB"), kNoRecord);
}

TEST(ImportResources, R12DrawingsTakeLinetypesButNoMultilineStyles) {
  Document doc = drawing("resource_target_r12.dxf");
  headless::DxfDatabase db(doc);
  auto lin = import(db, "sample.lin", host::kResourceLinetypes, {L"GAS_LINE"});
  ASSERT_TRUE(lin.isOk()) << lin.status().message();
  RecordId gas = findTableEntry(doc, "LTYPE", L"GAS_LINE");
  ASSERT_NE(gas, kNoRecord);
  EXPECT_FALSE(doc.find(gas, 100));
  EXPECT_FALSE(doc.find(gas, 74));
  auto mln = import(db, "sample.mln", host::kResourceMlineStyles, {L"AXIS"});
  ASSERT_FALSE(mln.isOk());
  EXPECT_NE(mln.status().message().find("R12"), std::string::npos);
}

}  // namespace
}  // namespace dxf
