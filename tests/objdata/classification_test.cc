// Classes as records tell them: membership, validation rules, attaching and removing records.
#include "objdata/classification.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "base/text_case.h"
#include "base/utf.h"
#include "catalogue/parser.h"
#include "fakes/fake_host.h"
#include "objdata/class_dependencies.h"
#include "objdata/membership.h"
#include "objdata/record_validation.h"

namespace {

using objdata::FieldValue;
using objdata::TableRecord;
using objdata::Value;
using objdata::ValueType;

Value text(const wchar_t* v) { return objdata::makeValue(ValueType::kCharacter, v); }
Value integer(int32_t v) { return objdata::makeValue(ValueType::kInteger, std::to_wstring(v)); }
Value real(double v) { return {ValueType::kReal, 0, v, {}, {}}; }
Value unset() { return {}; }

// Utilities holds Pipe, the group Wells (Manhole, two tables) and a class named like a
// number; Roads holds Marker, which has no table; Duct, of no group, shares Pipe's table.
constexpr const char* kNetwork =
    "class\tUtilities\t1\n"
    "obj_name\tPipe\t1\t1\nobj_type\tLine\nobj_prop\tlayer\tWater\n"
    "vel_name\tPIPES\nvel_key\tCLASS\nvel_fld\tDN\tDiameter\tinteger\t100\n"
    "class\tWells\t1\n"
    "obj_name\tManhole\t1\t3\nobj_type\tCircle\n"
    "vel_name\tWELLS\nvel_key\tCLASS\nvel_fld\tDEPTH\tDepth\tinteger\t2\n"
    "vel_name\tLIDS\nvel_key\tKIND\nvel_fld\tLOAD\tLoad\tcharacter\tD400\n"
    "/class\n"
    "obj_name\t42\t1\t1\nobj_type\tLine\n"
    "vel_name\tPIPES\nvel_key\tCLASS\nvel_fld\tDN\tDiameter\tinteger\t100\n"
    "/class\n"
    "class\tRoads\t1\nobj_name\tMarker\t1\t4\nobj_type\tPoint\n/class\n"
    "obj_name\tDuct\t1\t2\nobj_type\tLine\n"
    "vel_name\tPIPES\nvel_key\tCLASS\nvel_fld\tDN\tDiameter\tinteger\t100\n";

// One field per rule; the numeric lists are written unlike the values' own text.
constexpr const char* kRules =
    "obj_name\tPipe\t1\t1\nobj_type\tLine\nvel_name\tPIPES\nvel_key\tCLASS\n"
    "vel_fld\tNAME\tName\tnotempty character\n"
    "vel_fld\tMATERIAL\tMaterial\tcharacter\tsteel\tsteel,PVC\n"
    "vel_fld\tDN\tDiameter\tinteger\t100\t080,100,150\n"
    "vel_fld\tSLOPE\tSlope\treal\t0.5\t0.50,1.25\n"
    "vel_fld\tDEPTH\tDepth\tinteger\t2\t1:3\n"
    "vel_fld\tLENGTH\tLength\treal\t1\t0.5:2.5\n"
    "vel_fld\tZONE\tZone\tcharacter\tb\tb:d\n"
    "vel_fld\tNOTE\tNote\tcharacter\n"
    "vel_fld\tOWNER\tOwner\tcharacter\tcity\n"
    "vel_fld\tSTATUS\tStatus\trequired character\tok\tok,bad\n";

// A parsed class file over a fake drawing; the classifier is made on first use, so that a
// test can prepare the drawing and the machine first.
struct Drawing {
  explicit Drawing(const char* classes) {
    catalogue::ParseResult parsed = catalogue::parseClassText(classes, L"/classes/c.txt", host);
    if (!parsed.ok) throw std::runtime_error("class file rejected");
    catalogue = std::move(parsed.catalogue);
    dictionary = objdata::getTableDictionary(host.document());
  }

