// Records of an entity: how they sit in the drawing and how a walk reads, changes and
// deletes them.
#include "objdata/record_cursor.h"

#include <gtest/gtest.h>

#include "fakes/fake_host.h"

namespace {

using host::ResBuf;
using host::ResBufChain;
using objdata::FieldValue;
using objdata::TableRecord;
using objdata::Value;
using objdata::ValueType;

Value integer(int32_t v) { return objdata::makeValue(ValueType::kInteger, std::to_wstring(v)); }
Value real(double v) { return objdata::makeValue(ValueType::kReal, std::to_wstring(v)); }
Value text(std::wstring v) { return objdata::makeValue(ValueType::kCharacter, v); }
Value point(double x, double y, double z) {
  return objdata::makeValue(ValueType::kPoint, std::to_wstring(x) + L"," + std::to_wstring(y) +
                                                   L"," + std::to_wstring(z));
}

TableRecord pipe(std::wstring id, int32_t dn, double length, Value start) {
  return {L"Pipes",
          {{L"ID", std::nullopt, text(std::move(id))},
           {L"DN", std::nullopt, integer(dn)},
           {L"Length", std::nullopt, real(length)},
           {L"Start", std::nullopt, std::move(start)}}};
}

TableRecord well(double depth) { return {L"Wells", {{L"Depth", std::nullopt, real(depth)}}}; }

ResBufChain pipeValues(std::wstring id, int32_t dn, double length, host::Point3 start) {
  return {ResBuf::text(std::move(id)), ResBuf::integer(dn), ResBuf::real(length),
          ResBuf::point(start)};
}

// A drawing storing tables "Pipes" and "Wells", with a directory over them.
struct Drawing {
  Drawing() {
    objdata::ensureStoredTable(db, dictionary, L"Pipes",
                               {{L"ID", ValueType::kCharacter},
                                {L"DN", ValueType::kInteger},
                                {L"Length", ValueType::kReal},
                                {L"Start", ValueType::kPoint}});
    objdata::ensureStoredTable(db, dictionary, L"Wells", {{L"Depth", ValueType::kReal}});
  }

  int append(host::ObjectId entity, TableRecord record) {
    return objdata::appendRecord(tables, *tables.find(record.table_name), record, entity);
  }
  // An entry of another application in the entity's extension dictionary.
  host::ObjectId addForeign(host::ObjectId entity, std::wstring_view key) {
    host::ObjectId xrecord =
        db.createXrecord(db.createExtensionDictionary(entity).value(), key).value();
    EXPECT_TRUE(db.writeXrecord(xrecord, {ResBuf::integer(1)}));
    return xrecord;
  }
  host::ObjectId container(host::ObjectId entity, std::wstring_view table) {
    auto dict = db.extensionDictionary(entity).value();
    auto found = db.dictionaryGet(dict, table);
    return found ? *found : host::ObjectId{};
  }
  ResBufChain values(host::ObjectId entity, std::wstring_view table) {
    return db.readXrecord(container(entity, table)).value();
  }
  // A cursor on the entity's first record, read into `record`.
  objdata::RecordCursor first(TableRecord& record) {
    objdata::RecordCursor cursor;
    EXPECT_EQ(objdata::openCursor(tables, cursor, entity), objdata::kStatusOk);
    EXPECT_EQ(objdata::readRecord(tables, cursor, record), objdata::kStatusOk);
    return cursor;
  }
  std::vector<TableRecord> walk(host::ObjectId entity, std::optional<std::wstring> filter = {}) {
    objdata::RecordCursor cursor;
    cursor.table_filter = std::move(filter);
    std::vector<TableRecord> out;
    EXPECT_EQ(objdata::openCursor(tables, cursor, entity), objdata::kStatusOk);
    while (!objdata::cursorDone(cursor)) {
      EXPECT_EQ(objdata::readRecord(tables, cursor, out.emplace_back()), objdata::kStatusOk);
      objdata::nextRecord(tables, cursor);
    }
    return out;
  }

