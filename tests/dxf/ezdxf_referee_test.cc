// Real drawings changed by this library are opened by an independent reader, ezdxf, which
// must find every change where it belongs and no new problem (tests/dxf/referee.py).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "base/utf.h"
#include "dxf/blocks.h"
#include "dxf/dictionary.h"
#include "dxf/document.h"
#include "dxf/entity_factory.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/sort_entities.h"
#include "dxf/symbol_tables.h"
#include "dxf/xrecord.h"
#include "test_paths.h"

namespace dxf {
namespace {

namespace fs = std::filesystem;

// --- A little JSON, enough for the expectations file.
std::string json(std::wstring_view text) {
  std::string out = "\"";
  for (wchar_t c : text) {
    if (c == L'"' || c == L'\\') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c >= 0x20 && c < 0x7F) {
      out += static_cast<char>(c);
    } else {
      // JSON escapes UTF-16 units: characters beyond the BMP become surrogate pairs.
      auto escape = [&out](unsigned unit) {
        char buf[16];
        std::snprintf(buf, sizeof buf, "\\u%04X", unit);
        out += buf;
      };
      unsigned cp = static_cast<unsigned>(c);
      if (cp > 0xFFFF) {
        escape(0xD800 + ((cp - 0x10000) >> 10));
        escape(0xDC00 + ((cp - 0x10000) & 0x3FF));
      } else {
        escape(cp);
      }
    }
  }
  return out + "\"";
}
std::string json(std::string_view ascii) { return json(base::fromUtf8(ascii)); }
std::string json(const char* ascii) { return json(std::string_view(ascii)); }
std::string json(double value) { return formatDouble(value); }
std::string json(int value) { return std::to_string(value); }
std::string json(const Point3& p) {
  return "[" + json(p.x) + "," + json(p.y) + "," + json(p.z) + "]";
}
std::string jsonList(const std::vector<std::string>& items) {
  std::string out = "[";
  for (size_t i = 0; i < items.size(); ++i) out += (i ? "," : "") + items[i];
  return out + "]";
}
// Members are "key", value pairs already rendered.
std::string jsonObject(const std::vector<std::pair<std::string, std::string>>& members) {
  std::string out = "{";
  for (size_t i = 0; i < members.size(); ++i) {
    out += (i ? "," : "") + json(members[i].first) + ":" + members[i].second;
  }
  return out + "}";
}

std::string handleOf(const Document& doc, RecordId id) {
  return formatHandle(doc.record(id).handle);
}

std::string jsonValues(const std::vector<TypedValue>& values) {
  std::vector<std::string> items;
  for (const TypedValue& v : values) {
    std::string value;
    switch (v.type) {
      case TypedValue::Type::kText:
        value = json(v.text);
        break;
      case TypedValue::Type::kPoint:
        value = json(Point3{v.xyz[0], v.xyz[1], v.xyz[2]});
        break;
      case TypedValue::Type::kReal:
        value = json(v.xyz[0]);
        break;
      case TypedValue::Type::kInteger:
        value = json(v.integer);
        break;
      case TypedValue::Type::kRaw:
        value = json(v.raw);
        break;
    }
    items.push_back("[" + std::to_string(v.code) + "," + value + "]");
  }
  return jsonList(items);
}

std::vector<TypedValue> sampleValues(int n) {
  return {TypedValue::ofText(L"TAXOR \x00E4\x00F6\x00FC \x1F600 #" + std::to_wstring(n)),
          TypedValue::ofReal(1.25 + n), TypedValue::ofInteger(42 + n),
          TypedValue::ofPoint(1, 2.5 + n, -3)};
}

constexpr const char* kPython = "/usr/bin/python3";

// Collects the changes made to one drawing and what the referee must find.
class Change {
 public:
  explicit Change(Document& doc) : doc_(doc) {}

