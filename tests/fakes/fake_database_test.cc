// What only the fake drawing database does: its starting symbols and its draw order. The
// contract it shares with the other hosts is tested in host/host_contract_test.cc.
#include <gtest/gtest.h>

#include "fakes/fake_host.h"

namespace {

using fakes::FakeDatabase;
using host::ObjectId;
using host::SymbolTable;

TEST(FakeDatabaseTest, StartsWithNamedObjectsAndTheStandardSymbols) {
  FakeDatabase db;
  ObjectId root = db.namedObjectsDictionary();
  ASSERT_TRUE(root);
  EXPECT_TRUE(db.isValid(root));
  EXPECT_TRUE(db.dictionaryEntries(root)->empty());
  EXPECT_EQ(db.entityClass(root), L"");
  EXPECT_TRUE(db.modelSpaceEntities().empty());
  struct Case {
    SymbolTable table;
    const wchar_t* name;
    bool present;
  };
  const Case cases[] = {
      {SymbolTable::kLayer, L"0", true},
      {SymbolTable::kLinetype, L"bylayer", true},
      {SymbolTable::kLinetype, L"BYBLOCK", true},
      {SymbolTable::kLinetype, L"Continuous", true},
      {SymbolTable::kTextStyle, L"STANDARD", true},
      {SymbolTable::kDimensionStyle, L"Standard", true},
      {SymbolTable::kBlock, L"*model_space", true},
      {SymbolTable::kBlock, L"*Paper_Space", true},
      {SymbolTable::kLayer, L"Walls", false},
      {SymbolTable::kLayer, L"Standard", false},
      {SymbolTable::kTextStyle, L"0", false},
      {SymbolTable::kBlock, L"Standard", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(db.hasSymbol(c.table, c.name), c.present) << c.name;
  }
}

TEST(FakeDatabaseTest, ModelSpaceListsEntitiesInInsertionOrderWithTheirClasses) {
  FakeDatabase db;
  const std::vector<std::wstring> classes = {L"AcDbPolyline", L"AcDbLine", L"AcDbMText",
                                             L"AcDbLine", L"AecDbWall"};
  std::vector<ObjectId> ids;
  for (const std::wstring& c : classes) ids.push_back(db.addEntity(c));
  EXPECT_EQ(db.modelSpaceEntities(), ids);
  EXPECT_EQ(db.drawOrder(), ids);
  for (size_t i = 0; i < ids.size(); ++i) EXPECT_EQ(db.entityClass(ids[i]), classes[i]);
  EXPECT_EQ(db.entityClass(ObjectId{}), L"");
  EXPECT_EQ(db.entityClass(ObjectId{9999}), L"");
}

}  // namespace
