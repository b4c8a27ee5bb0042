#include "dxf/sort_entities.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "dxf/blocks.h"
#include "dxf/dictionary.h"
#include "dxf/entity_factory.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/record_edit.h"
#include "dxf/sample_drawing.h"

namespace dxf {
namespace {

// The small sample with model-space lines A..E, made in that order (so with rising handles),
// and one line in the block Door.
struct Fixture {
  Document doc;
  std::map<char, RecordId> lines;
  RecordId in_block = kNoRecord;
  RecordId model = kNoRecord;

  Fixture() : doc(sample::parse(sample::small())) {
    for (char name = 'A'; name <= 'E'; ++name) {
      lines[name] = addLine(doc, {}, {double(name), 0, 0}, {double(name), 1, 0}).value();
    }
    in_block = addLine(doc, {L"0", std::nullopt, L"Door"}, {0, 0, 0}, {1, 1, 0}).value();
    model = findBlockRecord(doc, L"*Model_Space");
  }

  std::vector<RecordId> ids(std::string_view names) {
    std::vector<RecordId> out;
    for (char c : names) out.push_back(lines.at(c));
    return out;
  }

  // The draw order as letters, read from `from` (this drawing or a reparsed copy).
  std::string order(const Document& from) {
    std::string out;
    for (RecordId id : modelSpaceDrawOrder(from)) {
      for (const auto& [name, line] : lines) {
        if (doc.record(line).handle == from.record(id).handle) out.push_back(name);
      }
    }
    return out;
  }
};

TEST(SortEntitiesTest, TableIsCreatedOnceInTheBlockRecordsExtensionDictionary) {
  Fixture f;
  EXPECT_EQ(findSortEntsTable(f.doc, f.model), kNoRecord);
  auto table = ensureSortEntsTable(f.doc, f.model);
  ASSERT_TRUE(table.isOk()) << table.status().message();
  EXPECT_EQ(ensureSortEntsTable(f.doc, f.model).value(), *table);

  Document again = sample::parse(f.doc.serialize());
  RecordId model = findBlockRecord(again, L"*Model_Space");
  RecordId found = findSortEntsTable(again, model);
  ASSERT_NE(found, kNoRecord);
  RecordId xdict = again.byHandle(extensionDictionaryOf(again, model));
  ASSERT_NE(xdict, kNoRecord);
  std::vector<DictionaryEntry> entries = dictionaryEntries(again, xdict);
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].key, L"ACAD_SORTENTS");
  EXPECT_TRUE(entries[0].hard_owner);
  EXPECT_EQ(ownerOf(again, found), again.record(xdict).handle);
  // The sorted block record follows the subclass marker.
  auto tags = again.tags(found);
  EXPECT_EQ(again.text(tags[tags.size() - 2]), "AcDbSortentsTable");
  EXPECT_EQ(again.text(tags.back()), "1F");
  EXPECT_TRUE(sortEntries(again, found).empty());

  EXPECT_EQ(ensureSortEntsTable(f.doc, f.lines['A']).status().code(), base::Code::kInvalid);
}

TEST(SortEntitiesTest, ReorderedEntitiesTradeSortHandlesAndOthersStay) {
  struct Case {
    std::string setup, reorder, expected;
  };
  const Case cases[] = {
      {"", "", "ABCDE"},     {"", "ECA", "EBCDA"},   {"", "BA", "BACDE"},
      {"", "C", "ABCDE"},    {"EDCBA", "", "EDCBA"}, {"EDCBA", "BD", "EBCDA"},
      {"BA", "AB", "ABCDE"}, {"DB", "EA", "EDCBA"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.setup + " then " + c.reorder);
    Fixture f;
    RecordId table = ensureSortEntsTable(f.doc, f.model).value();
    ASSERT_TRUE(setRelativeDrawOrder(f.doc, table, f.ids(c.setup)).isOk());
    ASSERT_TRUE(setRelativeDrawOrder(f.doc, table, f.ids(c.reorder)).isOk());
    EXPECT_EQ(f.order(f.doc), c.expected);
    EXPECT_EQ(f.order(sample::parse(f.doc.serialize())), c.expected);
    // Each entity is listed at most once.
    std::map<Handle, int> listed;
    for (const SortEntry& e : sortEntries(f.doc, table)) EXPECT_EQ(++listed[e.entity], 1);
  }
}

TEST(SortEntitiesTest, SortHandleZeroDrawsLastAndIsKeptAsZero) {
  Fixture f;
  RecordId table = ensureSortEntsTable(f.doc, f.model).value();
  // An entry as another program may write it.
  RecordEdit edit(f.doc, table);
  edit.insert(edit.tags().size(), 331, formatHandle(f.doc.record(f.lines['A']).handle));
  edit.insert(edit.tags().size(), 5, "0");
  edit.commit();
  EXPECT_EQ(f.order(f.doc), "BCDEA");
  ASSERT_TRUE(setRelativeDrawOrder(f.doc, table, f.ids("AB")).isOk());
  EXPECT_EQ(f.order(f.doc), "ACDEB");
  Handle b = f.doc.record(f.lines['B']).handle;
  std::vector<SortEntry> entries = sortEntries(f.doc, table);
  auto entry = std::find_if(entries.begin(), entries.end(),
                            [&](const SortEntry& e) { return e.entity == b; });
  ASSERT_NE(entry, entries.end());
  EXPECT_EQ(entry->sort, 0u);
}

TEST(SortEntitiesTest, BadReordersChangeNothing) {
  Fixture f;
  RecordId table = ensureSortEntsTable(f.doc, f.model).value();
  ASSERT_TRUE(setRelativeDrawOrder(f.doc, table, f.ids("CA")).isOk());
  RecordId erased = f.lines['E'];
  eraseObject(f.doc, erased);
  std::string before = f.doc.serialize();
  const std::vector<std::pair<const char*, std::vector<RecordId>>> cases = {
      {"listed twice", {f.lines['A'], f.lines['B'], f.lines['A']}},
      {"in another block", {f.lines['A'], f.in_block}},
      {"erased", {f.lines['A'], erased}},
  };
  for (const auto& [name, ids] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(setRelativeDrawOrder(f.doc, table, ids).code(), base::Code::kInvalid);
    EXPECT_EQ(f.doc.serialize(), before);
  }
  EXPECT_EQ(setRelativeDrawOrder(f.doc, f.lines['A'], f.ids("AB")).code(), base::Code::kInvalid);
  EXPECT_EQ(f.order(f.doc), "CBAD");
}

}  // namespace
}  // namespace dxf