  objdata::Classifier& classifier() {
    if (!classifier_) {
      environment.emplace(objdata::templateEnvironment(host));
      tables.emplace(host.fakeDatabase(), dictionary);
      classifier_.emplace(host.fakeDatabase(), catalogue, *tables, *environment);
    }
    return *classifier_;
  }
  const catalogue::ObjectClass& cls(const wchar_t* name) const {
    const catalogue::ObjectClass* found = catalogue.findObject(name);
    if (!found) throw std::runtime_error("no class " + base::toUtf8(name));
    return *found;
  }
  void store(const wchar_t* table, const std::vector<objdata::StoredField>& fields) {
    ASSERT_EQ(objdata::ensureStoredTable(host.fakeDatabase(), dictionary, table, fields), 2);
  }
  void append(host::ObjectId entity, TableRecord record) {
    objdata::TableDirectory& directory = classifier().tables();
    ASSERT_NE(directory.find(record.table_name), nullptr);
    ASSERT_EQ(objdata::appendRecord(directory, *directory.find(record.table_name), record, entity),
              objdata::kStatusOk);
  }
  // The entity's records as "TABLE:value,value|TABLE:...".
  std::string records(host::ObjectId entity) {
    std::wstring out;
    for (const TableRecord& record : classifier().records(entity)) {
      out += (out.empty() ? L"" : L"|") + record.table_name + L":";
      for (size_t i = 0; i < record.fields.size(); ++i)
        out += (i ? L"," : L"") + objdata::textOrEmpty(record.fields[i].value);
    }
    return base::toUtf8(out);
  }

  fakes::FakeHost host;
  catalogue::Catalogue catalogue;
  host::ObjectId dictionary;
  std::optional<objdata::TemplateEnvironment> environment;
  std::optional<objdata::TableDirectory> tables;
  std::optional<objdata::Classifier> classifier_;
};

TableRecord pipeRecord(const wchar_t* table, const wchar_t* key, int32_t dn) {
  return {table, {{L"CLASS", std::nullopt, text(key)}, {L"DN", std::nullopt, integer(dn)}}};
}

TEST(ClassifierValidation, EachFieldRule) {
  Drawing run(kRules);
  const catalogue::ObjectClass& pipe = run.cls(L"pipe");
  struct Case {
    const wchar_t* field;
    std::optional<Value> value;  // nothing: the field is missing from the record
    bool valid;
    bool valid_required_only;
  };
  const Case cases[] = {
      {L"NAME", text(L"P-1"), true, true},
      {L"NAME", text(L""), false, true},
      {L"NAME", unset(), false, true},
      {L"MATERIAL", text(L"pvc"), true, true},
      {L"MATERIAL", text(L"copper"), false, true},
      {L"DN", integer(80), true, true},
      {L"DN", integer(90), false, true},
      {L"DN", unset(), false, true},
      {L"SLOPE", real(1.25), true, true},
      {L"SLOPE", real(1.2), false, true},
      {L"DEPTH", integer(1), true, true},
      {L"DEPTH", integer(3), true, true},
      {L"DEPTH", integer(0), false, true},
      {L"DEPTH", integer(4), false, true},
      {L"DEPTH", unset(), false, true},
      {L"LENGTH", real(0.5), true, true},
      {L"LENGTH", real(2.5), true, true},
      {L"LENGTH", real(0.49), false, true},
      {L"LENGTH", real(2.51), false, true},
      {L"ZONE", text(L"b"), true, true},
      {L"ZONE", text(L"D"), true, true},
      {L"ZONE", text(L"a"), false, true},
      {L"ZONE", text(L"da"), false, true},
      {L"NOTE", unset(), true, true},
      {L"OWNER", text(L"anyone"), true, true},
      {L"NOTE", std::nullopt, false, true},
      {L"STATUS", text(L"worse"), false, false},
      {L"STATUS", std::nullopt, false, false},
  };
  const TableRecord valid{L"PIPES",
                          {{L"CLASS", std::nullopt, text(L"Pipe")},
                           {L"NAME", std::nullopt, text(L"P-1")},
                           {L"MATERIAL", std::nullopt, text(L"steel")},
                           {L"DN", std::nullopt, integer(100)},
                           {L"SLOPE", std::nullopt, real(0.5)},
                           {L"DEPTH", std::nullopt, integer(2)},
                           {L"LENGTH", std::nullopt, real(1)},
                           {L"ZONE", std::nullopt, text(L"c")},
                           {L"NOTE", std::nullopt, text(L"")},
                           {L"OWNER", std::nullopt, text(L"city")},
                           {L"STATUS", std::nullopt, text(L"OK")}}};
  // Stored fields need not follow the class file's order.
  TableRecord reversed = valid;
  std::reverse(reversed.fields.begin(), reversed.fields.end());
  EXPECT_TRUE(run.classifier().isClassifiedAs(std::vector{reversed}, pipe, true, false));
  for (const Case& c : cases) {
    TableRecord record = valid;
    int index = objdata::findField(record.fields, c.field);
    if (c.value) {
      record.fields[index].value = *c.value;
    } else {
      record.fields.erase(record.fields.begin() + index);
    }
    std::string trace = base::toUtf8(c.field) + " = " +
                        (c.value ? base::toUtf8(objdata::textOrEmpty(*c.value)) : "(missing)");
    SCOPED_TRACE(trace);
    EXPECT_EQ(run.classifier().isClassifiedAs(std::vector{record}, pipe, true, false), c.valid);
    EXPECT_EQ(run.classifier().isClassifiedAs(std::vector{record}, pipe, true, true),
              c.valid_required_only);
    // Membership alone never looks at the other fields.
    EXPECT_TRUE(run.classifier().isClassifiedAs(std::vector{record}, pipe));
    // The findings name what is wrong where.
    std::vector<objdata::Finding> findings;
    run.classifier().findBrokenRules(std::vector{record}, false, findings);
    if (c.valid) {
      EXPECT_TRUE(findings.empty());
      continue;
    }
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].cls, &pipe);
    EXPECT_EQ(findings[0].table, L"PIPES");
    EXPECT_EQ(findings[0].broken.field, c.field);
    EXPECT_EQ(findings[0].broken.value, c.value ? objdata::textOrEmpty(*c.value) : L"");
    using objdata::BrokenRule;
    std::wstring_view field = c.field;
    BrokenRule rule = !c.value           ? BrokenRule::kFieldMissing
                      : field == L"NAME" ? BrokenRule::kEmpty
                      : field == L"DEPTH" || field == L"LENGTH" || field == L"ZONE"
                          ? BrokenRule::kOutOfRange
                          : BrokenRule::kNotAllowed;
    EXPECT_EQ(findings[0].broken.rule, rule);
  }
}