  fakes::FakeHost host;
  host::Database& db = host.database();
  host::ObjectId dictionary = objdata::getTableDictionary(host.document());
  objdata::TableDirectory tables{db, dictionary};
  host::ObjectId entity = host.addEntity(L"AcDbLine");
};

std::vector<std::wstring> describe(const std::vector<TableRecord>& records) {
  std::vector<std::wstring> out;
  for (const TableRecord& record : records) {
    std::wstring line = record.table_name;
    for (const FieldValue& field : record.fields) line += L" " + objdata::asText(field.value);
    out.push_back(line);
  }
  return out;
}

// A value goes in by its own type, not the stored field's, and a Real loses its fraction, as
// the drawing format has it.
TEST(RecordCursorTest, ContainerHoldsOneValuePerFieldBackToBack) {
  Drawing d;
  ASSERT_EQ(d.append(d.entity, pipe(L"P1", 100, 2.75, point(1, 2, 3))), objdata::kStatusOk);
  TableRecord odd = pipe(L"", 1, 1.0, integer(5));
  odd.fields[0].value = Value{};  // unset: a zeroed value of code 0
  ASSERT_EQ(d.append(d.entity, odd), objdata::kStatusOk);
  TableRecord empty;  // given the stored table's name and zero values
  ASSERT_EQ(objdata::appendRecord(d.tables, *d.tables.find(L"Pipes"), empty, d.entity),
            objdata::kStatusOk);
  EXPECT_EQ(empty.table_name, L"Pipes");
  ASSERT_EQ(empty.fields.size(), 4u);

  ResBufChain expected = pipeValues(L"P1", 100, 2.0, {1, 2, 3});
  for (const ResBufChain& more :
       {ResBufChain{ResBuf{}, ResBuf::integer(1), ResBuf::real(1.0), ResBuf::integer(5)},
        pipeValues(L"", 0, 0.0, {0, 0, 0})})
    expected.insert(expected.end(), more.begin(), more.end());
  EXPECT_EQ(d.values(d.entity, L"Pipes"), expected);

  auto records = d.walk(d.entity);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0].fields[3].value.point, (objdata::Point{1, 2, 3}));
  EXPECT_EQ(records[1].fields[0].value.type, ValueType::kNone);
  EXPECT_EQ(records[1].fields[3].value.type, ValueType::kInteger);
  EXPECT_EQ(describe({records[0], records[2]}),
            (std::vector<std::wstring>{L"Pipes P1 100 2.0 1.000000,2.000000,3.000000",
                                       L"Pipes  0 0.0 0.000000,0.000000,0.000000"}));
  EXPECT_EQ(objdata::findField(records[0].fields, L"length"), 2);
}

TEST(RecordCursorTest, WalkSkipsForeignEntriesAndHonoursTheFilterExactly) {
  Drawing d;
  d.addForeign(d.entity, L"ACAD_FIRST");
  d.append(d.entity, pipe(L"P1", 1, 1.0, point(0, 0, 0)));
  d.addForeign(d.entity, L"ACAD_BETWEEN");
  d.append(d.entity, well(7.0));
  d.append(d.entity, pipe(L"P2", 2, 2.0, point(0, 0, 0)));

  const std::wstring p1 = L"Pipes P1 1 1.0 0.000000,0.000000,0.000000";
  const std::wstring p2 = L"Pipes P2 2 2.0 0.000000,0.000000,0.000000";
  struct Case {
    std::optional<std::wstring> filter;
    std::vector<std::wstring> expected;
  };
  for (const Case& c : std::vector<Case>{{std::nullopt, {p1, p2, L"Wells 7.0"}},
                                         {L"Pipes", {p1, p2}},
                                         {L"Wells", {L"Wells 7.0"}},
                                         {L"wells", {}},
                                         {L"ACAD_BETWEEN", {}}}) {
    SCOPED_TRACE(c.filter ? std::string(c.filter->begin(), c.filter->end()) : "no filter");
    EXPECT_EQ(describe(d.walk(d.entity, c.filter)), c.expected);
  }
}

TEST(RecordCursorTest, OpenAndFindReportWhatIsMissing) {
  Drawing d;
  host::ObjectId bare = d.host.addEntity(L"AcDbLine");
  host::ObjectId foreign_only = d.host.addEntity(L"AcDbLine");
  d.addForeign(foreign_only, L"ACAD_ONLY");
  host::ObjectId erased = d.host.addEntity(L"AcDbLine");
  ASSERT_TRUE(d.db.erase(erased));
  struct Case {
    host::ObjectId entity;
    int status;
  };
  for (const Case& c : std::vector<Case>{{bare, objdata::kStatusNothing},
                                         {foreign_only, objdata::kStatusNothing},
                                         {erased, objdata::kStatusEntityNotOpened}}) {
    objdata::RecordCursor cursor;
    EXPECT_EQ(objdata::openCursor(d.tables, cursor, c.entity), c.status);
    EXPECT_TRUE(objdata::cursorDone(cursor));
  }
  TableRecord record = well(1.0);
  EXPECT_EQ(objdata::appendRecord(d.tables, *d.tables.find(L"Wells"), record, erased),
            objdata::kStatusEntityNotOpened);
  // A table missing when first asked for is found once stored.
  EXPECT_EQ(d.tables.find(L"Later"), nullptr);
  objdata::ensureStoredTable(d.db, d.dictionary, L"Later", {{L"N", ValueType::kInteger}});
  ASSERT_NE(d.tables.find(L"LATER"), nullptr);
  EXPECT_EQ(d.tables.find(L"later")->name, L"Later");
}

