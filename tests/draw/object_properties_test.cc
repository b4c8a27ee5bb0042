// Object types and the `obj_prop` keys: what each accepts and how it is stored.
#include "draw/object_properties.h"

#include <gtest/gtest.h>

#include <functional>

#include "base/utf.h"
#include "draw/object_types.h"

namespace {

using draw::ConstraintMode;
using draw::DrawingProperties;

// The plain cases (one type, an unknown one, none, '?') are the class-file parser's
// (catalogue/parser_test.cc).
TEST(ObjectTypesTest, TypeLines) {
  using Types = std::vector<std::wstring>;
  const std::wstring invalid(draw::kTypeInvalid), undefined(draw::kTypeUndefined);
  struct Case {
    const wchar_t* text;
    Types expected;
  };
  const Case cases[] = {
      {L" line ,\tPOLYLINE, mtext", {L"Line", L"Polyline", L"MText"}},
      {L"Line, line", {L"Line"}},
      {L"Lines", {invalid}},
      {L"3dface,3DSOLID", {L"3DFace", L"3DSolid"}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(draw::parseObjectTypes(c.text), c.expected) << base::toUtf8(c.text);
  }
  EXPECT_TRUE(draw::isTypeMarker(invalid));
  EXPECT_TRUE(draw::isTypeMarker(undefined));
  EXPECT_FALSE(draw::isTypeMarker(L"?"));
}

// The classes of the conformity cases (draw/conformity_test.cc) are not repeated.
TEST(ObjectTypesTest, HostClasses) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"AcDb2dPolyline", L""},  // only the lightweight polyline is a Polyline
      {L"AcDb3dPolyline", L"3DPolyline"}, {L"AcDb3PointAngularDimension", L"Dimension"},
      {L"AcDbExtrudedSurface", L""},  // exact classes only
      {L"AcDbSubDMesh", L"Mesh"},         {L"AcDbAttribute", L""},
  };
  for (const auto& [cls, type] : cases) {
    EXPECT_EQ(draw::objectTypeNameOfClass(cls), type) << base::toUtf8(cls);
  }
}

TEST(ObjectPropertiesTest, NumberTest) {
  const std::pair<const wchar_t*, bool> cases[] = {
      {L"12", true},   {L"-1.5", true}, {L" 7 ", true},  {L"-", true},      {L".", true},
      {L"1e3", false}, {L"--1", false}, {L"1-2", false}, {L"1.2.3", false}, {L"", false},
      {L"  ", false},  {L"+1", false},  {L"0x1", false},
  };
  for (const auto& [text, numeric] : cases) {
    EXPECT_EQ(draw::isNumericText(text), numeric) << base::toUtf8(text);
  }
}

struct Line {
  const wchar_t* key;
  const wchar_t* value;
  const wchar_t* alternatives = L"";
  bool accepted = true;
};

struct Case {
  const char* name;
  std::vector<Line> lines;
  std::function<void(const DrawingProperties&)> check;
};

