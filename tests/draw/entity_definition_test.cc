// Definitions built from entities survive being written and read back by the class-file
// parser, for every type the headless host makes and for every entity of the real drawings.
#include "draw/entity_definition.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <numbers>
#include <set>

#include "base/text_case.h"
#include "base/utf.h"
#include "catalogue/class_writer.h"
#include "catalogue/parser.h"
#include "dxf/entity_factory.h"
#include "dxf/sample_drawing.h"
#include "fakes/fake_host.h"
#include "headless/dxf_database.h"
#include "test_paths.h"

namespace {

using draw::DrawingProperties;
using P = host::EntityProperty;

// What a class file makes of a definition: the parser lower-cases names, and a circle class
// without mode or radius is written with the centre mode.
DrawingProperties asFileHoldsIt(DrawingProperties p) {
  if (!p.object_types.empty() && p.object_types.front() == L"Circle" && !p.circle_mode.isSet() &&
      !p.circle_radius.isSet()) {
    p.circle_mode.mode = draw::ConstraintMode::kSingle;
    p.circle_mode.value = L"center";
  }
  for (auto* name : {&p.layer, &p.linetype, &p.block_name, &p.dimension_style, &p.mline_style,
                     &p.mleader_style, &p.pattern, &p.text_style}) {
    name->value = base::lowerCase(name->value);
  }
  return p;
}

// A class file gives angles in degrees; definitions from entities hold radians.
void anglesToRadians(DrawingProperties& p) {
  for (auto* angle : {&p.angle, &p.pattern_angle}) {
    if (angle->isSet()) angle->value = angle->value * std::numbers::pi / 180;
  }
}

// Writes `definition` as a class, parses it back and says where it differs.
::testing::AssertionResult roundTrips(const DrawingProperties& definition, int precision) {
  catalogue::ObjectClass cls;
  cls.display_name = L"Template class";
  cls.properties = definition;
  std::string text = base::toUtf8(catalogue::writeClassDefinition(cls, nullptr, precision));
  fakes::FakeHost host;  // no variables: none is written
  catalogue::HostEnvironment environment(host);
  catalogue::ParsedClasses parsed =
      catalogue::parseClassDefinitions(text, L"/tmp/classes.txt", environment);
  if (!parsed.ok || !parsed.messages.empty()) {
    return ::testing::AssertionFailure() << "the parser refused:\n" << text;
  }
  DrawingProperties read = parsed.catalogue->findObject(cls.display_name)->properties;
  anglesToRadians(read);
  if (!draw::sameDefinition(asFileHoldsIt(definition), read)) {
    return ::testing::AssertionFailure() << "read back differently:\n" << text;
  }
  return ::testing::AssertionSuccess();
}

// Round-trips the definition of every entity of `database` at each precision, and checks
// that entities have equal kind keys exactly when their definitions are equal; returns the
// types described.
std::set<std::wstring> roundTripAll(headless::DxfDatabase& database, const std::string& what) {
  std::set<std::wstring> types;
  for (int precision : {0, 3, 8}) {
    draw::DefinitionReader reader(database, precision);
    std::map<std::string, DrawingProperties> by_key;
    // Keys of distinct definitions by type and layer, so that few are compared.
    std::map<std::pair<std::wstring, std::wstring>, std::vector<std::string>> keys_of;
    for (host::ObjectId id : database.modelSpaceEntities()) {
      std::string key = reader.kindKey(id);
      DrawingProperties definition = draw::buildDefinitionFromEntity(database, id, precision);
      if (auto known = by_key.find(key); known != by_key.end()) {
        EXPECT_TRUE(draw::sameDefinition(known->second, definition)) << what << ": one key";
        continue;
      }
      by_key.emplace(key, definition);
      if (definition.object_types.empty()) continue;
      std::vector<std::string>& keys =
          keys_of[{definition.object_types.front(), definition.layer.value}];
      for (const std::string& other : keys) {
        EXPECT_FALSE(draw::sameDefinition(by_key.at(other), definition)) << what << ": two keys";
      }
      keys.push_back(std::move(key));
      types.insert(definition.object_types.front());
      EXPECT_TRUE(roundTrips(definition, precision))
          << what << " " << base::toUtf8(database.entityClass(id)) << " at LUPREC " << precision;
    }
  }
  return types;
}

// Every entity the sample drawing holds, and those the host makes that it lacks.
TEST(EntityDefinitionTest, EveryTypeRoundTripsAtEachPrecision) {
  auto drawing = dxf::Document::parse(sample::drawing(), "sample.dxf");
  ASSERT_TRUE(drawing);
  dxf::Document& doc = drawing.value();
  headless::DxfDatabase database(doc);
  const dxf::CommonProps common{.layer = L"Walls", .color = 3};
  const std::array<dxf::Point3, 3> corners = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 1}}};
  ASSERT_TRUE(dxf::addPoint(doc, common, {1, 2, 3}));
  ASSERT_TRUE(dxf::add3dFace(doc, common, corners));
  ASSERT_TRUE(dxf::add3dPolyline(doc, common, corners, true));
  ASSERT_TRUE(dxf::addRay(doc, common, {0, 0, 0}, {1, 0, 0}));
  ASSERT_TRUE(dxf::addXline(doc, common, {0, 0, 0}, {0, 1, 0}));
  ASSERT_TRUE(dxf::addInsert(
      doc, common, {.block_name = L"Door", .scale = {0.5, 0.50004, 2}, .rotation_deg = 30}));
  ASSERT_TRUE(dxf::addText(doc, common, {.text = L"x", .height = 1.23456789, .rotation_deg = 10}));

  const std::set<std::wstring> expected_types = {
      L"3DFace",  L"3DPolyline", L"Arc",  L"BlockReference", L"Circle", L"Dimension",
      L"Ellipse", L"Hatch",      L"Line", L"MLeader",        L"Mline",  L"MText",
      L"Point",   L"Polyline",   L"Ray",  L"Spline",         L"Text",   L"Xline"};
  EXPECT_EQ(roundTripAll(database, "sample"), expected_types);
  // Values that need rounding, a true colour and a named lineweight.
  for (host::ObjectId id : database.modelSpaceEntities()) {
    (void)database.setProperty(id, P::kColor, host::Color{5, 0x10A0FF});
    (void)database.setProperty(id, P::kLinetypeScale, 1.23456789);
    (void)database.setProperty(id, P::kLineweight, int64_t{-3});
    (void)database.setProperty(id, P::kPatternAngle, 0.7);
  }
  EXPECT_EQ(roundTripAll(database, "varied"), expected_types);
}

TEST(EntityDefinitionTest, CorpusEntitiesRoundTrip) {
  std::vector<std::string> files = testing_paths::corpusFiles();
  if (files.empty()) GTEST_SKIP() << "no corpus at " << testing_paths::corpusDir();
  bool described = false;
  for (const std::string& file : files) {
    auto drawing = dxf::Document::load(file);
    if (!drawing) continue;  // the corpus also holds drawings the reader refuses on purpose
    headless::DxfDatabase database(drawing.value());
    described |= !roundTripAll(database, file).empty();
  }
  EXPECT_TRUE(described);
}

TEST(EntityDefinitionTest, NamesAClassFileCannotHold) {
  EXPECT_TRUE(draw::isWritableName(L"Walls 2"));
  EXPECT_TRUE(draw::isWritableName(L"$(x)"));
  for (const wchar_t* name : {L"A#1", L"trailing ", L" leading", L"back\\", L"*", L"a\tb", L""}) {
    EXPECT_FALSE(draw::isWritableName(name)) << base::toUtf8(name);
  }
}

}  // namespace