TEST(RecordCursorTest, ShortContainerGivesShorterRecordAndEndsIt) {
  Drawing d;
  d.append(d.entity, pipe(L"P1", 1, 1.0, point(0, 0, 0)));
  ResBufChain values = d.values(d.entity, L"Pipes");
  values.push_back(ResBuf::text(L"P2"));
  values.push_back(ResBuf{70, std::wstring(L"7")});  // unknown code: field left unset
  ASSERT_TRUE(d.db.writeXrecord(d.container(d.entity, L"Pipes"), values));

  TableRecord record;
  objdata::RecordCursor cursor = d.first(record);
  EXPECT_EQ(record.fields.size(), 4u);
  EXPECT_FALSE(cursor.at_end);
  objdata::nextRecord(d.tables, cursor);
  ASSERT_EQ(objdata::readRecord(d.tables, cursor, record), objdata::kStatusOk);
  ASSERT_EQ(record.fields.size(), 2u);
  EXPECT_EQ(record.fields[0].value.text, L"P2");
  EXPECT_EQ(record.fields[1].name, L"DN");
  EXPECT_EQ(record.fields[1].value.type, ValueType::kNone);
  EXPECT_TRUE(cursor.at_end);
  objdata::nextRecord(d.tables, cursor);
  EXPECT_TRUE(objdata::cursorDone(cursor));
}

// Update writes a point's y from z, as the drawing format does.
TEST(RecordCursorTest, UpdateRewritesInPlace) {
  Drawing d;
  d.append(d.entity, pipe(L"P1", 1, 1.5, point(0, 0, 0)));
  d.append(d.entity, pipe(L"P2", 2, 2.75, point(1, 2, 3)));
  TableRecord record;
  objdata::RecordCursor cursor = d.first(record);
  objdata::nextRecord(d.tables, cursor);
  ASSERT_EQ(objdata::updateRecord(d.tables, cursor, pipe(L"Q2", 20, 2.75, point(1, 2, 3))),
            objdata::kStatusOk);
  ResBufChain expected = pipeValues(L"P1", 1, 1.0, {0, 0, 0});
  ResBufChain second = pipeValues(L"Q2", 20, 2.75, {1, 3, 3});
  expected.insert(expected.end(), second.begin(), second.end());
  EXPECT_EQ(d.values(d.entity, L"Pipes"), expected);

  // Reading through the same cursor sees the write.
  ASSERT_EQ(objdata::readRecord(d.tables, cursor, record), objdata::kStatusOk);
  EXPECT_EQ(record.fields[2].value.real, 2.75);
  EXPECT_TRUE(cursor.at_end);
}

// The delete-and-read-again walk that removes an entity's classification: each delete moves
// the next record to the cursor, and the last of a table takes its container along, and the
// extension dictionary too unless another application keeps an entry there.
TEST(RecordCursorTest, DeleteThenReadAgainRemovesEveryRecord) {
  for (bool foreign : {true, false}) {
    SCOPED_TRACE(foreign ? "with a foreign entry" : "alone");
    Drawing d;
    d.append(d.entity, pipe(L"P1", 1, 1.0, point(0, 0, 0)));
    d.append(d.entity, well(1.0));
    if (foreign) d.addForeign(d.entity, L"ACAD_KEEP");
    d.append(d.entity, pipe(L"P2", 2, 2.0, point(0, 0, 0)));
    d.append(d.entity, well(2.0));
    d.append(d.entity, well(3.0));
    const host::ObjectId containers[] = {d.container(d.entity, L"Pipes"),
                                         d.container(d.entity, L"Wells")};

    objdata::RecordCursor cursor;
    std::vector<TableRecord> deleted;
    ASSERT_EQ(objdata::openCursor(d.tables, cursor, d.entity), objdata::kStatusOk);
    while (!objdata::cursorDone(cursor) && deleted.size() < 10) {
      ASSERT_EQ(objdata::readRecord(d.tables, cursor, deleted.emplace_back()), objdata::kStatusOk);
      EXPECT_EQ(objdata::deleteRecord(d.tables, cursor), objdata::kStatusOk);
    }
    EXPECT_EQ(describe(deleted),
              (std::vector<std::wstring>{L"Pipes P1 1 1.0 0.000000,0.000000,0.000000",
                                         L"Pipes P2 2 2.0 0.000000,0.000000,0.000000", L"Wells 1.0",
                                         L"Wells 2.0", L"Wells 3.0"}));
    for (host::ObjectId container : containers) EXPECT_FALSE(d.db.isValid(container));
    host::ObjectId dict = d.db.extensionDictionary(d.entity).value();
    ASSERT_EQ(dict.isNull(), !foreign);
    if (foreign) {
      auto entries = d.db.dictionaryEntries(dict).value();
      ASSERT_EQ(entries.size(), 1u);
      EXPECT_EQ(entries[0].first, L"ACAD_KEEP");
    }
  }
}

}  // namespace
