// The drawing properties of a class (the `obj_prop` keys of the class file): their
// in-memory form, the any-markers, and the parsing of one key and its values.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace draw {

enum class ConstraintMode : uint32_t { kUnset = 0, kSingle = 1, kList = 2, kRange = 3 };

// A block scale (x, y, z).
struct Scale3 {
  double x = 0, y = 0, z = 0;
  bool operator==(const Scale3&) const = default;
};

// The any-markers: the value that means "unconstrained" when testing an entity and
// "ask the user" when drawing.
inline const std::wstring kAnyText = L"*";
inline constexpr double kAnyReal = std::numeric_limits<double>::lowest();
inline constexpr Scale3 kAnyScale = {kAnyReal, kAnyReal, kAnyReal};
inline constexpr int32_t kAnyLineweight = -2147483647;
// For mtextattachmentpoint, textjustification (int32) and mlinejustification (int8).
inline constexpr int32_t kAnyCode = -2;
// For the booleans `closed` and `rotate`, held in a signed byte.
inline constexpr int8_t kAnyFlag = -128;

// Lineweights that are not hundredths of a millimetre.
inline constexpr int32_t kLineweightByLayer = -1;
inline constexpr int32_t kLineweightByBlock = -2;
inline constexpr int32_t kLineweightDefault = -3;

// The constraint that one key puts on an entity, and the default used when drawing.
template <typename T>
struct PropertyConstraint {
  explicit PropertyConstraint(T any_marker) : value(any_marker), any(any_marker) {}

  bool isSet() const { return mode != ConstraintMode::kUnset; }
  bool isAny(const T& v) const { return v == any; }
  bool operator==(const PropertyConstraint&) const = default;

  ConstraintMode mode = ConstraintMode::kUnset;
  // The first value given: the default when drawing.
  T value;
  // kList: the further accepted values; kRange: the lower bound first, the upper bound last.
  std::vector<T> alternatives;
  // This key's any-marker.
  T any;
};

// A colour: empty (any colour), one index (0 ByBlock, 256 ByLayer, -1 None, else an index
// of the colour palette), or three values red, green, blue.
using ColorSpec = std::vector<int32_t>;

// Everything `obj_type` and `obj_prop` lines give a class. Each constraint starts unset with
// its any-marker as value.
struct DrawingProperties {
  // Type names of the class (see object_types.h), possibly a marker first.
  std::vector<std::wstring> object_types;
  // Accepted colours; the first is the default when drawing. Empty: no constraint.
  std::vector<ColorSpec> color;
  std::vector<ColorSpec> background_color;
  std::vector<ColorSpec> pattern_color;
  bool explode = false;

  PropertyConstraint<std::wstring> layer{kAnyText};
  PropertyConstraint<std::wstring> linetype{kAnyText};
  PropertyConstraint<double> linetype_scale{kAnyReal};
  PropertyConstraint<int32_t> lineweight{kAnyLineweight};
  PropertyConstraint<std::wstring> block_name{kAnyText};
  PropertyConstraint<Scale3> block_scale{kAnyScale};
  PropertyConstraint<int8_t> rotate{kAnyFlag};
  PropertyConstraint<double> angle{kAnyReal};
  PropertyConstraint<int8_t> closed{kAnyFlag};
  PropertyConstraint<std::wstring> circle_mode{kAnyText};
  PropertyConstraint<double> circle_radius{kAnyReal};
  PropertyConstraint<double> constant_width{kAnyReal};
  PropertyConstraint<double> elevation{kAnyReal};
  PropertyConstraint<std::wstring> dimension_mode{kAnyText};
  PropertyConstraint<std::wstring> dimension_style{kAnyText};
  PropertyConstraint<std::wstring> ellipse_mode{kAnyText};
  PropertyConstraint<std::wstring> mesh_mode{kAnyText};
  PropertyConstraint<std::wstring> mleader_style{kAnyText};
  PropertyConstraint<int8_t> mline_justification{static_cast<int8_t>(kAnyCode)};
  PropertyConstraint<double> mline_scale{kAnyReal};
  PropertyConstraint<std::wstring> mline_style{kAnyText};
  PropertyConstraint<int32_t> mtext_attachment_point{kAnyCode};
  PropertyConstraint<std::wstring> hatch_mode{kAnyText};
  PropertyConstraint<std::wstring> pattern{kAnyText};
  PropertyConstraint<double> pattern_angle{kAnyReal};
  PropertyConstraint<double> pattern_scale{kAnyReal};
  PropertyConstraint<std::wstring> text{kAnyText};
  PropertyConstraint<double> text_height{kAnyReal};
  PropertyConstraint<int32_t> text_justification{kAnyCode};
  PropertyConstraint<std::wstring> text_style{kAnyText};

  bool operator==(const DrawingProperties&) const = default;
};

// Whether the class's type list names `type` (a canonical type name; empty names nothing).
bool listsType(const DrawingProperties& properties, std::wstring_view type);

// Applies one `obj_prop` line: `key` (any case) set to `value`, with `alternatives` the
// optional fourth column. An empty `alternatives` gives one value; a list "a,b,c" adds
// accepted values; "lower:upper" a range. Each value is trimmed, "*" means any (an
// any-colour entry for the colour keys, false for `explode`, nothing for other keys), and the
// rest is read by the key's syntax. The first value given for a key is its default; later
// values, on this line or later lines, become alternatives and the line's mode replaces the
// key's mode.
// Returns false for an unknown key, a malformed range or a value the key does not accept;
// values applied before the bad one stay applied.
bool parseObjectProperty(DrawingProperties& properties, std::wstring_view key,
                         std::wstring_view value, std::wstring_view alternatives);

// The number test of the numeric keys: after trimming blanks, not empty, at most one
// leading "-", at most one ".", and otherwise only digits. "-" and "." pass (they read as 0);
// exponents never do.
bool isNumericText(std::wstring_view text);

// "None", "ByBlock", "ByLayer" or the decimal index for one value, "(r g b)" for three, and
// an empty text for any other length.
std::wstring formatColorSpec(const ColorSpec& color);

// 0xRRGGBB of a three-value colour (each value taken modulo 256).
uint32_t packedRgb(const ColorSpec& color);

}  // namespace draw
