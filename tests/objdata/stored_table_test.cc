// Table definitions stored in the drawing: where, in what layout, and never twice.
#include "objdata/stored_table.h"

#include <gtest/gtest.h>

#include "dxf/sample_drawing.h"
#include "fakes/fake_host.h"
#include "headless/session.h"

namespace {

using objdata::StoredField;
using objdata::ValueType;

const std::vector<StoredField> kPipeFields = {{L"ID", ValueType::kCharacter},
                                              {L"DN", ValueType::kInteger},
                                              {L"dn", ValueType::kReal},  // repeats DN: dropped
                                              {L"Length", ValueType::kReal},
                                              {L"Start", ValueType::kPoint}};

// The dictionary and each table are made once; a table is name-placeholder pairs, no header.
TEST(StoredTableTest, MadeOnceLaidOutAsNamePlaceholderPairsAndReadBack) {
  fakes::FakeHost host;
  host::Database& db = host.database();
  EXPECT_TRUE(objdata::findTableDictionary(db).isNull());
  std::vector<std::wstring> names;
  EXPECT_EQ(objdata::listStoredTables(db, names, 7), objdata::kStatusOk);
  EXPECT_TRUE(names.empty());
  host::ObjectId dictionary = objdata::getTableDictionary(host.document());
  ASSERT_FALSE(dictionary.isNull());
  EXPECT_EQ(host.lockDepth(), 0);
  EXPECT_EQ(objdata::findTableDictionary(db), dictionary);
  EXPECT_EQ(objdata::getTableDictionary(host.document()), dictionary);
  EXPECT_EQ(db.dictionaryGet(db.namedObjectsDictionary(), L"VELEMUDATA").value(), dictionary);

  EXPECT_EQ(objdata::ensureStoredTable(db, dictionary, L"Pipes", kPipeFields), 2);
  EXPECT_EQ(objdata::ensureStoredTable(db, dictionary, L"PIPES", kPipeFields), 0);
  EXPECT_EQ(objdata::writeStoredTable(db, dictionary, L"Pipes", {}), objdata::kStatusKeyExists);

  host::ObjectId xrecord = db.dictionaryGet(dictionary, L"Pipes").value();
  host::ResBufChain expected = {host::ResBuf::text(L"ID"),     host::ResBuf::text(L""),
                                host::ResBuf::text(L"DN"),     host::ResBuf::integer(0),
                                host::ResBuf::text(L"Length"), host::ResBuf::real(0.0),
                                host::ResBuf::text(L"Start"),  host::ResBuf::point({0, 0, 0})};
  EXPECT_EQ(db.readXrecord(xrecord).value(), expected);

  objdata::StoredTable table;
  ASSERT_EQ(objdata::readStoredTable(db, dictionary, L"pipes", table), objdata::kStatusOk);
  EXPECT_EQ(table.name, L"Pipes");
  EXPECT_EQ(table.fields, (std::vector<StoredField>{{L"ID", ValueType::kCharacter},
                                                    {L"DN", ValueType::kInteger},
                                                    {L"Length", ValueType::kReal},
                                                    {L"Start", ValueType::kPoint}}));

  // One stored by another program: a code of no field type, and a name read already, are
  // skipped.
  ASSERT_TRUE(db.createXrecordWith(
      dictionary, L"Mixed",
      {host::ResBuf::text(L"A"), host::ResBuf::integer(0), host::ResBuf::text(L"B"),
       host::ResBuf{70, std::string("1")}, host::ResBuf::text(L"a"), host::ResBuf::real(0),
       host::ResBuf::text(L"P"), host::ResBuf::point({}), host::ResBuf::text(L"odd")}));
  ASSERT_EQ(objdata::readStoredTable(db, dictionary, L"MIXED", table), objdata::kStatusOk);
  EXPECT_EQ(table.name, L"Mixed");
  EXPECT_EQ(table.fields,
            (std::vector<StoredField>{{L"A", ValueType::kInteger}, {L"P", ValueType::kPoint}}));
  EXPECT_EQ(objdata::readStoredTable(db, dictionary, L"Other", table), objdata::kStatusNothing);
  EXPECT_TRUE(objdata::hasStoredTable(db, dictionary, L"mixed"));
  EXPECT_FALSE(objdata::hasStoredTable(db, dictionary, L"Other"));
  EXPECT_EQ(objdata::listStoredTables(db, names, 1), objdata::kStatusOk);
  EXPECT_TRUE(names.empty());
  EXPECT_EQ(objdata::listStoredTables(db, names, 7), objdata::kStatusOk);
  EXPECT_EQ(names, (std::vector<std::wstring>{L"Pipes", L"Mixed"}));
}

// In a DXF drawing the stored table is an XRECORD of exactly these tags.
TEST(StoredTableTest, DxfDrawingHoldsTheTagsAsLaidOut) {
  testing_session::Session session(sample::drawing());
  host::ObjectId dictionary = objdata::getTableDictionary(session.host->document());
  ASSERT_FALSE(dictionary.isNull());
  ASSERT_EQ(
      objdata::ensureStoredTable(session.host->database(), dictionary, L"Pipes",
                                 {{L"ID", ValueType::kCharacter}, {L"DN", ValueType::kInteger}}),
      2);
  std::string text = session.drawing.serialize();
  EXPECT_NE(text.find("AcDbXrecord\n280\n1\n  1\nID\n  1\n\n  1\nDN\n 90\n0\n"), std::string::npos);
  EXPECT_NE(text.find("  3\nVELEMUDATA\n"), std::string::npos);
}

}  // namespace
