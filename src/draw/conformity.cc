#include "draw/conformity.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <charconv>
#include <cmath>
#include <numbers>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

#include "base/text_case.h"
#include "draw/object_types.h"

namespace draw {

using namespace std::literals;

namespace {

using P = host::EntityProperty;

constexpr size_t kPropertyCount = static_cast<size_t>(P::kElevation) + 1;

}  // namespace

int linearPrecision(host::Database& database) {
  auto var = database.getVar("LUPREC");
  int precision = 4;
  if (var) {
    if (const auto* s = std::get_if<int16_t>(&var->value)) precision = *s;
    if (const auto* l = std::get_if<int32_t>(&var->value)) precision = *l;
  }
  return std::clamp(precision, 0, 8);
}

namespace {

// The sweep from which an ellipse counts as closed. The constant is not quite pi, and it is
// rounded to the drawing's precision, so at most precisions a full ellipse stays an "arc";
// classes written against that behaviour depend on it.
double fullEllipseSweep(int precision) {
  constexpr double kHalfTurn = 3.1415926535897234;
  char text[64];
  auto printed =
      std::to_chars(text, text + sizeof text, kHalfTurn, std::chars_format::fixed, precision);
  double rounded = kHalfTurn;
  std::from_chars(text, printed.ptr, rounded, std::chars_format::fixed);
  return 2 * rounded;
}

std::wstring_view dimensionModeOfClass(std::wstring_view host_class) {
  constexpr std::pair<std::wstring_view, std::wstring_view> kModes[] = {
      {L"AcDbAlignedDimension", L"aligned"},       {L"AcDb2LineAngularDimension", L"angular"},
      {L"AcDb3PointAngularDimension", L"angular"}, {L"AcDbArcDimension", L"arc"},
      {L"AcDbDiametricDimension", L"diameter"},    {L"AcDbRadialDimensionLarge", L"jogged"},
      {L"AcDbRotatedDimension", L"linear"},        {L"AcDbOrdinateDimension", L"ordinate"},
      {L"AcDbRadialDimension", L"radius"},
  };
  for (const auto& [cls, mode] : kModes) {
    if (cls == host_class) return mode;
  }
  return {};
}

// For hosts that name every dimension by its base class.
std::wstring_view dimensionModeOfType(int64_t type) {
  constexpr std::wstring_view kModes[] = {L"linear", L"aligned", L"angular", L"diameter",
                                          L"radius", L"angular", L"ordinate"};
  if (type < 0 || type >= static_cast<int64_t>(std::size(kModes))) return {};
  return kModes[type];
}

double radiansToDegrees(double radians) { return radians * 180 / std::numbers::pi; }

// Numbers of every key are compared as doubles.
double comparable(double v) { return v; }
double comparable(int32_t v) { return v; }
double comparable(int8_t v) { return v; }
const std::wstring& comparable(const std::wstring& v) { return v; }
const Scale3& comparable(const Scale3& v) { return v; }

// 0.1 to the power of `precision`, worked out once for the precisions LUPREC takes: every
// entity tested needs it.
double toleranceOf(int precision) {
  static const auto kTable = [] {
    std::array<double, 17> table{};
    for (int p = 0; p < 17; ++p) table[static_cast<size_t>(p)] = std::pow(0.1, p);
    return table;
  }();
  if (precision >= 0 && precision < 17) return kTable[static_cast<size_t>(precision)];
  return std::pow(0.1, precision);
}

}  // namespace

// One entity tested against classes: holds the tolerance of this drawing and the values
// read from the entity.
class Matcher {
 public:
  Matcher(host::Database& database, int precision)
      : database_(database), precision_(precision), tolerance_(toleranceOf(precision_)) {}

  // Reads `entity` from now on, forgetting what was read before; the values' text buffers
  // are kept.
  void reset(host::ObjectId entity) {
    entity_ = entity;
    read_.reset();
  }

  // The entity's value of `property`, asked of the host once however many classes test it.
  const host::PropertyValue& value(P property) const {
    auto index = static_cast<size_t>(property);
    host::PropertyValue& slot = values_[index];
    if (!read_[index]) {
      database_.getPropertyInto(entity_, property, slot);
      read_.set(index);
    }
    return slot;
  }

  int precision() const { return precision_; }

  // A key the entity has no value for passes only when the class accepts anything.
  template <typename T>
  bool acceptsNumber(const PropertyConstraint<T>& c, P property, double scale = 1) const {
    if (acceptsAll(c)) return true;
    std::optional<double> v = number(property);
    return v && accepts(c, *v * scale);
  }

