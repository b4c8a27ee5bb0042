// Entity properties read and written by name, checked through a written and re-read file.
#include "dxf/entity_properties.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <optional>
#include <ostream>

#include "base/utf.h"
#include "dxf/blocks.h"
#include "dxf/entity_factory.h"
#include "dxf/objects.h"
#include "dxf/symbol_tables.h"
#include "sample_drawing.h"
#include "test_paths.h"

namespace dxf {

void PrintTo(const Point3& p, std::ostream* os) { *os << p.x << "," << p.y << "," << p.z; }
void PrintTo(const EntityColor& c, std::ostream* os) { *os << c.index << "/" << c.rgb.value_or(0); }

}  // namespace dxf

namespace {

using dxf::Document;
using dxf::EntityColor;
using dxf::Point3;
using dxf::Prop;
using dxf::PropValue;
namespace h = sample::handle;

constexpr double kPi = std::numbers::pi;

using sample::parse;

// "R12#i" is the i-th entity of the R12 sample (LINE, TEXT, INSERT), which have no handles.
dxf::RecordId entity(const Document& doc, const char* handle) {
  if (handle[0] != 'R') return doc.byHandle(std::strtoull(handle, nullptr, 16));
  std::vector<dxf::RecordId> ids = dxf::modelSpaceEntities(doc);
  EXPECT_EQ(ids.size(), 3u);
  return ids.at(static_cast<size_t>(handle[4] - '0'));
}

// Reals pass through degrees and decimal text, so they compare with a tolerance.
testing::AssertionResult sameValue(const PropValue& actual, const PropValue& expected) {
  const double* a = std::get_if<double>(&actual);
  const double* e = std::get_if<double>(&expected);
  bool same = a && e ? std::abs(*a - *e) < 1e-9 : actual == expected;
  if (same) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "got " << testing::PrintToString(actual) << ", expected "
                                     << testing::PrintToString(expected);
}

// Names a case of the tables below in failure messages.
template <typename Case>
requires requires(const Case& c) { c.handle, c.prop; }
void PrintTo(const Case& c, std::ostream* os) {
  *os << c.handle << " property " << static_cast<int>(c.prop);
}

// Each case reads a property of a sample entity, sets it, and reads it back from the saved
// file, or sees the setting refused; an empty step is left out. What the host contract checks
// of the same sample through the headless host (host/entity_contract_test.cc) is not repeated.
struct PropCase {
  const char* handle;
  Prop prop;
  std::optional<PropValue> before;      // monostate: the type has no such property
  std::optional<PropValue> value = {};  // to set
  std::optional<PropValue> after = {};  // empty: `value`
  base::Code refusal = base::Code::kOk;
};

const PropCase kCases[] = {
    // Names are written as their table entry spells them.
    {h::kLine, Prop::kLayer, L"0", L"walls", L"Walls"},
    {h::kLine, Prop::kLinetype, L"ByLayer", L"DASHED", L"Dashed"},
    {h::kLine, Prop::kLinetypeScale, 1.0, 0.5},
    {h::kLine, Prop::kLineweight, int64_t{-1}, int64_t{50}},
    {h::kLine, Prop::kColor, EntityColor{}, EntityColor{1}},
    {h::kLine, Prop::kColor, {}, EntityColor{256, 0xFF8000}},
    {h::kCircle, Prop::kColor, EntityColor{5, 0x123456}, EntityColor{2}},  // drops the true colour
    {h::kCircle, Prop::kColor, {}, EntityColor{7, 0x00FF00}},
    {h::kLwPolyline, Prop::kClosed, int64_t{1}, int64_t{0}},
    {h::kLwPolyline, Prop::kConstantWidth, 0.5, 1.25},
    {h::kLwPolyline, Prop::kElevation, 0.0, 4.0},
    {h::kPolyline, Prop::kClosed, {}, int64_t{1}},
    {h::kSpline, Prop::kClosed, {}, int64_t{1}},
    {h::kMline, Prop::kClosed, int64_t{0}, int64_t{1}},
    {h::kMline, Prop::kMlineStyle, L"Standard", L"double", L"Double"},
    {h::kMline, Prop::kMlineScale, {}, 2.0},
    {h::kMline, Prop::kMlineJustification, int64_t{0}, int64_t{2}},
    {h::kInsert, Prop::kRotation, kPi / 4, kPi / 2},
    {h::kInsert, Prop::kBlockName, L"Door", L"DOOR", L"Door"},
    {h::kInsert, Prop::kScale, Point3{2, 3, 1}, Point3{1, 2, 3}},
    {h::kArc, Prop::kRadius, 1.5, 4.0},
    {h::kDimension, Prop::kDimensionStyle, L"Arch", L"standard", L"Standard"},
    {h::kEllipse, Prop::kEllipseEnd, 3.0, 2.0},
    {h::kHatch, Prop::kPattern, {}, L"ANSI37"},
    {h::kHatch, Prop::kPatternAngle, 0.0, kPi / 4},
    {h::kHatch, Prop::kPatternScale, 2.0, 3.0},
    {h::kHatch, Prop::kBackgroundColor, EntityColor{-1}, EntityColor{5}},
    {h::kHatch, Prop::kBackgroundColor, {}, EntityColor{256, 0x102030}},
    {h::kSolidHatch, Prop::kPatternAngle, {}, kPi / 6},
    {h::kSolidHatch, Prop::kPatternScale, 1.0, 0.5},
    {h::kMLeader, Prop::kMLeaderStyle, L"Standard", L"callout", L"Callout"},
    {h::kMtext, Prop::kAttachment, int64_t{5}, int64_t{7}},
    {h::kMtext, Prop::kTextStyle, {}, L"standard", L"Standard"},
    {h::kMtext, Prop::kContents, L"Part one and two", L"Gr\u00fc\u00dfe \u2013 \u4e2d\u6587"},
    {h::kMtext, Prop::kRotation, kPi / 2, 0.3},
    {h::kText, Prop::kTextHeight, {}, 5.0},
    {h::kText, Prop::kTextStyle, {}, L"STANDARD", L"Standard"},
    {h::kText, Prop::kContents, L"Hello", L"Bye"},
    {h::kText, Prop::kTextJustification, int64_t{7}, int64_t{10}},
    {h::kText, Prop::kTextJustification, {}, int64_t{0}},
    {h::kPlainText, Prop::kTextJustification, int64_t{0}, int64_t{13}},
    // Read only; the last is a property the type does not have.
    {h::kLwPolyline, Prop::kColor, EntityColor{3}},
    {h::kLwPolyline, Prop::kLinetypeScale, 2.0},
    {h::kCircle, Prop::kRadius, 2.5},
    {h::kText, Prop::kRotation, kPi / 6},
    {h::kPlainText, Prop::kRotation, 0.0},
    {h::kPlainText, Prop::kTextStyle, L"Standard"},
    // The embedded object's 11/21/40 are not the MTEXT's own.
    {h::kColumnMtext, Prop::kRotation, kPi / 6},
    {h::kColumnMtext, Prop::kTextHeight, 2.5},
    {h::kDimension, Prop::kDimensionType, int64_t{1}},
    {h::kEllipse, Prop::kEllipseStart, 0.25},
    {h::kCircle, Prop::kContents, std::monostate{}},
    // Refused, and the drawing is left as it was.
    {h::kLine, Prop::kLayer, {}, L"Roof", {}, base::Code::kNotFound},
    {h::kMline, Prop::kMlineStyle, {}, L"Triple", {}, base::Code::kNotFound},
    {h::kMLeader, Prop::kMLeaderStyle, {}, L"Balloon", {}, base::Code::kNotFound},
    {h::kLine, Prop::kLineweight, {}, int64_t{17}, {}, base::Code::kInvalid},
    {h::kLine, Prop::kColor, {}, EntityColor{300}, {}, base::Code::kInvalid},
    {h::kText, Prop::kContents, {}, L"two\nlines", {}, base::Code::kInvalid},
    {h::kText, Prop::kTextJustification, {}, int64_t{15}, {}, base::Code::kInvalid},
    // R12 records: no subclass markers, names as the tables spell them.
    {"R12#0", Prop::kLayer, {}, L"walls", L"WALLS"},
    {"R12#0", Prop::kLinetype, {}, L"continuous", L"CONTINUOUS"},
    {"R12#0", Prop::kColor, {}, EntityColor{3}},
    {"R12#0", Prop::kColor, {}, EntityColor{1, 0xFF0000}, {}, base::Code::kUnsupported},
    {"R12#0", Prop::kLineweight, {}, int64_t{25}, {}, base::Code::kUnsupported},
    {"R12#0", Prop::kLinetypeScale, {}, 2.0, {}, base::Code::kUnsupported},
    {"R12#1", Prop::kLinetype, {}, L"ByLayer", L"BYLAYER"},
    {"R12#1", Prop::kTextJustification, int64_t{14}, int64_t{6}},
    {"R12#1", Prop::kTextStyle, {}, L"standard", L"STANDARD"},
    {"R12#2", Prop::kRotation, kPi / 2},
    {"R12#2", Prop::kBlockName, {}, L"door", L"DOOR"},
};

TEST(EntityProp, ReadsWritesAndReadsBackFromTheSavedFileOrRefuses) {
  for (const PropCase& c : kCases) {
    SCOPED_TRACE(testing::PrintToString(c));
    const bool r12 = c.handle[0] == 'R';
    const std::string bytes = r12 ? sample::r12Drawing() : sample::drawing();
    Document doc = parse(bytes);
    dxf::RecordId id = entity(doc, c.handle);
    if (c.before) {
      EXPECT_TRUE(sameValue(dxf::getProperty(doc, id, c.prop), *c.before));
    }
    if (!c.value) continue;
    base::Status status = dxf::setProperty(doc, id, c.prop, *c.value);
    EXPECT_EQ(status.code(), c.refusal) << status.message();
    if (const std::wstring* name = std::get_if<std::wstring>(&*c.value);
        name && c.refusal == base::Code::kNotFound) {
      EXPECT_NE(status.message().find("'" + base::toUtf8(*name) + "'"), std::string::npos);
    }
    if (c.refusal != base::Code::kOk) {
      EXPECT_TRUE(doc.serialize() == bytes);
      continue;
    }
    EXPECT_TRUE(!r12 || doc.serialize().find("100\n") == std::string::npos);  // no markers
    Document reread = parse(doc.serialize());
    EXPECT_TRUE(sameValue(dxf::getProperty(reread, entity(reread, c.handle), c.prop),
                          c.after.value_or(*c.value)));
  }
}

// A tag the entity lacked goes where readers that read DXF in order expect it.
struct PlacementCase {
  const char* handle;
  Prop prop;
  PropValue value;
  int code;      // the added tag
  int previous;  // the codes around it afterwards
  int next;      // 0: it is the last tag
};

const PlacementCase kPlacementCases[] = {
    {h::kLwPolyline, Prop::kElevation, 1.0, 38, 43, 10},     // before the vertices
    {h::kSolidHatch, Prop::kPatternAngle, 1.0, 52, 76, 98},  // after the paths
    {h::kHatch, Prop::kBackgroundColor, EntityColor{1}, 1071, 1001, 0},
    {h::kLine, Prop::kColor, EntityColor{3, 0xABCDEF}, 420, 62, 100},
    {h::kColumnMtext, Prop::kAttachment, int64_t{2}, 71, 50, 101},
    // Non-left justification needs the alignment point, copied from the insertion point.
    {h::kPlainText, Prop::kTextJustification, int64_t{1}, 11, 72, 21},
    {h::kPlainText, Prop::kTextJustification, int64_t{6}, 73, 100, 0}};

TEST(EntityPropPlacement, AddedTagSitsInItsPlace) {
  for (const PlacementCase& c : kPlacementCases) {
    SCOPED_TRACE(testing::PrintToString(c));
    Document doc = parse(sample::drawing());
    dxf::RecordId id = entity(doc, c.handle);
    ASSERT_TRUE(dxf::setProperty(doc, id, c.prop, c.value).isOk());
    auto tags = doc.tags(id);
    auto at =
        std::find_if(tags.begin(), tags.end(), [&](const dxf::Tag& t) { return t.code == c.code; });
    ASSERT_NE(at, tags.end());
    ASSERT_NE(at, tags.begin());
    EXPECT_EQ(at[-1].code, c.previous);
    EXPECT_EQ(at + 1 == tags.end() ? 0 : at[1].code, c.next);
  }
}

// Both writers of MTEXT contents, the factory and the property, cut what a tag cannot hold
// into code 3 chunks and a last code 1, of at most 250 bytes each and as few as fit, never
// inside a character or an escape: readers that decode tag by tag must read the text.
TEST(MtextContents, SplitIntoTheFewestChunksOfWholeCharacters) {
  std::wstring mixed;
  for (int i = 0; i < 120; ++i) mixed += L"ab\u00e4\u20ac\\P";  // 1 + 1 + 2 + 3 + 2 bytes in UTF-8
  struct Case {
    const char* version;  // AC1015: the sample's ANSI_1252; AC1027: UTF-8
    std::wstring text;
    size_t chunks;
  };
  const Case cases[] = {
      {"AC1015", std::wstring(600, L'x'), 3},
      {"AC1015", std::wstring(300, L'\x20AC'), 2},  // one byte each in ANSI_1252
      {"AC1015", std::wstring(100, L'\x2205'), 3},  // \U+2205: 7 bytes each
      {"AC1027", std::wstring(300, L'\x00E4'), 3},  // two bytes each
      {"AC1027", mixed, 5},                         // 1080 bytes
      {"AC1027", L"short", 1},
  };
  for (bool made : {true, false}) {  // by the factory, or set on the sample's MTEXT
    for (const Case& c : cases) {
      SCOPED_TRACE(std::string(made ? "made " : "set ") + c.version + " " +
                   std::to_string(c.chunks));
      Document doc = parse(sample::withVersion(sample::drawing(), c.version));
      auto id = made ? dxf::addMText(doc, {}, {c.text, {}}) : entity(doc, h::kMtext);
      ASSERT_TRUE(id.isOk()) << id.status().message();
      ASSERT_TRUE(made || dxf::setProperty(doc, *id, Prop::kContents, c.text).isOk());
      Document reread = parse(doc.serialize());
      dxf::RecordId mtext = reread.byHandle(doc.record(*id).handle);
      std::vector<int> codes;
      std::wstring joined;
      for (const dxf::Tag& tag : reread.tags(mtext)) {
        if (tag.code != 1 && tag.code != 3) continue;
        codes.push_back(tag.code);
        EXPECT_LE(reread.text(tag).size(), 250u);
        std::wstring piece;
        EXPECT_TRUE(reread.codec().decode(reread.text(tag), piece)) << reread.text(tag);
        EXPECT_EQ(reread.codec().encode(piece), reread.text(tag));
        joined += piece;
      }
      std::vector<int> expected(c.chunks - 1, 3);
      expected.push_back(1);
      EXPECT_EQ(codes, expected);
      EXPECT_EQ(joined, c.text);
      EXPECT_EQ(std::get<std::wstring>(dxf::getProperty(reread, mtext, Prop::kContents)), c.text);
    }
  }
}

TEST(EntityPropBackground, RegistersItsApplicationOnce) {
  Document doc = parse(sample::drawing());
  for (const char* hatch : {h::kHatch, h::kSolidHatch}) {
    ASSERT_TRUE(
        dxf::setProperty(doc, entity(doc, hatch), Prop::kBackgroundColor, EntityColor{3}).isOk());
  }
  Document reread = parse(doc.serialize());
  dxf::RecordId app = dxf::findTableEntry(reread, "APPID", L"HATCHBACKGROUNDCOLOR");
  ASSERT_NE(app, dxf::kNoRecord);
  EXPECT_EQ(reread.value(app, 330), "9");
  EXPECT_EQ(dxf::tableEntries(reread, "APPID").size(), 2u);
  EXPECT_EQ(reread.intValue(reread.table("APPID").head, 70, 0), 2);

  dxf::RecordId hatch = entity(reread, h::kHatch);
  ASSERT_TRUE(dxf::setProperty(reread, hatch, Prop::kBackgroundColor, EntityColor{-1}).isOk());
  EXPECT_FALSE(reread.find(hatch, 1001));
}

// The tags of `id` as "code text" lines.
std::vector<std::string> tagLines(const Document& doc, dxf::RecordId id) {
  std::vector<std::string> lines;
  for (const dxf::Tag& tag : doc.tags(id))
    lines.push_back(std::to_string(tag.code) + " " + std::string(doc.text(tag)));
  return lines;
}

// The layer is read for every entity a command visits, from where the load noted it; it
// must be the tag a reading of the record's tags finds, whatever the record's shape, and
// whatever edits the entity took while it is kept as its file bytes with one run of tags
// replaced. Each edit must write back the tags that are read.
TEST(EntityPropLayer, IsTheFirstLayerTagOfTheEntityGroup) {
  const std::string head = "5 100\n330 1F\n100 AcDbEntity\n8 0\n100 AcDbLine\n";
  struct Case {
    const char* what;
    const char* line_head;
    const wchar_t* layer;
  } const cases[] = {
      {"plain", "5 100\n330 1F\n100 AcDbEntity\n8 Walls\n100 AcDbLine\n", L"Walls"},
      {"after an application group",
       "5 100\n102 {APP\n8 Not\n102 }\n330 1F\n100 AcDbEntity\n8 Walls\n100 AcDbLine\n", L"Walls"},
      {"after an application group in the entity group",
       "5 100\n330 1F\n100 AcDbEntity\n102 {APP\n8 Not\n102 }\n8 Walls\n100 AcDbLine\n", L"Walls"},
      {"only before the marker", "5 100\n8 Not\n330 1F\n100 AcDbEntity\n100 AcDbLine\n", L"0"},
      {"in a second entity group",
       "5 100\n330 1F\n100 AcDbEntity\n100 AcDbEntity\n8 Walls\n100 AcDbLine\n", L"0"},
      {"after extended data", "5 100\n330 1F\n100 AcDbEntity\n1001 APP\n8 Not\n100 AcDbLine\n",
       L"0"},
      {"without markers", "5 100\n8 Walls\n330 1F\n", L"Walls"},
      {"with blanks", "5 100\n330 1F\n100 AcDbEntity\n8  Walls \n100 AcDbLine\n", L" Walls "},
      {"with general properties after it",
       "5 100\n330 1F\n100 AcDbEntity\n8 Walls\n6 Dashed\n102 {APP\n48 9\n62 5\n102 }\n48 2.5\n"
       "420 16711680\n100 AcDbLine\n370 25\n",
       L"Walls"},
      {"with general properties twice",
       "5 100\n330 1F\n100 AcDbEntity\n8 Walls\n62 3\n48 2.5\n62 4\n6 Dashed\n48 9\n"
       "6 Hidden\n100 AcDbLine\n",
       L"Walls"},
      {"with general properties before it",
       "5 100\n330 1F\n100 AcDbEntity\n48 2.5\n62 3\n8 Walls\n6 Dashed\n62 4\n100 AcDbLine\n",
       L"Walls"},
  };
  for (const Case& c : cases) {
    for (bool crlf : {false, true}) {
      SCOPED_TRACE(std::string(c.what) + (crlf ? ", CRLF" : ""));
      std::string compact = sample::readCompact("sample_drawing.txt");
      size_t at = compact.find(head);
      ASSERT_NE(at, std::string::npos);
      compact.replace(at, head.size(), c.line_head);
      std::string bytes = sample::toDxf(compact);
      if (crlf) {
        for (size_t i = bytes.find('\n'); i != std::string::npos; i = bytes.find('\n', i + 2)) {
          bytes.insert(i, "\r");
        }
      }
      Document doc = parse(bytes);
      dxf::RecordId line = entity(doc, h::kLine);
      // The general properties, read from the layer on where it opens its group, are those a
      // reading of all the tags finds.
      auto generalAsTagsHoldThem = [](const Document& d, dxf::RecordId id) {
        const dxf::TagList all = d.tags(id);
        for (Prop prop : {Prop::kColor, Prop::kLinetype, Prop::kLinetypeScale, Prop::kLineweight}) {
          EXPECT_TRUE(sameValue(dxf::getProperty(d, id, prop),
                                dxf::getProperty(d, id, std::span<const dxf::Tag>(all), prop)))
              << static_cast<int>(prop);
        }
      };
      auto readsBack = [&](const char* step, const std::wstring& layer) {
        SCOPED_TRACE(step);
        EXPECT_TRUE(sameValue(dxf::getProperty(doc, line, Prop::kLayer), layer));
        generalAsTagsHoldThem(doc, line);
        Document reread = parse(doc.serialize());
        dxf::RecordId again = entity(reread, h::kLine);
        EXPECT_EQ(tagLines(reread, again), tagLines(doc, line));
        EXPECT_TRUE(sameValue(dxf::getProperty(reread, again, Prop::kLayer), layer));
      };
      readsBack("as loaded", c.layer);
      const std::vector<std::string> loaded = tagLines(doc, line);
      if (auto layer = std::find(loaded.begin(), loaded.end(), "8 " + base::toUtf8(c.layer));
          layer != loaded.end()) {
        // The layer's own tag taken out of the file bytes: the default layer, read as written.
        Document cut = parse(bytes);
        dxf::RecordId id = entity(cut, h::kLine);
        cut.eraseTags(id, static_cast<size_t>(layer - loaded.begin()), 1);
        EXPECT_TRUE(sameValue(dxf::getProperty(cut, id, Prop::kLayer), L"0"));
        EXPECT_EQ(tagLines(parse(cut.serialize()), id), tagLines(cut, id));
      }
      {
        // A colour set on the file bytes goes after the layer: the tags from there on are no
        // longer all the file's.
        SCOPED_TRACE("colour set on the file bytes");
        Document coloured = parse(bytes);
        dxf::RecordId id = entity(coloured, h::kLine);
        ASSERT_TRUE(dxf::setProperty(coloured, id, Prop::kColor, EntityColor{2, std::nullopt}));
        generalAsTagsHoldThem(coloured, id);
      }
      ASSERT_TRUE(dxf::ensureExtensionDictionary(doc, line).isOk());
      readsBack("extension dictionary given", c.layer);
      ASSERT_TRUE(dxf::releaseExtensionDictionary(doc, line));
      EXPECT_EQ(tagLines(doc, line), loaded);
      EXPECT_FALSE(doc.record(line).spliced);  // its file bytes again
      doc.eraseTags(line, loaded.size() - 1, 1);
      readsBack("last tag taken out", c.layer);
      ASSERT_TRUE(dxf::ensureExtensionDictionary(doc, line).isOk());
      readsBack("extension dictionary given again", c.layer);
      ASSERT_TRUE(dxf::setProperty(doc, line, Prop::kColor, EntityColor{1, std::nullopt}).isOk());
      readsBack("colour set", c.layer);
      ASSERT_TRUE(dxf::setProperty(doc, line, Prop::kLayer, L"0").isOk());
      readsBack("layer set", L"0");
      ASSERT_TRUE(dxf::releaseExtensionDictionary(doc, line));
      readsBack("extension dictionary taken off", L"0");
      EXPECT_EQ(doc.record(line).xdict, 0u);
    }
  }
}

// ezdxf, an independent reader, sees what was written.
TEST(EntityPropEzdxf, ReadsTheWrittenValues) {
  TAXOR_SKIP_WITHOUT_EZDXF();
  Document doc = parse(sample::drawing());
  const std::tuple<const char*, Prop, PropValue> sets[] = {
      {h::kLine, Prop::kLayer, L"walls"},
      {h::kLine, Prop::kLinetype, L"dashed"},
      {h::kLine, Prop::kColor, EntityColor{1, 0x102030}},
      {h::kLine, Prop::kLineweight, int64_t{35}},
      {h::kLwPolyline, Prop::kElevation, 2.5},
      {h::kLwPolyline, Prop::kConstantWidth, 0.75},
      {h::kSpline, Prop::kClosed, int64_t{1}},
      {h::kMline, Prop::kClosed, int64_t{1}},
      {h::kMline, Prop::kMlineStyle, L"Double"},
      {h::kHatch, Prop::kPatternScale, 4.0},
      {h::kHatch, Prop::kPatternAngle, kPi / 2},
      {h::kHatch, Prop::kBackgroundColor, EntityColor{256, 0x0A141E}},
      {h::kSolidHatch, Prop::kPatternScale, 0.5},
      {h::kMtext, Prop::kContents, std::wstring(300, L'x') + L"\u00e9"},
      {h::kMtext, Prop::kRotation, kPi},
      {h::kPlainText, Prop::kTextJustification, int64_t{11}},
      {h::kMLeader, Prop::kMLeaderStyle, L"Callout"},
      {h::kInsert, Prop::kScale, Point3{1, 2, 3}}};
  for (const auto& [handle, prop, value] : sets) {
    base::Status status = dxf::setProperty(doc, entity(doc, handle), prop, value);
    EXPECT_TRUE(status.isOk()) << handle << ": " << status.message();
  }

  testing_paths::TempDir dir("taxor_entity_properties");
  std::string path = (dir / "entity_properties_ezdxf.dxf").string();
  ASSERT_TRUE(doc.save(path).isOk());
  const char* script = R"(
import ezdxf, sys
e = ezdxf.readfile(sys.argv[1]).entitydb
l, x, m, s, w = e["100"], e["10B"], e["106"], e["107"].dxf, e["10D"]
q = x.pattern.lines[0]
print(l.dxf.layer, l.dxf.linetype, l.dxf.color, l.rgb, l.dxf.lineweight)
print(e["101"].dxf.elevation, e["101"].dxf.const_width, e["10A"].closed, w.is_closed,
      w.dxf.style_name, w.dxf.style_handle)
print(x.dxf.pattern_scale, x.dxf.pattern_angle, x.bgcolor, q.angle, round(q.offset.x, 9),
      round(q.offset.y, 9), q.dash_length_items, e["10C"].dxf.pattern_scale)
print(len(m.text), m.text[-1] == chr(233), round(m.dxf.text_direction.x, 9), m.dxf.rotation)
print(e["10E"].get_align_enum().name, e["10F"].dxf.style_handle, s.xscale, s.yscale, s.zscale)
)";
  std::string out;
  std::string command = "/usr/bin/python3 -c '" + std::string(script) + "' \"" + path + "\"";
  EXPECT_EQ(testing_paths::runCommand(command, out), 0) << out;
  EXPECT_EQ(out,
            "Walls Dashed 1 (16, 32, 48) 35\n"
            "2.5 0.75 True True Double D2\n"
            "4.0 90.0 (10, 20, 30) 135.0 -4.0 -4.0 [2.0, -1.0] 0.5\n"
            "301 True -1.0 180.0\n"
            "MIDDLE_RIGHT E2 1.0 2.0 3.0\n");
}

}  // namespace
