// Resource keywords of the class file and the end-of-file steps: files found and filed,
// imports of what the classes need, "not found" warnings, stored table definitions.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "base/text_case.h"
#include "catalogue/parse_testing.h"
#include "catalogue/resource_files.h"
#include "test_paths.h"

namespace {

namespace fs = std::filesystem;
using parse_testing::Fixture;
using parse_testing::messageTexts;

// A folder of resource files beside a class file, removed at the end.
class ResourceFolder : public ::testing::Test {
 protected:
  void SetUp() override {
    root_ = temp_dir_.path();
    for (const char* file :
         {"lib/b.dxf", "lib/a.dwg", "lib/notes.txt", "lib/lines.lin", "lib/hatch.pat",
          "lib/manhole.dwg", "lib/LAMP.dwg", "lib/old.dwg.dwt.bak", "fonts/roman.shx"}) {
      fs::create_directories((root_ / file).parent_path());
      std::ofstream(root_ / file) << "x";
    }
    fs::create_directories(root_ / "lib/folder.dwg");
  }

  std::wstring path(const std::string& relative) const {
    return base::fromUtf8((root_ / relative).string());
  }
  catalogue::ParseResult parse(const std::string& text) {
    return fixture_.parse(text, path("classes.txt"));
  }
  std::string u8(const std::string& relative) const { return (root_ / relative).string(); }

