// Giving drawn entities the properties of a class, and the resources a class needs.
#include "draw/property_application.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numbers>
#include <optional>

#include "base/utf.h"
#include "draw/object_types.h"
#include "fakes/fake_database.h"
#include "fakes/fake_host.h"
#include "fakes/forwarding_host.h"

namespace {

using namespace std::string_literals;
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

// One class line and, when the entity has it, the property it should leave.
struct Applied {
  Line line;
  std::optional<P> property = std::nullopt;
  host::PropertyValue expected = {};
};

struct Case {
  const char* name;
  const wchar_t* entity_class;
  std::vector<Applied> applied;
  ApplyMode mode = ApplyMode::kAll;
  base::Code code = base::Code::kOk;
};

TEST(PropertyApplicationTest, AppliesWhatTheClassPrescribes) {
  const Case cases[] = {
      {"polyline: general properties, closed, width and elevation",
       L"AcDbPolyline",
       {{{L"color", L"3"}, P::kColor, host::Color{3}},
        {{L"layer", L"walls"}, P::kLayer, L"Walls"s},
        {{L"linetype", L"dashed"}, P::kLinetype, L"Dashed"s},
        {{L"linetypescale", L"2"}, P::kLinetypeScale, 2.0},
        {{L"lineweight", L"25"}, P::kLineweight, int64_t{25}},
        {{L"closed", L"1"}, P::kClosed, int64_t{1}},
        {{L"constantwidth", L"0.5"}, P::kConstantWidth, 0.5},
        {{L"elevation", L"3"}, P::kElevation, 3.0}}},
      {"general mode leaves the type's properties alone",
       L"AcDbPolyline",
       {{{L"color", L"3"}, P::kColor, host::Color{3}},
        {{L"closed", L"1"}, P::kClosed, int64_t{0}},
        {{L"elevation", L"3"}, P::kElevation, 0.0}},
       ApplyMode::kGeneral},
      {"text: height, style and justification; rotation and contents stay as drawn",
       L"AcDbText",
       {{{L"textheight", L"3.5"}, P::kTextHeight, 3.5},
        {{L"textstyle", L"notes"}, P::kTextStyle, L"Notes"s},
        {{L"textjustification", L"middlecenter"}, P::kTextJustification, int64_t{10}},
        {{L"angle", L"90"}, P::kRotation, 0.0},
        {{L"text", L"Room"}, P::kContents, L""s}}},
      {"mtext: the attachment point",
       L"AcDbMText",
       {{{L"mtextattachmentpoint", L"bottomright"}, P::kAttachment, int64_t{9}},
        {{L"textjustification", L"right"}}}},
      {"block reference: true colour, block and scale",
       L"AcDbBlockReference",
       {{{L"color", L"(255 0 16)"}, P::kColor, host::Color{256, 0xFF0010}},
        {{L"blockname", L"manhole"}, P::kBlockName, L"Manhole"s},
        {{L"blockscale", L"(1 2 3)"}, P::kScale, host::Point3{1, 2, 3}}}},
      {"hatch: pattern, angle in radians, scale, background",
       L"AcDbHatch",
       {{{L"pattern", L"ansi31"}, P::kPattern, L"ansi31"s},
        {{L"patternangle", L"90"}, P::kPatternAngle, std::numbers::pi / 2},
        {{L"patternscale", L"2"}, P::kPatternScale, 2.0},
        {{L"backgroundcolor", L"5"}, P::kBackgroundColor, host::Color{5}}}},
      {"the first colour that is not any; properties of other types are skipped",
       L"AcDbLine",
       {{{L"color", L"*"}},
        {{L"color", L"4"}, P::kColor, host::Color{4}},
        {{L"textheight", L"3.5"}},
        {{L"blockname", L"nowhere"}}}},
      {"a missing name fails and the rest is still applied",
       L"AcDbPolyline",
       {{{L"layer", L"nowhere"}, P::kLayer, L"0"s},
        {{L"color", L"2"}, P::kColor, host::Color{2}},
        {{L"lineweight", L"50"}, P::kLineweight, int64_t{50}},
        {{L"closed", L"1"}, P::kClosed, int64_t{1}}},
       ApplyMode::kAll,
       base::Code::kNotFound},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    fakes::FakeDatabase database;
    database.addLayer(L"Walls");
    database.addSymbol(host::SymbolTable::kLinetype, L"Dashed");
    database.addSymbol(host::SymbolTable::kTextStyle, L"Notes");
    database.addSymbol(host::SymbolTable::kBlock, L"Manhole");
    host::ObjectId entity = database.addEntity(c.entity_class);
    std::vector<Line> lines;
    for (const Applied& a : c.applied) lines.push_back(a.line);
    EXPECT_EQ(draw::applyDrawingProperties(database, entity, classOf(lines), c.mode).code(),
              c.code);
    // Unchanged properties show the fake's defaults.
    for (const Applied& a : c.applied) {
      if (a.property) {
        EXPECT_EQ(database.getProperty(entity, *a.property), a.expected)
            << base::toUtf8(a.line.key);
      }
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
