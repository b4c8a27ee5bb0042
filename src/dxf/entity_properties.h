// The entity properties that classification tests and applies, read and written by name.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>

#include "base/status.h"
#include "dxf/document.h"

namespace dxf {

struct Point3 {
  double x = 0, y = 0, z = 0;
  bool operator==(const Point3&) const = default;
};

// A colour as CAD programs hold it: an index (0 ByBlock, 256 ByLayer, 1..255 the palette)
// or a true colour.
struct EntityColor {
  int index = 256;
  std::optional<uint32_t> rgb = std::nullopt;  // 0xRRGGBB when a true colour is set
  bool operator==(const EntityColor&) const = default;
};

enum class Prop : uint8_t {
  kColor,               // EntityColor (62 and 420)
  kLayer,               // text
  kLinetype,            // text; "ByLayer" when the entity names none
  kLinetypeScale,       // real
  kLineweight,          // integer: hundredths of mm, -1 ByLayer, -2 ByBlock, -3 default
  kClosed,              // integer 0/1: LWPOLYLINE, POLYLINE, SPLINE, MLINE
  kRotation,            // real, radians: INSERT, TEXT, MTEXT
  kBlockName,           // text: INSERT
  kScale,               // Point3: INSERT scale factors
  kRadius,              // real: CIRCLE, ARC
  kDimensionStyle,      // text: DIMENSION
  kDimensionType,       // integer: DIMENSION 70 & 7 (0 rotated/linear ... 6 ordinate)
  kEllipseStart,        // real: ELLIPSE start parameter (41)
  kEllipseEnd,          // real: ELLIPSE end parameter (42)
  kPattern,             // text: HATCH pattern name
  kPatternAngle,        // real, radians: HATCH
  kPatternScale,        // real: HATCH
  kBackgroundColor,     // EntityColor: HATCH background fill (index -1 when none)
  kMLeaderStyle,        // text: MULTILEADER style name
  kMlineStyle,          // text: MLINE style name
  kMlineScale,          // real: MLINE
  kMlineJustification,  // integer 0 top, 1 zero, 2 bottom: MLINE
  kAttachment,          // integer 1..9: MTEXT attachment point
  kTextHeight,          // real: TEXT, MTEXT
  kTextJustification,   // integer 0..14 (left, center, right, aligned, middle, fit, topleft ...
                        // bottomright): TEXT
  kTextStyle,           // text: TEXT, MTEXT
  kContents,            // text: TEXT, MTEXT (MTEXT's split chunks joined)
  kConstantWidth,       // real: LWPOLYLINE
  kElevation,           // real: LWPOLYLINE
};

using PropValue = std::variant<std::monostate, int64_t, double, std::wstring, Point3, EntityColor>;

// The value of `prop` on entity `id`, with the defaults a CAD program assumes for absent
// tags; std::monostate when the entity's type has no such property.
PropValue getProperty(const Document& doc, RecordId id, Prop prop);
// The same from the tags of `id` as doc.tags(id) gave them since its last change: for a
// reader of several properties of one entity, which decodes it once.
PropValue getProperty(const Document& doc, RecordId id, std::span<const Tag> tags, Prop prop);
// The same for the layer and the general properties of the AcDbEntity group (colour,
// linetype, its scale, lineweight), read without scanning the entity's tags, where the load
// noted where its layer lies (Document::knownLayer, Document::findInEntityGroup); nothing
// otherwise. Commands read these of every entity they visit, several of each: `memo`, when
// given, keeps what one read of the group found for the next reads of the same entity.
struct EntityGroupTags {
  RecordId id = kNoRecord;
  uint64_t revision = 0;
  bool known = false;
  std::array<std::optional<Tag>, 5> tags;  // codes 62, 420, 6, 48 and 370
};
std::optional<PropValue> getGeneralProperty(const Document& doc, RecordId id, Prop prop,
                                            EntityGroupTags* memo = nullptr);

// Sets `prop` on entity `id`. Names (layer, linetype, styles, block) must exist in the
// drawing: an unknown name is a kNotFound error and nothing changes. A property the
// entity's type does not have, a read-only one (kDimensionType) and a value the drawing's
// version cannot hold (true colours before AC1018, lineweight and linetype scale in R12)
// are kUnsupported errors; a value of the wrong kind or out of range is kInvalid.
// Whether entities of record `id`'s type have `prop`.
bool hasProperty(const Document& doc, RecordId id, Prop prop);

base::Status setProperty(Document& doc, RecordId id, Prop prop, const PropValue& value);

}  // namespace dxf
