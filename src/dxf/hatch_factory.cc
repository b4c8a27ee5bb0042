// HATCH entities: one polyline boundary, solid fill or a predefined pattern.
#include <cmath>

#include "dxf/entity_factory.h"
#include "dxf/entity_factory_internal.h"
#include "dxf/symbol_tables.h"

namespace dxf {

namespace {

bool finiteLine(const HatchPatternLine& line) {
  bool ok = std::isfinite(line.angle_deg) && std::isfinite(line.base_x) &&
            std::isfinite(line.base_y) && std::isfinite(line.offset_x) &&
            std::isfinite(line.offset_y);
  for (double dash : line.dashes) ok = ok && std::isfinite(dash);
  return ok;
}

}  // namespace

base::Result<RecordId> addHatch(Document& doc, const CommonProps& common,
                                const HatchParams& params) {
  if (params.boundary.size() < 3) return base::Status::invalid("a hatch boundary needs 3 vertices");
  bool has_bulge = false;
  bool finite = std::isfinite(params.elevation) && std::isfinite(params.pattern_angle_deg) &&
                std::isfinite(params.pattern_scale);
  for (const Vertex2& v : params.boundary) {
    finite = finite && std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.bulge);
    has_bulge = has_bulge || v.bulge != 0;
  }
  for (const HatchPatternLine& line : params.pattern_lines) finite = finite && finiteLine(line);
  if (!finite) return base::Status::invalid("coordinates must be finite numbers");
  if (params.pattern.empty()) return base::Status::invalid("a hatch needs a pattern name");
  if (!(params.pattern_scale > 0)) return base::Status::invalid("pattern scale must be > 0");
  if (base::Status status = factory::requireR2000(doc, "HATCH"); !status) return status;
  auto target = factory::resolve(doc, common);
  if (!target) return target.status();

  bool solid = sameName(params.pattern, L"SOLID");
  factory::Builder b(doc, *target, "HATCH");
  b.subclass("AcDbHatch");
  b.point(10, {0, 0, params.elevation});
  b.point(210, {0, 0, 1});
  b.text(2, solid ? std::wstring_view(L"SOLID") : std::wstring_view(params.pattern));
  b.integer(70, solid ? 1 : 0);
  b.integer(71, 0);  // not associative: no source objects to keep in step
  b.integer(91, 1);
  b.integer(92, 3);  // an external polyline path
  b.integer(72, has_bulge ? 1 : 0);
  b.integer(73, 1);
  b.integer(93, static_cast<int64_t>(params.boundary.size()));
  for (const Vertex2& v : params.boundary) {
    b.point2(10, v.x, v.y);
    // With the bulge flag set, readers expect a bulge after every vertex.
    if (has_bulge) b.real(42, v.bulge);
  }
  b.integer(97, 0);
  b.integer(75, 0);  // normal island detection
  b.integer(76, 1);  // predefined pattern
  if (!solid) {
    b.real(52, params.pattern_angle_deg);
    b.real(41, params.pattern_scale);
    b.integer(77, 0);
    b.integer(78, static_cast<int64_t>(params.pattern_lines.size()));
    for (const HatchPatternLine& line : params.pattern_lines) {
      b.real(53, line.angle_deg);
      b.real(43, line.base_x);
      b.real(44, line.base_y);
      b.real(45, line.offset_x);
      b.real(46, line.offset_y);
      b.integer(79, static_cast<int64_t>(line.dashes.size()));
      for (double dash : line.dashes) b.real(49, dash);
    }
  }
  b.integer(98, 0);
  return b.finish();
}

}  // namespace dxf
