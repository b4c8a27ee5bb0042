// What only the fake drawing database does: its starting symbols and the helpers tests build
// drawings with. The contract it shares with the other hosts is tested in tests/host.
#include <gtest/gtest.h>

#include "fakes/fake_host.h"

namespace {

using fakes::FakeDatabase;
using host::EntityProperty;
using host::ObjectId;
using host::PropertyValue;
using host::SymbolTable;

// The symbols every host has, and "ByBlock", are looked up by the contract suite.
TEST(FakeDatabaseTest, StartsEmptyWithTheStandardSymbolsAndAddingOneAgainKeepsItsSpelling) {
  FakeDatabase db;
  ObjectId root = db.namedObjectsDictionary();
  ASSERT_TRUE(root);
  EXPECT_TRUE(db.dictionaryEntries(root)->empty());
  EXPECT_EQ(db.entityClass(root), L"");
  EXPECT_TRUE(db.modelSpaceEntities().empty());
  struct Case {
    SymbolTable table;
    const wchar_t* name;
    bool present;
  };
  const Case cases[] = {
      {SymbolTable::kLinetype, L"bylayer", true},
      {SymbolTable::kDimensionStyle, L"Standard", true},
      {SymbolTable::kBlock, L"*Paper_Space", true},
      {SymbolTable::kLayer, L"Walls", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(db.hasSymbol(c.table, c.name), c.present) << c.name;
  }

  db.addSymbol(SymbolTable::kLinetype, L"Dashed");
  db.addSymbol(SymbolTable::kLinetype, L"DASHED");
  ObjectId line = db.addEntity(L"AcDbLine");
  ASSERT_TRUE(db.setProperty(line, EntityProperty::kLinetype, L"dAsHeD"));
  EXPECT_EQ(db.getProperty(line, EntityProperty::kLinetype), PropertyValue(L"Dashed"));
  db.addLayer(L"Walls", {.frozen = true, .off = false, .locked = true});
  db.addLayer(L"WALLS", {.frozen = false, .off = true});
  auto state = db.layerState(L"walls");
  ASSERT_TRUE(state);
  EXPECT_FALSE(state->frozen || state->locked);
  EXPECT_TRUE(state->off);
}

TEST(FakeDatabaseTest, AddEntityStoresPropertiesAsGivenAndRefusesMistakes) {
  FakeDatabase db;
  // The layer need not exist yet: tests build drawings in any order.
  const host::Color red{1, std::nullopt};
  ObjectId line = db.addEntity(L"AcDbLine",
                               {{EntityProperty::kLayer, L"Walls"}, {EntityProperty::kColor, red}});
  EXPECT_EQ(db.getProperty(line, EntityProperty::kLayer), PropertyValue(L"Walls"));
  EXPECT_EQ(db.getProperty(line, EntityProperty::kColor), PropertyValue(red));
  ObjectId dim = db.addEntity(L"AcDbRotatedDimension", {{EntityProperty::kDimensionType, 3}});
  EXPECT_EQ(db.getProperty(dim, EntityProperty::kDimensionType), PropertyValue(int64_t{3}));
  ObjectId wall = db.addEntity(L"AecDbWall");  // any class a vertical product names
  EXPECT_EQ(db.entityClass(wall), L"AecDbWall");

  size_t objects = db.objectCount();
  EXPECT_THROW(db.addEntity(L"AcDbLine", {{EntityProperty::kRadius, 1.0}}), std::invalid_argument);
  EXPECT_THROW(db.addEntity(L"AcDbLine", {{EntityProperty::kLayer, 1.0}}), std::invalid_argument);
  EXPECT_THROW(db.addEntity(L""), std::invalid_argument);
  EXPECT_EQ(db.objectCount(), objects);
  EXPECT_EQ(db.modelSpaceEntities(), (std::vector<ObjectId>{line, dim, wall}));
  EXPECT_EQ(db.drawOrder(), db.modelSpaceEntities());
}

}  // namespace
