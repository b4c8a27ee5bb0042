// The contract of host::Database for entities, symbol tables, system variables and
// resources, and of the host's environment and files, run over every host implementation
// (see host_subjects.h).
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "host/host_subjects.h"
#include "test_paths.h"

namespace {

using host::Color;
using host::EntityProperty;
using host::Point3;
using host::PropertyValue;
using host::SymbolTable;
using host::SysVar;
using host_contract::Code;
using host_contract::codeOf;
using host_contract::ObjectId;

class EntityContractTest : public host_contract::HostContractTest {};

std::string describe(const std::wstring& entity_class, EntityProperty property) {
  return std::to_string(static_cast<int>(property)) + " of " + base::toUtf8(entity_class);
}

// Which alternative of PropertyValue a property holds: the type entity_property.h gives it.
enum Kind : size_t { kNone, kInteger, kReal, kText, kPoint, kColor };

// A line's layer, linetype and colour are read back typed by the SetProperty test below.
TEST_P(EntityContractTest, PropertiesHaveTheirTypeOnlyWhereTheEntityTypeHasThem) {
  struct Case {
    const wchar_t* entity_class;
    EntityProperty property;
    Kind kind;
  };
  const Case cases[] = {
      {L"AcDbLine", EntityProperty::kLinetypeScale, kReal},
      {L"AcDbLine", EntityProperty::kLineweight, kInteger},
      {L"AcDbLine", EntityProperty::kRadius, kNone},
      {L"AcDbLine", EntityProperty::kClosed, kNone},
      {L"AcDbLine", EntityProperty::kDimensionType, kNone},
      {L"AcDbLine", EntityProperty::kTextStyle, kNone},
      {L"AcDbCircle", EntityProperty::kRadius, kReal},
      {L"AcDbArc", EntityProperty::kRadius, kReal},
      {L"AcDbPolyline", EntityProperty::kClosed, kInteger},
      {L"AcDbPolyline", EntityProperty::kElevation, kReal},
      {L"AcDbPolyline", EntityProperty::kConstantWidth, kReal},
      {L"AcDb2dPolyline", EntityProperty::kClosed, kInteger},
      {L"AcDb2dPolyline", EntityProperty::kElevation, kNone},
      {L"AcDbSpline", EntityProperty::kClosed, kInteger},
      {L"AcDbBlockReference", EntityProperty::kScale, kPoint},
      {L"AcDbBlockReference", EntityProperty::kRotation, kReal},
      {L"AcDbBlockReference", EntityProperty::kBlockName, kText},
      {L"AcDbText", EntityProperty::kTextStyle, kText},
      {L"AcDbText", EntityProperty::kTextJustification, kInteger},
      {L"AcDbText", EntityProperty::kContents, kText},
      {L"AcDbText", EntityProperty::kAttachment, kNone},
      {L"AcDbMText", EntityProperty::kAttachment, kInteger},
      {L"AcDbMText", EntityProperty::kTextHeight, kReal},
      {L"AcDbMText", EntityProperty::kTextJustification, kNone},
      {L"AcDbAlignedDimension", EntityProperty::kDimensionType, kInteger},
      {L"AcDbAlignedDimension", EntityProperty::kDimensionStyle, kText},
      {L"AcDbEllipse", EntityProperty::kEllipseEnd, kReal},
      {L"AcDbHatch", EntityProperty::kPattern, kText},
      {L"AcDbHatch", EntityProperty::kBackgroundColor, kColor},
      {L"AcDbHatch", EntityProperty::kPatternScale, kReal},
      {L"AcDbMLeader", EntityProperty::kMLeaderStyle, kText},
      {L"AcDbMline", EntityProperty::kMlineScale, kReal},
      {L"AcDbMline", EntityProperty::kMlineStyle, kText},
      {L"AcDbMline", EntityProperty::kRadius, kNone},
  };
  // Read into the same value throughout, as walks do: what it held before must not show.
  PropertyValue reused = L"a text longer than any value of the drawing";
  for (const Case& c : cases) {
    ObjectId id = subject_->entityOf(c.entity_class);
    EXPECT_EQ(db().getProperty(id, c.property).index(), c.kind)
        << describe(c.entity_class, c.property);
    db().getPropertyInto(id, c.property, reused);
    EXPECT_EQ(reused, db().getProperty(id, c.property)) << describe(c.entity_class, c.property);
  }
  reused = L"a text longer than any value of the drawing";
  db().getPropertyInto(subject_->entityOf(L"AcDbLine"), EntityProperty::kLayer, reused);
  EXPECT_EQ(reused, PropertyValue(L"0"));
  // Objects that are not entities have none.
  for (ObjectId other : {db().namedObjectsDictionary(), ObjectId{}})
    EXPECT_EQ(db().getProperty(other, EntityProperty::kLayer).index(), kNone) << other.value;
  // A new entity shows what it names, and "ByLayer" for the linetype it does not name.
  ObjectId line = subject_->addLine();
  EXPECT_EQ(db().getProperty(line, EntityProperty::kLayer), PropertyValue(L"0"));
  EXPECT_EQ(db().getProperty(line, EntityProperty::kLinetype), PropertyValue(L"ByLayer"));
  EXPECT_EQ(db().getProperty(line, EntityProperty::kColor), PropertyValue(Color{}));
}

TEST_P(EntityContractTest, SetPropertyChecksTypeAndNamesAndChangesNothingWhenRefused) {
  const PropertyValue unchanged;
  struct Case {
    const wchar_t* entity_class;
    EntityProperty property;
    PropertyValue value;
    Code expected;
    PropertyValue stored = {};  // what getProperty shows afterwards; nothing: as before
  };
  const Case cases[] = {
      {L"AcDbLine", EntityProperty::kLayer, L"Walls", Code::kOk, L"Walls"},
      {L"AcDbLine", EntityProperty::kLayer, L"Roof", Code::kNotFound},
      {L"AcDbLine", EntityProperty::kLayer, int64_t{5}, Code::kInvalid},
      {L"AcDbLine", EntityProperty::kLayer, L"walls", Code::kOk, L"Walls"},  // as the table has it
      {L"AcDbLine", EntityProperty::kLinetype, L"DASHED", Code::kOk, L"Dashed"},
      {L"AcDbLine", EntityProperty::kLinetype, L"byblock", Code::kOk, L"ByBlock"},
      {L"AcDbLine", EntityProperty::kLinetype, L"Walls", Code::kNotFound},
      {L"AcDbText", EntityProperty::kTextStyle, L"Notes", Code::kOk, L"Notes"},
      {L"AcDbMText", EntityProperty::kTextStyle, L"Walls", Code::kNotFound},
      {L"AcDbAlignedDimension", EntityProperty::kDimensionStyle, L"Arch", Code::kOk, L"Arch"},
      {L"AcDbAlignedDimension", EntityProperty::kDimensionStyle, L"Notes", Code::kNotFound},
      {L"AcDbAlignedDimension", EntityProperty::kDimensionType, int64_t{1}, Code::kUnsupported},
      {L"AcDbBlockReference", EntityProperty::kBlockName, L"Door", Code::kOk, L"Door"},
      {L"AcDbBlockReference", EntityProperty::kBlockName, L"Window", Code::kNotFound},
      {L"AcDbBlockReference", EntityProperty::kScale, Point3{2, 2, 1}, Code::kOk, Point3{2, 2, 1}},
      {L"AcDbLine", EntityProperty::kRadius, 1.0, Code::kUnsupported},
      {L"AcDbCircle", EntityProperty::kRadius, 2.5, Code::kOk, 2.5},
      {L"AcDbCircle", EntityProperty::kRadius, L"2.5", Code::kInvalid},
      {L"AcDbCircle", EntityProperty::kRadius, unchanged, Code::kInvalid},
      {L"AcDbLine", EntityProperty::kColor, Color{1, 0xFF0000}, Code::kOk, Color{1, 0xFF0000}},
      {L"AcDbLine", EntityProperty::kColor, int64_t{1}, Code::kInvalid},
      {L"AcDbLine", EntityProperty::kLineweight, int64_t{50}, Code::kOk, int64_t{50}},
      {L"AcDbMText", EntityProperty::kContents, L"Line 1\\PLine 2", Code::kOk, L"Line 1\\PLine 2"},
  };
  for (const Case& c : cases) {
    const std::string what = describe(c.entity_class, c.property);
    ObjectId id = subject_->entityOf(c.entity_class);
    // Another property read first: a host may keep what it read of an entity.
    (void)db().getProperty(id, EntityProperty::kLayer);
    const PropertyValue before = db().getProperty(id, c.property);
    EXPECT_EQ(codeOf(db().setProperty(id, c.property, c.value)), c.expected) << what;
    const PropertyValue& stored = c.stored.index() == kNone ? before : c.stored;
    EXPECT_EQ(db().getProperty(id, c.property), stored) << what;
    PropertyValue into = int64_t{0};
    db().getPropertyInto(id, c.property, into);
    EXPECT_EQ(into, stored) << what;
  }
}

TEST_P(EntityContractTest, RelativeDrawOrderDealsOutTheEntitiesOwnPlaces) {
  struct Case {
    std::vector<int> order;  // indexes into five new lines
    Code expected;
    std::vector<int> drawn;
  };
  const Case cases[] = {
      {{4, 0}, Code::kOk, {4, 1, 2, 3, 0}}, {{2, 1}, Code::kOk, {0, 2, 1, 3, 4}},
      {{0, 2}, Code::kOk, {0, 1, 2, 3, 4}}, {{1, 3, 0}, Code::kOk, {1, 3, 2, 0, 4}},
      {{}, Code::kOk, {0, 1, 2, 3, 4}},     {{0, 1, 0}, Code::kInvalid, {0, 1, 2, 3, 4}},
  };
  for (const Case& c : cases) {
    auto subject = GetParam().make();
    host::Database& d = subject->host().database();
    std::vector<ObjectId> ids;
    for (int i = 0; i < 5; ++i) ids.push_back(subject->addLine());
    const std::vector<ObjectId> listed = d.modelSpaceEntities();
    std::vector<ObjectId> order;
    for (int i : c.order) order.push_back(ids[i]);
    std::vector<ObjectId> drawn;
    for (int i : c.drawn) drawn.push_back(ids[i]);
    const std::string what = testing::PrintToString(c.order);
    EXPECT_EQ(codeOf(d.setRelativeDrawOrder(order)), c.expected) << what;
    std::vector<ObjectId> now = subject->drawOrder();
    std::erase_if(now,
                  [&](ObjectId id) { return std::find(ids.begin(), ids.end(), id) == ids.end(); });
    EXPECT_EQ(now, drawn) << what;
    EXPECT_EQ(d.modelSpaceEntities(), listed) << what;  // the listing order stays
  }
}

TEST_P(EntityContractTest, SymbolTablesAreSeparateAndNamesCompareIgnoringCase) {
  struct Case {
    SymbolTable table;
    const wchar_t* name;
    bool present;
  };
  const Case cases[] = {
      {SymbolTable::kLayer, L"0", true},
      {SymbolTable::kLayer, L"WALLS", true},
      {SymbolTable::kLayer, L"Dashed", false},
      {SymbolTable::kLayer, L"Standard", false},
      {SymbolTable::kLinetype, L"dashed", true},
      {SymbolTable::kLinetype, L"Continuous", true},
      {SymbolTable::kTextStyle, L"notes", true},
      {SymbolTable::kTextStyle, L"STANDARD", true},
      {SymbolTable::kTextStyle, L"0", false},
      {SymbolTable::kDimensionStyle, L"ARCH", true},
      {SymbolTable::kDimensionStyle, L"Notes", false},
      {SymbolTable::kBlock, L"door", true},
      {SymbolTable::kBlock, L"*model_space", true},
      {SymbolTable::kBlock, L"Window", false},
      {SymbolTable::kBlock, L"Standard", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(db().hasSymbol(c.table, c.name), c.present)
        << static_cast<int>(c.table) << " " << base::toUtf8(c.name);
  }
  auto walls = db().layerState(L"walls");
  ASSERT_TRUE(walls);
  EXPECT_TRUE(walls->frozen && walls->off && walls->locked);
  auto zero = db().layerState(L"0");
  ASSERT_TRUE(zero);
  EXPECT_FALSE(zero->frozen || zero->off || zero->locked);
  EXPECT_FALSE(db().hasAttributeDefinitions(L"Door"));  // its only entity is a line
  EXPECT_FALSE(db().hasAttributeDefinitions(L"Window"));
}

TEST_P(EntityContractTest, SystemVariablesKeepTheirType) {
  struct Case {
    const char* name;
    SysVar value;
    Code expected;
    SysVar after;
  };
  const SysVar four{int16_t{4}};
  const SysVar origin{Point3{}};
  const SysVar flat_origin{host::Point2{}};
  const Case cases[] = {
      {"luprec", SysVar{int16_t{2}}, Code::kOk, SysVar{int16_t{2}}},
      {"LUPREC", SysVar{int32_t{2}}, Code::kInvalid, four},
      {"LUPREC", SysVar{2.0}, Code::kInvalid, four},
      {"LUPREC", SysVar{std::wstring(L"2")}, Code::kInvalid, four},
      {"INSBASE", SysVar{Point3{1, 2, 0}}, Code::kOk, SysVar{Point3{1, 2, 0}}},
      {"insbase", SysVar{int16_t{1}}, Code::kInvalid, origin},
      {"insbase", SysVar{host::Point2{1, 2}}, Code::kInvalid, origin},
      {"MaxSort", SysVar{int32_t{900}}, Code::kOk, SysVar{int32_t{900}}},
      {"MAXSORT", SysVar{int16_t{900}}, Code::kInvalid, SysVar{int32_t{1000}}},
      {"HPNAME", SysVar{std::wstring(L"SOLID")}, Code::kOk, SysVar{std::wstring(L"SOLID")}},
      {"HPSCALE", SysVar{0.5}, Code::kOk, SysVar{0.5}},
      {"SNAPBASE", SysVar{host::Point2{1, 2}}, Code::kOk, SysVar{host::Point2{1, 2}}},
      {"snapbase", SysVar{Point3{1, 2, 0}}, Code::kInvalid, flat_origin},
  };
  for (const Case& c : cases) {
    auto subject = GetParam().make();
    host::Database& d = subject->host().database();
    EXPECT_EQ(codeOf(d.setVar(c.name, c.value)), c.expected) << c.name;
    auto got = d.getVar(c.name);
    ASSERT_TRUE(got) << c.name;
    EXPECT_EQ(*got, c.after) << c.name;
  }
}

// A host without resources answers "not supported"; one with them cannot read a missing
// file. Either way nothing changes. An environment value set is got back; one never set is
// nothing.
TEST_P(EntityContractTest, UnreadableImportChangesNothingAndEnvironmentValuesAreGotBack) {
  const size_t entities = db().modelSpaceEntities().size();
  auto imported = db().importResources(
      L"/nonexistent/taxor/resources.dxf", host::kResourceLinetypes | host::kResourceLayers,
      {{host::kResourceLinetypes, {L"Hidden"}}, {host::kResourceLayers, {L"Roof"}}});
  EXPECT_FALSE(imported);
  EXPECT_FALSE(db().hasSymbol(SymbolTable::kLinetype, L"Hidden"));
  EXPECT_FALSE(db().hasSymbol(SymbolTable::kLayer, L"Roof"));
  EXPECT_EQ(db().modelSpaceEntities().size(), entities);

  EXPECT_EQ(host().getEnv(L"TAXOR_CONTRACT_UNSET_VALUE"), std::nullopt);
  const bool set = static_cast<bool>(host().setEnv(L"TAXOR_CONTRACT_VALUE", L"a;b"));
  EXPECT_EQ(host().getEnv(L"TAXOR_CONTRACT_VALUE"),
            set ? std::optional<std::wstring>(L"a;b") : std::nullopt);
}

TEST_P(EntityContractTest, ExternalReferencesAreTheBlocksFlaggedAsSuch) {
  struct Case {
    const wchar_t* name;
    const char* flags;  // null: not added here
    bool external;
  };
  const Case cases[] = {
      {L"Plan", "4", true},         // attached
      {L"Site", "    12", true},    // an overlay, padded as writers pad integers
      {L"Survey", "8", true},       // an overlay without the attached bit
      {L"Loaded", "36", true},      // resolved
      {L"Plan|Door", "48", false},  // taken in from a reference, not one itself
      {L"Tag", "2", false},         // has attributes
      {L"*U1", "1", false},         // anonymous
      {L"pLAN", nullptr, true},     // names ignore case
      {L"Door", nullptr, false},    // ordinary
      {L"Window", nullptr, false},  // none
  };
  for (const Case& c : cases) {
    if (c.flags) subject_->addBlock(c.name, c.flags);
    ASSERT_EQ(db().hasSymbol(SymbolTable::kBlock, c.name), c.name != std::wstring(L"Window"));
  }
  for (const Case& c : cases) {
    EXPECT_EQ(db().isExternalReference(c.name), c.external && GetParam().tells_external_references)
        << base::toUtf8(c.name);
  }
}

// Whole or not at all, and never a temporary file left behind.
TEST_P(EntityContractTest, TextFilesAreWrittenWholeOrNotAtAll) {
  namespace fs = std::filesystem;
  enum Before { kNothing, kFile, kFolder };
  struct Case {
    const char* what;
    const char* file;
    Before before;
    bool read_only;
    Code expected;
  };
  const Case cases[] = {
      {"new", "Tür.txt", kNothing, false, Code::kOk},
      {"replaced", "Tür.txt", kFile, false, Code::kOk},
      {"in a missing folder", "missing/Tür.txt", kNothing, false, Code::kIo},
      {"over a folder", "Tür.txt", kFolder, false, Code::kIo},  // fails after the temporary file
      {"in a read-only folder", "Tür.txt", kFile, true, Code::kIo},
  };
  const std::string text =
      "\xEF\xBB\xBF"
      "Tür; 門\r\nfin\n";
  const std::string old_text = "an older, longer text than the new one\n";
  for (const Case& c : cases) {
    if (c.read_only && geteuid() == 0) continue;  // root writes into a read-only folder
    const testing_paths::TempDir dir("taxor_write_text");
    const fs::path target = dir / c.file;
    if (c.before == kFile) std::ofstream(target, std::ios::binary) << old_text;
    if (c.before == kFolder) fs::create_directory(target);
    if (c.read_only) fs::permissions(dir.path(), fs::perms::owner_write, fs::perm_options::remove);
    const Code code = codeOf(host().writeTextFile(base::fromUtf8(target.string()), text));
    fs::permissions(dir.path(), fs::perms::owner_all, fs::perm_options::add);
    const Code expected = GetParam().writes_files ? c.expected : Code::kUnsupported;
    EXPECT_EQ(code, expected) << c.what;
    if (c.before == kFolder) {
      EXPECT_TRUE(fs::is_directory(target)) << c.what;
    } else if (expected == Code::kOk || c.before == kFile) {
      EXPECT_EQ(testing_paths::readFile(target.string()), expected == Code::kOk ? text : old_text)
          << c.what;
    }
    std::set<fs::path> left;
    for (const auto& entry : fs::recursive_directory_iterator(dir.path())) left.insert(entry);
    const bool there = expected == Code::kOk || c.before != kNothing;
    EXPECT_EQ(left, there ? std::set<fs::path>{target} : std::set<fs::path>{}) << c.what;
  }
}

INSTANTIATE_TEST_SUITE_P(AllHosts, EntityContractTest,
                         testing::ValuesIn(host_contract::kImplementations),
                         host_contract::implementationName);

}  // namespace