// Membership, unlike this, takes the key's case as it is (see ClassesAndGroupsByName).
TEST(ClassifierValidation, KeyComparesIgnoringCase) {
  Drawing run(kRules);
  const catalogue::ObjectClass& pipe = run.cls(L"pipe");
  ASSERT_EQ(pipe.tables.at(0).fields.at(0).kind, catalogue::ValueKind::kKey);
  const catalogue::TableDefinition key_only{L"PIPES", {pipe.tables.at(0).fields.at(0)}};
  objdata::Classifier& classifier = run.classifier();
  objdata::TextExpander expand = [&](std::wstring_view t) { return classifier.expand(t, pipe); };
  struct Case {
    Value key;
    bool valid;
  };
  for (const Case& c : {Case{text(L"PIPE"), true}, Case{text(L"Duct"), false},
                        Case{text(L""), false}, Case{unset(), false}}) {
    SCOPED_TRACE(base::toUtf8(objdata::textOrEmpty(c.key)));
    TableRecord record{L"PIPES", {{L"CLASS", std::nullopt, c.key}}};
    EXPECT_EQ(objdata::recordKeepsRules(record, key_only, expand, false), c.valid);
  }
}

// A class needs a record keyed by its name in each of its tables; a group holds its classes
// and its children's.
TEST(ClassifierMembership, ClassesAndGroupsByName) {
  Drawing run(kNetwork);
  auto keyed = [](const wchar_t* table, const wchar_t* field, Value key) {
    return TableRecord{table, {{field, std::nullopt, std::move(key)}}};
  };
  const TableRecord pipe = pipeRecord(L"PIPES", L"Pipe", 1);
  const TableRecord duct = pipeRecord(L"PIPES", L"Duct", 1);
  const TableRecord wells = keyed(L"wells", L"class", text(L"Manhole"));
  const TableRecord lids = keyed(L"LIDS", L"KIND", text(L"Manhole"));
  struct Case {
    const char* name;
    std::vector<TableRecord> records;
    const wchar_t* cls;  // a class or a group
    bool expected;
  };
  const Case cases[] = {
      {"no records", {}, L"Pipe", false},
      {"no records, class without tables", {}, L"Marker", false},
      {"class without tables", {wells}, L"Marker", true},
      {"exact key", {pipe}, L"Pipe", true},
      {"table name in other case", {pipeRecord(L"pipes", L"Pipe", 1)}, L"Pipe", true},
      {"key in other case", {pipeRecord(L"PIPES", L"pipe", 1)}, L"Pipe", false},
      {"another class's key", {duct}, L"Pipe", false},
      {"the other class", {duct}, L"Duct", true},
      {"one of two classes on a shared table",
       {duct, pipeRecord(L"PIPES", L"Pipe", 2)},
       L"Pipe",
       true},
      {"one of two tables", {wells}, L"Manhole", false},
      {"both tables", {lids, wells}, L"Manhole", true},
      {"no such name", {pipe}, L"Nowhere", false},
      {"a class of the group", {pipe}, L"utilities", true},
      {"a class of no group", {duct}, L"Utilities", false},
      {"group, key in other case", {pipeRecord(L"PIPES", L"pipe", 1)}, L"Utilities", false},
      {"group, key in another table",
       {keyed(L"WELLS", L"CLASS", text(L"Pipe"))},
       L"Utilities",
       false},
      {"a child group's class", {wells, lids}, L"Utilities", true},
      {"one of its two tables", {wells}, L"Utilities", false},
      {"the child group itself", {lids, wells}, L"Wells", true},
      {"not the parent's class", {pipe}, L"Wells", false},
      {"a key stored as a number", {keyed(L"PIPES", L"CLASS", integer(42))}, L"Utilities", true},
      {"group with a class without tables", {pipe}, L"Roads", true},
      {"group, no records", {}, L"Roads", false},
  };
  objdata::Membership membership(run.classifier());
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(membership.carries(c.records, c.cls), c.expected);
    if (const catalogue::Group* group = run.catalogue.findGroup(base::lowerCase(c.cls))) {
      EXPECT_EQ(membership.belongsTo(c.records, *group), c.expected);
    }
  }
}

