// Membership of groups of the class tree, as the selecting commands ask it.
#include "objdata/membership.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "base/text_case.h"
#include "catalogue/parser.h"
#include "fakes/fake_host.h"

namespace {

using objdata::TableRecord;
using objdata::Value;
using objdata::ValueType;

// Utilities holds Pipe and the group Wells (Manhole, two tables); Numbered is a class named
// like a number; Roads holds Marker, which has no table.
constexpr const char* kTree =
    "class\tUtilities\t1\n"
    "obj_name\tPipe\t1\t1\nobj_type\tLine\n"
    "vel_name\tPIPES\nvel_key\tCLASS\nvel_fld\tDN\tDiameter\tinteger\t100\n"
    "class\tWells\t1\n"
    "obj_name\tManhole\t1\t3\nobj_type\tCircle\n"
    "vel_name\tWELLS\nvel_key\tCLASS\nvel_fld\tDEPTH\tDepth\tinteger\t2\n"
    "vel_name\tLIDS\nvel_key\tKIND\nvel_fld\tLOAD\tLoad\tcharacter\tD400\n"
    "/class\n"
    "obj_name\t42\t1\t1\nobj_type\tLine\n"
    "vel_name\tPIPES\nvel_key\tCLASS\nvel_fld\tDN\tDiameter\tinteger\t100\n"
    "/class\n"
    "class\tRoads\t1\n"
    "obj_name\tMarker\t1\t4\nobj_type\tPoint\n"
    "/class\n"
    "obj_name\tDuct\t1\t2\nobj_type\tLine\n"
    "vel_name\tPIPES\nvel_key\tCLASS\nvel_fld\tDN\tDiameter\tinteger\t100\n";

Value typed(ValueType type, const wchar_t* text) { return objdata::makeValue(type, text); }

TableRecord keyed(const wchar_t* table, const wchar_t* field, Value key) {
  return {table, {{field, std::nullopt, std::move(key)}}};
}

TEST(MembershipTest, GroupsHoldTheirClassesAndTheirChildrensClasses) {
  fakes::FakeHost host;
  catalogue::ParseResult parsed = catalogue::parseClassText(kTree, L"/classes/c.txt", host);
  ASSERT_TRUE(parsed.ok);
  const catalogue::Catalogue& catalogue = parsed.catalogue;
  objdata::TemplateEnvironment environment = objdata::templateEnvironment(host);
  objdata::TableDirectory tables(host.fakeDatabase(), objdata::getTableDictionary(host.document()));
  objdata::Classifier classifier(host.fakeDatabase(), catalogue, tables, environment);

  const Value pipe = typed(ValueType::kCharacter, L"Pipe");
  const TableRecord wells = keyed(L"wells", L"class", typed(ValueType::kCharacter, L"Manhole"));
  const TableRecord lids = keyed(L"LIDS", L"KIND", typed(ValueType::kCharacter, L"Manhole"));
  struct Case {
    const char* what;
    std::vector<TableRecord> records;
    const wchar_t* name;  // a class or a group
    bool expected;
  };
  const Case cases[] = {
      {"a class of the group", {keyed(L"PIPES", L"CLASS", pipe)}, L"utilities", true},
      {"a class of no group", {keyed(L"PIPES", L"CLASS", typed(ValueType::kCharacter, L"Duct"))},
       L"Utilities", false},
      {"the key in another case", {keyed(L"PIPES", L"CLASS", typed(ValueType::kCharacter, L"pipe"))},
       L"Utilities", false},
      {"the key in another table", {keyed(L"WELLS", L"CLASS", pipe)}, L"Utilities", false},
      {"a child group's class", {wells, lids}, L"Utilities", true},
      {"one of its two tables", {wells}, L"Utilities", false},
      {"the child group itself", {lids, wells}, L"Wells", true},
      {"not the parent's class", {keyed(L"PIPES", L"CLASS", pipe)}, L"Wells", false},
      {"a key stored as a number", {keyed(L"PIPES", L"CLASS", typed(ValueType::kInteger, L"42"))},
       L"Utilities", true},
      {"a class without tables: any record", {keyed(L"PIPES", L"CLASS", pipe)}, L"Roads", true},
      {"no records", {}, L"Roads", false},
      {"a class by name", {keyed(L"PIPES", L"CLASS", pipe)}, L"Pipe", true},
      {"no such name", {keyed(L"PIPES", L"CLASS", pipe)}, L"Nowhere", false},
  };
  objdata::Membership membership(classifier);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(membership.carries(c.records, c.name), c.expected);
    if (const catalogue::Group* group = catalogue.findGroup(base::lowerCase(c.name))) {
      EXPECT_EQ(membership.belongsTo(c.records, *group), c.expected);
    }
  }
}

}  // namespace
