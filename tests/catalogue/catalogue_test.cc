// The catalogue model: resources, clearing and the validity of fields.
#include "catalogue/catalogue.h"

#include <gtest/gtest.h>

#include "base/text_case.h"
#include "base/utf.h"

namespace {

using catalogue::FieldDefinition;
using catalogue::FieldType;
using catalogue::ValueKind;

TEST(TextCaseTest, LowerCaseCoversTheScriptsOfClassFiles) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"PIPE 12-A", L"pipe 12-a"},
      {L"POTRUBÍ", L"potrubí"},
      {L"ŽLUTÁ ČÁRA ŘEKY", L"žlutá čára řeky"},
      {L"ÆØÅ ÄÖÜ ß", L"æøå äöü ß"},
      {L"ŁÓDŹ ŚWIĘTY", L"łódź święty"},
      {L"ДОРОГА Ё Є", L"дорога ё є"},
      {L"ΟΔΟΣ ΆΈ", L"οδοσ άέ"},
      {L"İ Ÿ ǅ Ǆ", L"i ÿ ǆ ǆ"},
      {L"ẞ Ạ Ｗ", L"ß ạ ｗ"},
      {L"× ÷ 中文", L"× ÷ 中文"},
  };
  for (const auto& [upper, lower] : cases) {
    EXPECT_EQ(base::lowerCase(upper), lower) << base::toUtf8(upper);
    EXPECT_TRUE(base::equalsIgnoringCase(upper, lower)) << base::toUtf8(upper);
  }
  EXPECT_FALSE(base::equalsIgnoringCase(L"pipe", L"pipes"));
}

// Finding classes, tables and groups by name is tested on parsed files (parser_test.cc).
TEST(CatalogueTest, ResourcesIgnoreCaseAndClearingKeepsTheClassFile) {
  catalogue::DrawingResources r;
  EXPECT_FALSE(r.hasResource(host::kResourceLayers, L"water"));
  r.resource_tables[host::kResourceLayers][L"water"] = {L"WATER", L"/lib/a.dwg"};
  r.loaded_files.push_back(L"/lib/a.dwg");
  EXPECT_TRUE(r.hasResource(host::kResourceLayers, L"Water"));
  EXPECT_FALSE(r.hasResource(host::kResourceLinetypes, L"Water"));
  EXPECT_TRUE(r.isLoadedFile(L"/LIB/A.DWG"));

  // Kept so that a file that failed can be loaded again.
  catalogue::Catalogue c;
  c.objects[L"potrubí"].display_name = L"Potrubí";
  c.imports.push_back({L"/lib/a.dwg", host::kResourceLayers});
  c.class_file = L"/data/classes.txt";
  EXPECT_FALSE(c.empty());
  c.clear();
  EXPECT_TRUE(c.empty());
  EXPECT_EQ(c.class_file, L"/data/classes.txt");
}

FieldDefinition field(FieldType type, ValueKind kind, std::wstring value,
                      std::vector<std::wstring> allowed = {}) {
  FieldDefinition f;
  f.name = L"F";
  f.type = type;
  f.kind = kind;
  f.value = std::move(value);
  f.allowed = std::move(allowed);
  return f;
}

TEST(CatalogueTest, FieldValidity) {
  using T = FieldType;
  using K = ValueKind;
  struct Case {
    const char* name;
    FieldDefinition field;
    bool valid;
  };
  const Case cases[] = {
      {"free", field(T::kInteger, K::kFree, L""), true},
      {"default only, not a number", field(T::kInteger, K::kDefault, L"x"), true},
      {"no type", field(T::kNone, K::kDefault, L"1"), false},
      {"character list ignores case", field(T::kCharacter, K::kList, L"pvc", {L"PE", L"PVC"}),
       true},
      {"character not in list", field(T::kCharacter, K::kList, L"steel", {L"PE", L"PVC"}), false},
      {"integer list after conversion", field(T::kInteger, K::kList, L"100", {L"80", L"100.7"}),
       true},
      {"integer not in list", field(T::kInteger, K::kList, L"90", {L"80", L"100"}), false},
      {"real list after conversion", field(T::kReal, K::kList, L"2.50", {L"2.5"}), true},
      {"real list is exact", field(T::kReal, K::kList, L"2.51", {L"2.5"}), false},
      {"point list", field(T::kPoint, K::kList, L"1,2,3", {L"1.0,2,3.0"}), true},
      {"malformed points compare as integer 0", field(T::kPoint, K::kList, L"x", {L"1,2"}), true},
      {"integer range inclusive", field(T::kInteger, K::kRange, L"10", {L"1", L"10"}), true},
      {"real range read as reals", field(T::kInteger, K::kRange, L"10.5", {L"1", L"10"}), false},
      {"character range ignores case", field(T::kCharacter, K::kRange, L"M", {L"a", L"z"}), true},
      {"character outside range", field(T::kCharacter, K::kRange, L"b", {L"C", L"z"}), false},
      {"point range per coordinate", field(T::kPoint, K::kRange, L"1,5,3", {L"0,0,0", L"2,4,4"}),
       false},
      {"point inside range", field(T::kPoint, K::kRange, L"1,2,3", {L"0,0,0", L"2,4,4"}), true},
      {"range needs two values", field(T::kInteger, K::kRange, L"1", {L"1"}), false},
  };
  for (const Case& c : cases) EXPECT_EQ(catalogue::isFieldValid(c.field), c.valid) << c.name;
}

}  // namespace