  bool acceptsText(const PropertyConstraint<std::wstring>& c, P property) const {
    if (acceptsAll(c)) return true;
    const host::PropertyValue& value = this->value(property);
    const auto* v = std::get_if<std::wstring>(&value);
    return v && accepts(c, *v);
  }

  bool acceptsScale(const PropertyConstraint<Scale3>& c, P property) const {
    if (acceptsAll(c)) return true;
    const host::PropertyValue& value = this->value(property);
    const auto* v = std::get_if<host::Point3>(&value);
    return v && accepts(c, Scale3{v->x, v->y, v->z});
  }

  bool acceptsColor(const std::vector<ColorSpec>& accepted, P property) const {
    if (accepted.empty()) return true;
    const host::PropertyValue& value = this->value(property);
    const auto* color = std::get_if<host::Color>(&value);
    return std::any_of(accepted.begin(), accepted.end(), [&](const ColorSpec& one) {
      if (one.empty()) return true;
      if (!color) return false;
      // An entity with a true colour keeps the palette index nearest to it, and that index
      // is what a class's colour index compares with.
      if (one.size() == 1) return color->index == one[0];
      if (one.size() == 3) return color->rgb == packedRgb(one);
      return false;
    });
  }

  // For values the entity does not hold as such (modes derived from its class or sweep).
  bool acceptsDerived(const PropertyConstraint<std::wstring>& c, const std::wstring& v) const {
    return acceptsAll(c) || accepts(c, v);
  }

  std::optional<double> number(P property) const {
    const host::PropertyValue& value = this->value(property);
    if (const auto* d = std::get_if<double>(&value)) return *d;
    if (const auto* i = std::get_if<int64_t>(&value)) return static_cast<double>(*i);
    return std::nullopt;
  }

 private:
  template <typename T>
  static bool acceptsAll(const PropertyConstraint<T>& c) {
    if (!c.isSet() || c.isAny(c.value)) return true;
    return c.mode == ConstraintMode::kList &&
           std::any_of(c.alternatives.begin(), c.alternatives.end(),
                       [&](const T& alternative) { return c.isAny(alternative); });
  }

  template <typename T, typename V>
  bool accepts(const PropertyConstraint<T>& c, const V& v) const {
    if (equal(comparable(c.value), v)) return true;
    switch (c.mode) {
      case ConstraintMode::kList:
        return std::any_of(c.alternatives.begin(), c.alternatives.end(),
                           [&](const T& alternative) { return equal(comparable(alternative), v); });
      case ConstraintMode::kRange:
        return !c.alternatives.empty() && atLeast(v, comparable(c.alternatives.front())) &&
               atMost(v, comparable(c.alternatives.back()));
      default:
        return false;
    }
  }

  bool equal(double a, double b) const { return std::abs(a - b) < tolerance_; }
  bool equal(const std::wstring& a, const std::wstring& b) const {
    return base::equalsIgnoringCase(a, b);
  }
  bool equal(const Scale3& a, const Scale3& b) const {
    return equal(a.x, b.x) && equal(a.y, b.y) && equal(a.z, b.z);
  }

  // Bounds include their value within the tolerance. Texts are ordered as they stand
  // although they are equal regardless of case.
  bool atLeast(double v, double lower) const { return equal(v, lower) || v > lower; }
  bool atMost(double v, double upper) const { return equal(v, upper) || v < upper; }
  bool atLeast(const std::wstring& v, const std::wstring& lower) const {
    return equal(v, lower) || v > lower;
  }
  bool atMost(const std::wstring& v, const std::wstring& upper) const {
    return equal(v, upper) || v < upper;
  }
  // A scale is within a range when each factor is.
  bool atLeast(const Scale3& v, const Scale3& lower) const {
    return atLeast(v.x, lower.x) && atLeast(v.y, lower.y) && atLeast(v.z, lower.z);
  }
  bool atMost(const Scale3& v, const Scale3& upper) const {
    return atMost(v.x, upper.x) && atMost(v.y, upper.y) && atMost(v.z, upper.z);
  }

