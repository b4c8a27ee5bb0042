#include "draw/property_lines.h"

#include <charconv>
#include <cmath>
#include <numbers>
#include <span>
#include <string_view>

namespace draw {

namespace {

constexpr double kToDegrees = 180 / std::numbers::pi;

constexpr std::wstring_view kMlineJustificationNames[] = {L"Top", L"Zero", L"Bottom"};
// Indexed by attachment code - 1.
constexpr std::wstring_view kAttachmentNames[] = {
    L"TopLeft",     L"TopCenter",   L"TopRight",     L"MiddleLeft", L"MiddleCenter",
    L"MiddleRight", L"BottomLeft",  L"BottomCenter", L"BottomRight", L"BaseLeft",
    L"BaseCenter",  L"BaseRight",   L"BaseAlign",    L"BottomAlign", L"MiddleAlign",
    L"TopAlign",    L"BaseFit",     L"BottomFit",    L"MiddleFit",   L"TopFit",
    L"BaseMid",     L"BottomMid",   L"MiddleMid",    L"TopMid"};
constexpr std::wstring_view kTextJustificationNames[] = {
    L"Left",       L"Center",       L"Right",       L"Aligned",    L"Middle",
    L"Fit",        L"TopLeft",      L"TopCenter",   L"TopRight",   L"MiddleLeft",
    L"MiddleCenter", L"MiddleRight", L"BottomLeft", L"BottomCenter", L"BottomRight"};

// The name of `code` in `names` starting at `first`; the number itself when it has none.
template <size_t N>
std::wstring codeName(const std::wstring_view (&names)[N], int code, int first) {
  int index = code - first;
  if (index < 0 || index >= static_cast<int>(N)) return std::to_wstring(code);
  return std::wstring(names[index]);
}

std::wstring lineweightText(int32_t weight) {
  switch (weight) {
    case kLineweightByBlock:
      return L"ByBlock";
    case kLineweightByLayer:
      return L"ByLayer";
    case kLineweightDefault:
      return L"Default";
    default:
      return std::to_wstring(weight);
  }
}

std::wstring colorText(const ColorSpec& color) {
  return color.empty() ? std::wstring(kAnyText) : formatColorSpec(color);
}

class LineWriter {
 public:
  LineWriter(int precision, std::wstring& out)
      : precision_(precision), tolerance_(std::pow(0.1, precision)), out_(out) {}

  std::wstring real(double v) const { return formatReal(v, precision_); }
  std::wstring degrees(double radians) const { return real(radians * kToDegrees); }
  std::wstring scale(const Scale3& s) const {
    if (std::abs(s.x - s.y) < tolerance_ && std::abs(s.x - s.z) < tolerance_) return real(s.x);
    return L"(" + real(s.x) + L" " + real(s.y) + L" " + real(s.z) + L")";
  }

  template <typename T, typename Format>
  void constraint(std::wstring_view key, const PropertyConstraint<T>& c, Format format) {
    if (!c.isSet() || c.isAny(c.value)) return;
    auto text = [&](const T& v) { return c.isAny(v) ? std::wstring(kAnyText) : format(v); };
    std::wstring rest;
    if (c.mode == ConstraintMode::kList) {
      for (const T& alternative : c.alternatives) {
        if (!rest.empty()) rest += L", ";
        rest += text(alternative);
      }
    } else if (c.mode == ConstraintMode::kRange && !c.alternatives.empty()) {
      rest = text(c.alternatives.front()) + L":" + text(c.alternatives.back());
    }
    line(key, format(c.value), rest);
  }

  void text(std::wstring_view key, const PropertyConstraint<std::wstring>& c) {
    constraint(key, c, [](const std::wstring& v) { return v; });
  }
  void real(std::wstring_view key, const PropertyConstraint<double>& c) {
    constraint(key, c, [this](double v) { return real(v); });
  }
  void angle(std::wstring_view key, const PropertyConstraint<double>& c) {
    constraint(key, c, [this](double v) { return degrees(v); });
  }
  void flag(std::wstring_view key, const PropertyConstraint<int8_t>& c) {
    constraint(key, c, [](int8_t v) { return std::to_wstring(v); });
  }

