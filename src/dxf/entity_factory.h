// Creates entities with the tags and subclass markers CAD programs require, in model space
// or in a block definition, and block definitions themselves.
//
// Every function checks its input before it changes anything: on error the drawing is left
// as it was. A new entity gets a handle (in R12 drawings only when the drawing uses handles)
// and, from R13 on, its owner: the BLOCK_RECORD of *Model_Space or of its block. Model-space
// entities go at the end of the ENTITIES section, block entities just before the ENDBLK.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/status.h"
#include "dxf/document.h"
#include "dxf/entity_properties.h"

namespace dxf {

// The properties every new entity has, and where it goes.
struct CommonProps {
  std::wstring layer = L"0";   // must exist in the LAYER table, else kNotFound
  std::optional<int> color{};  // 0 ByBlock, 1..255, 256 ByLayer; absent means ByLayer
  std::wstring block{};        // empty (or "*Model_Space"): model space; else a block's name
};

// A 2D vertex of a polyline-like boundary; `bulge` is tan(arc angle / 4) of the segment
// that starts at this vertex (0: straight).
struct Vertex2 {
  double x = 0, y = 0;
  double bulge = 0;
};

struct TextParams {
  std::wstring text{};
  Point3 position{};  // left end of the baseline
  double height = 2.5;
  double rotation_deg = 0;
};

struct MTextParams {
  std::wstring text{};  // MTEXT markup allowed ("\P" breaks a paragraph)
  Point3 position{};
  double height = 2.5;
  double width = 0;    // reference column width; 0 for none
  int attachment = 1;  // 1 top left ... 9 bottom right
  double rotation_deg = 0;
};

struct LwPolylineParams {
  std::vector<Vertex2> vertices{};  // at least 2
  bool closed = false;
  std::optional<double> constant_width{};
  double elevation = 0;
};

struct EllipseParams {
  Point3 center{};
  Point3 major_axis{};  // end of the major axis relative to the center, in the XY plane
  double ratio = 1;     // minor / major, in (0, 1]
  double start_param = 0;
  double end_param = 6.283185307179586;
};

// A spline from control points (clamped, uniform knots) or, when `control_points` is
// empty, through fit points.
struct SplineParams {
  int degree = 3;
  std::vector<Point3> control_points{};  // at least degree + 1
  std::vector<Point3> fit_points{};      // at least 2, used only without control points
};

struct InsertParams {
  std::wstring block_name{};
  Point3 position{};
  Point3 scale{1, 1, 1};
  double rotation_deg = 0;
  // Adds an ATTRIB for each non-constant ATTDEF of the block: its tag, its default value
  // and its position carried into the insert's placement; then a SEQEND.
  bool with_attributes = false;
};

struct AttdefParams {
  std::wstring tag{};
  std::wstring prompt{};
  std::wstring default_value{};
  Point3 position{};
  double height = 2.5;
  double rotation_deg = 0;
};

// One line family of a hatch pattern, in drawing units and degrees.
struct HatchPatternLine {
  double angle_deg = 0;
  double base_x = 0, base_y = 0;
  double offset_x = 0, offset_y = 0;
  std::vector<double> dashes{};  // empty: continuous
};

// A hatch with one closed polyline boundary, not associative. Pattern "SOLID" is a solid
// fill; any other name is a predefined pattern drawn with `pattern_lines` (may be empty).
struct HatchParams {
  std::vector<Vertex2> boundary{};  // at least 3
  std::wstring pattern = L"SOLID";
  double pattern_angle_deg = 0;
  double pattern_scale = 1;
  std::vector<HatchPatternLine> pattern_lines{};
  double elevation = 0;
};

// Each returns the new entity. Types that R12 does not know (LWPOLYLINE, MTEXT, ELLIPSE,
// SPLINE, RAY, XLINE, HATCH) are kUnsupported in an R12 drawing.
base::Result<RecordId> addLine(Document& doc, const CommonProps& common, const Point3& start,
                               const Point3& end);
base::Result<RecordId> addCircle(Document& doc, const CommonProps& common, const Point3& center,
                                 double radius);
base::Result<RecordId> addArc(Document& doc, const CommonProps& common, const Point3& center,
                              double radius, double start_deg, double end_deg);
base::Result<RecordId> addPoint(Document& doc, const CommonProps& common, const Point3& at);
base::Result<RecordId> addText(Document& doc, const CommonProps& common, const TextParams& params);
base::Result<RecordId> addMText(Document& doc, const CommonProps& common,
                                const MTextParams& params);
base::Result<RecordId> addLwPolyline(Document& doc, const CommonProps& common,
                                     const LwPolylineParams& params);
base::Result<RecordId> addEllipse(Document& doc, const CommonProps& common,
                                  const EllipseParams& params);
base::Result<RecordId> addSpline(Document& doc, const CommonProps& common,
                                 const SplineParams& params);
// A 3DFACE from 3 or 4 corners (a triangle repeats its last corner, as readers expect).
base::Result<RecordId> add3dFace(Document& doc, const CommonProps& common,
                                 std::span<const Point3> corners);
// A POLYLINE flagged 3D with its VERTEX records and SEQEND; at least 2 points.
base::Result<RecordId> add3dPolyline(Document& doc, const CommonProps& common,
                                     std::span<const Point3> points, bool closed);
// RAY and XLINE store a unit direction; `direction` must not be zero.
base::Result<RecordId> addRay(Document& doc, const CommonProps& common, const Point3& start,
                              const Point3& direction);
base::Result<RecordId> addXline(Document& doc, const CommonProps& common, const Point3& through,
                                const Point3& direction);
base::Result<RecordId> addHatch(Document& doc, const CommonProps& common,
                                const HatchParams& params);
// An INSERT of an existing block (kNotFound when there is none).
base::Result<RecordId> addInsert(Document& doc, const CommonProps& common,
                                 const InsertParams& params);
// An ATTDEF, normally in a block definition (`common.block`).
base::Result<RecordId> addAttributeDefinition(Document& doc, const CommonProps& common,
                                              const AttdefParams& params);

// Creates an empty block definition: its BLOCK_RECORD entry (from R13 on) and BLOCK/ENDBLK
// at the end of the BLOCKS section. Returns the BLOCK record. A name already used is
// kInvalid, as is a drawing without the tables or sections a block needs.
base::Result<RecordId> addBlock(Document& doc, std::wstring_view name, const Point3& base_point);

}  // namespace dxf
