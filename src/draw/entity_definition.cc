#include "draw/entity_definition.h"

#include <climits>
#include <cmath>
#include <numbers>
#include <optional>
#include <variant>

#include "draw/conformity.h"
#include "draw/object_types.h"
#include "draw/property_lines.h"

namespace draw {

namespace {

using P = host::EntityProperty;

template <typename T>
void setSingle(PropertyConstraint<T>& constraint, T value) {
  constraint.mode = ConstraintMode::kSingle;
  constraint.value = std::move(value);
}

// Reads an entity's properties into a definition; `writable` turns false when a name cannot
// be written.
class DefinitionReader {
 public:
  DefinitionReader(host::Database& database, host::ObjectId entity, int precision)
      : database_(database), entity_(entity), precision_(precision) {}

  bool writable() const { return writable_; }

  void text(P property, PropertyConstraint<std::wstring>& constraint) {
    host::PropertyValue value = get(property);
    const auto* text = std::get_if<std::wstring>(&value);
    if (!text || text->empty()) return;
    if (!isWritableName(*text)) writable_ = false;
    setSingle(constraint, *text);
  }

  void real(P property, PropertyConstraint<double>& constraint) {
    if (auto v = number(property)) setSingle(constraint, asWritten(*v));
  }

  // Held in radians, rounded as its degrees are written.
  void angle(P property, PropertyConstraint<double>& constraint) {
    if (auto v = number(property)) {
      setSingle(constraint, asWritten(*v * 180 / std::numbers::pi) * std::numbers::pi / 180);
    }
  }

  template <typename T>
  void code(P property, PropertyConstraint<T>& constraint, int64_t lowest, int64_t highest) {
    host::PropertyValue value = get(property);
    const auto* v = std::get_if<int64_t>(&value);
    if (v && *v >= lowest && *v <= highest) setSingle(constraint, static_cast<T>(*v));
  }

  void flag(P property, PropertyConstraint<int8_t>& constraint) {
    if (auto v = number(property)) setSingle(constraint, static_cast<int8_t>(*v != 0));
  }

  void color(P property, std::vector<ColorSpec>& colors) {
    host::PropertyValue value = get(property);
    const auto* color = std::get_if<host::Color>(&value);
    if (!color) return;
    if (color->rgb) {
      uint32_t rgb = *color->rgb;
      colors.push_back({static_cast<int32_t>(rgb >> 16 & 0xFF),
                        static_cast<int32_t>(rgb >> 8 & 0xFF), static_cast<int32_t>(rgb & 0xFF)});
    } else if (color->index >= 0 && color->index <= 256) {
      colors.push_back({color->index});
    }
  }

  // A scale whose factors a file would write as one number is held uniform.
  void scale(P property, PropertyConstraint<Scale3>& constraint) {
    host::PropertyValue value = get(property);
    const auto* s = std::get_if<host::Point3>(&value);
    if (!s || !std::isfinite(s->x) || !std::isfinite(s->y) || !std::isfinite(s->z)) return;
    Scale3 held{asWritten(s->x), asWritten(s->y), asWritten(s->z)};
    double tolerance = std::pow(0.1, precision_);
    if (std::abs(held.x - held.y) < tolerance && std::abs(held.x - held.z) < tolerance) {
      held.y = held.z = held.x;
    }
    setSingle(constraint, held);
  }

  // Whether the rotation is one that a file writes as other than 0 degrees.
  void rotated(P property, PropertyConstraint<int8_t>& constraint) {
    if (auto v = number(property)) {
      setSingle(constraint, static_cast<int8_t>(asWritten(*v * 180 / std::numbers::pi) != 0));
    }
  }

 private:
  host::PropertyValue get(P property) { return database_.getProperty(entity_, property); }

  std::optional<double> number(P property) {
    host::PropertyValue value = get(property);
    double v = 0;
    if (const auto* d = std::get_if<double>(&value)) {
      v = *d;
    } else if (const auto* i = std::get_if<int64_t>(&value)) {
      v = static_cast<double>(*i);
    } else {
      return std::nullopt;
    }
    if (!std::isfinite(v)) return std::nullopt;
    return v;
  }

  double asWritten(double v) const { return writtenReal(v, precision_); }

  host::Database& database_;
  host::ObjectId entity_;
  int precision_;
  bool writable_ = true;
};

}  // namespace

bool isWritableName(std::wstring_view name) {
  if (name.empty() || name == kAnyText) return false;
  if (name.find_first_of(L"#\t\r\n") != std::wstring_view::npos) return false;
  if (name.front() == L' ' || name.back() == L' ' || name.back() == L'\\') return false;
  return true;
}

DrawingProperties buildDefinitionFromEntity(host::Database& database, host::ObjectId entity,
                                            int precision) {
  DrawingProperties p;
  std::wstring type = objectTypeName(database, entity);
  if (type.empty()) return p;
  DefinitionReader read(database, entity, precision);
  read.text(P::kLayer, p.layer);
  read.color(P::kColor, p.color);
  read.text(P::kLinetype, p.linetype);
  read.real(P::kLinetypeScale, p.linetype_scale);
  read.code(P::kLineweight, p.lineweight, INT32_MIN + 2, INT32_MAX);
  if (type == L"Dimension") {
    read.text(P::kDimensionStyle, p.dimension_style);
    std::wstring mode = dimensionMode(database, entity);
    if (!mode.empty()) setSingle(p.dimension_mode, std::move(mode));
  } else if (type == L"Mline") {
    read.text(P::kMlineStyle, p.mline_style);
    read.real(P::kMlineScale, p.mline_scale);
    read.code(P::kMlineJustification, p.mline_justification, 0, 2);
    read.flag(P::kClosed, p.closed);
  } else if (type == L"MLeader") {
    read.text(P::kMLeaderStyle, p.mleader_style);
  } else if (type == L"Hatch" || type == L"MPolygon") {
    read.text(P::kPattern, p.pattern);
    read.real(P::kPatternScale, p.pattern_scale);
    read.angle(P::kPatternAngle, p.pattern_angle);
  } else if (type == L"BlockReference") {
    read.text(P::kBlockName, p.block_name);
    read.scale(P::kScale, p.block_scale);
    read.rotated(P::kRotation, p.rotate);
  } else if (type == L"Polyline") {
    read.real(P::kConstantWidth, p.constant_width);
    read.real(P::kElevation, p.elevation);
  } else if (type == L"Text" || type == L"MText") {
    read.text(P::kTextStyle, p.text_style);
    read.real(P::kTextHeight, p.text_height);
    if (type == L"Text") {
      read.code(P::kTextJustification, p.text_justification, 0, 14);
    } else {
      read.code(P::kAttachment, p.mtext_attachment_point, 1, 24);
    }
  }
  if (read.writable()) p.object_types.push_back(std::move(type));
  return p;
}

bool sameDefinition(const DrawingProperties& a, const DrawingProperties& b) { return a == b; }

}  // namespace draw
