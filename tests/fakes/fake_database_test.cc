// What only the fake drawing database does: the helper tests build drawings with. Its starting
// symbols and the contract it shares with the other hosts are tested in tests/host.
#include <gtest/gtest.h>

#include "fakes/fake_host.h"

namespace {

using fakes::FakeDatabase;
using host::EntityProperty;
using host::ObjectId;
using host::PropertyValue;

// A property a class lacks would be dropped unseen, and a test of it would pass on nothing.
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
