// Plain values that cross the host boundary.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace host {

// Identifies an object of the working drawing for as long as the drawing is open.
// The null id (0) names nothing.
struct ObjectId {
  uint64_t value = 0;
  bool isNull() const { return value == 0; }
  explicit operator bool() const { return value != 0; }
  auto operator<=>(const ObjectId&) const = default;
};

struct Point3 {
  double x = 0, y = 0, z = 0;
  bool operator==(const Point3&) const = default;
};

// A point in the plane, as two-dimensional system variables (LIMMIN, SNAPBASE...) hold it.
struct Point2 {
  double x = 0, y = 0;
  bool operator==(const Point2&) const = default;
};

// A colour as the host keeps it: an index (0 ByBlock, 256 ByLayer, 1..255 the palette,
// -1 none where a property allows it) or a true colour.
struct Color {
  int index = 256;
  std::optional<uint32_t> rgb = std::nullopt;  // 0xRRGGBB
  bool operator==(const Color&) const = default;
};

// Result codes of command-line input, numbered as the host's programming interface has them.
enum class InputStatus : int {
  kNormal = 5100,   // RTNORM: the user answered
  kCancel = -5002,  // RTCAN: Escape or end of input
  kError = -5001,   // RTERROR: the answer could not be taken (too long, invalid)
  kNone = 5000,     // RTNONE: an empty answer where the caller allowed one
};

// One value of an XRECORD's chain. Codes 1 (text), 10 (point), 40 (real) and 90 (integer)
// are typed; any other code is carried as the text the drawing holds, so that a read and a
// write of the chain keep it.
struct ResBuf {
  int code = 0;
  std::variant<std::wstring, Point3, double, int32_t, std::string> value;

  static ResBuf text(std::wstring v) { return {1, std::move(v)}; }
  static ResBuf point(Point3 v) { return {10, v}; }
  static ResBuf real(double v) { return {40, v}; }
  static ResBuf integer(int32_t v) { return {90, v}; }
  bool operator==(const ResBuf&) const = default;
};
using ResBufChain = std::vector<ResBuf>;

// A system variable's value; the alternative held is the variable's result type (short,
// long, real, text, three-dimensional point, two-dimensional point). A host reports each
// variable with its own type: a two-dimensional point is never given as a Point3.
struct SysVar {
  std::variant<int16_t, int32_t, double, std::wstring, Point3, Point2> value;
  bool operator==(const SysVar&) const = default;
};

}  // namespace host
