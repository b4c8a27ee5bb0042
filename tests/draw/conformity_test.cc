// Whether entities conform to classes built from `obj_type` and `obj_prop` lines.
#include "draw/conformity.h"

#include <gtest/gtest.h>

#include <functional>
#include <numbers>
#include <optional>

#include "draw/object_types.h"
#include "fakes/fake_database.h"

namespace {

using draw::DrawingProperties;
using P = host::EntityProperty;
constexpr double kPi = std::numbers::pi;

struct Line {
  const wchar_t* key;
  const wchar_t* value;
  const wchar_t* alternatives = L"";
};

// One entity and whether it conforms.
struct Probe {
  fakes::Properties properties;
  bool conforms;
};

struct Case {
  const char* name;
  const wchar_t* types;
  std::vector<Line> lines;
  const wchar_t* entity_class;
  std::vector<Probe> probes;
  std::optional<host::SysVar> luprec = host::SysVar{int16_t{4}};
  // For values the class file cannot give, such as the any-marker of a name.
  std::function<void(DrawingProperties&)> adjust = nullptr;
};

TEST(ConformityTest, EntitiesAgainstClasses) {
  const Case cases[] = {
      {"the type must be one of the class's", L"Circle, Line", {}, L"AcDbLine", {{{}, true}}},
      {"another type never conforms", L"Line", {}, L"AcDbCircle", {{{}, false}}},
      {"an entity without a type never conforms", L"Line", {}, L"AcDb2dPolyline", {{{}, false}}},
      {"colour indexes: default and alternatives; a true colour is compared by its index",
       L"Line",
       {{L"color", L"1", L"3,5"}},
       L"AcDbLine",
       {{{{P::kColor, host::Color{1}}}, true},
        {{{P::kColor, host::Color{5}}}, true},
        {{{P::kColor, host::Color{4}}}, false},
        {{{P::kColor, host::Color{1, 0xFE0000}}}, true},
        {{{P::kColor, host::Color{4, 0xFE0000}}}, false}}},
      {"a true colour compares the red, green and blue",
       L"Line",
       {{L"color", L"(255 0 16)"}},
       L"AcDbLine",
       {{{{P::kColor, host::Color{256, 0xFF0010}}}, true},
        {{{P::kColor, host::Color{1, 0xFF0010}}}, true},
        {{{P::kColor, host::Color{256, 0xFF0000}}}, false},
        {{{P::kColor, host::Color{1}}}, false}}},
      {"the any-colour accepts every colour",
       L"Line",
       {{L"color", L"2"}, {L"color", L"*"}},
       L"AcDbLine",
       {{{{P::kColor, host::Color{7, 0x123456}}}, true}}},
      {"layer names ignore case",
       L"Line",
       {{L"layer", L"walls"}},
       L"AcDbLine",
       {{{{P::kLayer, std::wstring(L"Walls")}}, true},
        {{{P::kLayer, std::wstring(L"Roads")}}, false}}},
      {"a range of reals includes both bounds within the precision",
       L"Text",
       {{L"textheight", L"2.5", L"2:3"}},
       L"AcDbText",
       {{{{P::kTextHeight, 2.0}}, true},
        {{{P::kTextHeight, 3.0}}, true},
        {{{P::kTextHeight, 1.99995}}, true},
        {{{P::kTextHeight, 3.00005}}, true},
        {{{P::kTextHeight, 1.9}}, false},
        {{{P::kTextHeight, 3.1}}, false}}},
      {"a coarser precision widens the tolerance",
       L"Text",
       {{L"textheight", L"2.5", L"2:3"}},
       L"AcDbText",
       {{{{P::kTextHeight, 1.95}}, true}, {{{P::kTextHeight, 1.85}}, false}},
       host::SysVar{int32_t{1}}},
      {"a list of reals within the precision; the precision defaults to 4 places",
       L"Line",
       {{L"linetypescale", L"1", L"2,3"}},
       L"AcDbLine",
       {{{{P::kLinetypeScale, 2.00005}}, true},
        {{{P::kLinetypeScale, 2.0002}}, false},
        {{{P::kLinetypeScale, 2.5}}, false}},
       std::nullopt},
      {"a range of names orders them as they stand",
       L"Line",
       {{L"layer", L"b", L"a:c"}},
       L"AcDbLine",
       {{{{P::kLayer, std::wstring(L"bb")}}, true},
        {{{P::kLayer, std::wstring(L"A")}}, true},  // equal to the bound
        {{{P::kLayer, std::wstring(L"Bb")}}, false},
        {{{P::kLayer, std::wstring(L"d")}}, false}}},
      {"lineweight words",
       L"Line",
       {{L"lineweight", L"bylayer"}},
       L"AcDbLine",
       {{{{P::kLineweight, int64_t{-1}}}, true}, {{{P::kLineweight, int64_t{25}}}, false}}},
      {"block name, uniform scale and rotation in degrees",
       L"BlockReference",
       {{L"blockname", L"Manhole"}, {L"blockscale", L"2"}, {L"angle", L"90"}},
       L"AcDbBlockReference",
       {{{{P::kBlockName, std::wstring(L"MANHOLE")},
          {P::kScale, host::Point3{2, 2, 2}},
          {P::kRotation, kPi / 2}},
         true},
        {{{P::kBlockName, std::wstring(L"Manhole")},
          {P::kScale, host::Point3{2, 2, 1}},
          {P::kRotation, kPi / 2}},
         false},
        {{{P::kBlockName, std::wstring(L"Manhole")},
          {P::kScale, host::Point3{2, 2, 2}},
          {P::kRotation, 0.0}},
         false}}},
      {"a range of scales bounds every factor",
       L"BlockReference",
       {{L"blockscale", L"1", L"1:(2 2 3)"}},
       L"AcDbBlockReference",
       {{{{P::kScale, host::Point3{1.5, 2, 3}}}, true},
        {{{P::kScale, host::Point3{1.5, 2.5, 3}}}, false}}},
      {"a full ellipse is an arc while the rounded constant exceeds pi",
       L"Ellipse",
       {{L"ellipsemode", L"arc"}},
       L"AcDbEllipse",
       {{{{P::kEllipseStart, 0.0}, {P::kEllipseEnd, 2 * kPi}}, true}}},
      {"at two places the full ellipse is a circle",
       L"Ellipse",
       {{L"ellipsemode", L"arc"}},
       L"AcDbEllipse",
       {{{{P::kEllipseStart, 0.0}, {P::kEllipseEnd, 2 * kPi}}, false},
        {{{P::kEllipseStart, 1.0}, {P::kEllipseEnd, 4.0}}, true}},
       host::SysVar{int16_t{2}}},
      {"an ellipse is never a centre ellipse",
       L"Ellipse",
       {{L"ellipsemode", L"center"}},
       L"AcDbEllipse",
       {{{}, false}}},
      {"dimension mode from the type and the dimension style",
       L"Dimension",
       {{L"dimensionmode", L"linear"}, {L"dimensionstyle", L"standard"}},
       L"AcDbRotatedDimension",
       {{{}, true}, {{{P::kDimensionStyle, std::wstring(L"Other")}}, false}}},
      {"another dimension class is another mode",
       L"Dimension",
       {{L"dimensionmode", L"linear"}},
       L"AcDbAlignedDimension",
       {{{}, false}}},
      {"a value the entity lacks fails",
       L"Dimension",
       {{L"dimensionmode", L"arc"}, {L"dimensionstyle", L"standard"}},
       L"AcDbArcDimension",
       {{{}, false}}},
      {"the any-marker accepts a value the entity lacks",
       L"Dimension",
       {{L"dimensionmode", L"arc"}, {L"dimensionstyle", L"standard"}},
       L"AcDbArcDimension",
       {{{}, true}},
       host::SysVar{int16_t{4}},
       [](DrawingProperties& p) { p.dimension_style.value = draw::kAnyText; }},
      {"an any-marker among the alternatives accepts all",
       L"Line",
       {{L"layer", L"walls", L"roads"}},
       L"AcDbLine",
       {{{{P::kLayer, std::wstring(L"Rivers")}}, true}},
       host::SysVar{int16_t{4}},
       [](DrawingProperties& p) { p.layer.alternatives.push_back(draw::kAnyText); }},
      {"texts: contents ignore case; justification",
       L"Text",
       {{L"text", L"Room"}, {L"textjustification", L"middlecenter"}},
       L"AcDbText",
       {{{{P::kContents, std::wstring(L"ROOM")}, {P::kTextJustification, int64_t{10}}}, true},
        {{{P::kContents, std::wstring(L"Hall")}, {P::kTextJustification, int64_t{10}}}, false},
        {{{P::kContents, std::wstring(L"Room")}, {P::kTextJustification, int64_t{0}}}, false}}},
      {"hatch pattern, angle in degrees and background colour",
       L"Hatch",
       {{L"pattern", L"ansi31"}, {L"patternangle", L"45"}, {L"backgroundcolor", L"none"}},
       L"AcDbHatch",
       {{{{P::kPattern, std::wstring(L"ANSI31")}, {P::kPatternAngle, kPi / 4}}, true},
        {{{P::kPattern, std::wstring(L"ANSI31")},
          {P::kPatternAngle, kPi / 4},
          {P::kBackgroundColor, host::Color{3}}},
         false},
        {{{P::kPattern, std::wstring(L"ANSI31")}, {P::kPatternAngle, 0.0}}, false}}},
      {"closed polylines",
       L"Polyline",
       {{L"closed", L"1"}},
       L"AcDbPolyline",
       {{{{P::kClosed, int64_t{1}}}, true}, {{{P::kClosed, int64_t{0}}}, false}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    DrawingProperties properties;
    properties.object_types = draw::parseObjectTypes(c.types);
    for (const Line& line : c.lines) {
      ASSERT_TRUE(draw::parseObjectProperty(properties, line.key, line.value, line.alternatives));
    }
    if (c.adjust) c.adjust(properties);
    fakes::FakeDatabase database;
    if (c.luprec) database.defineVar("LUPREC", *c.luprec);
    for (size_t i = 0; i < c.probes.size(); ++i) {
      host::ObjectId entity = database.addEntity(c.entity_class, c.probes[i].properties);
      EXPECT_EQ(draw::matchesClassProperties(database, entity, properties), c.probes[i].conforms)
          << "entity " << i;
    }
  }
}

}  // namespace
