// The entity properties that classification tests and applies.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "host/types.h"

namespace host {

enum class EntityProperty : uint8_t {
  kColor,               // Color
  kLayer,               // text
  kLinetype,            // text ("ByLayer" when the entity names none)
  kLinetypeScale,       // real
  kLineweight,          // integer: hundredths of mm; -1 ByLayer, -2 ByBlock, -3 default
  kClosed,              // integer 0/1: lightweight and 3-D polylines, splines, multilines
  kRotation,            // real, radians: block references, texts, mtexts
  kBlockName,           // text: block references
  kScale,               // Point3: block reference scale factors
  kRadius,              // real: circles, arcs
  kDimensionStyle,      // text: dimensions
  kDimensionType,       // integer: 0 rotated, 1 aligned, 2 angular, 3 diameter, 4 radius,
                        // 5 3-point angular, 6 ordinate (read only)
  kEllipseStart,        // real: ellipse start parameter
  kEllipseEnd,          // real: ellipse end parameter
  kPattern,             // text: hatch pattern name
  kPatternAngle,        // real, radians
  kPatternScale,        // real
  kBackgroundColor,     // Color: hatch background fill (index -1 when none)
  kMLeaderStyle,        // text
  kMlineStyle,          // text
  kMlineScale,          // real
  kMlineJustification,  // integer 0 top, 1 zero, 2 bottom
  kAttachment,          // integer 1..9: mtext attachment point
  kTextHeight,          // real: texts, mtexts
  kTextJustification,   // integer 0..14: texts
  kTextStyle,           // text: texts, mtexts
  kContents,            // text: texts, mtexts
  kConstantWidth,       // real: lightweight polylines
  kElevation,           // real: lightweight polylines
};

// No value: the entity's type has no such property.
using PropertyValue = std::variant<std::monostate, int64_t, double, std::wstring, Point3, Color>;

}  // namespace host
