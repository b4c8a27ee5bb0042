// Whether entities conform to classes built from `obj_type` and `obj_prop` lines.
#include "draw/conformity.h"

#include <gtest/gtest.h>

#include <functional>
#include <numbers>
#include <optional>

#include "draw/object_types.h"
#include "fakes/fake_database.h"

namespace {

using namespace std::string_literals;
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
  const wchar_t* other_class = nullptr;  // than the case's
};

struct Case {
  const char* name;
  std::vector<Line> lines;
  const wchar_t* entity_class;
  std::vector<Probe> probes;
  std::optional<host::SysVar> luprec = host::SysVar{int16_t{4}};
  // For values the class file cannot give, such as the any-marker of a name.
  std::function<void(DrawingProperties&)> adjust = nullptr;
  // The class's types; by default the type of the case's entity class.
  const wchar_t* types = nullptr;
};

TEST(ConformityTest, EntitiesAgainstClasses) {
  const Case cases[] = {
      {"the type must be one of the class's; an entity without a type never conforms",
       {},
       L"AcDbLine",
       {{{}, true}, {{}, false, L"AcDbArc"}, {{}, false, L"AcDb2dPolyline"}},
       host::SysVar{int16_t{4}},
       nullptr,
       L"Circle, Line"},
      {"colour indexes: default and alternatives; a true colour is compared by its index",
       {{L"color", L"1", L"3,5"}},
       L"AcDbLine",
       {{{{P::kColor, host::Color{1}}}, true},
        {{{P::kColor, host::Color{5}}}, true},
        {{{P::kColor, host::Color{4}}}, false},
        {{{P::kColor, host::Color{1, 0xFE0000}}}, true},
        {{{P::kColor, host::Color{4, 0xFE0000}}}, false}}},
      {"a true colour compares the red, green and blue",
       {{L"color", L"(255 0 16)"}},
       L"AcDbLine",
       {{{{P::kColor, host::Color{256, 0xFF0010}}}, true},
        {{{P::kColor, host::Color{1, 0xFF0010}}}, true},
        {{{P::kColor, host::Color{256, 0xFF0000}}}, false},
        {{{P::kColor, host::Color{1}}}, false}}},
      {"the any-colour accepts every colour",
       {{L"color", L"2"}, {L"color", L"*"}},
       L"AcDbLine",
       {{{{P::kColor, host::Color{7, 0x123456}}}, true}}},
      {"layer names ignore case; a range of names orders them as they stand",
       {{L"layer", L"b", L"a:c"}},
       L"AcDbLine",
       {{{{P::kLayer, L"B"s}}, true},
        {{{P::kLayer, L"bb"s}}, true},
        {{{P::kLayer, L"A"s}}, true},  // equal to the bound
        {{{P::kLayer, L"Bb"s}}, false},
        {{{P::kLayer, L"d"s}}, false}}},
      {"a range of reals includes both bounds within the precision",
       {{L"textheight", L"2.5", L"2:3"}},
       L"AcDbText",
       {{{{P::kTextHeight, 2.0}}, true},
        {{{P::kTextHeight, 3.0}}, true},
        {{{P::kTextHeight, 1.99995}}, true},
        {{{P::kTextHeight, 3.00005}}, true},
        {{{P::kTextHeight, 1.9}}, false},
        {{{P::kTextHeight, 3.1}}, false}}},
      {"a coarser precision widens the tolerance",
       {{L"textheight", L"2.5", L"2:3"}},
       L"AcDbText",
       {{{{P::kTextHeight, 1.95}}, true}, {{{P::kTextHeight, 1.85}}, false}},
       host::SysVar{int32_t{1}}},
      {"a list of reals within the precision; the precision defaults to 4 places",
       {{L"linetypescale", L"1", L"2,3"}},
       L"AcDbLine",
       {{{{P::kLinetypeScale, 2.00005}}, true},
        {{{P::kLinetypeScale, 2.0002}}, false},
        {{{P::kLinetypeScale, 2.5}}, false}},
       std::nullopt},
      {"lineweight words",
       {{L"lineweight", L"bylayer"}},
       L"AcDbLine",
       {{{{P::kLineweight, int64_t{-1}}}, true}, {{{P::kLineweight, int64_t{25}}}, false}}},
      {"block name, uniform scale and rotation in degrees",
       {{L"blockname", L"Manhole"}, {L"blockscale", L"2"}, {L"angle", L"90"}},
       L"AcDbBlockReference",
       {{{{P::kBlockName, L"MANHOLE"s},
          {P::kScale, host::Point3{2, 2, 2}},
          {P::kRotation, kPi / 2}},
         true},
        {{{P::kBlockName, L"Manhole"s},
          {P::kScale, host::Point3{2, 2, 1}},
          {P::kRotation, kPi / 2}},
         false},
        {{{P::kBlockName, L"Manhole"s}, {P::kScale, host::Point3{2, 2, 2}}, {P::kRotation, 0.0}},
         false}}},
      {"a range of scales bounds every factor",
       {{L"blockscale", L"1", L"1:(2 2 3)"}},
       L"AcDbBlockReference",
       {{{{P::kScale, host::Point3{1.5, 2, 3}}}, true},
        {{{P::kScale, host::Point3{1.5, 2.5, 3}}}, false}}},
      {"a full ellipse is an arc while the rounded constant exceeds pi",
       {{L"ellipsemode", L"arc"}},
       L"AcDbEllipse",
       {{{{P::kEllipseStart, 0.0}, {P::kEllipseEnd, 2 * kPi}}, true}}},
      {"at two places the full ellipse is a circle",
       {{L"ellipsemode", L"arc"}},
       L"AcDbEllipse",
       {{{{P::kEllipseStart, 0.0}, {P::kEllipseEnd, 2 * kPi}}, false},
        {{{P::kEllipseStart, 1.0}, {P::kEllipseEnd, 4.0}}, true}},
       host::SysVar{int16_t{2}}},
      {"an ellipse is never a centre ellipse",
       {{L"ellipsemode", L"center"}},
       L"AcDbEllipse",
       {{{}, false}}},
      {"dimension mode from the type and the dimension style",
       {{L"dimensionmode", L"linear"}, {L"dimensionstyle", L"standard"}},
       L"AcDbRotatedDimension",
       {{{}, true},
        {{{P::kDimensionStyle, L"Other"s}}, false},
        {{}, false, L"AcDbAlignedDimension"}}},
      {"a value the entity lacks fails",
       {{L"dimensionmode", L"arc"}, {L"dimensionstyle", L"standard"}},
       L"AcDbArcDimension",
       {{{}, false}}},
      {"the any-marker accepts a value the entity lacks",
       {{L"dimensionmode", L"arc"}, {L"dimensionstyle", L"standard"}},
       L"AcDbArcDimension",
       {{{}, true}},
       host::SysVar{int16_t{4}},
       [](DrawingProperties& p) { p.dimension_style.value = draw::kAnyText; }},
      {"an any-marker among the alternatives accepts all",
       {{L"layer", L"walls", L"roads"}},
       L"AcDbLine",
       {{{{P::kLayer, L"Rivers"s}}, true}},
       host::SysVar{int16_t{4}},
       [](DrawingProperties& p) { p.layer.alternatives.push_back(draw::kAnyText); }},
      {"texts: contents ignore case; justification",
       {{L"text", L"Room"}, {L"textjustification", L"middlecenter"}},
       L"AcDbText",
       {{{{P::kContents, L"ROOM"s}, {P::kTextJustification, int64_t{10}}}, true},
        {{{P::kContents, L"Hall"s}, {P::kTextJustification, int64_t{10}}}, false},
        {{{P::kContents, L"Room"s}, {P::kTextJustification, int64_t{0}}}, false}}},
      {"hatch pattern, angle in degrees and background colour",
       {{L"pattern", L"ansi31"}, {L"patternangle", L"45"}, {L"backgroundcolor", L"none"}},
       L"AcDbHatch",
       {{{{P::kPattern, L"ANSI31"s}, {P::kPatternAngle, kPi / 4}}, true},
        {{{P::kPattern, L"ANSI31"s},
          {P::kPatternAngle, kPi / 4},
          {P::kBackgroundColor, host::Color{3}}},
         false},
        {{{P::kPattern, L"ANSI31"s}, {P::kPatternAngle, 0.0}}, false}}},
      {"closed polylines",
       {{L"closed", L"1"}},
       L"AcDbPolyline",
       {{{{P::kClosed, int64_t{1}}}, true}, {{{P::kClosed, int64_t{0}}}, false}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    DrawingProperties properties;
    properties.object_types =
        draw::parseObjectTypes(c.types ? c.types : draw::objectTypeNameOfClass(c.entity_class));
    for (const Line& line : c.lines) {
      ASSERT_TRUE(draw::parseObjectProperty(properties, line.key, line.value, line.alternatives));
    }
    if (c.adjust) c.adjust(properties);
    fakes::FakeDatabase database;
    if (c.luprec) database.defineVar("LUPREC", *c.luprec);
    for (size_t i = 0; i < c.probes.size(); ++i) {
      const Probe& probe = c.probes[i];
      host::ObjectId entity = database.addEntity(
          probe.other_class ? probe.other_class : c.entity_class, probe.properties);
      EXPECT_EQ(draw::matchesClassProperties(database, entity, properties), probe.conforms)
          << "entity " << i;
    }
  }
}

}  // namespace