  testing_paths::TempDir temp_dir_{"taxor_resources"};
  fs::path root_;
  Fixture fixture_;
};

constexpr const char* kWaterPipe =
    "obj_name\tPipe\t1\t1\nobj_type\tPolyline\nobj_prop\tlayer\tWater\t*,Sewer\n";

TEST(ResourceFilesTest, PathsAndExtensions) {
  EXPECT_EQ(catalogue::resolveResourcePath(L"lib/*.dwg", L"/data/classes.txt"), L"/data/lib/*.dwg");
  EXPECT_EQ(catalogue::resolveResourcePath(L"lib\\a.dwg", L"C:\\data\\classes.txt"),
            L"C:\\data\\lib\\a.dwg");
  EXPECT_EQ(catalogue::resolveResourcePath(L"/abs/a.dwg", L"/data/classes.txt"), L"/abs/a.dwg");
  EXPECT_EQ(catalogue::resolveResourcePath(L"D:\\a.dwg", L"/data/classes.txt"), L"D:\\a.dwg");
  struct Case {
    const wchar_t* path;
    const wchar_t* extension;
    bool expected;
  };
  for (const Case& c : {Case{L"/d/a.dwg", L".dwg", true}, Case{L"/d/a.DWG", L".dwg", false},
                        Case{L"/d.dwg/a.dwg", L".dwg", false},
                        Case{L"/d/a.dwg.bak", L".dwg", false}, Case{L"dwg", L".dwg", false}}) {
    EXPECT_EQ(catalogue::hasExtension(c.path, c.extension), c.expected) << base::toUtf8(c.path);
  }
  EXPECT_EQ(catalogue::blockNameOf(L"C:\\blocks\\Manhole.dwg"), L"Manhole");
  EXPECT_EQ(catalogue::folderOf(L"/a/b/c.shx"), L"/a/b");
}

TEST_F(ResourceFolder, WildcardsFindFilesSortedAndSkipFolders) {
  std::vector<std::wstring> found = catalogue::findFiles(path("lib/*.DW?"));
  EXPECT_EQ(found, (std::vector<std::wstring>{path("lib/LAMP.dwg"), path("lib/a.dwg"),
                                              path("lib/manhole.dwg")}));
  EXPECT_EQ(catalogue::findFiles(base::fromUtf8(u8("lib")) + L"\\a.dwg"),
            std::vector<std::wstring>{path("lib/a.dwg")});
  EXPECT_TRUE(catalogue::findFiles(path("lib/folder.dwg")).empty());
  EXPECT_TRUE(catalogue::findFiles(path("nothing/*.dwg")).empty());
}

TEST_F(ResourceFolder, NeededKindsAreImportedFromTheirFiles) {
  fixture_.host.provides[path("lib/a.dwg")] = {{host::kResourceLayers, {L"WATER", L"SEWER"}}};
  fixture_.host.provides[path("lib/b.dxf")] = {{host::kResourceLayers, {}}};
  fixture_.fake.addLayer(L"Water");
  auto result = parse(std::string("layer\tlib/?.d*\ntextstyle\tlib/a.dwg\npattern\tlib/*.dwg\n") +
                      kWaterPipe);
  // SEWER was provided but the drawing does not have it: the fake's import adds nothing.
  EXPECT_EQ(messageTexts(result), "warning: layer 'sewer' not found\n");
  ASSERT_TRUE(result.ok);
  const auto& imports = fixture_.host.imports;
  ASSERT_EQ(imports.size(), 2u);
  EXPECT_EQ(imports[0].path, path("lib/a.dwg"));
  EXPECT_EQ(imports[0].mask, host::kResourceLayers);  // no class needs a text style
  EXPECT_EQ(imports[0].needed,
            (host::ResourceNames{{host::kResourceLayers, {L"water", L"sewer"}}}));
  EXPECT_EQ(imports[1].path, path("lib/b.dxf"));
  EXPECT_EQ(result.resources.loaded_files,
            (std::vector<std::wstring>{path("lib/a.dwg"), path("lib/b.dxf")}));
  EXPECT_TRUE(result.resources.hasResource(host::kResourceLayers, L"Water"));
  EXPECT_EQ(result.resources.resources(host::kResourceLayers).at(L"sewer").file, path("lib/a.dwg"));
}

TEST_F(ResourceFolder, BlockFilesServeTheBlocksNamedLikeThem) {
  fixture_.fake.addSymbol(host::SymbolTable::kBlock, L"valve");
  auto result = parse(
      "blockreferencefile\tlib/*.dwg\n"
      "obj_name\tManhole\t1\t1\nobj_type\tBlockReference\nobj_prop\tblockname\tManhole\n"
      // LAMP.dwg names its block in capitals; class names are lower-cased: not served.
      "obj_name\tLamp\t1\t1\nobj_type\tBlockReference\nobj_prop\tblockname\tLamp\n"
      "obj_name\tValve\t1\t1\nobj_type\tBlockReference\nobj_prop\tblockname\tValve\n");
  EXPECT_EQ(messageTexts(result), "warning: block 'lamp' not found\n");
  ASSERT_TRUE(result.ok);
  std::map<std::wstring, catalogue::BlockFile> expected = {
      {base::lowerCase(path("lib/manhole.dwg")), {path("lib/manhole.dwg"), L"manhole"}}};
  EXPECT_EQ(result.catalogue.block_files, expected);
  EXPECT_TRUE(fixture_.host.imports.empty());
}

TEST_F(ResourceFolder, ShapeFontsExtendTheSupportPath) {
  std::wstring folder = path("fonts");
  fixture_.host.env[L"ACAD"] = L"/usr/share/fonts";
  auto result = parse("font\tfonts/*.shx\nlinetype\tfonts/roman.shx\n");
  EXPECT_TRUE(result.ok) << messageTexts(result);
  EXPECT_EQ(fixture_.host.env[L"ACAD"], L"/usr/share/fonts;" + folder + L";");

  Fixture unset;
  EXPECT_TRUE(unset.parse("font\tfonts/roman.shx\n", path("classes.txt")).ok);
  EXPECT_EQ(unset.host.env[L"ACAD"], folder + L";");
}

// The drawing already stores table PIPES as (CLASS character, DN real).
void storePipes(fakes::FakeHost& fake) {
  host::Database& db = fake.database();
  auto dictionary = db.createDictionary(db.namedObjectsDictionary(), L"VELEMUDATA");
  auto xrecord = db.createXrecord(*dictionary, L"Pipes");
  ASSERT_TRUE(db.writeXrecord(*xrecord, {host::ResBuf::text(L"CLASS"), host::ResBuf::text(L""),
                                         host::ResBuf::text(L"DN"), host::ResBuf::real(0)}));
}

// A failed import or shape-font folder, like a table unlike the drawing's, empties the
// catalogue; parsing still goes on to the end of the file, but for a table mismatch.
TEST_F(ResourceFolder, ResourceLinesAndStoredTablesAndTheirMessages) {
  const std::string pipes =
      "obj_name\tPipe\t1\t1\nobj_type\tLine\nvel_name\tPIPES\nvel_key\tclass\n";
  const std::string mismatch = ": error: table 'PIPES' does not match existing definition\n";
  auto stored = [](Fixture& f) { storePipes(f.fake); };
  auto has_pipe = [](const catalogue::Catalogue& c) { EXPECT_NE(c.findObject(L"pipe"), nullptr); };
  std::vector<parse_testing::Case> cases = {
      {.name = "layouts are always imported",
       .text = "layout\tlib/a.dwg\n",
       .messages = "",
       .setup = [&](Fixture& f) { f.host.provides[path("lib/a.dwg")] = {}; },
       .imports = {host::kResourceLayouts}},
      {.name = "an import that fails",
       .text = std::string("layer\tlib/a.dwg\n") + kWaterPipe,
       .messages = "error: unable to load '" + u8("lib/a.dwg") + "'\n",
       .imports = {host::kResourceLayers}},
      {.name = "a shape font whose folder cannot be added",
       .text = std::string(kWaterPipe) + "font\tfonts/roman.shx\nobj_prop\tcolor\tred\n",
       .messages = "error: unable to load '" + u8("fonts/roman.shx") +
                   "'\n5: warning: invalid 'obj_prop' definition\n",
       .setup = [](Fixture& f) { f.host.env_writable = false; }},
      {.name = "a path that finds nothing",
       .text = "layer\tnothing/*.dwg\nobj_name\tPipe\t1\t1\n",
       .messages = "error: invalid path: '" + u8("nothing/*.dwg") + "'\n"},
      // Files of another kind add nothing and say nothing.
      {"a pattern keyword matching only drawings", "pattern\tlib/*.dwg\n", ""},
      {"a linetype keyword on a text file", "linetype\tlib/notes.txt\n", ""},
      {"a drawing name with more extensions", "blockreference\tlib/old.dwg.dwt.bak\n", ""},
      {"missing resources are warned of in order, once the file is read",
       "obj_name\tText\t1\t1\nobj_type\tText\nobj_prop\ttextstyle\tNotes\n"
       "obj_prop\tpattern\tBricks\nobj_prop\tmlinestyle\tDouble\nobj_prop\tmleaderstyle\tArrow\n"
       "obj_prop\tlinetype\tDashed\nobj_prop\tlayer\tLabels\nobj_prop\tdimensionstyle\tIso\n"
       "obj_prop\tblockname\tTag\n",
       "warning: block 'tag' not found\nwarning: dimension 'iso' not found\n"
       "warning: layer 'labels' not found\nwarning: linetype 'dashed' not found\n"
       "warning: mleader 'arrow' not found\nwarning: mline 'double' not found\n"
       "warning: pattern 'bricks' not found\nwarning: textstyle 'notes' not found\n"},
      // The drawing stores PIPES as (CLASS character, DN real).
      {.name = "a table as the drawing stores it",
       .text = pipes + "vel_fld\tdn\tDiameter\treal\n",
       .messages = "",
       .check = has_pipe,
       .setup = stored},
      {.name = "a field of another type",
       .text = pipes + "vel_fld\tDN\tDiameter\tinteger\n",
       .messages = "5" + mismatch,
       .setup = stored},
      {.name = "a field more",
       .text = pipes + "vel_fld\tDN\tDiameter\treal\nvel_fld\tDEPTH\tDepth\treal\n",
       .messages = "6" + mismatch,
       .setup = stored},
      {.name = "an ill-formed table is only warned of, never compared",
       .text = pipes + "vel_key\tK2\n",
       .messages = "5: warning: table 'PIPES' ill-formed\n",
       .check = has_pipe,
       .setup = stored},
      // What came before the table's end is kept, what follows (a warning, a syntax error)
      // is never reached.
      {.name = "a mismatch ends the file where the table closed",
       .text = pipes + "vel_fld\tDN\tDiameter\tinteger\nobj_prop\tbogus\tx\nvel_name\tOTHER\n"
                       "obj_prop\tbogus\tx\nbogus\n",
       .messages = "6: warning: invalid 'obj_prop' definition\n7" + mismatch,
       .setup = stored},
  };
  // Every resource keyword takes exactly one token; a class before it would be kept otherwise.
  for (const char* keyword : {"blockreference", "blockreferencefile", "dimension", "font", "layer",
                              "layout", "linetype", "mleader", "mline", "pattern", "textstyle"}) {
    const std::string line = "obj_name\tPipe\t1\t1\nobj_type\tLine\n" + std::string(keyword);
    const std::string error = "3: error: invalid '" + std::string(keyword) + "' definition\n";
    cases.push_back({keyword, line + "\n", error});
    cases.push_back({keyword, line + "\tlib/a.dwg\tlib/b.dxf\n", error});
  }
  parse_testing::runCases(cases, path("classes.txt"));
}

// Two drawings for one class file: A stores PIPES with DN real where the file declares it
// integer, B lacks layer Water. Both know USERI1, 0 until a file sets it.
struct TwoDrawings {
  explicit TwoDrawings(const std::wstring& library) {
    storePipes(a.fake);
    a.fake.addLayer(L"Water");
    a.host.provides[library] = {{host::kResourceLayers, {L"WATER"}}};
    b.host.provides[library] = {};
    for (Fixture* d : {&a, &b}) d->fake.setVar("USERI1", host::SysVar{int16_t{0}});
  }
  static int16_t useri1(Fixture& d) {
    return std::get<int16_t>(d.fake.database().getVar("USERI1")->value);
  }
  Fixture a, b;
};

constexpr const char* kBoundFile =
    "layer\tlib/a.dwg\nvariable\tUSERI1\t7\nobj_name\tPipe\t1\t1\nobj_type\tLine\n"
    "obj_prop\tlayer\tWater\nvel_name\tPIPES\nvel_key\tclass\nvel_fld\tDN\tDN\tinteger\n";

// Parsing reads only the kinds of variables; binding then imports, sets and compares for
// each drawing apart.
TEST_F(ResourceFolder, OneParseIsBoundToEachDrawingApart) {
  TwoDrawings drawings(path("lib/a.dwg"));
  fakes::ForwardingHost traced(drawings.a.host, true);
  catalogue::HostEnvironment environment(traced);
  const auto parsed =
      catalogue::parseClassDefinitions(kBoundFile, path("classes.txt"), environment);
  EXPECT_TRUE(parsed.ok);
  EXPECT_TRUE(parsed.messages.empty());
  EXPECT_EQ(traced.trace(), std::vector<std::string>{"Database::getVar"});

  catalogue::Binding a = catalogue::bindCatalogue(parsed, drawings.a.host.database());
  EXPECT_EQ(messageTexts(a.messages),
            "8: error: table 'PIPES' does not match existing definition\n");
  EXPECT_FALSE(a.ok);
  EXPECT_TRUE(a.catalogue->empty());
  EXPECT_TRUE(drawings.a.host.imports.empty());
  EXPECT_EQ(TwoDrawings::useri1(drawings.a), 0);

  catalogue::Binding b = catalogue::bindCatalogue(parsed, drawings.b.host.database());
  EXPECT_EQ(messageTexts(b.messages), "warning: layer 'water' not found\n");
  EXPECT_TRUE(b.ok);
  EXPECT_EQ(b.catalogue, parsed.catalogue);
  EXPECT_EQ(b.resources.loaded_files, std::vector<std::wstring>{path("lib/a.dwg")});
  EXPECT_EQ(TwoDrawings::useri1(drawings.b), 7);
  EXPECT_NE(parsed.catalogue->findObject(L"pipe"), nullptr);
}

}  // namespace
