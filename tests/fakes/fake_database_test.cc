// The fake drawing database against the contract of host::Database.
#include <gtest/gtest.h>

#include <functional>

#include "fakes/fake_host.h"

namespace {

using base::Code;
using fakes::FakeDatabase;
using host::EntityProperty;
using host::ObjectId;
using host::Point3;
using host::PropertyValue;
using host::SymbolTable;

Code codeOf(const base::Status& status) { return status.code(); }
template <typename T>
Code codeOf(const base::Result<T>& result) {
  return result ? Code::kOk : result.status().code();
}

struct RecordingReactor : host::DatabaseReactor {
  void objectAppended(ObjectId id) override { appended.push_back(id); }
  void objectErased(ObjectId id) override { erased.push_back(id); }
  std::vector<ObjectId> appended;
  std::vector<ObjectId> erased;
};

std::vector<std::wstring> keysOf(FakeDatabase& db, ObjectId dict) {
  std::vector<std::wstring> keys;
  auto entries = db.dictionaryEntries(dict);
  for (const auto& entry : *entries) keys.push_back(entry.first);
  return keys;
}

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

TEST(FakeDatabaseTest, DictionariesKeepTheirOrderAndCompareKeysIgnoringCase) {
  FakeDatabase db;
  ObjectId root = db.namedObjectsDictionary();
  ObjectId zeta = *db.createDictionary(root, L"Zeta");
  ObjectId alpha = *db.createXrecord(root, L"alpha");
  ObjectId mid = *db.createDictionary(root, L"Mid");
  EXPECT_EQ(keysOf(db, root), (std::vector<std::wstring>{L"Zeta", L"alpha", L"Mid"}));
  struct Case {
    const wchar_t* key;
    ObjectId expected;
  };
  for (const Case& c : {Case{L"zeta", zeta}, Case{L"ALPHA", alpha}, Case{L"mId", mid}}) {
    auto got = db.dictionaryGet(root, c.key);
    ASSERT_TRUE(got) << c.key;
    EXPECT_EQ(*got, c.expected) << c.key;
  }
  // A key taken in another case is taken.
  size_t objects = db.objectCount();
  EXPECT_EQ(codeOf(db.createXrecord(root, L"ZETA")), Code::kInvalid);
  EXPECT_EQ(codeOf(db.createDictionary(root, L"MID")), Code::kInvalid);
  EXPECT_EQ(db.objectCount(), objects);
  // Removing an entry leaves its object.
  EXPECT_TRUE(db.dictionaryRemove(root, L"Alpha"));
  EXPECT_EQ(keysOf(db, root), (std::vector<std::wstring>{L"Zeta", L"Mid"}));
  EXPECT_TRUE(db.isValid(alpha));
  EXPECT_TRUE(db.readXrecord(alpha));
  EXPECT_EQ(codeOf(db.dictionaryRemove(root, L"alpha")), Code::kNotFound);
  // Dictionaries nest.
  ObjectId inner = *db.createXrecord(zeta, L"row");
  EXPECT_EQ(*db.dictionaryGet(zeta, L"ROW"), inner);
}

// Every call refuses an object it cannot work on with its own code, and changes nothing.
TEST(FakeDatabaseTest, FailuresReportTheirCodeAndChangeNothing) {
  FakeDatabase db;
  ObjectId root = db.namedObjectsDictionary();
  ObjectId line = db.addEntity(L"AcDbLine");
  ObjectId xrecord = *db.createXrecord(root, L"Taken");
  ObjectId gone = db.addEntity(L"AcDbLine");
  ASSERT_TRUE(db.erase(gone));
  struct Case {
    const char* call;
    std::function<Code()> run;
    Code expected;
  };
  const Case cases[] = {
      {"dictionaryGet absent key", [&] { return codeOf(db.dictionaryGet(root, L"none")); },
       Code::kNotFound},
      {"dictionaryGet on an XRECORD", [&] { return codeOf(db.dictionaryGet(xrecord, L"a")); },
       Code::kInvalid},
      {"dictionaryGet on erased", [&] { return codeOf(db.dictionaryGet(gone, L"a")); },
       Code::kNotFound},
      {"dictionaryGet on null", [&] { return codeOf(db.dictionaryGet(ObjectId{}, L"a")); },
       Code::kNotFound},
      {"dictionaryEntries on an entity", [&] { return codeOf(db.dictionaryEntries(line)); },
       Code::kInvalid},
      {"dictionaryEntries on erased", [&] { return codeOf(db.dictionaryEntries(gone)); },
       Code::kNotFound},
      {"dictionaryRemove absent key", [&] { return codeOf(db.dictionaryRemove(root, L"x")); },
       Code::kNotFound},
      {"dictionaryRemove on an XRECORD", [&] { return codeOf(db.dictionaryRemove(xrecord, L"x")); },
       Code::kInvalid},
      {"createDictionary in an entity", [&] { return codeOf(db.createDictionary(line, L"k")); },
       Code::kInvalid},
      {"createXrecord in an XRECORD", [&] { return codeOf(db.createXrecord(xrecord, L"k")); },
       Code::kInvalid},
      {"createDictionary in erased", [&] { return codeOf(db.createDictionary(gone, L"k")); },
       Code::kNotFound},
      {"createXrecord on a taken key", [&] { return codeOf(db.createXrecord(root, L"taken")); },
       Code::kInvalid},
      {"readXrecord of a dictionary", [&] { return codeOf(db.readXrecord(root)); }, Code::kInvalid},
      {"readXrecord of erased", [&] { return codeOf(db.readXrecord(gone)); }, Code::kNotFound},
      {"writeXrecord to a dictionary", [&] { return codeOf(db.writeXrecord(root, {})); },
       Code::kInvalid},
      {"writeXrecord to an entity", [&] { return codeOf(db.writeXrecord(line, {})); },
       Code::kInvalid},
      {"writeXrecord to erased", [&] { return codeOf(db.writeXrecord(gone, {})); },
       Code::kNotFound},
      {"extensionDictionary of erased", [&] { return codeOf(db.extensionDictionary(gone)); },
       Code::kNotFound},
      {"createExtensionDictionary of erased",
       [&] { return codeOf(db.createExtensionDictionary(gone)); }, Code::kNotFound},
      {"releaseExtensionDictionary of erased",
       [&] { return codeOf(db.releaseExtensionDictionary(gone)); }, Code::kNotFound},
      {"erase erased", [&] { return codeOf(db.erase(gone)); }, Code::kNotFound},
      {"erase null", [&] { return codeOf(db.erase(ObjectId{})); }, Code::kNotFound},
      {"erase named objects", [&] { return codeOf(db.erase(root)); }, Code::kInvalid},
      {"setProperty of erased",
       [&] { return codeOf(db.setProperty(gone, EntityProperty::kLayer, L"0")); }, Code::kNotFound},
      {"setRelativeDrawOrder with erased",
       [&] {
         return codeOf(db.setRelativeDrawOrder({line, gone}));
       },
       Code::kNotFound},
      {"layerState of an absent layer", [&] { return codeOf(db.layerState(L"Walls")); },
       Code::kNotFound},
      {"getVar unknown", [&] { return codeOf(db.getVar("LUPREC")); }, Code::kNotFound},
      {"setVar unknown", [&] { return codeOf(db.setVar("LUPREC", host::SysVar{int16_t{2}})); },
       Code::kNotFound},
  };
  for (const Case& c : cases) {
    size_t objects = db.objectCount();
    EXPECT_EQ(c.run(), c.expected) << c.call;
    EXPECT_EQ(db.objectCount(), objects) << c.call;
  }
  EXPECT_EQ(keysOf(db, root), std::vector<std::wstring>{L"Taken"});
  EXPECT_EQ(db.modelSpaceEntities(), std::vector<ObjectId>{line});
  EXPECT_TRUE(db.readXrecord(xrecord)->empty());
  EXPECT_FALSE(*db.extensionDictionary(line));
}

TEST(FakeDatabaseTest, XrecordsKeepTheChainAsGiven) {
  FakeDatabase db;
  ObjectId xrecord = *db.createXrecord(db.namedObjectsDictionary(), L"Row");
  EXPECT_TRUE(db.readXrecord(xrecord)->empty());
  const host::ResBufChain chains[] = {
      {host::ResBuf::text(L"Pipe"), host::ResBuf::point({1, 2, 3}), host::ResBuf::real(2.5),
       host::ResBuf::integer(-7), host::ResBuf{70, std::string("12")},
       host::ResBuf{1000, std::wstring(L"odd code, text")}},
      {host::ResBuf::integer(1)},
      {},
  };
  for (const host::ResBufChain& chain : chains) {
    ASSERT_TRUE(db.writeXrecord(xrecord, chain));
    EXPECT_EQ(*db.readXrecord(xrecord), chain);
  }
}

TEST(FakeDatabaseTest, ExtensionDictionaryIsMadeOnceAndReleasedOnlyWhenEmpty) {
  FakeDatabase db;
  RecordingReactor reactor;
  db.addReactor(&reactor);
  ObjectId line = db.addEntity(L"AcDbLine");
  ObjectId plain_dict = *db.createDictionary(db.namedObjectsDictionary(), L"Plain");
  for (ObjectId owner : {line, plain_dict}) {
    reactor = {};
    EXPECT_EQ(*db.extensionDictionary(owner), ObjectId{});
    EXPECT_EQ(*db.releaseExtensionDictionary(owner), false);  // none to release
    ObjectId xdict = *db.createExtensionDictionary(owner);
    ASSERT_TRUE(xdict);
    EXPECT_NE(xdict, owner);
    EXPECT_EQ(*db.createExtensionDictionary(owner), xdict);
    EXPECT_EQ(*db.extensionDictionary(owner), xdict);
    EXPECT_EQ(reactor.appended, std::vector<ObjectId>{xdict});

    ObjectId entry = *db.createXrecord(xdict, L"Data");
    EXPECT_EQ(*db.releaseExtensionDictionary(owner), false);
    EXPECT_TRUE(db.isValid(xdict));
    EXPECT_TRUE(db.isValid(entry));
    EXPECT_EQ(*db.extensionDictionary(owner), xdict);

    ASSERT_TRUE(db.dictionaryRemove(xdict, L"data"));
    EXPECT_EQ(*db.releaseExtensionDictionary(owner), true);
    EXPECT_FALSE(db.isValid(xdict));
    EXPECT_EQ(*db.extensionDictionary(owner), ObjectId{});
    EXPECT_TRUE(db.isValid(owner));
    EXPECT_EQ(reactor.erased, std::vector<ObjectId>{xdict});
    EXPECT_NE(*db.createExtensionDictionary(owner), xdict);  // a new one
  }
}

TEST(FakeDatabaseTest, EraseTakesTheOwnedObjectsAlong) {
  FakeDatabase db;
  ObjectId root = db.namedObjectsDictionary();
  ObjectId kept = *db.createXrecord(root, L"Kept");
  ObjectId other = db.addEntity(L"AcDbCircle");
  size_t before = db.objectCount();
  ObjectId line = db.addEntity(L"AcDbLine");
  ObjectId xdict = *db.createExtensionDictionary(line);
  ObjectId classes = *db.createDictionary(xdict, L"TAXOR");
  ObjectId row = *db.createXrecord(classes, L"Row");
  ObjectId nested = *db.createDictionary(classes, L"Sub");
  ObjectId deep = *db.createXrecord(nested, L"Deep");
  ObjectId deep_xdict = *db.createExtensionDictionary(deep);
  RecordingReactor reactor;
  db.addReactor(&reactor);

  ASSERT_TRUE(db.erase(line));
  const std::vector<ObjectId> owned = {line, xdict, classes, row, nested, deep, deep_xdict};
  for (ObjectId id : owned) EXPECT_FALSE(db.isValid(id)) << id.value;
  EXPECT_EQ(db.objectCount(), before);
  ASSERT_EQ(reactor.erased.size(), owned.size());
  EXPECT_EQ(reactor.erased.front(), line);
  EXPECT_TRUE(std::is_permutation(reactor.erased.begin(), reactor.erased.end(), owned.begin()));
  EXPECT_EQ(db.modelSpaceEntities(), std::vector<ObjectId>{other});
  EXPECT_EQ(db.drawOrder(), std::vector<ObjectId>{other});
  EXPECT_EQ(db.entityClass(line), L"");
  EXPECT_TRUE(std::holds_alternative<std::monostate>(db.getProperty(line, EntityProperty::kLayer)));
  EXPECT_TRUE(db.isValid(kept));
  EXPECT_TRUE(db.isValid(other));

  // An erased entry leaves its dictionary; an erased extension dictionary leaves its object.
  ObjectId child = *db.createDictionary(root, L"Child");
  ASSERT_TRUE(db.erase(child));
  EXPECT_EQ(codeOf(db.dictionaryGet(root, L"Child")), Code::kNotFound);
  EXPECT_EQ(keysOf(db, root), std::vector<std::wstring>{L"Kept"});
  ObjectId other_xdict = *db.createExtensionDictionary(other);
  ASSERT_TRUE(db.erase(other_xdict));
  EXPECT_EQ(*db.extensionDictionary(other), ObjectId{});
  db.removeReactor(&reactor);
}

TEST(FakeDatabaseTest, ReactorsHearOfEveryObjectAppendedUntilRemoved) {
  FakeDatabase db;
  RecordingReactor first;
  RecordingReactor second;
  db.addReactor(&first);
  db.addReactor(&second);
  ObjectId line = db.addEntity(L"AcDbLine");
  ObjectId dict = *db.createDictionary(db.namedObjectsDictionary(), L"D");
  ObjectId xrecord = *db.createXrecord(dict, L"X");
  ObjectId xdict = *db.createExtensionDictionary(line);
  const std::vector<ObjectId> appended = {line, dict, xrecord, xdict};
  EXPECT_EQ(first.appended, appended);
  EXPECT_EQ(second.appended, appended);
  db.removeReactor(&first);
  ObjectId circle = db.addEntity(L"AcDbCircle");
  ASSERT_TRUE(db.erase(circle));
  EXPECT_EQ(first.appended, appended);
  EXPECT_TRUE(first.erased.empty());
  EXPECT_EQ(second.appended.back(), circle);
  EXPECT_EQ(second.erased, std::vector<ObjectId>{circle});

  // A reactor may remove itself while it is told.
  struct Once : host::DatabaseReactor {
    explicit Once(FakeDatabase& db) : db(db) {}
    void objectAppended(ObjectId) override {
      ++calls;
      db.removeReactor(this);
    }
    FakeDatabase& db;
    int calls = 0;
  } once(db);
  db.addReactor(&once);
  db.addEntity(L"AcDbLine");
  db.addEntity(L"AcDbLine");
  EXPECT_EQ(once.calls, 1);
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