  host::Database& database_;
  host::ObjectId entity_;
  int precision_;
  double tolerance_;
  mutable std::array<host::PropertyValue, kPropertyCount> values_;
  mutable std::bitset<kPropertyCount> read_;
};

namespace {

std::wstring dimensionMode(host::Database& database, host::ObjectId entity,
                           const Matcher& matcher) {
  std::wstring_view mode = dimensionModeOfClass(database.entityClass(entity));
  if (mode.empty()) {
    if (auto type = matcher.number(P::kDimensionType)) {
      mode = dimensionModeOfType(static_cast<int64_t>(*type));
    }
  }
  return std::wstring(mode);
}

std::wstring ellipseMode(const Matcher& matcher) {
  auto start = matcher.number(P::kEllipseStart);
  auto end = matcher.number(P::kEllipseEnd);
  if (!start || !end) return {};
  return std::abs(*end - *start) >= fullEllipseSweep(matcher.precision()) ? L"circle" : L"arc";
}

bool matchesTypeProperties(host::Database& database, host::ObjectId entity,
                           const DrawingProperties& p, std::wstring_view type, const Matcher& m) {
  const double kToDegrees = radiansToDegrees(1);
  if (type == L"3DPolyline"sv || type == L"Polyline"sv || type == L"Spline"sv) {
    return m.acceptsNumber(p.closed, P::kClosed);
  }
  if (type == L"BlockReference"sv) {
    return m.acceptsNumber(p.angle, P::kRotation, kToDegrees) &&
           m.acceptsText(p.block_name, P::kBlockName) && m.acceptsScale(p.block_scale, P::kScale);
  }
  if (type == L"Circle"sv) return m.acceptsNumber(p.circle_radius, P::kRadius);
  if (type == L"Dimension"sv) {
    return m.acceptsDerived(p.dimension_mode, dimensionMode(database, entity, m)) &&
           m.acceptsText(p.dimension_style, P::kDimensionStyle);
  }
  if (type == L"Ellipse"sv) return m.acceptsDerived(p.ellipse_mode, ellipseMode(m));
  if (type == L"Hatch"sv || type == L"MPolygon"sv) {
    // An MPolygon's pattern colour is not reported by the host, so `patterncolor` cannot
    // exclude one.
    return (type != L"Hatch"sv || m.acceptsColor(p.background_color, P::kBackgroundColor)) &&
           m.acceptsText(p.pattern, P::kPattern) &&
           m.acceptsNumber(p.pattern_angle, P::kPatternAngle, kToDegrees) &&
           m.acceptsNumber(p.pattern_scale, P::kPatternScale);
  }
  if (type == L"MLeader"sv) return m.acceptsText(p.mleader_style, P::kMLeaderStyle);
  if (type == L"Mline"sv) {
    return m.acceptsNumber(p.closed, P::kClosed) &&
           m.acceptsNumber(p.mline_justification, P::kMlineJustification) &&
           m.acceptsNumber(p.mline_scale, P::kMlineScale) &&
           m.acceptsText(p.mline_style, P::kMlineStyle);
  }
  if (type == L"MText"sv || type == L"Text"sv) {
    bool placed = type == L"MText"sv ? m.acceptsNumber(p.mtext_attachment_point, P::kAttachment)
                                     : m.acceptsNumber(p.text_justification, P::kTextJustification);
    return placed && m.acceptsNumber(p.angle, P::kRotation, kToDegrees) &&
           m.acceptsNumber(p.text_height, P::kTextHeight) &&
           m.acceptsText(p.text_style, P::kTextStyle) && m.acceptsText(p.text, P::kContents);
  }
  return true;
}

}  // namespace

std::wstring dimensionMode(host::Database& database, host::ObjectId entity) {
  std::wstring_view mode = dimensionModeOfClass(database.entityClass(entity));
  if (mode.empty()) {
    host::PropertyValue type = database.getProperty(entity, P::kDimensionType);
    if (const auto* code = std::get_if<int64_t>(&type)) mode = dimensionModeOfType(*code);
  }
  return std::wstring(mode);
}

EntityConformity::EntityConformity(host::Database& database, int precision)
    : database_(database), matcher_(std::make_unique<Matcher>(database, precision)) {}

void EntityConformity::reset(host::ObjectId entity) {
  entity_ = entity;
  database_.entityClassInto(entity, host_class_);
  type_ = objectTypeNameOfClass(host_class_);
  matcher_->reset(entity);
}

EntityConformity::~EntityConformity() = default;

bool EntityConformity::matches(const DrawingProperties& properties) const {
  if (!listsType(properties, type_)) return false;
  const Matcher& m = *matcher_;
  return m.acceptsColor(properties.color, P::kColor) &&
         m.acceptsText(properties.layer, P::kLayer) &&
         m.acceptsText(properties.linetype, P::kLinetype) &&
         m.acceptsNumber(properties.linetype_scale, P::kLinetypeScale) &&
         m.acceptsNumber(properties.lineweight, P::kLineweight) &&
         matchesTypeProperties(database_, entity_, properties, type_, m);
}

bool matchesClassProperties(host::Database& database, host::ObjectId entity,
                            const DrawingProperties& properties) {
  EntityConformity test(database, linearPrecision(database));
  test.reset(entity);
  return test.matches(properties);
}

}  // namespace draw
