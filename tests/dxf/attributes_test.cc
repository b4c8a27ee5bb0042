// Attribute references brought in line with their block's definitions.
#include "dxf/attributes.h"

#include <gtest/gtest.h>

#include "dxf/blocks.h"
#include "dxf/document.h"
#include "dxf/objects.h"
#include "dxf/record_edit.h"
#include "dxf/sample_drawing.h"
#include "test_paths.h"

namespace {

dxf::Document exampleDrawing() {
  return sample::parse(
      testing_paths::readFile(std::string(TAXOR_SOURCE_DIR) + "/examples/site.dxf"), "site.dxf");
}

std::vector<dxf::RecordId> manholes(const dxf::Document& doc) {
  std::vector<dxf::RecordId> out;
  for (dxf::RecordId id : dxf::modelSpaceEntities(doc)) {
    if (doc.type(id) == "INSERT" && doc.value(id, 2) == "MANHOLE") out.push_back(id);
  }
  return out;
}

// The ATTRIB tags ("ID=S01") of every MANHOLE insert, in drawing order.
std::vector<std::vector<std::string>> manholeAttributes(const dxf::Document& doc) {
  std::vector<std::vector<std::string>> out;
  for (dxf::RecordId id : manholes(doc)) {
    out.emplace_back();
    for (dxf::RecordId a = doc.next(id); a != dxf::kNoRecord && doc.type(a) == "ATTRIB";
         a = doc.next(a)) {
      out.back().push_back(std::string(doc.value(a, 2)) + "=" + std::string(doc.value(a, 1)));
    }
  }
  return out;
}

dxf::RecordId findAttdef(const dxf::Document& doc, std::string_view tag) {
  for (dxf::RecordId id : dxf::blockEntities(doc, dxf::findBlock(doc, L"MANHOLE"))) {
    if (doc.type(id) == "ATTDEF" && doc.value(id, 2) == tag) return id;
  }
  return dxf::kNoRecord;
}

TEST(AttributesTest, InsertsFollowTheirDefinitions) {
  dxf::Document doc = exampleDrawing();
  auto before = manholeAttributes(doc);
  ASSERT_EQ(before.size(), 11u);
  EXPECT_EQ(before[0], (std::vector<std::string>{"ID=S01", "DEPTH=2.00"}));

  // In sync already: nothing changes, not a byte.
  std::string original = doc.serialize();
  ASSERT_EQ(dxf::synchronizeAttributes(doc, L"manhole").value(), 0);
  EXPECT_EQ(doc.serialize(), original);

  // The first insert turned a quarter: its new attributes turn with it.
  dxf::RecordId turned = manholes(doc).front();
  {
    dxf::RecordEdit edit(doc, turned);
    int at = edit.find(50);
    if (at < 0) {
      edit.insert(static_cast<size_t>(edit.find(30)) + 1, 50, "90");
    } else {
      edit.setText(static_cast<size_t>(at), "90");
    }
    edit.commit();
  }
  std::string turned_handle(doc.value(turned, 5));

  // DEPTH goes; a new MATERIAL definition comes, before ID in the block.
  dxf::eraseObject(doc, findAttdef(doc, "DEPTH"));
  dxf::RecordId id_def = findAttdef(doc, "ID");
  dxf::TagList list = doc.tags(id_def);
  dxf::RecordId material = doc.newRecord(std::vector<dxf::Tag>(list.begin(), list.end()));
  {
    dxf::RecordEdit edit(doc, material);
    edit.setText(static_cast<size_t>(edit.find(5)), "7777");
    edit.setText(static_cast<size_t>(edit.find(2)), "MATERIAL");
    edit.setText(static_cast<size_t>(edit.find(1)), "concrete");
    edit.commit();
  }
  doc.insertBefore(id_def, material);

  ASSERT_EQ(dxf::synchronizeAttributes(doc, L"MANHOLE").value(), 11);
  auto after = manholeAttributes(doc);
  ASSERT_EQ(after.size(), 11u);
  EXPECT_EQ(after[0], (std::vector<std::string>{"MATERIAL=concrete", "ID=S01"}));
  EXPECT_EQ(after[10], (std::vector<std::string>{"MATERIAL=concrete", "ID=S11"}));

  // The result reads back, new attributes placed where their insert puts them.
  dxf::Document again = sample::parse(doc.serialize(), "synced.dxf");
  EXPECT_EQ(manholeAttributes(again), after);
  for (dxf::RecordId id : manholes(again)) {
    dxf::RecordId first = again.next(id);
    if (again.value(id, 5) == turned_handle) {
      EXPECT_NEAR(again.realValue(first, 20, 0), again.realValue(id, 20, 0) + 0.8, 1e-9);
      EXPECT_NEAR(again.realValue(first, 50, 0), 90, 1e-9);
    } else {
      EXPECT_NEAR(again.realValue(first, 10, 0), again.realValue(id, 10, 0) + 0.8, 1e-9);
    }
    EXPECT_EQ(again.value(first, 330), again.value(id, 5));
  }
}

TEST(AttributesTest, RemovingEveryDefinitionRemovesTheSequence) {
  dxf::Document doc = exampleDrawing();
  EXPECT_EQ(dxf::synchronizeAttributes(doc, L"NO_SUCH_BLOCK").status().code(),
            base::Code::kNotFound);
  dxf::eraseObject(doc, findAttdef(doc, "DEPTH"));
  dxf::eraseObject(doc, findAttdef(doc, "ID"));
  ASSERT_EQ(dxf::synchronizeAttributes(doc, L"MANHOLE").value(), 11);
  dxf::Document again = sample::parse(doc.serialize(), "synced.dxf");
  for (dxf::RecordId id : manholes(again)) {
    EXPECT_FALSE(again.find(id, 66));
    EXPECT_NE(again.type(again.next(id)), "SEQEND");
    EXPECT_NE(again.type(again.next(id)), "ATTRIB");
  }
}

}  // namespace