  // Records a new entity and the values ezdxf must read from it ("#name": a derived value).
  void entity(const base::Result<RecordId>& id, std::string_view type, std::wstring_view block,
              std::vector<std::pair<std::string, std::string>> checks = {}) {
    ASSERT_TRUE(id.isOk()) << type << ": " << id.status().message();
    entities_.push_back(jsonObject({{"handle", json(handleOf(doc_, id.value()))},
                                    {"type", json(type)},
                                    {"layout", json(block.empty() ? L"*Model_Space" : block)},
                                    {"layer", json("0")},
                                    {"checks", jsonObject(checks)}}));
    ids_.push_back(id.value());
    if (block.empty()) model_ids_.push_back(id.value());
  }
  const std::vector<RecordId>& ids() const { return ids_; }
  const std::vector<RecordId>& modelIds() const { return model_ids_; }

  std::vector<std::pair<std::string, std::string>> members;
  std::vector<std::string> entities_;

 private:
  Document& doc_;
  std::vector<RecordId> ids_;
  std::vector<RecordId> model_ids_;
};

constexpr double kPi = 3.14159265358979323846;

// One entity of each type the factory makes (only those R12 knows in an R12 drawing), and
// a block with attribute definitions for the INSERT.
void addEntities(Document& doc, Change& change) {
  bool r12 = doc.isR12();
  CommonProps model;
  std::wstring block_name = L"TAXOR_BLOCK";
  CommonProps block{L"0", std::nullopt, block_name};
  ASSERT_TRUE(addBlock(doc, block_name, {1, 1, 0}).isOk());
  change.entity(addCircle(doc, block, {1, 1, 0}, 0.5), "CIRCLE", block_name,
                {{"center", json(Point3{1, 1, 0})}, {"radius", json(0.5)}});
  change.entity(addAttributeDefinition(doc, block, {L"ROOM", L"Room?", L"R-101", {2, 1, 0}}),
                "ATTDEF", block_name, {{"tag", json("ROOM")}, {"text", json("R-101")}});
  change.entity(addAttributeDefinition(doc, block, {L"AREA", L"Area?", L"12.5", {2, 2, 0}}),
                "ATTDEF", block_name, {{"tag", json("AREA")}});

  change.entity(addLine(doc, model, {0, 0, 0}, {10, 5, 0}), "LINE", L"",
                {{"start", json(Point3{0, 0, 0})}, {"end", json(Point3{10, 5, 0})}});
  change.entity(addLine(doc, {L"0", 1, L""}, {0, 1, 0}, {10, 6, 0}), "LINE", L"",
                {{"color", json(1)}});
  change.entity(addCircle(doc, model, {5, 5, 0}, 2.5), "CIRCLE", L"",
                {{"center", json(Point3{5, 5, 0})}, {"radius", json(2.5)}});
  change.entity(addArc(doc, model, {5, 5, 0}, 3, 10, 200), "ARC", L"",
                {{"radius", json(3.0)}, {"start_angle", json(10.0)}, {"end_angle", json(200.0)}});
  change.entity(addPoint(doc, model, {1, 2, 3}), "POINT", L"",
                {{"location", json(Point3{1, 2, 3})}});
  change.entity(addText(doc, model, {L"Taxor \x00E4 text", {1, 1, 0}, 2.5, 30}), "TEXT", L"",
                {{"text", json(L"Taxor \x00E4 text")},
                 {"insert", json(Point3{1, 1, 0})},
                 {"height", json(2.5)},
                 {"rotation", json(30.0)}});
  Point3 corners[] = {{0, 0, 0}, {4, 0, 1}, {4, 4, 2}};
  change.entity(add3dFace(doc, model, corners), "3DFACE", L"",
                {{"vtx1", json(corners[1])}, {"vtx3", json(corners[2])}});
  Point3 points[] = {{0, 0, 0}, {5, 0, 1}, {5, 5, 2}, {0, 5, 3}};
  change.entity(add3dPolyline(doc, model, points, true), "POLYLINE", L"",
                {{"#vertex_count", json(4)}, {"#polyline_3d", "true"}, {"#closed", "true"}});
  change.entity(addInsert(doc, model, {block_name, {20, 20, 0}, {2, 2, 2}, 90, true}), "INSERT",
                L"",
                {{"name", json(block_name)},
                 {"insert", json(Point3{20, 20, 0})},
                 {"xscale", json(2.0)},
                 {"rotation", json(90.0)},
                 {"#attribs", jsonObject({{"ROOM", json("R-101")}, {"AREA", json("12.5")}})}});
  if (r12) return;

  std::wstring long_text;
  for (int i = 0; i < 40; ++i) long_text += L"Line " + std::to_wstring(i) + L" \x00FC\\P";
  change.entity(
      addMText(doc, model, {long_text, {3, 3, 0}, 1.5, 40, 5, 45}), "MTEXT", L"",
      {{"#text", json(long_text)}, {"attachment_point", json(5)}, {"char_height", json(1.5)}});
  change.entity(
      addLwPolyline(doc, model, {{{0, 0}, {6, 0, 0.5}, {6, 6}, {0, 6, -1}}, true, 0.25, 1.5}),
      "LWPOLYLINE", L"",
      {{"#vertex_count", json(4)},
       {"#closed", "true"},
       {"#bulges", jsonList({json(0.0), json(0.5), json(0.0), json(-1.0)})},
       {"const_width", json(0.25)},
       {"elevation", json(1.5)}});
  change.entity(addEllipse(doc, model, {{20, 0, 0}, {4, 0, 0}, 0.5, 0, kPi}), "ELLIPSE", L"",
                {{"center", json(Point3{20, 0, 0})},
                 {"major_axis", json(Point3{4, 0, 0})},
                 {"ratio", json(0.5)},
                 {"end_param", json(kPi)}});
  change.entity(
      addSpline(doc, model, {3, {{0, 0, 0}, {1, 3, 0}, {3, 3, 0}, {5, 0, 0}, {7, 2, 0}}, {}}),
      "SPLINE", L"", {{"degree", json(3)}, {"#control_points", json(5)}, {"#knots", json(9)}});
  change.entity(addSpline(doc, model, {3, {}, {{0, 10, 0}, {2, 12, 0}, {4, 10, 0}, {6, 12, 0}}}),
                "SPLINE", L"", {{"#fit_points", json(4)}, {"#control_points", json(0)}});
  change.entity(addRay(doc, model, {1, 1, 0}, {0, 2, 0}), "RAY", L"",
                {{"start", json(Point3{1, 1, 0})}, {"unit_vector", json(Point3{0, 1, 0})}});
  change.entity(addXline(doc, model, {0, 0, 0}, {3, 4, 0}), "XLINE", L"",
                {{"unit_vector", json(Point3{0.6, 0.8, 0})}});
  change.entity(addHatch(doc, model, {{{30, 0}, {34, 0, 0.4}, {34, 4}, {30, 4}}}), "HATCH", L"",
                {{"pattern_name", json("SOLID")},
                 {"solid_fill", json(1)},
                 {"associative", json(0)},
                 {"#paths", json(1)}});
  HatchParams pattern{{{40, 0}, {44, 0}, {44, 4}}, L"ANSI31", 0, 1, {{45, 0, 0, -2.2, 2.2, {}}}};
  change.entity(
      addHatch(doc, model, pattern), "HATCH", L"",
      {{"pattern_name", json("ANSI31")}, {"solid_fill", json(0)}, {"#pattern_lines", json(1)}});
}

bool hasReactors(const Document& doc, RecordId id) {
  for (const Tag& tag : doc.tags(id)) {
    if (tag.code == 102 && doc.text(tag) == "{ACAD_REACTORS") return true;
  }
  return false;
}

// Changes `doc` as a classification run would and returns the expectations as JSON.
std::string changeDrawing(Document& doc) {
  Change change(doc);
  std::vector<RecordId> existing = modelSpaceEntities(doc);
  std::vector<RecordId> untouched;  // candidates for erasing
  std::vector<std::string> xrecords;
  if (!doc.isR12()) {
    for (RecordId id : existing) {
      if (doc.record(id).handle == 0) continue;
      if (xrecords.size() == 3) {
        untouched.push_back(id);
        continue;
      }
      auto xdict = ensureExtensionDictionary(doc, id);
      EXPECT_TRUE(xdict.isOk()) << xdict.status().message();
      if (!xdict) continue;
      auto xrecord = createXrecord(doc, *xdict, L"TAXOR");
      EXPECT_TRUE(xrecord.isOk()) << xrecord.status().message();
      if (!xrecord) continue;
      int n = static_cast<int>(xrecords.size());
      writeXrecord(doc, *xrecord, sampleValues(n));
      xrecords.push_back(jsonObject({{"owner", json(handleOf(doc, id))},
                                     {"key", json("TAXOR")},
                                     {"values", jsonValues(sampleValues(n))}}));
    }
    change.members.emplace_back("xrecords", jsonList(xrecords));

    RecordId root = namedObjectsDictionary(doc);
    EXPECT_NE(root, kNoRecord);
    auto dict = createDictionary(doc, root, L"TAXOR_TEST");
    EXPECT_TRUE(dict.isOk()) << dict.status().message();
    if (dict) {
      auto xrecord = createXrecord(doc, *dict, L"DATA");
      EXPECT_TRUE(xrecord.isOk());
      if (xrecord) writeXrecord(doc, *xrecord, sampleValues(7));
      change.members.emplace_back("dictionary",
                                  jsonObject({{"key", json("TAXOR_TEST")},
                                              {"xrecord", json("DATA")},
                                              {"values", jsonValues(sampleValues(7))}}));
    }
  } else {
    untouched = existing;
  }

  addEntities(doc, change);
  change.members.emplace_back("entities", jsonList(change.entities_));

  // Erase a few plain entities that nothing else refers to.
  std::vector<std::string> erased;
  for (RecordId id : untouched) {
    std::string_view type = doc.type(id);
    bool plain = type == "LINE" || type == "CIRCLE" || type == "ARC" || type == "TEXT" ||
                 type == "LWPOLYLINE" || type == "POLYLINE" || type == "INSERT" ||
                 type == "POINT" || type == "MTEXT";
    if (!plain || hasReactors(doc, id) || doc.record(id).handle == 0) continue;
    erased.push_back(json(handleOf(doc, id)));
    eraseObject(doc, id);
    if (erased.size() == 3) break;
  }
  change.members.emplace_back("erased", jsonList(erased));

  if (!doc.isR12()) {
    auto table = ensureSortEntsTable(doc, modelSpaceBlockRecord(doc));
    EXPECT_TRUE(table.isOk()) << table.status().message();
    if (table) {
      // Three new entities in reverse order of creation, then an existing one above them.
      const std::vector<RecordId>& added = change.modelIds();
      EXPECT_GE(added.size(), 3u);
      if (added.size() < 3) return jsonObject(change.members);
      std::vector<RecordId> order = {added.back(), added[added.size() - 3], added.front()};
      for (RecordId id : modelSpaceEntities(doc)) {
        if (doc.record(id).handle != 0 &&
            std::find(change.ids().begin(), change.ids().end(), id) == change.ids().end()) {
          order.push_back(id);
          break;
        }
      }
      EXPECT_TRUE(setRelativeDrawOrder(doc, *table, order).isOk());
      std::vector<std::string> relative, full;
      for (RecordId id : order) relative.push_back(json(handleOf(doc, id)));
      for (RecordId id : modelSpaceDrawOrder(doc)) full.push_back(json(handleOf(doc, id)));
      change.members.emplace_back("relative_order", jsonList(relative));
      change.members.emplace_back("draw_order", jsonList(full));
    }
  }
  return jsonObject(change.members);
}

class EzdxfReferee : public testing::TestWithParam<std::string> {};

TEST_P(EzdxfReferee, FindsEveryChangeAndNoNewProblem) {
  TAXOR_SKIP_WITHOUT_EZDXF();
  std::string original = testing_paths::corpusDir() + "/" + GetParam();
  if (!fs::exists(original)) GTEST_SKIP() << original << " is not in the corpus";
  auto doc = Document::load(original);
  ASSERT_TRUE(doc.isOk()) << doc.status().message();

  std::string expectations = changeDrawing(*doc);
  testing_paths::TempDir dir("taxor_referee_" + fs::path(GetParam()).stem().string());
  fs::path changed = dir / GetParam();
  fs::path json_path = dir / (GetParam() + ".json");
  ASSERT_TRUE(doc->save(changed.string()).isOk());
  std::ofstream(json_path) << expectations;

  std::string output;
  int code = testing_paths::runCommand(std::string(kPython) + " " + TAXOR_SOURCE_DIR +
                                           "/tests/dxf/referee.py '" + original + "' '" +
                                           changed.string() + "' '" + json_path.string() + "'",
                                       output);
  EXPECT_EQ(code, 0) << output;
  if (code != 0) dir.keep();  // for a look at what the referee objects to
}

std::string label(const testing::TestParamInfo<std::string>& info) {
  std::string name = fs::path(info.param).stem().string();
  for (char& c : name) {
    if (!isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(
    Corpus, EzdxfReferee,
    testing::Values("acadsharp__sample_AC1015_ascii.dxf", "acadsharp__sample_AC1032_ascii.dxf",
                    "acadsharp__sample_AC1032_binary.dxf", "ezdxf__uncommon.dxf",
                    "libredwg__TS1_2018.dxf", "qcad__flange.dxf", "skymakerolof__floorplan.dxf",
                    // libredwg__example_r14.dxf is left out: its writer named model space
                    // "*U", which ezdxf replaces with a block record of its own on loading.
                    "ezdxf__small_r13_dos932.dxf", "acadsharp__sample_AC1009_ascii.dxf",
                    "libredwg__example_r12.dxf"),
    label);

// An R12 drawing cannot hold objects: asking for one is a clear error and changes nothing.
TEST(EzdxfRefereeR12, ObjectsAreRefusedAndTheDrawingStaysAsItWas) {
  std::string path = testing_paths::corpusDir() + "/acadsharp__sample_AC1009_ascii.dxf";
  if (!fs::exists(path)) GTEST_SKIP() << path << " is not in the corpus";
  std::string bytes = testing_paths::readFile(path);
  auto doc = Document::parse(bytes, path);
  ASSERT_TRUE(doc.isOk()) << doc.status().message();
  std::vector<RecordId> entities = modelSpaceEntities(*doc);
  ASSERT_FALSE(entities.empty());

  auto xdict = ensureExtensionDictionary(*doc, entities.front());
  ASSERT_FALSE(xdict.isOk());
  EXPECT_EQ(xdict.status().code(), base::Code::kUnsupported);
  EXPECT_NE(xdict.status().message().find("R2000 or later"), std::string::npos)
      << xdict.status().message();
  auto xrecord = createXrecord(*doc, entities.front(), L"TAXOR");
  EXPECT_EQ(xrecord.status().code(), base::Code::kUnsupported);
  auto object = appendObject(*doc, {doc->makeTag(0, "XRECORD"), doc->makeTag(100, "AcDbXrecord")});
  EXPECT_EQ(object.status().code(), base::Code::kUnsupported);
  auto mtext = addMText(*doc, {}, {L"x", {0, 0, 0}});
  EXPECT_EQ(mtext.status().code(), base::Code::kUnsupported);
  EXPECT_NE(mtext.status().message().find("R2000 or later"), std::string::npos);
  EXPECT_TRUE(doc->serialize() == bytes);
}

}  // namespace
}  // namespace dxf
