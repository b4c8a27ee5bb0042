// Copying named resources between drawings: what comes along, handles and owners, names
// already there, encodings, R12 targets, and a check of the result by ezdxf.
#include "dxf/resource_copy.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "base/utf.h"
#include "dxf/blocks.h"
#include "dxf/dictionary.h"
#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/symbol_tables.h"
#include "test_paths.h"

namespace dxf {
namespace {

namespace fs = std::filesystem;

std::string dataPath(const std::string& file) {
  return std::string(TAXOR_SOURCE_DIR) + "/tests/data/" + file;
}

Document load(const std::string& file) {
  auto doc = Document::parse(testing_paths::readFile(dataPath(file)), file);
  EXPECT_TRUE(doc.isOk()) << doc.status().message();
  return std::move(doc).value();
}

// The target drawing, optionally as another version (AC1021 and later are UTF-8).
Document target(const std::string& version = "AC1015") {
  std::string bytes = testing_paths::readFile(dataPath("resource_target.dxf"));
  bytes.replace(bytes.find("AC1015"), 6, version);
  auto doc = Document::parse(bytes, "target");
  EXPECT_TRUE(doc.isOk()) << doc.status().message();
  return std::move(doc).value();
}

// An R12 drawing that uses handles.
Document r12Target() { return load("resource_target_r12.dxf"); }

Document reparse(const Document& doc) {
  auto again = Document::parse(doc.serialize(), "copied");
  EXPECT_TRUE(again.isOk()) << again.status().message();
  return std::move(again).value();
}

enum class Kind { kLayer, kLinetype, kStyle, kDimStyle, kAppId, kBlock, kMline, kMLeader };

RecordId lookup(const Document& doc, Kind kind, std::wstring_view name) {
  switch (kind) {
    case Kind::kLayer:
      return findTableEntry(doc, "LAYER", name);
    case Kind::kLinetype:
      return findTableEntry(doc, "LTYPE", name);
    case Kind::kStyle:
      return findTableEntry(doc, "STYLE", name);
    case Kind::kDimStyle:
      return findTableEntry(doc, "DIMSTYLE", name);
    case Kind::kAppId:
      return findTableEntry(doc, "APPID", name);
    case Kind::kBlock:
      return findBlock(doc, name);
    case Kind::kMline:
      return findStyle(doc, L"ACAD_MLINESTYLE", name);
    case Kind::kMLeader:
      return findStyle(doc, L"ACAD_MLEADERSTYLE", name);
  }
  return kNoRecord;
}

// The handle a record's owner must have in `doc`.
Handle expectedOwner(const Document& doc, Kind kind, RecordId id) {
  auto tableHead = [&](const char* table) { return doc.record(doc.table(table).head).handle; };
  auto styleDict = [&](const wchar_t* key) {
    return doc.record(dictionaryGet(doc, namedObjectsDictionary(doc), key)).handle;
  };
  switch (kind) {
    case Kind::kLayer:
      return tableHead("LAYER");
    case Kind::kLinetype:
      return tableHead("LTYPE");
    case Kind::kStyle:
      return tableHead("STYLE");
    case Kind::kDimStyle:
      return tableHead("DIMSTYLE");
    case Kind::kAppId:
      return tableHead("APPID");
    case Kind::kBlock:
      return findBlockRecord(doc, recordName(doc, id)) == kNoRecord
                 ? 0
                 : doc.record(findBlockRecord(doc, recordName(doc, id))).handle;
    case Kind::kMline:
      return styleDict(L"ACAD_MLINESTYLE");
    case Kind::kMLeader:
      return styleDict(L"ACAD_MLEADERSTYLE");
  }
  return 0;
}

bool isPointerCode(int code) {
  return (code >= 330 && code <= 369) || (code >= 390 && code <= 399) || code == 480 || code == 481;
}

// Every handle is unique, every pointer names a record or nothing, and every table counts
// its entries.
void expectSound(const Document& doc) {
  std::set<Handle> handles;
  for (RecordId id = doc.first(); id != kNoRecord; id = doc.next(id)) {
    Handle h = doc.record(id).handle;
    if (h != 0) {
      EXPECT_TRUE(handles.insert(h).second) << "handle " << formatHandle(h) << " twice";
    }
  }
  for (RecordId id = doc.first(); id != kNoRecord; id = doc.next(id)) {
    for (const Tag& tag : doc.tags(id)) {
      if (tag.code >= 1000) break;
      if (!isPointerCode(tag.code) || doc.text(tag) == "0") continue;
      Handle h = std::stoull(std::string(doc.text(tag)), nullptr, 16);
      EXPECT_NE(doc.byHandle(h), kNoRecord)
          << doc.type(id) << " " << formatHandle(doc.record(id).handle) << ": " << tag.code << " "
          << doc.text(tag) << " names nothing";
    }
  }
  for (const char* table : {"LTYPE", "LAYER", "STYLE", "APPID", "DIMSTYLE", "BLOCK_RECORD"}) {
    Span span = doc.table(table);
    if (span.head == kNoRecord) continue;
    EXPECT_EQ(doc.intValue(span.head, 70, -1),
              static_cast<int64_t>(tableEntries(doc, table).size()))
        << table;
  }
}

struct KindCase {
  const char* label;
  uint32_t kind;
  Kind lookup;
  std::wstring name;
  std::vector<std::pair<Kind, std::wstring>> brought;  // dependencies that come along
  std::vector<std::pair<Kind, std::wstring>> left;     // what must not come
};

void PrintTo(const KindCase& c, std::ostream* out) { *out << c.label; }

class CopyKindTest : public ::testing::TestWithParam<KindCase> {};

TEST_P(CopyKindTest, CopiesTheRecordWithWhatItUses) {
  const KindCase& c = GetParam();
  Document source = load("resources.dxf");
  Document doc = target();
  auto provided = copyResources(doc, source, c.kind, {{c.kind, {c.name, L"NO_SUCH_NAME"}}});
  ASSERT_TRUE(provided.isOk()) << provided.status().message();
  EXPECT_EQ(provided->at(c.kind), std::vector<std::wstring>{c.name});

  Document copied = reparse(doc);
  expectSound(copied);
  RecordId id = lookup(copied, c.lookup, c.name);
  ASSERT_NE(id, kNoRecord);
  EXPECT_EQ(ownerOf(copied, id), expectedOwner(copied, c.lookup, id));
  for (const auto& [kind, name] : c.brought) {
    RecordId dep = lookup(copied, kind, name);
    ASSERT_NE(dep, kNoRecord) << base::toUtf8(name);
    EXPECT_EQ(ownerOf(copied, dep), expectedOwner(copied, kind, dep)) << base::toUtf8(name);
  }
  for (const auto& [kind, name] : c.left) {
    EXPECT_EQ(lookup(copied, kind, name), kNoRecord) << base::toUtf8(name);
  }
  // The target's WALLS ("walls") was not copied over or duplicated.
  EXPECT_EQ(copied.intValue(findTableEntry(copied, "LAYER", L"WALLS"), 62, 0), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, CopyKindTest,
    ::testing::Values(
        KindCase{"block",
                 resource::kBlocks,
                 Kind::kBlock,
                 L"door",
                 {{Kind::kBlock, L"KNOB"},
                  {Kind::kLayer, L"DOORS"},
                  {Kind::kLayer, L"MÜLL"},
                  {Kind::kLinetype, L"GASLINE"},
                  {Kind::kStyle, L"GasText"},
                  {Kind::kStyle, L"Notes"},
                  {Kind::kAppId, L"TAXOR_TEST"},
                  {Kind::kBlock, L"*U2"}},
                 {{Kind::kLinetype, L"DASHED"}, {Kind::kBlock, L"ARROW"}}},
        KindCase{"dimstyle",
                 resource::kDimensionStyles,
                 Kind::kDimStyle,
                 L"ARCH",
                 {{Kind::kStyle, L"Annot"}, {Kind::kBlock, L"ARROW"}},
                 {{Kind::kBlock, L"DOOR"}}},
        KindCase{"layer",
                 resource::kLayers,
                 Kind::kLayer,
                 L"mÜll",
                 {{Kind::kLinetype, L"GASLINE"}, {Kind::kStyle, L"GasText"}},
                 {{Kind::kLayer, L"DOORS"}}},
        KindCase{"present layer",
                 resource::kLayers,
                 Kind::kLayer,
                 L"WALLS",
                 {},
                 {{Kind::kLinetype, L"DASHED"}}},
        KindCase{"linetype",
                 resource::kLinetypes,
                 Kind::kLinetype,
                 L"GASLINE",
                 {{Kind::kStyle, L"GasText"}},
                 {{Kind::kStyle, L"Notes"}}},
        KindCase{"mleader style",
                 resource::kMLeaderStyles,
                 Kind::kMLeader,
                 L"CALLOUT",
                 {{Kind::kLinetype, L"DASHED"}, {Kind::kBlock, L"ARROW"}, {Kind::kStyle, L"Notes"}},
                 {{Kind::kStyle, L"Annot"}}},
        KindCase{"mline style",
                 resource::kMlineStyles,
                 Kind::kMline,
                 L"triple",
                 {{Kind::kLinetype, L"DASHED"}},
                 {{Kind::kLinetype, L"GASLINE"}}},
        KindCase{"text style",
                 resource::kTextStyles,
                 Kind::kStyle,
                 L"NOTES",
                 {},
                 {{Kind::kStyle, L"Annot"}}}),
    [](const auto& info) {
      std::string name = info.param.label;
      for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
      return name;
    });

// The blocks of a copied block point at their copies: entities and subentities at the new
// block record, the nested INSERT at the renamed anonymous block, extended data at the copy.
TEST(CopyResources, BlockContentPointsAtTheCopies) {
  Document source = load("resources.dxf");
  Document doc = target();
  ASSERT_TRUE(
      copyResources(doc, source, resource::kBlocks, {{resource::kBlocks, {L"DOOR"}}}).isOk());
  Document copied = reparse(doc);

  for (const wchar_t* name : {L"DOOR", L"KNOB", L"*U2"}) {
    RecordId block = findBlock(copied, name);
    Handle record = copied.record(findBlockRecord(copied, name)).handle;
    for (RecordId id = block; id != kNoRecord; id = copied.next(id)) {
      EXPECT_EQ(ownerOf(copied, id), record) << copied.type(id);
      if (copied.type(id) == "ENDBLK") break;
    }
  }
  EXPECT_EQ(blockEntities(copied, findBlock(copied, L"*U1")).size(), 0u);  // the target's own
  std::vector<std::string> inserted;
  RecordId line = kNoRecord;
  for (RecordId id : blockEntities(copied, findBlock(copied, L"DOOR"))) {
    if (copied.type(id) == "INSERT") inserted.emplace_back(copied.value(id, 2));
    if (copied.type(id) == "LINE") line = id;
  }
  EXPECT_EQ(inserted, (std::vector<std::string>{"KNOB", "*U2"}));
  ASSERT_NE(line, kNoRecord);
  RecordId xdata_target =
      copied.byHandle(std::stoull(std::string(copied.value(line, 1005)), nullptr, 16));
  ASSERT_NE(xdata_target, kNoRecord);
  EXPECT_EQ(copied.value(xdata_target, 2), "KNOB");
  // POLYLINE, VERTEX, VERTEX, SEQEND and the CIRCLE of KNOB.
  RecordId knob = findBlock(copied, L"KNOB");
  size_t records = 0;
  for (RecordId id = copied.next(knob); copied.type(id) != "ENDBLK"; id = copied.next(id))
    ++records;
  EXPECT_EQ(records, 5u);
}

TEST(CopyResources, ReencodesTextForTheTargetEncoding) {
  Document source = load("resources.dxf");
  Document doc = target("AC1021");
  ASSERT_TRUE(
      copyResources(doc, source, resource::kLayers, {{resource::kLayers, {L"MÜLL"}}}).isOk());
  Document copied = reparse(doc);
  RecordId layer = findTableEntry(copied, "LAYER", L"MÜLL");
  ASSERT_NE(layer, kNoRecord);
  EXPECT_EQ(copied.value(layer, 2), "M\xC3\x9CLL");
}

TEST(CopyResources, CopiesOnlyTheKindsOfTheMask) {
  Document source = load("resources.dxf");
  Document doc = target();
  auto provided =
      copyResources(doc, source, resource::kTextStyles,
                    {{resource::kLayers, {L"DOORS"}}, {resource::kTextStyles, {L"Annot"}}});
  ASSERT_TRUE(provided.isOk());
  EXPECT_FALSE(provided->count(resource::kLayers));
  EXPECT_EQ(findTableEntry(doc, "LAYER", L"DOORS"), kNoRecord);
  EXPECT_NE(findTableEntry(doc, "STYLE", L"Annot"), kNoRecord);
}

TEST(CopyResources, RefusesWhatTheTargetCannotTakeAndChangesNothing) {
  Document source = load("resources.dxf");
  struct Case {
    const char* label;
    bool r12_target;
    uint32_t mask;
    ResourceNameMap needed;
    const char* message;
  };
  const Case cases[] = {
      {"layouts",
       false,
       resource::kLayouts | resource::kLayers,
       {{resource::kLayouts, {}}, {resource::kLayers, {L"DOORS"}}},
       "importing layouts is not supported"},
      {"mline style into R12",
       true,
       resource::kMlineStyles,
       {{resource::kMlineStyles, {L"TRIPLE"}}},
       "R12"},
      {"mleader style into R12",
       true,
       resource::kMLeaderStyles,
       {{resource::kMLeaderStyles, {L"CALLOUT"}}},
       "R12"},
  };
  for (const Case& c : cases) {
    Document doc = c.r12_target ? r12Target() : target();
    std::string before = doc.serialize();
    auto result = copyResources(doc, source, c.mask, c.needed);
    ASSERT_FALSE(result.isOk()) << c.label;
    EXPECT_NE(result.status().message().find(c.message), std::string::npos)
        << c.label << ": " << result.status().message();
    EXPECT_EQ(doc.serialize(), before) << c.label;
  }
  // Layouts in the mask alone do not stop the other kinds.
  Document doc = target();
  EXPECT_TRUE(copyResources(doc, source, resource::kLayouts | resource::kLayers,
                            {{resource::kLayers, {L"DOORS"}}})
                  .isOk());
  // An R12 source lacks what a later target requires.
  Document r12 = r12Target();
  EXPECT_FALSE(copyResources(doc, r12, resource::kLayers, {{resource::kLayers, {L"0"}}}).isOk());
}

TEST(CopyResources, R12TargetGetsWhatItsFormatHolds) {
  Document source = load("resources.dxf");
  Document doc = r12Target();
  auto provided =
      copyResources(doc, source, resource::kBlocks | resource::kDimensionStyles,
                    {{resource::kBlocks, {L"DOOR"}}, {resource::kDimensionStyles, {L"ARCH"}}});
  ASSERT_TRUE(provided.isOk()) << provided.status().message();
  EXPECT_EQ(provided->at(resource::kBlocks).size(), 1u);
  Document copied = reparse(doc);
  expectSound(copied);
  for (const wchar_t* name : {L"DOOR", L"KNOB", L"*U1"})
    EXPECT_NE(findBlock(copied, name), kNoRecord);
  EXPECT_NE(findTableEntry(copied, "LAYER", L"MÜLL"), kNoRecord);
  EXPECT_NE(findTableEntry(copied, "DIMSTYLE", L"ARCH"), kNoRecord);
  EXPECT_EQ(copied.table("BLOCK_RECORD").head, kNoRecord);
  for (RecordId id = copied.first(); id != kNoRecord; id = copied.next(id)) {
    for (const Tag& tag : copied.tags(id)) {
      EXPECT_FALSE(tag.code == 100 || tag.code == 102 || isPointerCode(tag.code))
          << copied.type(id) << " keeps code " << tag.code;
    }
  }
  // The complex linetype that layer MÜLL uses keeps its dashes only.
  RecordId gas = findTableEntry(copied, "LTYPE", L"GASLINE");
  ASSERT_NE(gas, kNoRecord);
  EXPECT_FALSE(copied.find(gas, 9));
  EXPECT_EQ(copied.intValue(gas, 73, 0), 3);
}

// --- ezdxf, an independent reader, opens the result, finds no problem and every resource
// (also those of .lin and .mln files).

constexpr const char* kEzdxfCheck = R"PY(
import sys, ezdxf
doc = ezdxf.readfile(sys.argv[1])
auditor = doc.audit()
problems = [e.message for e in auditor.errors] + [f.message for f in auditor.fixes]
def need(ok, what):
    if not ok: problems.append("missing " + what)
for name in ("DOORS", "MÜLL"): need(name in doc.layers, "layer " + name)
for name in ("GASLINE", "DASHED"): need(name in doc.linetypes, "linetype " + name)
for name in ("Notes", "Annot", "GasText"): need(name in doc.styles, "style " + name)
need("ARCH" in doc.dimstyles, "dimstyle ARCH")
for name in ("DOOR", "KNOB", "ARROW"): need(name in doc.blocks, "block " + name)
need("TRIPLE" in doc.mline_styles, "mline style TRIPLE")
need("DOUBLE_WALL" in doc.mline_styles, "mline style DOUBLE_WALL")
need(doc.linetypes.get("GAS_LINE").pattern_tags.is_complex_type(), "the text of GAS_LINE")
need("FENCE" in doc.linetypes, "linetype FENCE")
need("CALLOUT" in doc.mleader_styles, "mleader style CALLOUT")
door = doc.blocks.get("DOOR")
need(door is not None and len(door.query("ATTDEF")) == 1, "the ATTDEF of DOOR")
need(doc.linetypes.get("GASLINE").pattern_tags.is_complex_type(), "the text of GASLINE")
for problem in problems: print(problem)
sys.exit(1 if problems else 0)
)PY";

TEST(CopyResources, EzdxfReadsAndAuditsTheResult) {
  TAXOR_SKIP_WITHOUT_EZDXF();
  Document source = load("resources.dxf");
  for (const char* version : {"AC1015", "AC1021"}) {
    Document doc = target(version);
    ResourceNameMap needed = {
        {resource::kBlocks, {L"DOOR", L"ARROW"}},  {resource::kDimensionStyles, {L"ARCH"}},
        {resource::kLayers, {L"DOORS", L"WALLS"}}, {resource::kLinetypes, {L"DASHED"}},
        {resource::kMLeaderStyles, {L"CALLOUT"}},  {resource::kMlineStyles, {L"TRIPLE"}},
        {resource::kTextStyles, {L"Notes"}}};
    ASSERT_TRUE(copyResources(doc, source, 0x1FF & ~resource::kLayouts, needed).isOk());
    std::vector<PatternDefinition> patterns;
    ASSERT_TRUE(importResourceFile(doc, patterns, dataPath("sample.lin"), resource::kLinetypes,
                                   {{resource::kLinetypes, {L"GAS_LINE", L"FENCE"}}})
                    .isOk());
    ASSERT_TRUE(importResourceFile(doc, patterns, dataPath("sample.mln"), resource::kMlineStyles,
                                   {{resource::kMlineStyles, {L"DOUBLE_WALL"}}})
                    .isOk());
    testing_paths::TempDir dir("taxor_resources");
    std::string path = (dir / (std::string(version) + ".dxf")).string();
    ASSERT_TRUE(doc.save(path).isOk());
    std::string script = (dir / "check.py").string();
    std::ofstream(script) << kEzdxfCheck;
    std::string output;
    int code = testing_paths::runCommand("/usr/bin/python3 " + script + " " + path, output);
    EXPECT_EQ(code, 0) << version << ":\n" << output;
  }
}

}  // namespace
}  // namespace dxf
