// Giving drawn entities the properties of a class, and the resources a class needs.
#include "draw/property_application.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numbers>

#include "draw/object_types.h"
#include "fakes/fake_database.h"
#include "fakes/fake_host.h"
#include "fakes/forwarding_host.h"

namespace {

using draw::ApplyMode;
using draw::DrawingProperties;
using P = host::EntityProperty;

struct Line {
  const wchar_t* key;
  const wchar_t* value;
  const wchar_t* alternatives = L"";
};

DrawingProperties classOf(const std::vector<Line>& lines) {
  DrawingProperties properties;
  for (const Line& line : lines) {
    EXPECT_TRUE(draw::parseObjectProperty(properties, line.key, line.value, line.alternatives));
  }
  return properties;
}

struct Case {
  const char* name;
  std::vector<Line> lines;
  const wchar_t* entity_class;
  ApplyMode mode;
  base::Code code;
  // Values read back after applying; unchanged properties show the fake's defaults.
  fakes::Properties expected;
};

TEST(PropertyApplicationTest, AppliesWhatTheClassPrescribes) {
  const Case cases[] = {
      {"polyline: general properties, closed, width and elevation",
       {{L"color", L"3"},
        {L"layer", L"walls"},
        {L"linetype", L"dashed"},
        {L"linetypescale", L"2"},
        {L"lineweight", L"25"},
        {L"closed", L"1"},
        {L"constantwidth", L"0.5"},
        {L"elevation", L"3"}},
       L"AcDbPolyline",
       ApplyMode::kAll,
       base::Code::kOk,
       {{P::kColor, host::Color{3}},
        {P::kLayer, std::wstring(L"Walls")},
        {P::kLinetype, std::wstring(L"Dashed")},
        {P::kLinetypeScale, 2.0},
        {P::kLineweight, int64_t{25}},
        {P::kClosed, int64_t{1}},
        {P::kConstantWidth, 0.5},
        {P::kElevation, 3.0}}},
      {"general mode leaves the type's properties alone",
       {{L"color", L"3"}, {L"closed", L"1"}, {L"elevation", L"3"}},
       L"AcDbPolyline",
       ApplyMode::kGeneral,
       base::Code::kOk,
       {{P::kColor, host::Color{3}}, {P::kClosed, int64_t{0}}, {P::kElevation, 0.0}}},
      {"text: height, style and justification; rotation and contents stay as drawn",
       {{L"textheight", L"3.5"},
        {L"textstyle", L"notes"},
        {L"textjustification", L"middlecenter"},
        {L"angle", L"90"},
        {L"text", L"Room"}},
       L"AcDbText",
       ApplyMode::kAll,
       base::Code::kOk,
       {{P::kTextHeight, 3.5},
        {P::kTextStyle, std::wstring(L"Notes")},
        {P::kTextJustification, int64_t{10}},
        {P::kRotation, 0.0},
        {P::kContents, std::wstring()}}},
      {"mtext: the attachment point",
       {{L"mtextattachmentpoint", L"bottomright"}, {L"textjustification", L"right"}},
       L"AcDbMText",
       ApplyMode::kAll,
       base::Code::kOk,
       {{P::kAttachment, int64_t{9}}}},
      {"block reference: true colour, block and scale",
       {{L"color", L"(255 0 16)"}, {L"blockname", L"manhole"}, {L"blockscale", L"(1 2 3)"}},
       L"AcDbBlockReference",
       ApplyMode::kAll,
       base::Code::kOk,
       {{P::kColor, host::Color{256, 0xFF0010}},
        {P::kBlockName, std::wstring(L"Manhole")},
        {P::kScale, host::Point3{1, 2, 3}}}},
      {"hatch: pattern, angle in radians, scale, background",
       {{L"pattern", L"ansi31"},
        {L"patternangle", L"90"},
        {L"patternscale", L"2"},
        {L"backgroundcolor", L"5"}},
       L"AcDbHatch",
       ApplyMode::kAll,
       base::Code::kOk,
       {{P::kPattern, std::wstring(L"ansi31")},
        {P::kPatternAngle, std::numbers::pi / 2},
        {P::kPatternScale, 2.0},
        {P::kBackgroundColor, host::Color{5}}}},
      {"the first colour that is not any; properties of other types are skipped",
       {{L"color", L"*"}, {L"color", L"4"}, {L"textheight", L"3.5"}, {L"blockname", L"nowhere"}},
       L"AcDbLine",
       ApplyMode::kAll,
       base::Code::kOk,
       {{P::kColor, host::Color{4}}}},
      {"a missing name fails and the rest is still applied",
       {{L"layer", L"nowhere"}, {L"color", L"2"}, {L"lineweight", L"50"}, {L"closed", L"1"}},
       L"AcDbPolyline",
       ApplyMode::kAll,
       base::Code::kNotFound,
       {{P::kLayer, std::wstring(L"0")},
        {P::kColor, host::Color{2}},
        {P::kLineweight, int64_t{50}},
        {P::kClosed, int64_t{1}}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    fakes::FakeDatabase database;
    database.addLayer(L"Walls");
    database.addSymbol(host::SymbolTable::kLinetype, L"Dashed");
    database.addSymbol(host::SymbolTable::kTextStyle, L"Notes");
    database.addSymbol(host::SymbolTable::kBlock, L"Manhole");
    host::ObjectId entity = database.addEntity(c.entity_class);
    DrawingProperties properties = classOf(c.lines);
    EXPECT_EQ(draw::applyDrawingProperties(database, entity, properties, c.mode).code(), c.code);
    for (const auto& [property, value] : c.expected) {
      EXPECT_EQ(database.getProperty(entity, property), value)
          << "property " << static_cast<int>(property);
    }
  }
}

TEST(PropertyApplicationTest, RequiredResourcesAreTheDefaults) {
  DrawingProperties properties = classOf({{L"layer", L"Walls", L"roads,rivers"},
                                          {L"linetype", L"dashed"},
                                          {L"blockname", L"manhole"},
                                          {L"textstyle", L"notes"},
                                          {L"dimensionstyle", L"iso"},
                                          {L"mleaderstyle", L"arrows"},
                                          {L"mlinestyle", L"double"},
                                          {L"pattern", L"ansi31"},
                                          {L"textheight", L"2"}});
  const host::ResourceNames expected = {
      {host::kResourceLayers, {L"walls"}},        {host::kResourceLinetypes, {L"dashed"}},
      {host::kResourceBlocks, {L"manhole"}},      {host::kResourceTextStyles, {L"notes"}},
      {host::kResourceDimensionStyles, {L"iso"}}, {host::kResourceMLeaderStyles, {L"arrows"}},
      {host::kResourceMlineStyles, {L"double"}},
  };
  EXPECT_EQ(draw::requiredResources(properties), expected);

  // Unset names, and names that ask the user, need nothing.
  DrawingProperties open = classOf({{L"layer", L"*"}, {L"textheight", L"2"}});
  open.linetype.mode = draw::ConstraintMode::kSingle;
  EXPECT_TRUE(draw::requiredResources(open).empty());
}

TEST(PropertyApplicationTest, PropertiesAlreadyHeldAreNotWrittenAgain) {
  fakes::FakeHost target;
  target.addLayer(L"Walls");
  host::ObjectId wall = target.addEntity(
      L"AcDbPolyline", {{P::kLayer, std::wstring(L"Walls")}, {P::kColor, host::Color{3}}});
  fakes::ForwardingHost host(target, /*trace=*/true);
  // Names compare in any case, as the layer table does.
  const DrawingProperties wall_class = classOf({{L"layer", L"walls"}, {L"color", L"3"}});
  auto writes = [&] {
    return std::count(host.trace().begin(), host.trace().end(), "Database::setProperty");
  };
  ASSERT_TRUE(draw::applyDrawingProperties(host.database(), wall, wall_class, ApplyMode::kAll));
  EXPECT_EQ(writes(), 0);
  ASSERT_TRUE(target.database().setProperty(wall, P::kColor, host::Color{5}));
  ASSERT_TRUE(draw::applyDrawingProperties(host.database(), wall, wall_class, ApplyMode::kAll));
  EXPECT_EQ(writes(), 1);
}

}  // namespace