TEST(ObjectPropertiesTest, Keys) {
  const Case cases[] = {
      {"a colour list (the first is the default), words, triples and the any-colour",
       {{L"color", L"1", L"3,5"},
        {L"COLOR", L"ByLayer"},
        {L"color", L"(255 0 0)"},
        {L"color", L"*"},
        {L"backgroundcolor", L"none"},
        {L"patterncolor", L"byblock"}},
       [](const DrawingProperties& p) {
         EXPECT_EQ(p.color, (std::vector<draw::ColorSpec>{{1}, {3}, {5}, {256}, {255, 0, 0}, {}}));
         EXPECT_EQ(p.background_color, std::vector<draw::ColorSpec>{{-1}});
         EXPECT_EQ(p.pattern_color, std::vector<draw::ColorSpec>{{0}});
       }},
      {"malformed colours",
       {{L"color", L"(255 0)", L"", false},
        {L"color", L"(255,0,0)", L"", false},
        {L"color", L"(1 2 3", L"", false},
        {L"color", L"none", L"", false},
        {L"color", L"red", L"", false}},
       [](const DrawingProperties& p) { EXPECT_TRUE(p.color.empty()); }},
      {"a range: default and bounds; a range needs exactly two bounds",
       {{L"textheight", L"2.5", L"2:3"}, {L"patternscale", L"2.5", L"1:2:3", false}},
       [](const DrawingProperties& p) {
         EXPECT_EQ(p.text_height.mode, ConstraintMode::kRange);
         EXPECT_EQ(p.text_height.value, 2.5);
         EXPECT_EQ(p.text_height.alternatives, (std::vector<double>{2, 3}));
         EXPECT_FALSE(p.pattern_scale.isSet());
       }},
      {"lineweight words",
       {{L"lineweight", L"bylayer"},
        {L"lineweight", L"Default"},
        {L"lineweight", L"byblock"},
        {L"lineweight", L"25"},
        {L"lineweight", L"thick", L"", false}},
       [](const DrawingProperties& p) {
         EXPECT_EQ(p.lineweight.value, -1);
         EXPECT_EQ(p.lineweight.alternatives, (std::vector<int32_t>{-3, -2, 25}));
       }},
      {"any for a text key leaves it unconstrained; unknown keys accept only any",
       {{L"layer", L"*"}, {L"colour", L"*"}, {L"colour", L"1", L"", false}},
       [](const DrawingProperties& p) {
         EXPECT_FALSE(p.layer.isSet());
         EXPECT_EQ(p.layer.value, L"*");
       }},
      {"a repeated key collects alternatives and takes the line's mode",
       {{L"layer", L"WALLS"}, {L"layer", L"Roads"}, {L"layer", L"a", L"b, c "}},
       [](const DrawingProperties& p) {
         EXPECT_EQ(p.layer.value, L"walls");
         EXPECT_EQ(p.layer.mode, ConstraintMode::kList);
         EXPECT_EQ(p.layer.alternatives, (std::vector<std::wstring>{L"roads", L"a", L"b", L"c"}));
       }},
      {"values before a refused one stay applied",
       {{L"color", L"1", L"2,x", false}, {L"circleradius", L"1", L"1e3", false}},
       [](const DrawingProperties& p) {
         EXPECT_EQ(p.color, (std::vector<draw::ColorSpec>{{1}, {2}}));
         EXPECT_EQ(p.circle_radius.value, 1.0);
         EXPECT_EQ(p.circle_radius.mode, ConstraintMode::kSingle);
       }},
      {"booleans",
       {{L"explode", L"1"}, {L"closed", L"2"}, {L"rotate", L"-1"}, {L"closed", L"x", L"", false}},
       [](const DrawingProperties& p) {
         EXPECT_TRUE(p.explode);
         EXPECT_EQ(p.closed.value, 1);
         EXPECT_EQ(p.rotate.value, 0);
       }},
      {"explode any is false",
       {{L"explode", L"1"}, {L"explode", L"*"}},
       [](const DrawingProperties& p) { EXPECT_FALSE(p.explode); }},
      {"block scales",
       {{L"blockscale", L"2"},
        {L"blockscale", L"(1 2.5 3)"},
        {L"blockscale", L"(1 2)", L"", false}},
       [](const DrawingProperties& p) {
         EXPECT_EQ(p.block_scale.value, (draw::Scale3{2, 2, 2}));
         EXPECT_EQ(p.block_scale.alternatives, (std::vector<draw::Scale3>{{1, 2.5, 3}}));
       }},
      {"named codes and modes",
       {{L"mtextattachmentpoint", L"MiddleCenter"},
        {L"textjustification", L"fit"},
        {L"mlinejustification", L"Zero"},
        {L"dimensionmode", L"Linear"},
        {L"ellipsemode", L"circle", L"", false},
        {L"circlemode", L"2P"},
        {L"meshmode", L"torus"},
        {L"hatchmode", L"point"},
        {L"textjustification", L"top", L"", false}},
       [](const DrawingProperties& p) {
         EXPECT_EQ(p.mtext_attachment_point.value, 5);
         EXPECT_EQ(p.text_justification.value, 5);
         EXPECT_EQ(p.mline_justification.value, 1);
         EXPECT_EQ(p.dimension_mode.value, L"linear");
         EXPECT_FALSE(p.ellipse_mode.isSet());
         EXPECT_EQ(p.circle_mode.value, L"2p");
         EXPECT_EQ(p.mesh_mode.value, L"torus");
         EXPECT_EQ(p.hatch_mode.value, L"point");
       }},
      {"names are lower-cased, the text keeps its case and inner blanks",
       {{L"blockname", L"MANHOLE"}, {L"text", L" Station  Road \r\n"}, {L"textstyle", L"Notes"}},
       [](const DrawingProperties& p) {
         EXPECT_EQ(p.block_name.value, L"manhole");
         EXPECT_EQ(p.text.value, L"Station  Road");
         EXPECT_EQ(p.text_style.value, L"notes");
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    DrawingProperties properties;
    for (const Line& line : c.lines) {
      EXPECT_EQ(draw::parseObjectProperty(properties, line.key, line.value, line.alternatives),
                line.accepted)
          << base::toUtf8(line.key) << " " << base::toUtf8(line.value);
    }
    c.check(properties);
  }
}

}  // namespace
