#include "dxf/entity_factory.h"

#include <cmath>

#include "dxf/entity_factory_internal.h"
#include "dxf/number_text.h"

namespace dxf {

namespace {

using factory::Builder;
using factory::finite;
using factory::Target;

bool allFinite(std::span<const Point3> points) {
  for (const Point3& p : points) {
    if (!finite(p)) return false;
  }
  return true;
}

base::Status notFinite() { return base::Status::invalid("coordinates must be finite numbers"); }

// The common checks of a type: R12 support, then the target.
base::Result<Target> prepare(Document& doc, const CommonProps& common, std::string_view type,
                             bool in_r12) {
  if (!in_r12) {
    if (base::Status status = factory::requireR2000(doc, type); !status) return status;
  }
  return factory::resolve(doc, common);
}

// Knots of a clamped uniform B-spline: the curve starts and ends at its end control points.
std::vector<double> clampedKnots(size_t count, int degree) {
  std::vector<double> knots;
  size_t order = static_cast<size_t>(degree) + 1;
  size_t inner = count - order;
  for (size_t i = 0; i < order; ++i) knots.push_back(0);
  for (size_t i = 1; i <= inner; ++i) knots.push_back(static_cast<double>(i) / (inner + 1));
  for (size_t i = 0; i < order; ++i) knots.push_back(1);
  return knots;
}

}  // namespace

base::Result<RecordId> addLine(Document& doc, const CommonProps& common, const Point3& start,
                               const Point3& end) {
  if (!finite(start) || !finite(end)) return notFinite();
  auto target = prepare(doc, common, "LINE", true);
  if (!target) return target.status();
  Builder b(doc, *target, "LINE");
  b.subclass("AcDbLine");
  b.point(10, start);
  b.point(11, end);
  return b.finish();
}

base::Result<RecordId> addCircle(Document& doc, const CommonProps& common, const Point3& center,
                                 double radius) {
  if (!finite(center)) return notFinite();
  if (!(radius > 0) || !std::isfinite(radius)) return base::Status::invalid("radius must be > 0");
  auto target = prepare(doc, common, "CIRCLE", true);
  if (!target) return target.status();
  Builder b(doc, *target, "CIRCLE");
  b.subclass("AcDbCircle");
  b.point(10, center);
  b.real(40, radius);
  return b.finish();
}

base::Result<RecordId> addArc(Document& doc, const CommonProps& common, const Point3& center,
                              double radius, double start_deg, double end_deg) {
  if (!finite(center) || !std::isfinite(start_deg) || !std::isfinite(end_deg)) return notFinite();
  if (!(radius > 0) || !std::isfinite(radius)) return base::Status::invalid("radius must be > 0");
  auto target = prepare(doc, common, "ARC", true);
  if (!target) return target.status();
  Builder b(doc, *target, "ARC");
  b.subclass("AcDbCircle");
  b.point(10, center);
  b.real(40, radius);
  b.subclass("AcDbArc");
  b.real(50, start_deg);
  b.real(51, end_deg);
  return b.finish();
}

base::Result<RecordId> addPoint(Document& doc, const CommonProps& common, const Point3& at) {
  if (!finite(at)) return notFinite();
  auto target = prepare(doc, common, "POINT", true);
  if (!target) return target.status();
  Builder b(doc, *target, "POINT");
  b.subclass("AcDbPoint");
  b.point(10, at);
  return b.finish();
}

base::Result<RecordId> addText(Document& doc, const CommonProps& common, const TextParams& params) {
  if (!finite(params.position) || !std::isfinite(params.rotation_deg)) return notFinite();
  if (!(params.height > 0)) return base::Status::invalid("text height must be > 0");
  auto target = prepare(doc, common, "TEXT", true);
  if (!target) return target.status();
  Builder b(doc, *target, "TEXT");
  b.subclass("AcDbText");
  b.point(10, params.position);
  b.real(40, params.height);
  b.text(1, params.text);
  if (params.rotation_deg != 0) b.real(50, params.rotation_deg);
  // TEXT closes with a second AcDbText group (its vertical alignment lives there).
  b.subclass("AcDbText");
  return b.finish();
}

base::Result<RecordId> addMText(Document& doc, const CommonProps& common,
                                const MTextParams& params) {
  if (!finite(params.position) || !std::isfinite(params.rotation_deg)) return notFinite();
  if (!(params.height > 0)) return base::Status::invalid("text height must be > 0");
  if (params.attachment < 1 || params.attachment > 9) {
    return base::Status::invalid("MTEXT attachment must be 1..9");
  }
  auto target = prepare(doc, common, "MTEXT", false);
  if (!target) return target.status();
  Builder b(doc, *target, "MTEXT");
  b.subclass("AcDbMText");
  b.point(10, params.position);
  b.real(40, params.height);
  b.real(41, params.width);
  b.integer(71, params.attachment);
  b.integer(72, 1);
  // Readers take at most 250 bytes per tag: the text is split into code 3 chunks and a
  // final code 1 tag, at character boundaries.
  std::wstring_view rest = params.text;
  std::string encoded = doc.codec().encode(rest);
  while (encoded.size() > 250) {
    size_t take = std::min<size_t>(rest.size(), 250);
    std::string chunk = doc.codec().encode(rest.substr(0, take));
    while (chunk.size() > 250) chunk = doc.codec().encode(rest.substr(0, --take));
    b.raw(3, chunk);
    rest.remove_prefix(take);
    encoded = doc.codec().encode(rest);
  }
  b.raw(1, encoded);
  if (params.rotation_deg != 0) {
    // A direction vector, because readers disagree on the unit of code 50 in MTEXT.
    double radians = params.rotation_deg * factory::kPi / 180;
    b.point(11, {std::cos(radians), std::sin(radians), 0});
  }
  return b.finish();
}

base::Result<RecordId> addLwPolyline(Document& doc, const CommonProps& common,
                                     const LwPolylineParams& params) {
  if (params.vertices.size() < 2) return base::Status::invalid("a polyline needs 2 vertices");
  for (const Vertex2& v : params.vertices) {
    if (!std::isfinite(v.x) || !std::isfinite(v.y) || !std::isfinite(v.bulge)) return notFinite();
  }
  auto target = prepare(doc, common, "LWPOLYLINE", false);
  if (!target) return target.status();
  Builder b(doc, *target, "LWPOLYLINE");
  b.subclass("AcDbPolyline");
  b.integer(90, static_cast<int64_t>(params.vertices.size()));
  b.integer(70, params.closed ? 1 : 0);
  if (params.constant_width) b.real(43, *params.constant_width);
  if (params.elevation != 0) b.real(38, params.elevation);
  for (const Vertex2& v : params.vertices) {
    b.point2(10, v.x, v.y);
    if (v.bulge != 0) b.real(42, v.bulge);
  }
  return b.finish();
}

base::Result<RecordId> addEllipse(Document& doc, const CommonProps& common,
                                  const EllipseParams& params) {
  if (!finite(params.center) || !finite(params.major_axis) || !std::isfinite(params.start_param) ||
      !std::isfinite(params.end_param)) {
    return notFinite();
  }
  const Point3& a = params.major_axis;
  // The ellipse lies in the XY plane: its normal is written as (0, 0, 1).
  if (a.z != 0 || (a.x == 0 && a.y == 0)) {
    return base::Status::invalid("the major axis must be a non-zero vector in the XY plane");
  }
  if (!(params.ratio > 0 && params.ratio <= 1)) {
    return base::Status::invalid("ellipse ratio must be in (0, 1]");
  }
  auto target = prepare(doc, common, "ELLIPSE", false);
  if (!target) return target.status();
  Builder b(doc, *target, "ELLIPSE");
  b.subclass("AcDbEllipse");
  b.point(10, params.center);
  b.point(11, params.major_axis);
  b.point(210, {0, 0, 1});
  b.real(40, params.ratio);
  b.real(41, params.start_param);
  b.real(42, params.end_param);
  return b.finish();
}

base::Result<RecordId> addSpline(Document& doc, const CommonProps& common,
                                 const SplineParams& params) {
  bool by_control = !params.control_points.empty();
  if (params.degree < 1 || params.degree > 25) return base::Status::invalid("degree must be 1..25");
  if (by_control && params.control_points.size() < static_cast<size_t>(params.degree) + 1) {
    return base::Status::invalid("a spline of degree " + std::to_string(params.degree) +
                                 " needs at least " + std::to_string(params.degree + 1) +
                                 " control points");
  }
  if (!by_control && params.fit_points.size() < 2) {
    return base::Status::invalid("a spline needs control points or at least 2 fit points");
  }
  const std::vector<Point3>& points = by_control ? params.control_points : params.fit_points;
  if (!allFinite(points)) return notFinite();
  auto target = prepare(doc, common, "SPLINE", false);
  if (!target) return target.status();

  bool planar = true;
  for (const Point3& p : points) planar = planar && p.z == points.front().z;
  std::vector<double> knots;
  if (by_control) knots = clampedKnots(points.size(), params.degree);
  Builder b(doc, *target, "SPLINE");
  b.subclass("AcDbSpline");
  if (planar) b.point(210, {0, 0, 1});
  b.integer(70, planar ? 8 : 0);
  b.integer(71, params.degree);
  b.integer(72, static_cast<int64_t>(knots.size()));
  b.integer(73, by_control ? static_cast<int64_t>(points.size()) : 0);
  b.integer(74, by_control ? 0 : static_cast<int64_t>(points.size()));
  b.real(42, 1e-10);
  b.real(43, 1e-10);
  if (!by_control) b.real(44, 1e-10);
  for (double k : knots) b.real(40, k);
  for (const Point3& p : points) b.point(by_control ? 10 : 11, p);
  return b.finish();
}

base::Result<RecordId> add3dFace(Document& doc, const CommonProps& common,
                                 std::span<const Point3> corners) {
  if (corners.size() != 3 && corners.size() != 4) {
    return base::Status::invalid("a 3DFACE has 3 or 4 corners");
  }
  if (!allFinite(corners)) return notFinite();
  auto target = prepare(doc, common, "3DFACE", true);
  if (!target) return target.status();
  Builder b(doc, *target, "3DFACE");
  b.subclass("AcDbFace");
  for (int i = 0; i < 4; ++i) b.point(10 + i, corners[std::min<size_t>(i, corners.size() - 1)]);
  return b.finish();
}

base::Result<RecordId> add3dPolyline(Document& doc, const CommonProps& common,
                                     std::span<const Point3> points, bool closed) {
  if (points.size() < 2) return base::Status::invalid("a polyline needs 2 vertices");
  if (!allFinite(points)) return notFinite();
  auto target = prepare(doc, common, "POLYLINE", true);
  if (!target) return target.status();
  Builder head(doc, *target, "POLYLINE");
  head.subclass("AcDb3dPolyline");
  head.integer(66, 1);
  head.point(10, {});  // a dummy point that readers expect
  head.integer(70, closed ? 9 : 8);
  // Vertices and SEQEND are owned by the polyline, not by the block record.
  std::vector<Builder> followers;
  followers.reserve(points.size() + 1);
  for (const Point3& p : points) {
    Builder& v = followers.emplace_back(doc, *target, "VERTEX", head.handle());
    v.subclass("AcDbVertex");
    v.subclass("AcDb3dPolylineVertex");
    v.point(10, p);
    v.integer(70, 32);
  }
  followers.emplace_back(doc, *target, "SEQEND", head.handle());
  RecordId id = head.finish();
  for (Builder& f : followers) f.finish();
  return id;
}

namespace {

base::Result<RecordId> addUnboundedLine(Document& doc, const CommonProps& common,
                                        std::string_view type, std::string_view marker,
                                        const Point3& base, const Point3& direction) {
  if (!finite(base) || !finite(direction)) return notFinite();
  double length =
      std::sqrt(direction.x * direction.x + direction.y * direction.y + direction.z * direction.z);
  if (!(length > 0)) return base::Status::invalid("direction must not be 0");
  auto target = prepare(doc, common, type, false);
  if (!target) return target.status();
  Builder b(doc, *target, type);
  b.subclass(marker);
  b.point(10, base);
  b.point(11, {direction.x / length, direction.y / length, direction.z / length});
  return b.finish();
}

}  // namespace

base::Result<RecordId> addRay(Document& doc, const CommonProps& common, const Point3& start,
                              const Point3& direction) {
  return addUnboundedLine(doc, common, "RAY", "AcDbRay", start, direction);
}

base::Result<RecordId> addXline(Document& doc, const CommonProps& common, const Point3& through,
                                const Point3& direction) {
  return addUnboundedLine(doc, common, "XLINE", "AcDbXline", through, direction);
}

}  // namespace dxf
