// Copying named resources between drawings: what comes along, handles and owners, names
// already there, encodings, R12 targets, and a check of the result by ezdxf.
#include "dxf/resource_copy.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "base/utf.h"
#include "dxf/blocks.h"
#include "dxf/dictionary.h"
#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/sample_drawing.h"
#include "dxf/symbol_tables.h"
#include "test_paths.h"

namespace dxf {
namespace {

namespace fs = std::filesystem;

using sample::dataPath;

Document load(const std::string& file) {
  return sample::parse(testing_paths::readFile(dataPath(file)), file);
}

// The target drawing, optionally as another version (AC1021 and later are UTF-8).
Document target(std::string_view version = "AC1015") {
  std::string bytes = testing_paths::readFile(dataPath("resource_target.dxf"));
  return sample::parse(sample::withVersion(bytes, version, "AC1015"), "target");
}

// An R12 drawing that uses handles.
Document r12Target() { return load("resource_target_r12.dxf"); }

Document reparse(const Document& doc) { return sample::parse(doc.serialize(), "copied"); }

// Symbol tables by name, blocks, and styles by the named dictionary that holds them.
enum class Kind { kLayer, kLinetype, kStyle, kDimStyle, kAppId, kBlock, kMline, kMLeader };
const char* const kTables[] = {"LAYER", "LTYPE", "STYLE", "DIMSTYLE", "APPID"};
const wchar_t* styleDictionary(Kind kind) {
  return kind == Kind::kMline ? L"ACAD_MLINESTYLE" : L"ACAD_MLEADERSTYLE";
}

RecordId lookup(const Document& doc, Kind kind, std::wstring_view name) {
  if (kind < Kind::kBlock) return findTableEntry(doc, kTables[int(kind)], name);
  return kind == Kind::kBlock ? findBlock(doc, name) : findStyle(doc, styleDictionary(kind), name);
}

// The handle a record's owner must have in `doc`.
Handle expectedOwner(const Document& doc, Kind kind, RecordId id) {
  if (kind < Kind::kBlock) return doc.record(doc.table(kTables[int(kind)]).head).handle;
  if (kind != Kind::kBlock) {
    return doc.record(dictionaryGet(doc, namedObjectsDictionary(doc), styleDictionary(kind)))
        .handle;
  }
  RecordId record = findBlockRecord(doc, recordName(doc, id));
  return record == kNoRecord ? 0 : doc.record(record).handle;
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
    EXPECT_TRUE(h == 0 || handles.insert(h).second) << "handle " << formatHandle(h) << " twice";
    for (const Tag& tag : doc.tags(id)) {
      if (tag.code >= 1000) break;
      if (!isPointerCode(tag.code) || doc.text(tag) == "0") continue;
      EXPECT_NE(doc.byHandle(std::stoull(std::string(doc.text(tag)), nullptr, 16)), kNoRecord)
          << doc.type(id) << " " << formatHandle(h) << ": " << tag.code << " " << doc.text(tag)
          << " names nothing";
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

TEST(CopyResources, CopiesTheRecordWithWhatItUses) {
  using enum Kind;
  using namespace resource;
  const uint32_t masks[] = {kLayers, kLinetypes, kTextStyles,  kDimensionStyles,
                            0,       kBlocks,    kMlineStyles, kMLeaderStyles};  // by Kind
  using Names = std::vector<std::pair<Kind, std::wstring>>;
  struct Case {
    Kind kind;
    std::wstring name;
    Names brought;  // dependencies that come along
    Names left;     // what must not come
  };
  const Case cases[] = {
      {kBlock,
       L"door",
       {{kBlock, L"KNOB"},
        {kLayer, L"DOORS"},
        {kLayer, L"MÜLL"},
        {kLinetype, L"GASLINE"},
        {kStyle, L"GasText"},
        {kStyle, L"Notes"},
        {kAppId, L"TAXOR_TEST"},
        {kBlock, L"*U2"}},
       {{kLinetype, L"DASHED"}, {kBlock, L"ARROW"}}},
      {kDimStyle, L"ARCH", {{kStyle, L"Annot"}, {kBlock, L"ARROW"}}, {{kBlock, L"DOOR"}}},
      {kLayer, L"mÜll", {{kLinetype, L"GASLINE"}, {kStyle, L"GasText"}}, {{kLayer, L"DOORS"}}},
      {kLayer, L"WALLS", {}, {{kLinetype, L"DASHED"}}},  // present already
      {kLinetype, L"GASLINE", {{kStyle, L"GasText"}}, {{kStyle, L"Notes"}}},
      {kMLeader,
       L"CALLOUT",
       {{kLinetype, L"DASHED"}, {kBlock, L"ARROW"}, {kStyle, L"Notes"}},
       {{kStyle, L"Annot"}}},
      {kMline, L"triple", {{kLinetype, L"DASHED"}}, {{kLinetype, L"GASLINE"}}},
      {kStyle, L"NOTES", {}, {{kStyle, L"Annot"}}},
  };
  Document source = load("resources.dxf");
  for (const Case& c : cases) {
    SCOPED_TRACE(base::toUtf8(c.name));
    const uint32_t mask = masks[int(c.kind)];
    Document doc = target();
    auto provided = copyResources(doc, source, mask, {{mask, {c.name, L"NO_SUCH_NAME"}}});
    ASSERT_TRUE(provided.isOk()) << provided.status().message();
    EXPECT_EQ(provided->at(mask), std::vector<std::wstring>{c.name});

    Document copied = reparse(doc);
    expectSound(copied);
    RecordId id = lookup(copied, c.kind, c.name);
    ASSERT_NE(id, kNoRecord);
    EXPECT_EQ(ownerOf(copied, id), expectedOwner(copied, c.kind, id));
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
}

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

// Only the kinds of the mask come, their text in the target's encoding.
TEST(CopyResources, CopiesOnlyTheKindsOfTheMaskReencoded) {
  Document source = load("resources.dxf");
  Document doc = target("AC1021");
  auto provided =
      copyResources(doc, source, resource::kLayers,
                    {{resource::kLayers, {L"MÜLL"}}, {resource::kTextStyles, {L"Annot"}}});
  ASSERT_TRUE(provided.isOk()) << provided.status().message();
  EXPECT_FALSE(provided->count(resource::kTextStyles));
  EXPECT_EQ(findTableEntry(doc, "STYLE", L"Annot"), kNoRecord);
  Document copied = reparse(doc);
  RecordId layer = findTableEntry(copied, "LAYER", L"MÜLL");
  ASSERT_NE(layer, kNoRecord);
  EXPECT_EQ(copied.value(layer, 2), "M\xC3\x9CLL");
}

TEST(CopyResources, RefusesWhatTheTargetCannotTakeAndChangesNothing) {
  using namespace resource;
  Document source = load("resources.dxf");
  struct Case {
    bool r12_target;
    uint32_t mask;
    ResourceNameMap needed;
    const char* message;
  };
  const Case cases[] = {
      {false,
       kLayouts | kLayers,
       {{kLayouts, {}}, {kLayers, {L"DOORS"}}},
       "importing layouts is not supported"},
      {true, kMlineStyles, {{kMlineStyles, {L"TRIPLE"}}}, "R12"},
      {true, kMLeaderStyles, {{kMLeaderStyles, {L"CALLOUT"}}}, "R12"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.mask);
    Document doc = c.r12_target ? r12Target() : target();
    std::string before = doc.serialize();
    auto result = copyResources(doc, source, c.mask, c.needed);
    ASSERT_FALSE(result.isOk());
    EXPECT_NE(result.status().message().find(c.message), std::string::npos)
        << result.status().message();
    EXPECT_EQ(doc.serialize(), before);
  }
  // Layouts in the mask alone do not stop the other kinds.
  Document doc = target();
  EXPECT_TRUE(copyResources(doc, source, kLayouts | kLayers, {{kLayers, {L"DOORS"}}}).isOk());
  // An R12 source lacks what a later target requires.
  Document r12 = r12Target();
  EXPECT_FALSE(copyResources(doc, r12, kLayers, {{kLayers, {L"0"}}}).isOk());
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
for table, names in (("layers", "DOORS MÜLL"), ("linetypes", "GASLINE DASHED FENCE"),
                     ("styles", "Notes Annot GasText"), ("dimstyles", "ARCH"),
                     ("blocks", "DOOR KNOB ARROW"), ("mline_styles", "TRIPLE DOUBLE_WALL"),
                     ("mleader_styles", "CALLOUT")):
    for name in names.split(): need(name in getattr(doc, table), table + " " + name)
for name in ("GAS_LINE", "GASLINE"):
    need(doc.linetypes.get(name).pattern_tags.is_complex_type(), "the text of " + name)
door = doc.blocks.get("DOOR")
need(door is not None and len(door.query("ATTDEF")) == 1, "the ATTDEF of DOOR")
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
