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

// Probes that differ in one property only.
std::vector<Probe> each(P property,
                        std::initializer_list<std::pair<host::PropertyValue, bool>> values) {
  std::vector<Probe> probes;
  for (const auto& [value, conforms] : values) probes.push_back({{{property, value}}, conforms});
  return probes;
}

TEST(ConformityTest, EntitiesAgainstClasses) {
  const Case cases[] = {
      {.name = "the type must be one of the class's; an entity without a type never conforms",
       .lines = {},
       .entity_class = L"AcDbLine",
       .probes = {{{}, true}, {{}, false, L"AcDbArc"}, {{}, false, L"AcDb2dPolyline"}},
       .types = L"Circle, Line"},
      {"colour indexes: default and alternatives; a true colour is compared by its index",
       {{L"color", L"1", L"3,5"}},
       L"AcDbLine",
       each(P::kColor, {{host::Color{1}, true},
                        {host::Color{5}, true},
                        {host::Color{4}, false},
                        {host::Color{1, 0xFE0000}, true},
                        {host::Color{4, 0xFE0000}, false}})},
      {"a true colour compares the red, green and blue",
       {{L"color", L"(255 0 16)"}},
       L"AcDbLine",
       each(P::kColor, {{host::Color{256, 0xFF0010}, true},
                        {host::Color{1, 0xFF0010}, true},
                        {host::Color{256, 0xFF0000}, false},
                        {host::Color{1}, false}})},
      {"the any-colour accepts every colour",
       {{L"color", L"2"}, {L"color", L"*"}},
       L"AcDbLine",
       each(P::kColor, {{host::Color{7, 0x123456}, true}})},
      {"layer names ignore case; a range of names orders them as they stand",
       {{L"layer", L"b", L"a:c"}},
       L"AcDbLine",
       // "A" equals the bound.
       each(P::kLayer,
            {{L"B"s, true}, {L"bb"s, true}, {L"A"s, true}, {L"Bb"s, false}, {L"d"s, false}})},
      {"a range of reals includes both bounds within the precision",
       {{L"textheight", L"2.5", L"2:3"}},
       L"AcDbText",
       each(P::kTextHeight, {{2.0, true},
                             {3.0, true},
                             {1.99995, true},
                             {3.00005, true},
                             {1.9, false},
                             {3.1, false}})},
      {"a list of reals within the precision; the precision defaults to 4 places",
       {{L"linetypescale", L"1", L"2,3"}},
       L"AcDbLine",
       each(P::kLinetypeScale, {{2.00005, true}, {2.0002, false}, {2.5, false}}),
       std::nullopt},
      {"lineweight words",
       {{L"lineweight", L"bylayer"}},
       L"AcDbLine",
       each(P::kLineweight, {{int64_t{-1}, true}, {int64_t{25}, false}})},
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
       each(P::kScale, {{host::Point3{1.5, 2, 3}, true}, {host::Point3{1.5, 2.5, 3}, false}})},
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
      {.name = "the any-marker accepts a value the entity lacks",
       .lines = {{L"dimensionmode", L"arc"}, {L"dimensionstyle", L"standard"}},
       .entity_class = L"AcDbArcDimension",
       .probes = {{{}, true}},
       .adjust = [](DrawingProperties& p) { p.dimension_style.value = draw::kAnyText; }},
      {.name = "an any-marker among the alternatives accepts all",
       .lines = {{L"layer", L"walls", L"roads"}},
       .entity_class = L"AcDbLine",
       .probes = {{{{P::kLayer, L"Rivers"s}}, true}},
       .adjust = [](DrawingProperties& p) { p.layer.alternatives.push_back(draw::kAnyText); }},
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
       each(P::kClosed, {{int64_t{1}, true}, {int64_t{0}, false}})},
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
