// The fake database's entity properties, draw order, symbol tables and system variables
// against the contract of host::Database.
#include <gtest/gtest.h>

#include <functional>
#include <numbers>

#include "fakes/fake_host.h"

namespace {

using base::Code;
using fakes::FakeDatabase;
using host::Color;
using host::EntityProperty;
using host::ObjectId;
using host::Point3;
using host::PropertyValue;
using host::SymbolTable;

Color aci(int index) { return Color{index, std::nullopt}; }

Code codeOf(const base::Status& status) { return status.code(); }
template <typename T>
Code codeOf(const base::Result<T>& result) {
  return result ? Code::kOk : result.status().code();
}

TEST(FakeDatabaseTest, PropertiesShowDefaultsOnlyWhereTheClassHasThem) {
  const PropertyValue none;
  struct Case {
    const wchar_t* entity_class;
    EntityProperty property;
    PropertyValue expected;
  };
  const Case cases[] = {
      {L"AcDbLine", EntityProperty::kColor, aci(256)},
      {L"AecDbWall", EntityProperty::kLayer, L"0"},
      {L"AcDbLine", EntityProperty::kLinetype, L"ByLayer"},
      {L"AcDbLine", EntityProperty::kLinetypeScale, 1.0},
      {L"AcDbLine", EntityProperty::kLineweight, int64_t{-1}},
      {L"AcDbLine", EntityProperty::kRadius, none},
      {L"AcDbLine", EntityProperty::kClosed, none},
      {L"AcDbLine", EntityProperty::kDimensionType, none},
      {L"AcDbCircle", EntityProperty::kRadius, 0.0},
      {L"AcDbArc", EntityProperty::kRadius, 0.0},
      {L"AcDbPolyline", EntityProperty::kClosed, int64_t{0}},
      {L"AcDbPolyline", EntityProperty::kElevation, 0.0},
      {L"AcDbPolyline", EntityProperty::kConstantWidth, 0.0},
      {L"AcDb3dPolyline", EntityProperty::kClosed, int64_t{0}},
      {L"AcDb3dPolyline", EntityProperty::kElevation, none},
      {L"AcDbSpline", EntityProperty::kClosed, int64_t{0}},
      {L"AcDbBlockReference", EntityProperty::kScale, Point3{1, 1, 1}},
      {L"AcDbBlockReference", EntityProperty::kRotation, 0.0},
      {L"AcDbBlockReference", EntityProperty::kBlockName, L""},
      {L"AcDbText", EntityProperty::kTextStyle, L"Standard"},
      {L"AcDbText", EntityProperty::kTextJustification, int64_t{0}},
      {L"AcDbText", EntityProperty::kContents, L""},
      {L"AcDbText", EntityProperty::kAttachment, none},
      {L"AcDbMText", EntityProperty::kAttachment, int64_t{1}},
      {L"AcDbMText", EntityProperty::kTextHeight, 2.5},
      {L"AcDbMText", EntityProperty::kTextJustification, none},
      {L"AcDbRotatedDimension", EntityProperty::kDimensionType, int64_t{0}},
      {L"AcDbAlignedDimension", EntityProperty::kDimensionType, int64_t{1}},
      {L"AcDbOrdinateDimension", EntityProperty::kDimensionType, int64_t{6}},
      {L"AcDbRadialDimension", EntityProperty::kDimensionStyle, L"Standard"},
      {L"AcDbEllipse", EntityProperty::kEllipseEnd, 2 * std::numbers::pi},
      {L"AcDbHatch", EntityProperty::kPattern, L"SOLID"},
      {L"AcDbHatch", EntityProperty::kBackgroundColor, aci(-1)},
      {L"AcDbHatch", EntityProperty::kPatternScale, 1.0},
      {L"AcDbMLeader", EntityProperty::kMLeaderStyle, L"Standard"},
      {L"AcDbMline", EntityProperty::kMlineScale, 1.0},
      {L"AcDbMline", EntityProperty::kMlineStyle, L"Standard"},
      {L"AcDbMline", EntityProperty::kRadius, none},
  };
  FakeDatabase db;
  for (const Case& c : cases) {
    ObjectId id = db.addEntity(c.entity_class);
    EXPECT_EQ(db.getProperty(id, c.property), c.expected)
        << static_cast<int>(c.property) << " of " << testing::PrintToString(c.entity_class);
  }
  EXPECT_EQ(db.getProperty(db.namedObjectsDictionary(), EntityProperty::kLayer), none);
  EXPECT_EQ(db.getProperty(ObjectId{}, EntityProperty::kLayer), none);
}

TEST(FakeDatabaseTest, SetPropertyChecksClassTypeAndNames) {
  struct Case {
    const wchar_t* entity_class;
    EntityProperty property;
    PropertyValue value;
    Code expected;
    PropertyValue stored;  // what getProperty shows afterwards
  };
  const PropertyValue none;
  const Case cases[] = {
      {L"AcDbLine", EntityProperty::kLayer, L"walls", Code::kOk, L"Walls"},
      {L"AcDbLine", EntityProperty::kLayer, L"Roof", Code::kNotFound, L"0"},
      {L"AcDbLine", EntityProperty::kLayer, int64_t{5}, Code::kInvalid, L"0"},
      {L"AcDbLine", EntityProperty::kLinetype, L"DASHED", Code::kOk, L"Dashed"},
      {L"AcDbLine", EntityProperty::kLinetype, L"byblock", Code::kOk, L"ByBlock"},
      {L"AcDbLine", EntityProperty::kLinetype, L"Walls", Code::kNotFound, L"ByLayer"},
      {L"AcDbText", EntityProperty::kTextStyle, L"romans", Code::kOk, L"Romans"},
      {L"AcDbMText", EntityProperty::kTextStyle, L"Walls", Code::kNotFound, L"Standard"},
      {L"AcDbRotatedDimension", EntityProperty::kDimensionStyle, L"iso-25", Code::kOk, L"ISO-25"},
      {L"AcDbRotatedDimension", EntityProperty::kDimensionStyle, L"Romans", Code::kNotFound,
       L"Standard"},
      {L"AcDbRotatedDimension", EntityProperty::kDimensionType, int64_t{1}, Code::kUnsupported,
       int64_t{0}},
      {L"AcDbBlockReference", EntityProperty::kBlockName, L"door", Code::kOk, L"Door"},
      {L"AcDbBlockReference", EntityProperty::kBlockName, L"Window", Code::kNotFound, L""},
      {L"AcDbBlockReference", EntityProperty::kScale, Point3{2, 2, 1}, Code::kOk, Point3{2, 2, 1}},
      {L"AcDbLine", EntityProperty::kRadius, 1.0, Code::kUnsupported, none},
      {L"AcDbCircle", EntityProperty::kRadius, 2.5, Code::kOk, 2.5},
      {L"AcDbCircle", EntityProperty::kRadius, L"2.5", Code::kInvalid, 0.0},
      {L"AcDbCircle", EntityProperty::kRadius, none, Code::kInvalid, 0.0},
      {L"AcDbLine", EntityProperty::kColor, Color{1, 0xFF0000}, Code::kOk, Color{1, 0xFF0000}},
      {L"AcDbLine", EntityProperty::kColor, int64_t{1}, Code::kInvalid, aci(256)},
      {L"AcDbLine", EntityProperty::kLineweight, int64_t{50}, Code::kOk, int64_t{50}},
      {L"AcDbMline", EntityProperty::kMlineStyle, L"Twin", Code::kOk, L"Twin"},
      {L"AcDbMText", EntityProperty::kContents, L"Line 1\\PLine 2", Code::kOk, L"Line 1\\PLine 2"},
  };
  FakeDatabase db;
  db.addLayer(L"Walls");
  db.addSymbol(SymbolTable::kLinetype, L"Dashed");
  db.addSymbol(SymbolTable::kTextStyle, L"Romans");
  db.addSymbol(SymbolTable::kDimensionStyle, L"ISO-25");
  db.addSymbol(SymbolTable::kBlock, L"Door");
  for (const Case& c : cases) {
    ObjectId id = db.addEntity(c.entity_class);
    const std::string what = std::to_string(static_cast<int>(c.property)) + " of " +
                             testing::PrintToString(c.entity_class);
    EXPECT_EQ(codeOf(db.setProperty(id, c.property, c.value)), c.expected) << what;
    EXPECT_EQ(db.getProperty(id, c.property), c.stored) << what;
  }
  EXPECT_EQ(codeOf(db.setProperty(db.namedObjectsDictionary(), EntityProperty::kLayer, L"0")),
            Code::kUnsupported);
}

TEST(FakeDatabaseTest, AddEntityStoresPropertiesAsGivenAndRefusesMistakes) {
  FakeDatabase db;
  // The layer need not exist yet: tests build drawings in any order.
  ObjectId line = db.addEntity(
      L"AcDbLine", {{EntityProperty::kLayer, L"Walls"}, {EntityProperty::kColor, aci(1)}});
  EXPECT_EQ(db.getProperty(line, EntityProperty::kLayer), PropertyValue(L"Walls"));
  EXPECT_EQ(db.getProperty(line, EntityProperty::kColor), PropertyValue(aci(1)));
  ObjectId dim = db.addEntity(L"AcDbRotatedDimension", {{EntityProperty::kDimensionType, 3}});
  EXPECT_EQ(db.getProperty(dim, EntityProperty::kDimensionType), PropertyValue(int64_t{3}));

  size_t objects = db.objectCount();
  EXPECT_THROW(db.addEntity(L"AcDbLine", {{EntityProperty::kRadius, 1.0}}), std::invalid_argument);
  EXPECT_THROW(db.addEntity(L"AcDbLine", {{EntityProperty::kLayer, 1.0}}), std::invalid_argument);
  EXPECT_THROW(db.addEntity(L""), std::invalid_argument);
  EXPECT_EQ(db.objectCount(), objects);
  EXPECT_EQ(db.modelSpaceEntities(), (std::vector<ObjectId>{line, dim}));
}

TEST(FakeDatabaseTest, RelativeDrawOrderDealsOutTheEntitiesOwnPlaces) {
  struct Case {
    std::vector<int> order;  // indexes into the five entities
    Code expected;
    std::vector<int> drawn;
  };
  const Case cases[] = {
      {{4, 0}, Code::kOk, {4, 1, 2, 3, 0}},       {{2, 1}, Code::kOk, {0, 2, 1, 3, 4}},
      {{0, 2}, Code::kOk, {0, 1, 2, 3, 4}},       {{1, 3, 0}, Code::kOk, {1, 3, 2, 0, 4}},
      {{}, Code::kOk, {0, 1, 2, 3, 4}},           {{0, 1, 0}, Code::kInvalid, {0, 1, 2, 3, 4}},
      {{0, -1}, Code::kInvalid, {0, 1, 2, 3, 4}},  // -1: a dictionary
  };
  for (const Case& c : cases) {
    FakeDatabase db;
    std::vector<ObjectId> ids;
    for (int i = 0; i < 5; ++i) ids.push_back(db.addEntity(L"AcDbLine"));
    auto pick = [&](int i) { return i < 0 ? db.namedObjectsDictionary() : ids[i]; };
    std::vector<ObjectId> order;
    for (int i : c.order) order.push_back(pick(i));
    std::vector<ObjectId> drawn;
    for (int i : c.drawn) drawn.push_back(ids[i]);
    const std::string what = testing::PrintToString(c.order);
    EXPECT_EQ(codeOf(db.setRelativeDrawOrder(order)), c.expected) << what;
    EXPECT_EQ(db.drawOrder(), drawn) << what;
    EXPECT_EQ(db.modelSpaceEntities(), ids) << what;
  }
}

TEST(FakeDatabaseTest, SymbolTablesAreSeparateAndLayersKeepTheirState) {
  FakeDatabase db;
  db.addSymbol(SymbolTable::kLinetype, L"Dashed");
  db.addSymbol(SymbolTable::kLinetype, L"DASHED");  // the same name
  EXPECT_TRUE(db.hasSymbol(SymbolTable::kLinetype, L"dashed"));
  EXPECT_FALSE(db.hasSymbol(SymbolTable::kLayer, L"Dashed"));
  ObjectId line = db.addEntity(L"AcDbLine");
  ASSERT_TRUE(db.setProperty(line, EntityProperty::kLinetype, L"dAsHeD"));
  EXPECT_EQ(db.getProperty(line, EntityProperty::kLinetype), PropertyValue(L"Dashed"));

  host::LayerState frozen_locked;
  frozen_locked.frozen = true;
  frozen_locked.locked = true;
  db.addLayer(L"Walls", frozen_locked);
  EXPECT_TRUE(db.hasSymbol(SymbolTable::kLayer, L"WALLS"));
  auto state = db.layerState(L"walls");
  ASSERT_TRUE(state);
  EXPECT_TRUE(state->frozen);
  EXPECT_TRUE(state->locked);
  EXPECT_FALSE(state->off);
  host::LayerState off;
  off.off = true;
  db.addLayer(L"WALLS", off);
  state = db.layerState(L"Walls");
  EXPECT_FALSE(state->frozen);
  EXPECT_TRUE(state->off);
  EXPECT_FALSE(db.layerState(L"0")->frozen);
}

TEST(FakeDatabaseTest, SystemVariablesKeepTheirType) {
  struct Case {
    const char* name;
    host::SysVar value;
    Code expected;
    host::SysVar after;
  };
  const host::SysVar four{int16_t{4}};
  const host::SysVar origin{Point3{}};
  const Case cases[] = {
      {"luprec", host::SysVar{int16_t{2}}, Code::kOk, host::SysVar{int16_t{2}}},
      {"LUPREC", host::SysVar{int32_t{2}}, Code::kInvalid, four},
      {"LUPREC", host::SysVar{2.0}, Code::kInvalid, four},
      {"LUPREC", host::SysVar{std::wstring(L"2")}, Code::kInvalid, four},
      {"INSBASE", host::SysVar{Point3{1, 2, 0}}, Code::kOk, host::SysVar{Point3{1, 2, 0}}},
      {"insbase", host::SysVar{int16_t{1}}, Code::kInvalid, origin},
      {"insbase", host::SysVar{host::Point2{1, 2}}, Code::kInvalid, origin},
      {"MaxSort", host::SysVar{int32_t{900}}, Code::kOk, host::SysVar{int32_t{900}}},
      {"DWGNAME", host::SysVar{std::wstring(L"b.dwg")}, Code::kOk,
       host::SysVar{std::wstring(L"b.dwg")}},
      {"USERR1", host::SysVar{0.5}, Code::kOk, host::SysVar{0.5}},
  };
  for (const Case& c : cases) {
    FakeDatabase db;
    db.defineVar("LUPREC", four);
    db.defineVar("INSBASE", origin);
    db.defineVar("MAXSORT", host::SysVar{int32_t{1000}});
    db.defineVar("DwgName", host::SysVar{std::wstring(L"a.dwg")});
    db.defineVar("USERR1", host::SysVar{0.0});
    EXPECT_EQ(codeOf(db.setVar(c.name, c.value)), c.expected) << c.name;
    auto got = db.getVar(c.name);
    ASSERT_TRUE(got) << c.name;
    EXPECT_EQ(*got, c.after) << c.name;
  }
}

}  // namespace