TEST(ClassifierClassOfRecord, KeyValueNamesTheClass) {
  Drawing run(kNetwork);
  struct Case {
    TableRecord record;
    const wchar_t* expected;  // null: no class
  };
  const Case cases[] = {
      {pipeRecord(L"PIPES", L"PIPE", 1), L"Pipe"},
      {pipeRecord(L"pipes", L"duct", 1), L"Duct"},
      {{L"LIDS", {{L"KIND", std::nullopt, text(L"MANHOLE")}}}, L"Manhole"},
      {pipeRecord(L"PIPES", L"Culvert", 1), nullptr},
      {pipeRecord(L"ROADS", L"Pipe", 1), nullptr},
      {{L"PIPES", {{L"DN", std::nullopt, integer(1)}}}, nullptr},
      {{L"PIPES", {{L"CLASS", std::nullopt, unset()}}}, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(
        base::toUtf8(c.record.table_name + L" " + objdata::textOrEmpty(c.record.fields[0].value)));
    const catalogue::ObjectClass* found = run.classifier().classOfRecord(c.record);
    if (c.expected) {
      EXPECT_EQ(found, &run.cls(c.expected));
    } else {
      EXPECT_EQ(found, nullptr);
    }
  }
}

TEST(ClassifierAttach, RecordOfExpandedDefaults) {
  Drawing run(
      "obj_name\tPipe\t1\t1\nobj_type\tLine\nvel_name\tPIPES\nvel_key\tCLASS\n"
      "vel_fld\tDN\tDiameter\tinteger\t100\t80,100\n"
      "vel_fld\tAUTHOR\tAuthor\tcharacter\t$(user_name)\n"
      "vel_fld\tLABEL\tLabel\tcharacter\t$(obj_name)-main\n"
      "vel_fld\tNOTE\tNote\tcharacter\n"
      "vel_fld\tCOUNT\tCount\tinteger\n");
  run.host.setMachine(L"PC", L"ann");
  const catalogue::ObjectClass& pipe = run.cls(L"pipe");
  host::ObjectId first = run.host.addEntity(L"AcDbLine");
  host::ObjectId second = run.host.addEntity(L"AcDbLine");
  ASSERT_TRUE(run.classifier().classifyWithTable(pipe.tables.at(0), pipe, first));
  ASSERT_EQ(run.classifier().applyClass(pipe, second, false, true, draw::ApplyMode::kAll),
            objdata::Classifier::Applied::kYes);

  for (host::ObjectId entity : {first, second})
    EXPECT_EQ(run.records(entity), "PIPES:Pipe,100,ann,Pipe-main,,0");
  EXPECT_TRUE(run.classifier().isClassifiedAs(run.classifier().records(first), pipe, true));
}

TEST(ClassifierRemove, FirstMatchingRecordPerTable) {
  struct Case {
    const wchar_t* name;
    bool removed;
    const char* left;
  };
  const Case cases[] = {
      {L"Culvert", false,
       "PIPES:Duct,1|PIPES:Pipe,2|PIPES:Pipe,3|WELLS:Manhole,4|LIDS:Manhole,D400"},
      {L"PIPE", true, "PIPES:Duct,1|PIPES:Pipe,3|WELLS:Manhole,4|LIDS:Manhole,D400"},
      {L"Manhole", true, "PIPES:Duct,1|PIPES:Pipe,2|PIPES:Pipe,3"},
      // Carries nothing to take off, yet a class without tables is always carried.
      {L"Marker", true, "PIPES:Duct,1|PIPES:Pipe,2|PIPES:Pipe,3|WELLS:Manhole,4|LIDS:Manhole,D400"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(base::toUtf8(c.name));
    Drawing run(kNetwork);
    run.store(L"PIPES", {{L"CLASS", ValueType::kCharacter}, {L"DN", ValueType::kInteger}});
    run.store(L"WELLS", {{L"CLASS", ValueType::kCharacter}, {L"DEPTH", ValueType::kInteger}});
    run.store(L"LIDS", {{L"KIND", ValueType::kCharacter}, {L"LOAD", ValueType::kCharacter}});
    host::ObjectId entity = run.host.addEntity(L"AcDbLine");
    run.append(entity, pipeRecord(L"PIPES", L"Duct", 1));
    run.append(entity, pipeRecord(L"PIPES", L"Pipe", 2));
    run.append(entity, pipeRecord(L"PIPES", L"Pipe", 3));
    run.append(entity, {L"WELLS",
                        {{L"CLASS", std::nullopt, text(L"Manhole")},
                         {L"DEPTH", std::nullopt, integer(4)}}});
    run.append(entity, {L"LIDS",
                        {{L"KIND", std::nullopt, text(L"Manhole")},
                         {L"LOAD", std::nullopt, text(L"D400")}}});
    EXPECT_EQ(run.classifier().removeClass(c.name, entity), c.removed);
    EXPECT_EQ(run.records(entity), c.left);
  }
}

TEST(ClassifierDependencies, LayerFromDrawingOrResource) {
  struct Case {
    const char* name;
    const wchar_t* layer;  // added to the drawing; null: none
    bool provided;         // a resource file offers it (the fake host cannot import)
    bool expected;
  };
  const Case cases[] = {
      {"missing", nullptr, false, false},
      {"present", L"Water", false, true},
      {"present in other case", L"WATER", false, true},
      {"offered but not importable", nullptr, true, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Drawing run(kNetwork);
    if (c.layer) run.host.addLayer(c.layer);
    if (c.provided) run.catalogue.imports.push_back({L"/lib/a.dwg", host::kResourceLayers});
    EXPECT_EQ(run.classifier().loadDependencies(run.cls(L"pipe")), c.expected);
    EXPECT_TRUE(run.classifier().loadDependencies(run.cls(L"duct")));
    // The answer is kept for the run, though the drawing changes.
    run.host.addLayer(L"Water");
    EXPECT_EQ(run.classifier().loadDependencies(run.cls(L"pipe")), c.expected);
    EXPECT_TRUE(objdata::loadClassDependencies(run.host.fakeDatabase(), run.catalogue, nullptr,
                                               run.cls(L"pipe")));
  }
}

}  // namespace
