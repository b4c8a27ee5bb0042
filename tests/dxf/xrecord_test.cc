#include "dxf/xrecord.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "dxf/blocks.h"
#include "dxf/dictionary.h"
#include "dxf/document.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/sample_drawing.h"
#include "dxf/sort_entities.h"

namespace dxf {
namespace {

TypedValue raw(int code, std::string text) {
  TypedValue v;
  v.code = static_cast<int16_t>(code);
  v.raw = std::move(text);
  return v;
}

// Data tags as another program may have written them, and the values they read as.
TEST(XrecordTest, DataTagsReadAsTypedValuesOrAsWritten) {
  struct Case {
    const char* version;
    std::vector<std::pair<int, std::string>> data;
    std::vector<TypedValue> values;
  };
  const Case cases[] = {
      {"AC1027", {{10, "1"}, {20, "2"}, {30, "3"}}, {TypedValue::ofPoint(1, 2, 3)}},
      {"AC1027",
       {{10, "1"}, {20, "2"}, {40, "2.5"}},
       {raw(10, "1"), raw(20, "2"), TypedValue::ofReal(2.5)}},
      {"AC1027", {{10, "x"}, {20, "2"}, {30, "3"}}, {raw(10, "x"), raw(20, "2"), raw(30, "3")}},
      {"AC1027",
       {{10, "1"}, {10, "4"}, {20, "5"}, {30, "6"}},
       {raw(10, "1"), TypedValue::ofPoint(4, 5, 6)}},
      {"AC1027", {{10, "1"}, {20, "2"}}, {raw(10, "1"), raw(20, "2")}},
      {"AC1027",
       {{90, "12"}, {1, "abc"}, {70, "5"}, {90, "x"}},
       {TypedValue::ofInteger(12), TypedValue::ofText(L"abc"), raw(70, "5"), raw(90, "x")}},
      // The cloning flag is not data; before R2000 there is none, and a 280 is data.
      {"AC1027", {{280, "3"}}, {raw(280, "3")}},
      {"AC1014", {{280, "3"}, {40, "1"}}, {raw(280, "3"), TypedValue::ofReal(1)}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.version) + " case " + std::to_string(&c - cases));
    auto doc = Document::parse(sample::withVersion(sample::drawing(), c.version), "sample.dxf");
    ASSERT_TRUE(doc.isOk()) << doc.status().message();
    std::vector<Tag> data;
    for (const auto& [code, value] : c.data) data.push_back(doc->makeTag(code, value));
    auto xdict = ensureExtensionDictionary(*doc, doc->byHandle(0x100));
    ASSERT_TRUE(xdict.isOk());
    auto xrecord = createXrecord(*doc, *xdict, L"DATA", data);
    ASSERT_TRUE(xrecord.isOk());
    EXPECT_EQ(readXrecord(*doc, *xrecord), c.values);
  }
}

// Records are kept in chunks of a megabyte; a longer one (a draw order table of a large
// drawing) must read back whole, value by value, before and after a save.
TEST(XrecordTest, DataLongerThanAStoreChunkReadsBack) {
  auto doc = Document::parse(sample::drawing(), "sample.dxf");
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  std::vector<TypedValue> values;
  for (int i = 0; i < 200000; ++i) values.push_back(TypedValue::ofInteger(1000000 + i));
  auto xdict = ensureExtensionDictionary(*doc, doc->byHandle(0x100));
  ASSERT_TRUE(xdict.isOk());
  auto xrecord = createXrecord(*doc, *xdict, L"LONG");
  ASSERT_TRUE(xrecord.isOk());
  writeXrecord(*doc, *xrecord, values);
  EXPECT_EQ(readXrecord(*doc, *xrecord), values);
  auto again = Document::parse(doc->serialize(), "written.dxf");
  ASSERT_TRUE(again.isOk()) << again.status().message();
  EXPECT_EQ(readXrecord(*again, again->byHandle(doc->record(*xrecord).handle)), values);
}

// An extension dictionary and XRECORD attached to an entity as one pair read, change, go and
// are written as the same two objects made one at a time do, whatever is done to them.
TEST(XrecordTest, AttachedPairsBehaveAsObjectsMadeApart) {
  struct Ids {
    RecordId entity, dict, xrecord;
  };
  using Change = void (*)(Document&, const Ids&);
  const std::pair<const char*, Change> changes[] = {
      {"none", [](Document&, const Ids&) {}},
      {"data rewritten",
       [](Document& doc, const Ids& ids) {
         writeXrecord(doc, ids.xrecord, {TypedValue::ofText(L"new"), TypedValue::ofReal(2)});
       }},
      {"second entry",
       [](Document& doc, const Ids& ids) {
         ASSERT_TRUE(createXrecord(doc, ids.dict, L"SECOND").isOk());
       }},
      {"entry removed",
       [](Document& doc, const Ids& ids) { EXPECT_TRUE(dictionaryRemove(doc, ids.dict, L"ROW")); }},
      {"xrecord erased, dictionary released",
       [](Document& doc, const Ids& ids) {
         EXPECT_FALSE(releaseExtensionDictionary(doc, ids.entity));
         eraseObject(doc, ids.xrecord);
         EXPECT_TRUE(releaseExtensionDictionary(doc, ids.entity));
       }},
      {"dictionary erased", [](Document& doc, const Ids& ids) { eraseObject(doc, ids.dict); }},
      {"entity erased", [](Document& doc, const Ids& ids) { eraseObject(doc, ids.entity); }},
      {"rewritten, then dictionary erased",
       [](Document& doc, const Ids& ids) {
         writeXrecord(doc, ids.xrecord, {});
         eraseObject(doc, ids.dict);
       }},
  };
  const std::vector<TypedValue> values = {TypedValue::ofInteger(7), TypedValue::ofText(L"ä")};
  // The LINE's handle as the sample has it, and one beyond 32 bits: a pair keeps the handle
  // of its owner in 32 bits until its tags are read, and encodes them at once otherwise.
  for (const Handle line : {Handle{0x100}, Handle{0x1000000100}})
    for (const auto& [name, change] : changes) {
      SCOPED_TRACE(std::string(name) + ", owner " + formatHandle(line));
      std::string drawing = sample::drawing();
      const size_t line_at = drawing.find("\n  5\n100\n");
      ASSERT_NE(line_at, std::string::npos);
      drawing.replace(line_at, 9, "\n  5\n" + formatHandle(line) + "\n");
      std::string written[2];
      Handle handles[2] = {0, 0};
      std::vector<std::vector<std::string>> objects[2];  // each object's tags as written
      for (bool attached : {false, true}) {
        Document doc = sample::parse(drawing);
        Ids ids{doc.byHandle(line), kNoRecord, kNoRecord};
        // A pair attached before, with the same values: it must come through every change
        // to the one under test as it was (the sorted files below compare it).
        ASSERT_TRUE(attachXrecord(doc, doc.byHandle(0x103), L"ROW", values).isOk());
        auto xrecord =
            attached ? attachXrecord(doc, ids.entity, L"ROW", values)
                     : createXrecord(doc, *ensureExtensionDictionary(doc, ids.entity), L"ROW");
        ASSERT_TRUE(xrecord.isOk());
        if (!attached) writeXrecord(doc, *xrecord, values);
        ASSERT_EQ(Document::isAttached(*xrecord), attached);
        ids.xrecord = *xrecord;
        ids.dict = doc.byHandle(doc.record(ids.entity).xdict);
        EXPECT_EQ(readXrecord(doc, ids.xrecord), values);
        EXPECT_EQ(ownerOf(doc, ids.xrecord), doc.record(ids.dict).handle);
        handles[attached] = doc.record(ids.xrecord).handle;
        change(doc, ids);
        const bool erased[] = {!doc.exists(ids.entity), !doc.exists(ids.dict),
                               !doc.exists(ids.xrecord)};
        written[attached] = doc.serialize();
        Document again = sample::parse(written[attached]);
        for (int i = 0; i < 3; ++i) {
          Handle h = i == 0 ? line : handles[attached] + (i == 1 ? -1 : 0);
          RecordId id = again.byHandle(h);
          EXPECT_EQ(id == kNoRecord, erased[i]) << "object " << i;
          objects[attached].emplace_back();
          if (id == kNoRecord) continue;
          for (const Tag& tag : again.scan(id)) {
            objects[attached].back().push_back(std::to_string(tag.code) + " " +
                                               std::string(again.text(tag)));
          }
        }
      }
      EXPECT_EQ(handles[0], handles[1]);
      EXPECT_EQ(objects[0], objects[1]);
      // The same objects; attached ones are written at the end of the objects.
      auto sorted = [](const std::string& text) {
        std::vector<std::string> lines;
        for (size_t at = 0, end; at < text.size(); at = end + 1) {
          end = std::min(text.find('\n', at), text.size());
          lines.push_back(text.substr(at, end - at));
        }
        std::sort(lines.begin(), lines.end());
        return lines;
      };
      EXPECT_EQ(sorted(written[0]), sorted(written[1]));
    }
}

// Pairs attached one after another, each unlike the one before in one thing only, keep
// their own key and values (pairs made alike share what they hold in common).
TEST(XrecordTest, AttachedPairsKeepTheirOwnKeyAndValues) {
  const std::vector<TypedValue> first = {TypedValue::ofText(L"a"), TypedValue::ofPoint(1, 2, 3),
                                         TypedValue::ofReal(1.5), TypedValue::ofInteger(7),
                                         raw(70, "5")};
  std::vector<std::pair<std::wstring, std::vector<TypedValue>>> pairs = {{L"K", first}};
  for (size_t i = 0; i < first.size(); ++i) {
    std::vector<TypedValue> values = first;
    values[i] = i == 0   ? TypedValue::ofText(L"b")
                : i == 1 ? TypedValue::ofPoint(1, 2, 4)
                : i == 2 ? TypedValue::ofReal(2.5)
                : i == 3 ? TypedValue::ofInteger(8)
                         : raw(70, "6");
    pairs.emplace_back(L"K", values);
    pairs.emplace_back(L"K", first);
  }
  pairs.emplace_back(L"L", first);
  Document doc = sample::parse(sample::drawing());
  const std::vector<RecordId> entities = modelSpaceEntities(doc);
  ASSERT_GE(entities.size(), pairs.size());
  for (size_t i = 0; i < pairs.size(); ++i) {
    ASSERT_TRUE(attachXrecord(doc, entities[i], pairs[i].first, pairs[i].second).isOk());
  }
  Document again = sample::parse(doc.serialize());
  for (const Document* d : {&doc, &again}) {
    for (size_t i = 0; i < pairs.size(); ++i) {
      SCOPED_TRACE("pair " + std::to_string(i));
      const RecordId dict = d->byHandle(d->record(entities[i]).xdict);
      const std::vector<DictionaryEntry> entries = dictionaryEntries(*d, dict);
      ASSERT_EQ(entries.size(), 1u);
      EXPECT_EQ(entries[0].key, pairs[i].first);
      EXPECT_EQ(readXrecord(*d, d->byHandle(entries[0].value)), pairs[i].second);
    }
  }
}

// An erased extension dictionary takes the XRECORDs it holds with it, one or several, and
// its object no longer names it: in the drawing, in one read from what it wrote, and when
// the caller read its entries just before.
TEST(XrecordTest, AnErasedDictionaryTakesWhatItHolds) {
  for (int count : {1, 2}) {
    for (bool reloaded : {false, true}) {
      for (bool entries_read : {false, true}) {
        SCOPED_TRACE(std::to_string(count) + " XRECORDs" + (reloaded ? ", reloaded" : "") +
                     (entries_read ? ", entries read" : ""));
        Document doc = sample::parse(sample::drawing());
        auto dict = ensureExtensionDictionary(doc, doc.byHandle(0x100));
        ASSERT_TRUE(dict.isOk());
        std::vector<Handle> held;
        for (int i = 0; i < count; ++i) {
          auto xrecord = createXrecord(doc, *dict, L"K" + std::to_wstring(i));
          ASSERT_TRUE(xrecord.isOk());
          held.push_back(doc.record(*xrecord).handle);
        }
        if (reloaded) doc = sample::parse(doc.serialize());
        const RecordId line = doc.byHandle(0x100);
        const RecordId erased = doc.byHandle(doc.record(line).xdict);
        if (entries_read) {
          eraseObject(doc, erased, dictionaryEntries(doc, erased));
        } else {
          eraseObject(doc, erased);
        }
        EXPECT_EQ(doc.record(line).xdict, 0u);
        for (Handle h : held) EXPECT_EQ(doc.byHandle(h), kNoRecord);
      }
    }
  }
}

// A record given an extension dictionary names it just after its handle and reactors, as
// CAD programs write it, and is as it was when the dictionary goes: whether the record is
// its file bytes, was changed before, or was read with the dictionary from a file.
TEST(XrecordTest, ExtensionGroupFollowsTheHandleAndTheReactors) {
  for (const std::string before : {"", "102 {ACAD_REACTORS|330 C|102 }|"}) {
    for (bool changed : {false, true}) {
      SCOPED_TRACE(before + (changed ? " changed" : ""));
      std::string compact(sample::kSmall);
      compact.replace(compact.find("0 LINE|5 40|"), 12, "0 LINE|5 40|" + before);
      Document doc = sample::parse(sample::pipes(compact));
      const RecordId id = doc.byHandle(0x40);
      if (changed) {
        const TagList old = doc.tags(id);
        std::vector<Tag> tags(old.begin(), old.end());
        tags.push_back(doc.makeTag(62, "1"));
        doc.setTags(id, tags);
      }
      auto lineTags = [](const Document& d) {
        std::string got;
        for (const Tag& tag : d.scan(d.byHandle(0x40))) {
          got += std::to_string(tag.code) + " " + std::string(d.text(tag)) + "|";
        }
        return got;
      };
      const std::string unattached = lineTags(doc);
      ASSERT_TRUE(attachXrecord(doc, id, L"K", {TypedValue::ofInteger(1)}).isOk());
      const std::string expected = "0 LINE|5 40|" + before + "102 {ACAD_XDICTIONARY|360 " +
                                   formatHandle(doc.record(id).xdict) +
                                   "|102 }|330 1F|100 AcDbEntity|8 0|";
      EXPECT_EQ(lineTags(doc).substr(0, expected.size()), expected);
      EXPECT_EQ(doc.value(id, 8), "0");
      // Taken out again, in the drawing and in the one read from what it wrote.
      Document again = sample::parse(doc.serialize());
      EXPECT_EQ(lineTags(again), lineTags(doc));
      for (Document* d : {&doc, &again}) {
        const RecordId line = d->byHandle(0x40);
        eraseObject(*d, d->byHandle(d->record(line).xdict));
        EXPECT_EQ(d->record(line).xdict, 0u);
        EXPECT_EQ(lineTags(*d), unattached);
        EXPECT_EQ(lineTags(sample::parse(d->serialize())), unattached);
      }
    }
  }
}

// An R12 drawing cannot hold objects: each way of asking for one is a clear error and
// changes nothing.
TEST(XrecordTest, R12DrawingsRefuseObjectsAndStayAsTheyWere) {
  const std::string bytes = sample::r12Drawing();
  Document doc = sample::parse(bytes);
  ASSERT_FALSE(modelSpaceEntities(doc).empty());
  RecordId line = modelSpaceEntities(doc).front();
  const base::Status refusals[] = {
      ensureExtensionDictionary(doc, line).status(),
      createXrecord(doc, line, L"TAXOR").status(),
      appendObject(doc, {doc.makeTag(0, "XRECORD"), doc.makeTag(100, "AcDbXrecord")}).status(),
      ensureSortEntsTable(doc, findBlockRecord(doc, L"*Model_Space")).status(),
  };
  for (const base::Status& status : refusals) {
    EXPECT_EQ(status.code(), base::Code::kUnsupported);
    EXPECT_NE(status.message().find("R2000 or later"), std::string::npos) << status.message();
  }
  EXPECT_TRUE(doc.serialize() == bytes);
}

}  // namespace
}  // namespace dxf
