// The text a class is written as: header, property lines by key, tables.
#include "catalogue/class_writer.h"

#include <gtest/gtest.h>

#include <functional>
#include <numbers>

#include "base/utf.h"
#include "catalogue/parse_testing.h"

namespace {

using catalogue::ObjectClass;
using draw::ConstraintMode;
using draw::DrawingProperties;

constexpr double kPi = std::numbers::pi;

struct PropertyCase {
  const char* name;
  std::vector<std::wstring> types;
  std::function<void(DrawingProperties&)> set;
  int precision;
  // The property lines, without their "\t\tobj_prop\t" prefix.
  std::vector<std::wstring> lines;
};

// Property lines of a class with only the type line above them.
std::vector<std::wstring> propertyLines(const PropertyCase& c) {
  ObjectClass cls;
  cls.display_name = L"C";
  cls.properties.object_types = c.types;
  c.set(cls.properties);
  std::wstring text = catalogue::writeClassDefinition(cls, nullptr, c.precision);
  std::vector<std::wstring> lines;
  const std::wstring prefix = L"\t\tobj_prop\t";
  for (size_t at = text.find(prefix); at != std::wstring::npos; at = text.find(prefix, at + 1)) {
    size_t end = text.find(L'\n', at);
    lines.push_back(text.substr(at + prefix.size(), end - at - prefix.size()));
  }
  return lines;
}

template <typename T>
void single(draw::PropertyConstraint<T>& c, T value) {
  c.mode = ConstraintMode::kSingle;
  c.value = value;
}

TEST(ClassWriterTest, PropertyLinesByKey) {
  const PropertyCase cases[] = {
      {"nothing set writes no property", {L"Line"}, [](auto&) {}, 3, {}},
      {"colours: the first, then the others as a list; any colour is *",
       {L"Line"},
       [](auto& p) { p.color = {{1}, {256}, {0}, {255, 0, 16}, {}}; },
       3,
       {L"color\t1\tByLayer, ByBlock, (255 0 16), *"}},
      {"lineweights by name",
       {L"Line"},
       [](auto& p) {
         single(p.lineweight, draw::kLineweightByLayer);
         p.lineweight.mode = ConstraintMode::kList;
         p.lineweight.alternatives = {draw::kLineweightDefault, draw::kLineweightByBlock, 25};
       },
       3,
       {L"lineWeight\tByLayer\tDefault, ByBlock, 25"}},
      {"angles are written in degrees with LUPREC decimals",
       {L"Text"},
       [](auto& p) { single(p.angle, kPi / 6); },
       3,
       {L"angle\t30.000"}},
      {"pattern angles too, at LUPREC 0",
       {L"Hatch"},
       [](auto& p) { single(p.pattern_angle, kPi / 4); },
       0,
       {L"patternAngle\t45"}},
      {"a bare circle class gets the centre mode",
       {L"Circle", L"Arc"},
       [](auto&) {},
       2,
       {L"circleMode\tCenter"}},
      {"a circle class with a radius does not",
       {L"Circle"},
       [](auto& p) { single(p.circle_radius, 2.5); },
       2,
       {L"circleRadius\t2.50"}},
      {"the centre line is for classes whose first type is Circle",
       {L"Arc", L"Circle"},
       [](auto&) {},
       2,
       {}},
      {"justifications and attachments in mixed case",
       {L"MText"},
       [](auto& p) {
         single(p.mtext_attachment_point, 24);
         single(p.text_justification, 10);
         single(p.mline_justification, int8_t{1});
       },
       3,
       {L"mlineJustification\tZero", L"mtextAttachmentPoint\tTopMid",
        L"textJustification\tMiddleCenter"}},
      {"a scale equal within the precision is one number, else three",
       {L"BlockReference"},
       [](auto& p) {
         single(p.block_scale, draw::Scale3{2, 2.0004, 2});
         p.block_scale.mode = ConstraintMode::kList;
         p.block_scale.alternatives = {{1, 2, 3}};
       },
       3,
       {L"blockScale\t2.000\t(1.000 2.000 3.000)"}},
      {"layer lists and ranges; the any-marker is not written",
       {L"Line"},
       [](auto& p) {
         single(p.layer, std::wstring(L"Walls"));
         p.layer.mode = ConstraintMode::kRange;
         p.layer.alternatives = {L"a", L"m"};
         single(p.linetype, std::wstring(draw::kAnyText));
         single(p.linetype_scale, draw::kAnyReal);
       },
       3,
       {L"layer\tWalls\ta:m"}},
      {"keys in the fixed order, booleans as integers",
       {L"Polyline"},
       [](auto& p) {
         single(p.text, std::wstring(L"Note"));
         single(p.elevation, -1.25);
         single(p.constant_width, 0.5);
         single(p.closed, int8_t{1});
         single(p.rotate, int8_t{0});
         single(p.block_name, std::wstring(L"Door"));
         single(p.linetype_scale, 1.23456);
         single(p.layer, std::wstring(L"0"));
         p.background_color = {{-1}};
       },
       1,
       {L"layer\t0", L"linetypeScale\t1.2", L"blockName\tDoor", L"rotate\t0", L"closed\t1",
        L"backgroundColor\tNone", L"constantWidth\t0.5", L"elevation\t-1.2", L"text\tNote"}},
  };
  for (const PropertyCase& c : cases) {
    EXPECT_EQ(propertyLines(c), c.lines) << c.name;
  }
}

TEST(ClassWriterTest, HeaderAndTables) {
  ObjectClass cls;
  cls.display_name = L"Lamp";
  cls.properties.object_types = {L"Line", L"Point", L"Hatch"};
  catalogue::TableDefinition table{L"LAMPS", {}};
  table.fields.push_back({L"", catalogue::ValueKind::kKey, L"CLASS", 0,
                          catalogue::FieldType::kCharacter, L"$(obj_name)", {}});
  table.fields.push_back({L"Height", catalogue::ValueKind::kRange, L"H",
                          catalogue::kFieldConst | catalogue::kFieldRequired,
                          catalogue::FieldType::kReal, L"4", {L"2", L"8"}});
  table.fields.push_back({L"", catalogue::ValueKind::kList, L"KIND", catalogue::kFieldNotEmpty,
                          catalogue::FieldType::kCharacter, L"", {L"led", L"sodium"}});
  table.fields.push_back(
      {L"Note", catalogue::ValueKind::kFree, L"NOTE", 0, catalogue::FieldType::kInteger, L"", {}});
  cls.tables = {table};

  EXPECT_EQ(catalogue::writeClassDefinition(cls, nullptr, 3),
            L"obj_name\tLamp\t1\t8500\tIcons/Line.png\n"
            L"\tobj_type\tLine, Point, Hatch\n"
            L"\tvel_name\tLAMPS\n"
            L"\t\tvel_key\tCLASS\n"
            L"\t\tvel_fld\tH\tHeight\tconst required Real\t4\t2:8\n"
            L"\t\tvel_fld\tKIND\t \tnotempty Character\t \tled, sodium\n"
            L"\t\tvel_fld\tNOTE\tNote\tInteger\n");

  // A class of that name in a catalogue gives its icon, flag and priority.
  catalogue::Catalogue known;
  ObjectClass& loaded = known.objects[L"lamp"];
  loaded.display_name = L"LAMP";
  loaded.enabled = false;
  loaded.draw_order = 12;
  cls.tables.clear();
  EXPECT_EQ(catalogue::writeClassDefinition(cls, &known, 3),
            L"obj_name\tLamp\t0\t12\n\tobj_type\tLine, Point, Hatch\n");
  cls.properties.object_types.clear();
  EXPECT_EQ(catalogue::writeClassDefinition(cls, nullptr, 3), L"obj_name\tLamp\t1\t0\n\tobj_type\t\n");
}

// A class read from a file and written back reads back the same, a TAB inside its texts
// (which a file gives with the escape, a backslash before the TAB) included.
TEST(ClassWriterTest, WrittenClassesReadBackTheSame) {
  struct Case {
    const char* name;
    std::string text;
  };
  const Case cases[] = {
      {"plain texts",
       "obj_name\tPipe\t0\t7\tIcons/pipe.png\nobj_type\tLine, Arc\nvel_name\tPIPES\n"
       "vel_key\tCLASS\nvel_fld\tDN\tDiameter\trequired integer\t100\t50,100,150\n"
       "vel_fld\tDEPTH\tDepth\treal\t1\t0.5:8\nvel_fld\tNOTE\tNote\tnotempty character\n"},
      {"a TAB in the name, between bytes that are no UTF-8",
       "obj_name\tM!u\xEF\xBB\xBF\xFF\xFF\\\t\xFF\xFF\x91\x91r\t2\t1\nobj_type\tLine\n"},
      {"a type line that names no type", "obj_name\tE\t1\t1\nobj_type\t, ,\n"},
      {"TABs in the icon, a description, a default and allowed values",
       "obj_name\tC\t1\t1\tIcons/a\\\tb.png\nobj_type\tLine\nvel_name\tT\nvel_key\tK\n"
       "vel_fld\tF\tTwo\\\tcolumns\tcharacter\tx\\\ty\tx\\\ty,z\n"
       "vel_fld\tG\tRange\tcharacter\tm\\\tn\ta\\\tb:z\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    parse_testing::Fixture fixture;
    catalogue::ParseResult read = fixture.parse(c.text);
    ASSERT_TRUE(read.ok) << parse_testing::messageTexts(read);
    ASSERT_EQ(read.catalogue.objects.size(), 1u);
    const ObjectClass& cls = read.catalogue.objects.begin()->second;
    std::wstring written = catalogue::writeClassDefinition(cls, &read.catalogue, 6);
    catalogue::ParseResult again = fixture.parse(base::toUtf8(written));
    ASSERT_TRUE(again.ok) << parse_testing::messageTexts(again) << base::toUtf8(written);
    const ObjectClass* back = again.catalogue.findObject(cls.display_name);
    ASSERT_NE(back, nullptr) << base::toUtf8(written);
    EXPECT_EQ(back->display_name, cls.display_name);
    EXPECT_EQ(back->icon, cls.icon);
    EXPECT_EQ(back->objectTypes(), cls.objectTypes());
    EXPECT_EQ(back->tables, cls.tables);
  }
}

}  // namespace
