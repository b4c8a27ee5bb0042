// The template file: class names, numbering per type group, layout of the text.
#include "maintenance/class_template.h"

#include <gtest/gtest.h>

#include "base/utf.h"

namespace {

TEST(ClassTemplateTest, NameFormats) {
  struct Case {
    const wchar_t* format;
    const wchar_t* layer;
    const wchar_t* expanded;  // with number 2 and type Door; null: the format is refused
  };
  const Case cases[] = {
      {L"%t_%i_%L", L"Walls", L"door_2_Walls"},
      {L"%T-%i %l", L"Walls", L"Door-2 walls"},
      // The number goes in first, so a layer name holding "%t" is expanded in turn, and one
      // holding "%i" is not.
      {L"%i:%L:%T", L"%t/%i", L"2:door/%i:Door"},
      {L"%T", L"Walls", nullptr},
      {L"%i", L"Walls", nullptr},
      {L"%I %t", L"Walls", nullptr},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(maintenance::isValidNameFormat(c.format), c.expanded != nullptr)
        << base::toUtf8(c.format);
    if (c.expanded) {
      EXPECT_EQ(maintenance::expandClassName(c.format, 2, c.layer, L"Door"), c.expanded);
    }
  }
}

// Long layer names give class names a class file still holds: cut at 132 UTF-16 units,
// never inside a character, without a blank at the end.
TEST(ClassTemplateTest, LongNamesAreCut) {
  const std::wstring emoji = L"\U0001F600";  // two UTF-16 units
  struct Case {
    std::wstring layer;
    size_t units;  // of the class name "line_1_" + layer
  };
  std::wstring pairs;
  for (int i = 0; i < 100; ++i) pairs += emoji;
  const Case cases[] = {
      {std::wstring(200, L'x'), 132},
      {pairs, 131},
      {std::wstring(124, L'x') + L"  yy", 131},
      {L"short", 12},
  };
  for (const Case& c : cases) {
    std::wstring name = maintenance::className(L"%t_%i_%L", 1, c.layer, L"Line");
    EXPECT_EQ(base::utf16Length(name), c.units) << base::toUtf8(c.layer);
    EXPECT_TRUE((L"line_1_" + c.layer).starts_with(name));
  }
}

draw::DrawingProperties definition(const wchar_t* type, const wchar_t* layer) {
  draw::DrawingProperties p;
  p.object_types = {type};
  p.layer.mode = draw::ConstraintMode::kSingle;
  p.layer.value = layer;
  return p;
}

// Classes are numbered per type group, groups in name order; stored tables follow commented
// out, topology tables left out.
TEST(ClassTemplateTest, GroupsNumberedPerTypeThenStoredTablesCommentedOut) {
  maintenance::TemplateWriter writer(L"%T-%i", 4);
  for (auto [type, layer] : {std::pair{L"Line", L"A"}, {L"Arc", L"Brücke Ω"}, {L"Line", L"a"}})
    writer.add(definition(type, layer));
  EXPECT_EQ(writer.classes(), 3);
  std::string text;
  writer.finish(L"/d/site.dxf", {{L"INSUNITS", L"6"}, {L"LUPREC", L""}},
                {{L"PIPES", {{L"DN", 1}, {L"DEPTH", 2}, {L"NOTE", 3}, {L"AT", 4}, {L"X", 9}}},
                 {L"TPMID_1", {{L"ID", 1}}},
                 {L"CNTR_A", {{L"ID", 1}}}},
                text);
  const std::wstring line = L"\tobj_type\tLine\n\t\tobj_prop\tlayer\t";
  const std::wstring tables = L"\tvel_name\tVEL_NAME\n\t\tvel_key\tVEL_KEY\n\n";
  EXPECT_EQ(
      base::fromUtf8(text),
      L"#BlockReference\t/d/site.dxf\n#BlockReferenceFile\t/d/site.dxf\n#Dimension\t/d/site.dxf\n"
      L"#Layer\t/d/site.dxf\n#Layout\t/d/site.dxf\n#Linetype\t/d/site.dxf\n#MLeader\t/d/site.dxf\n"
      L"#Mline\t/d/site.dxf\n#Pattern\t/d/site.dxf\n#Textstyle\t/d/site.dxf\n\n"
      L"Variable\tINSUNITS\t6\n\n"
      L"Class\tArc\t1\n\n"
      L"obj_name\tArc-1\t1\t5000\tIcons/Arc.png\n\tobj_type\tArc\n\t\tobj_prop\tlayer\tBrücke Ω\n" +
          tables + L"/Class\n\nClass\tLine\t1\n\nobj_name\tLine-1\t1\t5000\tIcons/Line.png\n" +
          line + L"A\n" + tables + L"obj_name\tLine-2\t1\t5000\tIcons/Line.png\n" + line + L"a\n" +
          tables +
          L"/Class\n\n\n#vel_name\tPIPES\n#\tvel_fld\tDN\tdescription\tInteger\n"
          L"#\tvel_fld\tDEPTH\tdescription\tReal\n#\tvel_fld\tNOTE\tdescription\tCharacter\n"
          L"#\tvel_fld\tAT\tdescription\tPoint\n#\tvel_fld\tX\tdescription\tUnknown\n");
}

}  // namespace
