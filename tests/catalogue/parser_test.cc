// The class-file parser on texts: structure, tables, macros, variables and its messages.
#include "catalogue/parser.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "catalogue/macro_table.h"
#include "catalogue/parse_testing.h"
#include "draw/object_types.h"
#include "test_paths.h"

namespace {

using catalogue::Catalogue;
using catalogue::FieldDefinition;
using catalogue::FieldType;
using catalogue::ValueKind;
using parse_testing::Case;
using parse_testing::Fixture;
using parse_testing::messageTexts;
using parse_testing::runCases;

const catalogue::ObjectClass& object(const Catalogue& c, const wchar_t* name) {
  const catalogue::ObjectClass* found = c.findObject(name);
  if (found == nullptr) throw std::runtime_error("no class " + base::toUtf8(name));
  return *found;
}

const FieldDefinition& field(const Catalogue& c, const wchar_t* cls, size_t table, size_t f) {
  return object(c, cls).tables.at(table).fields.at(f);
}

// A class named `name` of type Line with one well-formed table `table`.
std::string lineClass(const std::string& name, const std::string& table = "T") {
  return "obj_name\t" + name + "\t1\t1\nobj_type\tLine\nvel_name\t" + table + "\nvel_key\tCLASS\n";
}

// U+1F600 in UTF-8: one character, two UTF-16 units.
const std::string kBeyondBmp = "\xF0\x9F\x98\x80";

TEST(ParserTest, GroupsAndFlags) {
  runCases({
      {"a group with flag 0 disables its classes; the flag is 1 again after /class",
       "class\tOuter\t0\n"
       "obj_name\tPipe\t1\t5000\nobj_type\tLine\n"
       "class\tInner\t1\tInner text\n"
       "obj_name\tCable\t1\t10\nobj_type\tLine\n"
       "/class\n"
       "obj_name\tDuct\t1\t1\nobj_type\tLine\n"
       "/class\n",
       "",
       [](const Catalogue& c) {
         EXPECT_FALSE(object(c, L"pipe").enabled);
         EXPECT_EQ(object(c, L"pipe").draw_order, 5000);
         EXPECT_TRUE(object(c, L"cable").enabled);
         EXPECT_TRUE(object(c, L"duct").enabled);
         const catalogue::Group* outer = c.findGroup(L"outer");
         ASSERT_NE(outer, nullptr);
         EXPECT_EQ(outer->members, (std::vector<std::wstring>{L"pipe", L"duct"}));
         EXPECT_EQ(outer->flag, 0);
         ASSERT_EQ(outer->children.size(), 1u);
         EXPECT_EQ(outer->children[0].members, std::vector<std::wstring>{L"cable"});
         EXPECT_EQ(outer->children[0].text, L"Inner text");
         EXPECT_EQ(c.findGroup(L"OUTER"), nullptr);  // the search compares lower-cased names
       }},
      {"classes outside any group belong to the root", "obj_name\tPipe\t1\t1\nobj_type\tLine\n", "",
       [](const Catalogue& c) { EXPECT_EQ(c.tree.members, std::vector<std::wstring>{L"pipe"}); }},
      {"a group name repeated in lower case is a redefinition",
       "class\troads\t1\n/class\nclass\troads\t1\n/class\n", "3: error: redefinition of 'roads'\n",
       nullptr},
      {"a group name repeated with capitals is not caught",
       "class\tRoads\t1\n/class\nclass\tRoads\t1\n/class\n", "", nullptr},
      {"a group left open", "class\tRoads\t1\nobj_name\tPipe\t1\t1\nobj_type\tLine\n",
       "error: invalid class definition\n", nullptr},
      {"/class without a group", "/class\n", "1: error: invalid 'class' definition\n", nullptr},
      {"class with two tokens", "class\tRoads\n", "1: error: invalid 'class' definition\n",
       nullptr},
  });
}

TEST(ParserTest, ClassesAndTypes) {
  runCases({
      {"blanks and a comment around a keyword in capitals",
       "obj_name\tPipe\t1\t1\n  OBJ_TYPE\tLine  # the type\n", "",
       [](const Catalogue& c) {
         EXPECT_EQ(object(c, L"pipe").objectTypes(), std::vector<std::wstring>{L"Line"});
       }},
      {"lookups ignore case, the display name keeps it",
       "obj_name\tPotrubí Vody\t1\t1\tIcons/Line.png\nobj_type\tline, POLYLINE\n", "",
       [](const Catalogue& c) {
         const auto& pipe = object(c, L"POTRUBÍ VODY");
         EXPECT_EQ(pipe.display_name, L"Potrubí Vody");
         EXPECT_EQ(pipe.icon, L"Icons/Line.png");
         EXPECT_EQ(pipe.objectTypes(), (std::vector<std::wstring>{L"Line", L"Polyline"}));
         EXPECT_EQ(c.findObject(L"potrubí vody"), &pipe);
       }},
      {"a class without a type", "obj_name\tPipe\t1\t1\nobj_name\tDuct\t1\t1\n",
       "2: error: invalid object definition\n", nullptr},
      {"a class that cannot be drawn is refused when it closes",
       "obj_name\tPipe\t1\t1\nobj_type\t?\n", "2: error: invalid object definition\n", nullptr},
      {"an unknown type", "obj_name\tPipe\t1\t1\nobj_type\tLine, Pipe\n",
       "2: error: invalid 'obj_type' definition\n", nullptr},
      {"a type before any class", "obj_type\tLine\n", "1: error: 'obj_name' undefined\n", nullptr},
      {"a class defined twice",
       "obj_name\tPipe\t1\t1\nobj_type\tLine\nobj_name\tPIPE\t1\t1\n"
       "obj_type\tLine\n",
       "4: error: redefinition of 'PIPE'\n", nullptr},
      {"obj_name with three tokens", "obj_name\tPipe\t1\n",
       "1: error: invalid 'obj_name' definition\n", nullptr},
      {"an unknown keyword, shown lower-cased", "obj_name\tPipe\t1\t1\nobj_type\tLine\nFOO\tx\n",
       "3: error: invalid syntax: 'foo'\n", nullptr},
  });
}

TEST(ParserTest, ObjectProperties) {
  runCases({
      {"values, a refused value and a line of five tokens are warnings",
       "obj_name\tPipe\t1\t1\nobj_type\tLine\n"
       "obj_prop\tlayer\tWATER\n"
       "obj_prop\tcolor\t1\t3,5\n"
       "obj_prop\tcolour\t1\n"
       "obj_prop\tlayer\ta\tb\tc\n"
       "obj_prop\tlineweight\n",
       "5: warning: invalid 'obj_prop' definition\n6: warning: invalid 'obj_prop' definition\n",
       [](const Catalogue& c) {
         const auto& p = object(c, L"pipe").properties;
         EXPECT_EQ(p.layer.value, L"water");
         EXPECT_TRUE(p.layer.alternatives.empty());
         EXPECT_EQ(p.color, (std::vector<draw::ColorSpec>{{1}, {3}, {5}}));
         EXPECT_FALSE(p.lineweight.isSet());
       }},
      {"properties before the type", "obj_name\tPipe\t1\t1\nobj_prop\tlayer\tWATER\n",
       "2: error: 'obj_type' undefined\n", nullptr},
      {"properties after a type line without types",
       "obj_name\tPipe\t1\t1\nobj_type\t ,\nobj_prop\tlayer\tWATER\n",
       "3: error: 'obj_type' undefined\n", nullptr},
  });
}

TEST(ParserTest, TablesAndFields) {
  runCases({
      {"value kinds, flags and descriptions",
       "obj_name\tPipe\t1\t1\nobj_type\tLine\nvel_name\tPIPES\nvel_key\tCLASS\n"
       "vel_fld\tNOTE\t  Free text  \tcharacter\n"
       "vel_fld\tDEPTH\tDepth\tRequired Real\t1.5\n"
       "vel_fld\tDN\tDiameter\tconst notempty integer\t100\t80,100,150\n"
       "vel_fld\tLEN\tLength\treal\t5\t1:10\n"
       "vel_fld\tKIND\tKind\tcharacter\tB\t A :B:C\n",
       "",
       [](const Catalogue& c) {
         using F = FieldType;
         using K = ValueKind;
         const uint32_t req = catalogue::kFieldRequired;
         const uint32_t cn = catalogue::kFieldConst | catalogue::kFieldNotEmpty;
         const std::vector<FieldDefinition> fields = {
             {L"", K::kKey, L"CLASS", 0, F::kCharacter, L"$(obj_name)", {}},
             {L"Free text", K::kFree, L"NOTE", 0, F::kCharacter, L"", {}},
             {L"Depth", K::kDefault, L"DEPTH", req, F::kReal, L"1.5", {}},
             {L"Diameter", K::kList, L"DN", cn, F::kInteger, L"100", {L"80", L"100", L"150"}},
             {L"Length", K::kRange, L"LEN", 0, F::kReal, L"5", {L"1", L"10"}},
             // Two colons: a list of three.
             {L"Kind", K::kList, L"KIND", 0, F::kCharacter, L"B", {L"A", L"B", L"C"}}};
         EXPECT_EQ(object(c, L"pipe").tables.at(0), (catalogue::TableDefinition{L"PIPES", fields}));
         const catalogue::TableEntry* entry = c.findTable(L"pipes");
         ASSERT_NE(entry, nullptr);
         EXPECT_EQ(entry->objects, std::vector<std::wstring>{L"pipe"});
       }},
      {"an escaped TAB in a default",
       lineClass("Pipe") + "vel_fld\tNOTE\tNote\tcharacter\ta\\\tb\n", "",
       [](const Catalogue& c) { EXPECT_EQ(field(c, L"pipe", 0, 1).value, L"a\tb"); }},
      {"autoconst makes single-value fields constant",
       "autoconst\t1\n" + lineClass("Pipe") +
           "vel_fld\tA\tA\tcharacter\tX\tX\nvel_fld\tB\tB\tcharacter\tX\tX,Y\n"
           "autoconst\t0\nvel_fld\tC\tC\tcharacter\tX\tX\n",
       "",
       [](const Catalogue& c) {
         EXPECT_EQ(field(c, L"pipe", 0, 1).flags, catalogue::kFieldConst);
         EXPECT_EQ(field(c, L"pipe", 0, 2).flags, 0u);
         EXPECT_EQ(field(c, L"pipe", 0, 3).flags, 0u);
       }},
      {"ill-formed tables are kept with a warning",
       "obj_name\tPipe\t1\t1\nobj_type\tLine\nvel_name\tNOKEY\nvel_fld\tA\tA\tinteger\n"
       "vel_name\tTWOKEYS\nvel_key\tK1\nvel_key\tK2\n"
       "vel_name\tBADDEFAULT\nvel_key\tK\nvel_fld\tA\tA\tinteger\t7\t1,2\n"
       "obj_name\tDuct\t1\t1\nobj_type\tLine\n",
       "5: warning: table 'NOKEY' ill-formed\n8: warning: table 'TWOKEYS' ill-formed\n"
       "11: warning: table 'BADDEFAULT' ill-formed\n",
       [](const Catalogue& c) { EXPECT_EQ(object(c, L"pipe").tables.size(), 3u); }},
      {"tables of the same name in two cases with equal fields share an index entry",
       lineClass("Pipe", "Lines") + "vel_fld\tX\tX\tinteger\n" + lineClass("Duct", "LINES") +
           "vel_fld\tx\tX\tinteger\n",
       "",
       [](const Catalogue& c) {
         const catalogue::TableEntry* entry = c.findTable(L"LiNeS");
         ASSERT_NE(entry, nullptr);
         EXPECT_EQ(entry->objects, (std::vector<std::wstring>{L"duct", L"pipe"}));
       }},
      {"tables of the same name with other types conflict",
       lineClass("Pipe", "Lines") + "vel_fld\tX\tX\tinteger\n" + lineClass("Duct", "LINES") +
           "vel_fld\tX\tX\treal\nobj_name\tCable\t1\t1\n",
       "11: error: conflicting definitions for table 'LINES'\n", nullptr},
      {"a table name with a blank", "obj_name\tPipe\t1\t1\nobj_type\tLine\nvel_name\tMy table\n",
       "3: error: invalid 'vel_name' definition\n", nullptr},
      {"a table before any class", "vel_name\tT\n", "1: error: 'obj_name' undefined\n", nullptr},
      {"a key before any table", "obj_name\tPipe\t1\t1\nobj_type\tLine\nvel_key\tK\n",
       "3: error: 'vel_name' undefined\n", nullptr},
      {"a key name with a full stop", lineClass("Pipe") + "vel_key\tA.B\n",
       "5: error: invalid 'vel_key' definition\n", nullptr},
      {"a field given twice", lineClass("Pipe") + "vel_fld\tA\tA\tinteger\nvel_fld\tA\tA\treal\n",
       "6: error: redefinition of vel_fld 'A'\n", nullptr},
      {"an unknown type word", lineClass("Pipe") + "vel_fld\tA\tA\tfloat\n",
       "5: error: invalid 'vel_fld' definition\n", nullptr},
      {"an unknown flag word", lineClass("Pipe") + "vel_fld\tA\tA\tunique integer\n",
       "5: error: invalid 'vel_fld' definition\n", nullptr},
      {"a range of three values", lineClass("Pipe") + "vel_fld\tA\tA\tinteger\t1\t1:5,7\n",
       "5: error: invalid 'vel_fld' definition\n", nullptr},
      {"a field of three tokens", lineClass("Pipe") + "vel_fld\tA\tA\n",
       "5: error: invalid 'vel_fld' definition\n", nullptr},
  });
}

// Names are limited in UTF-16 code units: a character beyond the Basic Multilingual Plane
// counts two.
TEST(ParserTest, NameLimitsCountUtf16Units) {
  struct Limit {
    const char* keyword;
    size_t units;
    std::function<std::string(const std::string&)> file;
    const char* refused;
  };
  const Limit limits[] = {
      {"obj_name", 132, [](const std::string& n) { return lineClass(n); },
       "1: error: invalid 'obj_name' definition\n"},
      {"vel_name", 25, [](const std::string& n) { return lineClass("Pipe", n); },
       "3: error: invalid 'vel_name' definition\n"},
      {"vel_key", 31,
       [](const std::string& n) {
         return "obj_name\tPipe\t1\t1\nobj_type\tLine\nvel_name\tT\nvel_key\t" + n + "\n";
       },
       "4: error: invalid 'vel_key' definition\n"},
      {"vel_fld", 31,
       [](const std::string& n) { return lineClass("Pipe") + "vel_fld\t" + n + "\tD\tinteger\n"; },
       "5: error: invalid 'vel_fld' definition\n"},
  };
  std::vector<Case> cases;
  for (const Limit& limit : limits) {
    std::string longest = std::string(limit.units - 2, 'n') + kBeyondBmp;
    cases.push_back({limit.keyword, limit.file(longest), "", nullptr});
    // One more: as many characters as the limit allows units, so one unit too many.
    cases.push_back({limit.keyword, limit.file("n" + longest), limit.refused, nullptr});
  }
  runCases(cases);
}

TEST(ParserTest, Macros) {
  runCases({
      {"a recursive macro is refused; a repeated one keeps the last value",
       "define\tw\tx$(w)\ndefine\tW\tWATER\ndefine\tw\tSEWER\n"
       "obj_name\tPipe\t1\t1\nobj_type\tLine\nobj_prop\tlayer\t$(W)\nobj_prop\ttext\t$(x)\n",
       "1: warning: recursive definition\n3: warning: redefinition of 'w'\n",
       [](const Catalogue& c) {
         EXPECT_EQ(object(c, L"pipe").properties.layer.value, L"sewer");
         EXPECT_EQ(object(c, L"pipe").properties.text.value, L"$(x)");  // unknown: kept
       }},
      {"macros expand in keywords, in macro values and in field values",
       "define\tkw\tobj_type\ndefine\tdn\t100\ndefine\tdns\t80,$(dn)\n" + std::string() +
           "obj_name\tPipe\t1\t1\n$(kw)\tLine\nvel_name\tT\nvel_key\tK\n"
           "vel_fld\tDN\tDN\tinteger\t$(DN)\t$(dns)\n",
       "",
       [](const Catalogue& c) {
         EXPECT_EQ(field(c, L"pipe", 0, 1).value, L"100");
         EXPECT_EQ(field(c, L"pipe", 0, 1).allowed, (std::vector<std::wstring>{L"80", L"100"}));
       }},
      {"a bad macro name is reported but defined",
       "define\ta.b\tWATER\nobj_name\tPipe\t1\t1\nobj_type\tLine\nobj_prop\tlayer\t$(a.b)\n",
       "1: error: invalid definition\n",
       [](const Catalogue& c) { EXPECT_EQ(object(c, L"pipe").properties.layer.value, L"water"); },
       true},
      {"define with two tokens", "define\tw\n", "1: error: invalid definition\n", nullptr},
      {"autoconst with one token", "autoconst\n", "1: error: invalid syntax: 'autoconst'\n",
       nullptr},
  });
}

TEST(ParserTest, MacroReferringToItselfStopsExpanding) {
  // Only a redefinition can make a macro refer to itself; expansion still ends.
  catalogue::MacroTable macros;
  EXPECT_EQ(macros.define(L"A", L"x"), catalogue::MacroTable::DefineResult::kDefined);
  EXPECT_EQ(macros.define(L"a", L"<$(a)>"), catalogue::MacroTable::DefineResult::kRedefined);
  std::wstring token = L"$(A)";
  macros.expand(token);
  EXPECT_EQ(token.size(), 4u + 2u * catalogue::MacroTable::kMaxExpansions);
}

TEST(ParserTest, LongLinesAreReadInPieces) {
  runCases({
      {"a blank line of 10300 characters counts as two lines",
       std::string(10300, ' ') + "\nbogus\n", "3: error: invalid syntax: 'bogus'\n", nullptr},
      {"the second piece of a long comment is parsed as a line",
       "#" + std::string(10238, 'x') + "bogus\n", "2: error: invalid syntax: 'bogus'\n", nullptr},
      {"a line of exactly 10239 characters leaves its newline as a line",
       "#" + std::string(10238, 'x') + "\nbogus\n", "3: error: invalid syntax: 'bogus'\n", nullptr},
      // A character beyond the BMP takes two of the buffer's UTF-16 units and is never split.
      {"a character beyond the BMP fills the last two units",
       "#" + std::string(10236, 'x') + kBeyondBmp + "bogus\n",
       "2: error: invalid syntax: 'bogus'\n", nullptr},
      {"a character beyond the BMP that would cross the end goes to the next piece",
       "#" + std::string(10237, 'x') + kBeyondBmp + "bogus\n",
       "2: error: invalid syntax: '" + kBeyondBmp + "bogus'\n", nullptr},
  });
}

TEST(ParserTest, Variables) {
  Fixture fixture;
  fixture.fake.setVar("LUPREC", host::SysVar{int16_t{4}});
  fixture.fake.setVar("TEXTSIZE", host::SysVar{2.5});
  fixture.fake.setVar("INSBASE", host::SysVar{host::Point3{}});
  fixture.fake.setVar("LIMMIN", host::SysVar{host::Point2{}});
  fixture.fake.setVar("CLAYER", host::SysVar{std::wstring(L"0")});
  auto result = fixture.parse(
      "variable\tluprec\t2\nvariable\tNOSUCH\t1\nvariable\tINSBASE\t1, 2 ,3\n"
      "variable\tLIMMIN\t4,5\n"
      "obj_name\tPipe\t1\t1\nobj_type\tLine\nvariable\tTEXTSIZE\t0.5\nvariable\tCLAYER\tWATER\n");
  EXPECT_EQ(messageTexts(result), "2: warning: invalid variable 'NOSUCH'\n");
  ASSERT_TRUE(result.ok);
  using catalogue::SettingKind;
  const auto& globals = result.catalogue.global_settings;
  ASSERT_EQ(globals.size(), 3u);
  EXPECT_EQ(globals[0].kind, SettingKind::kShort);
  EXPECT_EQ(globals[1].kind, SettingKind::kPoint3);
  EXPECT_EQ(globals[2].kind, SettingKind::kPoint2);
  const auto& own = object(result.catalogue, L"pipe").settings;
  ASSERT_EQ(own.size(), 2u);
  EXPECT_EQ(own[0].kind, SettingKind::kReal);
  EXPECT_EQ(own[1].kind, SettingKind::kText);
  // Only the global settings are applied when the file loads; what points are read as is the
  // headless host's test (headless/system_variables_test.cc).
  EXPECT_EQ(fixture.fake.database().getVar("LUPREC")->value, (host::SysVar{int16_t{2}}.value));
  EXPECT_EQ(fixture.fake.database().getVar("TEXTSIZE")->value, (host::SysVar{2.5}.value));

  // A point must have as many parts as the variable's kind.
  for (const char* line : {"variable\tINSBASE\t1,2\n", "variable\tLIMMIN\t1,2,3\n"}) {
    Fixture bad_point;
    bad_point.fake.setVar("INSBASE", host::SysVar{host::Point3{}});
    bad_point.fake.setVar("LIMMIN", host::SysVar{host::Point2{}});
    auto refused = bad_point.parse(line);
    EXPECT_EQ(messageTexts(refused), "1: error: invalid 'variable' definition\n") << line;
    EXPECT_FALSE(refused.ok) << line;
  }
}

// Input that would take unbounded memory or stack is refused at the line that goes too far.
TEST(ParserTest, LimitsAgainstHostileFiles) {
  std::string deepest;
  for (size_t i = 0; i < catalogue::kMaxGroupDepth; ++i) {
    deepest += "class\tg" + std::to_string(i) + "\t1\n";
  }
  std::string closed = deepest;
  for (size_t i = 0; i < catalogue::kMaxGroupDepth; ++i) closed += "/class\n";
  const std::string one_deeper = std::to_string(catalogue::kMaxGroupDepth + 1);
  // Each macro holds 2000 references to the one before: m1 takes 2e6 characters, m2 4e9.
  std::string multiplying = "define\tm0\t" + std::string(1000, 'x') + "\n";
  for (int m = 1; m < 3; ++m) {
    multiplying += "define\tm" + std::to_string(m) + "\t";
    for (int i = 0; i < 2000; ++i) multiplying += "$(m" + std::to_string(m - 1) + ")";
    multiplying += "\n";
  }
  std::string most_classes;
  for (size_t i = 0; i < catalogue::kMaxObjectClasses; ++i) {
    most_classes += "obj_name\tC" + std::to_string(i) + "\t1\t1\nobj_type\tLine\n";
  }
  std::string most_fields = lineClass("Pipe");
  for (size_t i = 1; i < catalogue::kMaxTableFields; ++i) {
    most_fields += "vel_fld\tF" + std::to_string(i) + "\tD\tinteger\n";
  }
  const std::string after_most_classes = std::to_string(2 * catalogue::kMaxObjectClasses + 1);
  const std::string after_most_fields = std::to_string(catalogue::kMaxTableFields + 4);
  runCases({
      {"as many classes as allowed", most_classes, "", nullptr},
      {"one class more", most_classes + "obj_name\tOne more\t1\t1\n",
       after_most_classes + ": error: more than " + std::to_string(catalogue::kMaxObjectClasses) +
           " object classes; no class file holds so many, check that it is the right file\n",
       nullptr},
      {"as many fields as allowed, the key included", most_fields, "", nullptr},
      {"one field more", most_fields + "vel_fld\tOne_more\tD\tinteger\n",
       after_most_fields + ": error: more than " + std::to_string(catalogue::kMaxTableFields) +
           " fields in one table; split the table\n",
       nullptr},
      {"groups nested as deep as allowed", closed, "", nullptr},
      {"one group deeper", deepest + "class\tdeeper\t1\n",
       one_deeper + ": error: groups nested more than " +
           std::to_string(catalogue::kMaxGroupDepth) + " deep; close each group with '/class'\n",
       nullptr},
      {"macros that multiply each other", multiplying,
       "3: error: macros expand to more than " +
           std::to_string(catalogue::MacroTable::kMaxAddedCharacters) +
           " characters; check the 'define' lines whose values use other macros\n",
       nullptr},
  });
}

TEST(ParserTest, FilesThatCannotBeReadGiveAnEmptyCatalogue) {
  testing_paths::TempDir dir("taxor_class_files");
  const std::string too_large = (dir / "too_large.txt").string();
  // Sparse: the size costs no disk space. The limit on what is read is tested on the lists.
  std::ofstream(too_large).close();
  std::filesystem::resize_file(too_large, catalogue::kMaxClassFileBytes + 1);
  struct File {
    std::string path;
    std::string messages;
  };
  const File files[] = {
      // Silently, as a file not chosen.
      {"/nonexistent/classes.txt", ""},
      {too_large, "error: '" + too_large +
                      "' is larger than 16 MB, far more than a class file holds; check that it "
                      "is the right file\n"},
  };
  for (const File& file : files) {
    SCOPED_TRACE(file.path);
    Fixture fixture;
    auto result = catalogue::parseClassFile(base::fromUtf8(file.path), fixture.host);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(messageTexts(result), file.messages);
    EXPECT_TRUE(result.catalogue.empty());
    EXPECT_EQ(result.catalogue.class_file, base::fromUtf8(file.path));
  }
}

}  // namespace