  // The first colour is the value; the others are accepted alternatives, as a list.
  void colors(std::wstring_view key, const std::vector<ColorSpec>& colors) {
    if (colors.empty()) return;
    std::wstring rest;
    for (size_t i = 1; i < colors.size(); ++i) {
      if (!rest.empty()) rest += L", ";
      rest += colorText(colors[i]);
    }
    line(key, colorText(colors.front()), rest);
  }

  void line(std::wstring_view key, std::wstring_view value, std::wstring_view rest = {}) {
    out_ += L"\t\tobj_prop\t";
    out_ += key;
    out_ += L'\t';
    out_ += value;
    if (!rest.empty()) {
      out_ += L'\t';
      out_ += rest;
    }
    out_ += L'\n';
  }

 private:
  int precision_;
  double tolerance_;
  std::wstring& out_;
};

}  // namespace

namespace {

// Fixed notation with `precision` decimals, as "%.*f" writes it; templates write thousands.
std::string_view fixedText(double value, int precision, std::span<char> buffer) {
  auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                    std::chars_format::fixed, precision);
  if (error != std::errc()) return {};
  return {buffer.data(), end};
}

}  // namespace

std::wstring formatReal(double value, int precision) {
  char buffer[512];
  std::string_view text = fixedText(value, precision, buffer);
  return std::wstring(text.begin(), text.end());
}

double writtenReal(double value, int precision) {
  char buffer[512];
  std::string_view text = fixedText(value, precision, buffer);
  double out = 0;
  std::from_chars(text.data(), text.data() + text.size(), out);
  return out;
}

void appendPropertyLines(const DrawingProperties& p, int precision, std::wstring& out) {
  LineWriter w(precision, out);
  w.colors(L"color", p.color);
  w.text(L"layer", p.layer);
  w.text(L"linetype", p.linetype);
  w.real(L"linetypeScale", p.linetype_scale);
  w.constraint(L"lineWeight", p.lineweight, lineweightText);
  w.angle(L"angle", p.angle);
  w.text(L"blockName", p.block_name);
  w.flag(L"rotate", p.rotate);
  w.constraint(L"blockScale", p.block_scale, [&w](const Scale3& s) { return w.scale(s); });
  w.text(L"circleMode", p.circle_mode);
  w.real(L"circleRadius", p.circle_radius);
  bool circle = !p.object_types.empty() && p.object_types.front() == L"Circle";
  if (circle && !p.circle_mode.isSet() && !p.circle_radius.isSet()) {
    w.line(L"circleMode", L"Center");
  }
  w.flag(L"closed", p.closed);
  w.text(L"dimensionMode", p.dimension_mode);
  w.text(L"dimensionStyle", p.dimension_style);
  w.text(L"ellipseMode", p.ellipse_mode);
  w.colors(L"backgroundColor", p.background_color);
  w.text(L"hatchMode", p.hatch_mode);
  w.text(L"pattern", p.pattern);
  w.angle(L"patternAngle", p.pattern_angle);
  w.real(L"patternScale", p.pattern_scale);
  w.text(L"meshMode", p.mesh_mode);
  w.text(L"mleaderStyle", p.mleader_style);
  w.constraint(L"mlineJustification", p.mline_justification,
               [](int8_t v) { return codeName(kMlineJustificationNames, v, 0); });
  w.real(L"mlineScale", p.mline_scale);
  w.text(L"mlineStyle", p.mline_style);
  w.colors(L"patternColor", p.pattern_color);
  w.constraint(L"mtextAttachmentPoint", p.mtext_attachment_point,
               [](int32_t v) { return codeName(kAttachmentNames, v, 1); });
  w.real(L"constantWidth", p.constant_width);
  w.real(L"elevation", p.elevation);
  w.real(L"textHeight", p.text_height);
  w.constraint(L"textJustification", p.text_justification,
               [](int32_t v) { return codeName(kTextJustificationNames, v, 0); });
  w.text(L"textStyle", p.text_style);
  w.text(L"text", p.text);
}

}  // namespace draw
