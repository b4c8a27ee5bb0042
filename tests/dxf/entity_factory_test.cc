#include "dxf/entity_factory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <regex>
#include <string>
#include <vector>

#include "base/utf.h"
#include "dxf/blocks.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/sample_drawing.h"

namespace dxf {
namespace {

// One record per line, its "code value" pairs separated by '|'.
constexpr std::string_view kR12 = R"(
0 SECTION|2 HEADER|9 $ACADVER|1 AC1009|9 $HANDLING|70 1|9 $HANDSEED|5 100|0 ENDSEC
0 SECTION|2 TABLES|0 TABLE|2 LAYER|70 1|0 LAYER|5 10|2 0|70 0|62 7|6 CONTINUOUS|0 ENDTAB|0 ENDSEC
0 SECTION|2 BLOCKS|0 BLOCK|8 0|2 Door|70 2|10 1.0|20 1.0|30 0.0|3 Door
0 ATTDEF|5 33|8 0|10 2.0|20 1.0|30 0.0|40 0.5|1 D1|3 Number|2 NUMBER|70 0
0 ENDBLK|5 32|8 0|0 ENDSEC
0 SECTION|2 ENTITIES|0 LINE|5 40|8 0|10 0.0|20 0.0|30 0.0|11 1.0|21 1.0|31 0.0|0 ENDSEC|0 EOF
)";

using sample::parse;

// Model space holds a LINE, the block Door three ATTDEFs (MAKER constant, WIDTH invisible).
Document r2000(std::string_view version = "AC1015") { return parse(sample::small(version)); }

// Without `handles`, the handles and the header variables about them are left out.
Document r12Drawing(bool handles = true) {
  static const std::regex kHandles(R"(\|9 \$HAND(LING|SEED)\|\d+ \w+|\|5 \w+)");
  return parse(sample::pipes(handles ? std::string(kR12)
                                     : std::regex_replace(std::string(kR12), kHandles, "")));
}

std::vector<std::string> markersOf(const Document& doc, RecordId id) {
  std::vector<std::string> out;
  for (const Tag& tag : doc.tags(id)) {
    if (tag.code == 100) out.emplace_back(doc.text(tag));
  }
  return out;
}

bool hasCode(const Document& doc, RecordId id, int code) { return doc.find(id, code).has_value(); }

struct Maker {
  std::string type;
  bool in_r12;
  std::vector<std::string> markers;  // after AcDbEntity
  std::vector<int> codes;            // the type's data a reader needs
};

const Maker kMakers[] = {
    {"LINE", true, {"AcDbLine"}, {10, 20, 30, 11, 21, 31}},
    {"CIRCLE", true, {"AcDbCircle"}, {10, 20, 30, 40}},
    {"ARC", true, {"AcDbCircle", "AcDbArc"}, {10, 20, 30, 40, 50, 51}},
    {"POINT", true, {"AcDbPoint"}, {10, 20, 30}},
    {"TEXT", true, {"AcDbText", "AcDbText"}, {10, 20, 30, 40, 1}},
    {"MTEXT", false, {"AcDbMText"}, {10, 20, 30, 40, 71, 1}},
    {"LWPOLYLINE", false, {"AcDbPolyline"}, {90, 70, 43, 38, 10, 20, 42}},
    {"ELLIPSE", false, {"AcDbEllipse"}, {10, 20, 30, 11, 21, 31, 40, 41, 42}},
    {"SPLINE", false, {"AcDbSpline"}, {70, 71, 72, 73, 74, 40, 10, 20, 30}},
    {"3DFACE", true, {"AcDbFace"}, {10, 20, 30, 11, 21, 31, 12, 22, 32, 13, 23, 33}},
    {"POLYLINE", true, {"AcDb3dPolyline"}, {66, 10, 20, 30, 70}},
    {"RAY", false, {"AcDbRay"}, {10, 20, 30, 11, 21, 31}},
    {"XLINE", false, {"AcDbXline"}, {10, 20, 30, 11, 21, 31}},
    {"HATCH",
     false,
     {"AcDbHatch"},
     {10, 210, 2, 70, 71, 91, 92, 72, 73, 93, 97, 75, 76, 52, 41, 78, 53, 98}},
    {"INSERT", true, {"AcDbBlockReference"}, {2, 10, 20, 30}},
};

// An entity of `type` with valid geometry.
base::Result<RecordId> make(Document& d, const std::string& type, const CommonProps& c) {
  Point3 points[] = {{0, 0, 0}, {1, 0, 1}, {1, 1, 2}};
  if (type == "LINE") return addLine(d, c, {0, 0, 0}, {5, 5, 0});
  if (type == "CIRCLE") return addCircle(d, c, {1, 2, 0}, 3);
  if (type == "ARC") return addArc(d, c, {1, 2, 0}, 3, 0, 90);
  if (type == "POINT") return addPoint(d, c, {1, 2, 3});
  if (type == "TEXT") return addText(d, c, {L"Hi", {1, 1, 0}});
  if (type == "MTEXT") return addMText(d, c, {L"a\\Pb", {1, 1, 0}});
  if (type == "LWPOLYLINE") return addLwPolyline(d, c, {{{0, 0}, {4, 0, 1}, {4, 4}}, true, 0.5, 2});
  if (type == "ELLIPSE") return addEllipse(d, c, {{0, 0, 0}, {4, 0, 0}, 0.5});
  if (type == "SPLINE")
    return addSpline(d, c, {3, {{0, 0, 0}, {1, 2, 0}, {3, 2, 0}, {4, 0, 0}}, {}});
  if (type == "3DFACE") return add3dFace(d, c, points);
  if (type == "POLYLINE") return add3dPolyline(d, c, points, true);
  if (type == "RAY") return addRay(d, c, {0, 0, 0}, {0, 2, 0});
  if (type == "XLINE") return addXline(d, c, {0, 0, 0}, {3, 4, 0});
  if (type == "HATCH")
    return addHatch(d, c, {{{0, 0}, {4, 0}, {4, 4}}, L"ANSI31", 0, 1, {{45, 0, 0, -2, 2, {}}}});
  EXPECT_EQ(type, "INSERT");
  return addInsert(d, c, {L"Door", {5, 5, 0}});
}

// A target that is not there or not allowed is refused and changes nothing.
const std::pair<CommonProps, base::Code> kBadTargets[] = {
    {{L"NoSuchLayer", std::nullopt, L""}, base::Code::kNotFound},
    {{L"0", std::nullopt, L"NoSuchBlock"}, base::Code::kNotFound},
    {{L"0", 257, L""}, base::Code::kInvalid},
    {{L"0", -1, L""}, base::Code::kInvalid},
    {{L"0", std::nullopt, L"*Paper_Space"}, base::Code::kUnsupported},
};

TEST(EntityFactoryTest, EachTypeLandsWhereAskedWithTheTagsReadersNeedOrIsRefused) {
  struct Target {
    std::wstring block;
    Handle owner;
  };
  for (const Target& target : {Target{L"", 0x1F}, Target{L"door", 0x30}}) {
    for (const Maker& maker : kMakers) {
      if (maker.type == "INSERT" && !target.block.empty()) continue;  // Door holding Door
      SCOPED_TRACE(maker.type + (target.block.empty() ? " in model space" : " in Door"));
      Document doc = r2000();
      const std::string before = doc.serialize();
      for (const auto& [common, code] : kBadTargets) {
        if (!target.block.empty()) break;
        auto refused = make(doc, maker.type, common);
        ASSERT_FALSE(refused.isOk()) << base::toUtf8(common.layer + L" " + common.block);
        EXPECT_EQ(refused.status().code(), code) << refused.status().message();
        EXPECT_EQ(doc.serialize(), before);
      }
      auto id = make(doc, maker.type, {L"walls", 3, target.block});
      ASSERT_TRUE(id.isOk()) << id.status().message();
      Handle handle = doc.record(*id).handle;
      ASSERT_NE(handle, 0u);

      Document again = parse(doc.serialize());
      RecordId copy = again.byHandle(handle);
      ASSERT_NE(copy, kNoRecord);
      EXPECT_EQ(again.type(copy), maker.type);
      std::vector<RecordId> model = modelSpaceEntities(again);
      std::vector<RecordId> door = blockEntities(again, findBlock(again, L"Door"));
      // The fixture has a LINE in model space and three ATTDEFs in Door.
      EXPECT_EQ(model.size(), target.block.empty() ? 2u : 1u);
      EXPECT_EQ(door.size(), target.block.empty() ? 3u : 4u);
      EXPECT_EQ(target.block.empty() ? model.back() : door.back(), copy);
      EXPECT_EQ(ownerOf(again, copy), target.owner);
      EXPECT_EQ(again.tags(copy)[1].code, 5);
      EXPECT_EQ(again.text(again.tags(copy)[1]), formatHandle(handle));
      EXPECT_EQ(again.value(copy, 8), "Walls");  // as the layer table writes it
      EXPECT_EQ(again.value(copy, 62), "3");
      std::vector<std::string> markers = {"AcDbEntity"};
      markers.insert(markers.end(), maker.markers.begin(), maker.markers.end());
      EXPECT_EQ(markersOf(again, copy), markers);
      for (int code : maker.codes) EXPECT_TRUE(hasCode(again, copy, code)) << code;
      if (maker.type == "INSERT") {  // without attributes: no followers
        EXPECT_FALSE(hasCode(again, copy, 66));
        EXPECT_EQ(again.type(again.next(copy)), "ENDSEC");
      }
      if (maker.type == "POLYLINE") {  // 3D and closed; its vertices and SEQEND are its own
        EXPECT_EQ(again.value(copy, 70), "9");
        RecordId next = again.next(copy);
        for (double z : {0, 1, 2}) {
          ASSERT_EQ(again.type(next), "VERTEX");
          EXPECT_EQ(markersOf(again, next),
                    (std::vector<std::string>{"AcDbEntity", "AcDbVertex", "AcDb3dPolylineVertex"}));
          EXPECT_EQ(again.value(next, 70), "32");
          EXPECT_EQ(again.realValue(next, 30, -1), z);
          EXPECT_EQ(ownerOf(again, next), handle);
          next = again.next(next);
        }
        EXPECT_EQ(again.type(next), "SEQEND");
        EXPECT_EQ(ownerOf(again, next), handle);
      }
    }
  }
}

// Readers size their lists by the count tags; a count that disagrees corrupts what follows.
TEST(EntityFactoryTest, CountTagsAgreeWithTheListsTheyCount) {
  struct Count {
    std::string type;
    int count_code, item_code, extra_items;
  };
  const Count counts[] = {
      {"LWPOLYLINE", 90, 10, 0}, {"LWPOLYLINE", 90, 42, -2},  // one bulge in three vertices
      {"HATCH", 93, 10, 1},                                   // plus the elevation point
      {"HATCH", 78, 53, 0},      {"SPLINE", 73, 10, 0},
  };
  for (const Count& c : counts) {
    SCOPED_TRACE(c.type + " " + std::to_string(c.count_code));
    Document doc = r2000();
    RecordId id = make(doc, c.type, {}).value();
    int items = 0;
    for (const Tag& tag : doc.tags(id)) items += tag.code == c.item_code;
    EXPECT_EQ(doc.intValue(id, c.count_code, -1), items - c.extra_items);
  }
}

TEST(EntityFactoryTest, R12DrawingsGetPlainRecordsOrAClearRefusal) {
  for (bool handles : {true, false}) {
    for (const Maker& maker : kMakers) {
      SCOPED_TRACE(maker.type + (handles ? " with handles" : " without handles"));
      Document doc = r12Drawing(handles);
      std::string before = doc.serialize();
      auto id = make(doc, maker.type, {});
      if (!maker.in_r12) {
        ASSERT_FALSE(id.isOk());
        EXPECT_EQ(id.status().code(), base::Code::kUnsupported);
        EXPECT_NE(id.status().message().find("R2000 or later"), std::string::npos);
        EXPECT_EQ(doc.serialize(), before);
        continue;
      }
      ASSERT_TRUE(id.isOk()) << id.status().message();
      Document again = parse(doc.serialize());
      std::vector<RecordId> model = modelSpaceEntities(again);
      ASSERT_EQ(model.size(), 2u);
      RecordId copy = model.back();
      EXPECT_EQ(again.type(copy), maker.type);
      EXPECT_TRUE(markersOf(again, copy).empty());
      EXPECT_FALSE(hasCode(again, copy, 330));
      EXPECT_EQ(hasCode(again, copy, 5), handles);
      for (int code : maker.codes) EXPECT_TRUE(hasCode(again, copy, code)) << code;
    }
  }
}

TEST(EntityFactoryTest, InsertCarriesTheBlocksAttributesIntoItsPlacement) {
  for (bool r12 : {false, true}) {
    SCOPED_TRACE(r12 ? "R12" : "R2000");
    Document doc = r12 ? r12Drawing() : r2000();
    InsertParams params{L"DOOR", {10, 20, 0}, {2, 2, 1}, 90, true};
    auto id = addInsert(doc, {}, params);
    ASSERT_TRUE(id.isOk()) << id.status().message();
    Document again = parse(doc.serialize());
    RecordId insert = again.byHandle(doc.record(*id).handle);
    EXPECT_EQ(again.value(insert, 66), "1");
    EXPECT_EQ(again.value(insert, 2), "Door");

    // Block base (1,1); NUMBER at (2,1) is 1 unit along x: scaled by 2, turned 90 degrees.
    struct Expected {
      std::string tag, value;
      double x, y, height;
    };
    std::vector<Expected> expected = {{"NUMBER", "D1", 10, 22, 1.0}};
    if (!r12) expected.push_back({"WIDTH", "900", 8, 20, 0.5});  // MAKER is constant
    RecordId next = again.next(insert);
    for (const Expected& e : expected) {
      SCOPED_TRACE(e.tag);
      ASSERT_EQ(again.type(next), "ATTRIB");
      EXPECT_EQ(again.value(next, 2), e.tag);
      EXPECT_EQ(again.value(next, 1), e.value);
      EXPECT_NEAR(again.realValue(next, 10, -1), e.x, 1e-9);
      EXPECT_NEAR(again.realValue(next, 20, -1), e.y, 1e-9);
      EXPECT_NEAR(again.realValue(next, 40, -1), e.height, 1e-9);
      if (!r12) {
        EXPECT_EQ(ownerOf(again, next), again.record(insert).handle);
      }
      next = again.next(next);
    }
    ASSERT_EQ(again.type(next), "SEQEND");
    if (!r12) {
      EXPECT_EQ(ownerOf(again, next), again.record(insert).handle);
      RecordId width = again.prev(next);
      EXPECT_NEAR(again.realValue(width, 50, -1), 100, 1e-9);
      EXPECT_EQ(again.value(width, 70), "1");  // still invisible
    }
    // The followers go with their insert.
    eraseObject(again, insert);
    EXPECT_EQ(modelSpaceEntities(again).size(), 1u);
    EXPECT_EQ(again.type(again.next(modelSpaceEntities(again).back())), "ENDSEC");
  }
}

TEST(EntityFactoryTest, SplineKnotsMatchItsControlPoints) {
  struct Case {
    int degree;
    size_t control_points;
    std::vector<double> knots;
  };
  const Case cases[] = {
      {3, 4, {0, 0, 0, 0, 1, 1, 1, 1}},
      {3, 6, {0, 0, 0, 0, 1.0 / 3, 2.0 / 3, 1, 1, 1, 1}},
      {1, 3, {0, 0, 0.5, 1, 1}},
  };
  for (const Case& c : cases) {
    Document doc = r2000();
    SplineParams params{c.degree, {}, {}};
    for (size_t i = 0; i < c.control_points; ++i)
      params.control_points.push_back({double(i), 0, 0});
    auto id = addSpline(doc, {}, params);
    ASSERT_TRUE(id.isOk()) << id.status().message();
    std::vector<double> knots;
    for (const Tag& tag : doc.tags(*id)) {
      if (tag.code == 40) knots.push_back(std::stod(std::string(doc.text(tag))));
    }
    ASSERT_EQ(knots.size(), c.knots.size());
    for (size_t i = 0; i < knots.size(); ++i) EXPECT_NEAR(knots[i], c.knots[i], 1e-12);
    EXPECT_EQ(doc.intValue(*id, 72, -1), static_cast<int64_t>(c.knots.size()));
  }
  // Fit points only: no knots, no control points.
  Document doc = r2000();
  RecordId fit = addSpline(doc, {}, {3, {}, {{0, 0, 0}, {2, 1, 0}, {4, 0, 0}}}).value();
  EXPECT_EQ(doc.intValue(fit, 74, -1), 3);
  EXPECT_EQ(doc.intValue(fit, 72, -1), 0);
  EXPECT_FALSE(hasCode(doc, fit, 10));
}

TEST(EntityFactoryTest, RejectsGeometryReadersCannotUseAndMissingBlocks) {
  Document doc = r2000();
  const std::string before = doc.serialize();
  auto refused = [&](const char* what, const base::Result<RecordId>& id,
                     base::Code code = base::Code::kInvalid) {
    EXPECT_EQ(id.status().code(), code) << what << ": " << id.status().message();
    EXPECT_EQ(doc.serialize(), before) << what;
  };
  refused("zero radius", addCircle(doc, {}, {}, 0));
  refused("nan", addLine(doc, {}, Point3{NAN, 0, 0}, Point3{}));
  refused("one vertex", addLwPolyline(doc, {}, {{{0, 0}}}));
  refused("too few control points", addSpline(doc, {}, {3, {{}, {}, {}}, {}}));
  refused("no points", addSpline(doc, {}, {}));
  refused("ratio above 1", addEllipse(doc, {}, {{}, {1, 0, 0}, 2}));
  refused("tilted major axis", addEllipse(doc, {}, {{}, {1, 0, 1}, 0.5}));
  refused("zero direction", addRay(doc, {}, {}, {}));
  Point3 corners[] = {{}, {1, 0, 0}};
  refused("two corners", add3dFace(doc, {}, corners));
  refused("open boundary", addHatch(doc, {}, {{{0, 0}, {1, 1}}}));
  refused("zero scale", addInsert(doc, {}, {L"Door", {}, {0, 1, 1}}));
  refused("tag with space", addAttributeDefinition(doc, {}, {L"A B"}));
  refused("missing block", addInsert(doc, {}, {L"Window", {}}), base::Code::kNotFound);
  refused("block in itself", addInsert(doc, {L"0", std::nullopt, L"Door"}, {L"Door", {}}));
}

// The blocks ezdxf reads are checked on real drawings (ezdxf_referee_test.cc); here what it
// does not look at: a name taken already, the owners, and the base point attributes follow.
TEST(EntityFactoryTest, NewBlockIsUsableByEntitiesAndInserts) {
  for (bool r12 : {false, true}) {
    SCOPED_TRACE(r12 ? "R12" : "R2000");
    Document doc = r12 ? r12Drawing() : r2000();
    ASSERT_TRUE(addBlock(doc, L"Window", {2, 0, 0}).isOk());
    EXPECT_EQ(addBlock(doc, L"window", {}).status().code(), base::Code::kInvalid);
    CommonProps in_window{L"0", std::nullopt, L"Window"};
    ASSERT_TRUE(addAttributeDefinition(doc, in_window, {L"ID", L"Id?", L"W1", {3, 0, 0}}).isOk());
    RecordId insert = addInsert(doc, {}, {L"Window", {0, 5, 0}, {1, 1, 1}, 0, true}).value();

    Document again = parse(doc.serialize());
    RecordId begin = findBlock(again, L"Window");
    ASSERT_EQ(blockEntities(again, begin).size(), 1u);
    RecordId attrib = again.next(again.byHandle(doc.record(insert).handle));
    ASSERT_EQ(again.type(attrib), "ATTRIB");
    EXPECT_NEAR(again.realValue(attrib, 10, -1), 1, 1e-9);  // 3 - base 2
    EXPECT_NEAR(again.realValue(attrib, 20, -1), 5, 1e-9);
    if (r12) continue;
    RecordId record = findBlockRecord(again, L"Window");
    ASSERT_NE(record, kNoRecord);
    EXPECT_EQ(ownerOf(again, record), 1u);
    EXPECT_EQ(ownerOf(again, begin), again.record(record).handle);
    EXPECT_EQ(ownerOf(again, blockEnd(again, begin)), again.record(record).handle);
    EXPECT_EQ(markersOf(again, begin), (std::vector<std::string>{"AcDbEntity", "AcDbBlockBegin"}));
  }
}

// The name, fill flag and pattern lines are read back by ezdxf (ezdxf_referee_test.cc).
TEST(EntityFactoryTest, HatchWritesBulgesAndPatternDashes) {
  Document doc = r2000();
  RecordId solid = addHatch(doc, {}, {{{0, 0}, {4, 0, 0.5}, {4, 4}}}).value();
  EXPECT_EQ(doc.value(solid, 72), "1");  // the boundary has a bulge
  int bulges = 0;
  for (const Tag& tag : doc.tags(solid)) bulges += tag.code == 42;
  EXPECT_EQ(bulges, 3);

  HatchParams params{{{0, 0}, {4, 0}, {4, 4}, {0, 4}}, L"DASHED", 0, 2};
  params.pattern_lines = {{0, 0, 0, 0, 1, {0.5, -0.25}}, {90, 0, 0, 0, 1, {}}};
  RecordId pattern = addHatch(doc, {}, params).value();
  EXPECT_EQ(doc.value(pattern, 79), "2");
  EXPECT_EQ(doc.value(pattern, 41), "2.0");
  EXPECT_FALSE(hasCode(doc, pattern, 42));
}

}  // namespace
}  // namespace dxf
