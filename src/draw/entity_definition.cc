#include "draw/entity_definition.h"

#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "draw/conformity.h"
#include "draw/object_types.h"
#include "draw/property_lines.h"

namespace draw {

namespace {

using P = host::EntityProperty;
using namespace std::literals;

template <typename T>
using Field = PropertyConstraint<T> DrawingProperties::*;

template <typename T>
void setSingle(PropertyConstraint<T>& constraint, T value) {
  constraint.mode = ConstraintMode::kSingle;
  constraint.value = std::move(value);
}

// Puts what the reader finds into a definition.
class DefinitionSink {
 public:
  explicit DefinitionSink(DrawingProperties& p) : p_(p) {}

  template <typename T>
  void set(Field<T> field, T value) {
    setSingle(p_.*field, std::move(value));
  }
  void text(Field<std::wstring> field, const std::wstring& value) {
    if (!isWritableName(value)) writable_ = false;
    setSingle(p_.*field, value);
  }
  // A text of this program's own, not the drawing's.
  void word(Field<std::wstring> field, std::wstring value) {
    setSingle(p_.*field, std::move(value));
  }
  void color(std::initializer_list<int32_t> parts) { p_.color.emplace_back(parts); }
  void none() {}
  // Whether every name read can be written.
  bool writable() const { return writable_; }

 private:
  DrawingProperties& p_;
  bool writable_ = true;
};

// Writes what the reader finds as a key: the type decides which properties are read in which
// order, so their values, each found or not, tell the definition.
class KeySink {
 public:
  explicit KeySink(std::string& key) : key_(key) {}

  template <typename T>
  void set(Field<T>, T value) {
    key_ += '+';
    bytes(value);
  }
  void text(Field<std::wstring>, std::wstring_view value) { this->value(value); }
  void word(Field<std::wstring>, std::wstring_view value) { this->value(value); }
  void color(std::initializer_list<int32_t> parts) {
    key_ += static_cast<char>('0' + parts.size());
    for (int32_t part : parts) bytes(part);
  }
  void none() { key_ += '-'; }
  void value(std::wstring_view text) {
    key_ += '+';
    bytes(text.size());
    key_.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
  }

 private:
  template <typename T>
  void bytes(T value) {
    key_.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  // 0 and -0 compare equal.
  void bytes(double value) { bytes<double>(value + 0.0); }
  void bytes(const Scale3& s) {
    bytes(s.x);
    bytes(s.y);
    bytes(s.z);
  }

  std::string& key_;
};

// writtenReal of recent values: the same few scales and heights come back entity after entity.
class WrittenReals {
 public:
  explicit WrittenReals(int precision) : precision_(precision) { entries_.fill({kEmpty, 0}); }
  int precision() const { return precision_; }

  // Finite `value`s only.
  double operator()(double value) {
    auto bits = std::bit_cast<uint64_t>(value);
    auto& [held, written] = entries_[(bits * 0x9E3779B97F4A7C15ull) >> 58];
    if (held != bits) {
      held = bits;
      written = writtenReal(value, precision_);
    }
    return written;
  }

 private:
  static constexpr uint64_t kEmpty = 0x7FF8000000000000ull;  // a NaN: never asked for
  int precision_;
  std::array<std::pair<uint64_t, double>, 64> entries_;
};

// Reads an entity's properties for a sink.
template <typename Sink>
class EntityReader {
 public:
  EntityReader(host::Database& database, host::ObjectId entity, WrittenReals& written,
               host::PropertyValue& value, Sink& sink)
      : database_(database),
        entity_(entity),
        precision_(written.precision()),
        written_(written),
        value_(value),
        sink_(sink) {}

  void text(P property, Field<std::wstring> field) {
    get(property);
    const auto* text = std::get_if<std::wstring>(&value_);
    if (!text || text->empty()) return sink_.none();
    sink_.text(field, *text);
  }

  void real(P property, Field<double> field) {
    if (auto v = number(property)) return sink_.set(field, asWritten(*v));
    sink_.none();
  }

  // Held in radians, rounded as its degrees are written.
  void angle(P property, Field<double> field) {
    if (auto v = number(property)) {
      return sink_.set(field, asWritten(*v * 180 / std::numbers::pi) * std::numbers::pi / 180);
    }
    sink_.none();
  }

  template <typename T>
  void code(P property, Field<T> field, int64_t lowest, int64_t highest) {
    get(property);
    const auto* v = std::get_if<int64_t>(&value_);
    if (v && *v >= lowest && *v <= highest) return sink_.set(field, static_cast<T>(*v));
    sink_.none();
  }

  void flag(P property, Field<int8_t> field) {
    if (auto v = number(property)) return sink_.set(field, static_cast<int8_t>(*v != 0));
    sink_.none();
  }

  void color(P property) {
    get(property);
    const auto* color = std::get_if<host::Color>(&value_);
    if (color && color->rgb) {
      uint32_t rgb = *color->rgb;
      return sink_.color({static_cast<int32_t>(rgb >> 16 & 0xFF),
                          static_cast<int32_t>(rgb >> 8 & 0xFF), static_cast<int32_t>(rgb & 0xFF)});
    }
    if (color && color->index >= 0 && color->index <= 256) return sink_.color({color->index});
    sink_.none();
  }

  // A scale whose factors a file would write as one number is held uniform.
  void scale(P property, Field<Scale3> field) {
    get(property);
    const auto* s = std::get_if<host::Point3>(&value_);
    if (!s || !std::isfinite(s->x) || !std::isfinite(s->y) || !std::isfinite(s->z)) {
      return sink_.none();
    }
    Scale3 held{asWritten(s->x), asWritten(s->y), asWritten(s->z)};
    double tolerance = std::pow(0.1, precision_);
    if (std::abs(held.x - held.y) < tolerance && std::abs(held.x - held.z) < tolerance) {
      held.y = held.z = held.x;
    }
    sink_.set(field, held);
  }

  // Whether the rotation is one that a file writes as other than 0 degrees.
  void rotated(P property, Field<int8_t> field) {
    if (auto v = number(property)) {
      return sink_.set(field, static_cast<int8_t>(writtenAsNonZero(*v * 180 / std::numbers::pi)));
    }
    sink_.none();
  }

 private:
  void get(P property) { database_.getPropertyInto(entity_, property, value_); }

  std::optional<double> number(P property) {
    get(property);
    double v = 0;
    if (const auto* d = std::get_if<double>(&value_)) {
      v = *d;
    } else if (const auto* i = std::get_if<int64_t>(&value_)) {
      v = static_cast<double>(*i);
    } else {
      return std::nullopt;
    }
    if (!std::isfinite(v)) return std::nullopt;
    return v;
  }

  double asWritten(double v) { return written_(v); }

  // Rotations are as many as the entities: most are told from 0 without writing them out.
  bool writtenAsNonZero(double v) const {
    double unit = std::pow(0.1, precision_);
    if (std::abs(v) >= unit) return true;
    if (std::abs(v) <= unit / 4) return false;
    return writtenReal(v, precision_) != 0;
  }

  host::Database& database_;
  host::ObjectId entity_;
  int precision_;
  WrittenReals& written_;
  host::PropertyValue& value_;
  Sink& sink_;
};

// Reads the properties of an entity of `type` into `sink`.
template <typename Sink>
void readDefinition(host::Database& database, host::ObjectId entity, std::wstring_view type,
                    WrittenReals& written, host::PropertyValue& value, Sink& sink) {
  EntityReader<Sink> read(database, entity, written, value, sink);
  using D = DrawingProperties;
  read.text(P::kLayer, &D::layer);
  read.color(P::kColor);
  read.text(P::kLinetype, &D::linetype);
  read.real(P::kLinetypeScale, &D::linetype_scale);
  read.code(P::kLineweight, &D::lineweight, INT32_MIN + 2, INT32_MAX);
  if (type == L"Dimension"sv) {
    read.text(P::kDimensionStyle, &D::dimension_style);
    std::wstring mode = dimensionMode(database, entity);
    if (mode.empty()) {
      sink.none();
    } else {
      sink.word(&D::dimension_mode, std::move(mode));
    }
  } else if (type == L"Mline"sv) {
    read.text(P::kMlineStyle, &D::mline_style);
    read.real(P::kMlineScale, &D::mline_scale);
    read.code(P::kMlineJustification, &D::mline_justification, 0, 2);
    read.flag(P::kClosed, &D::closed);
  } else if (type == L"MLeader"sv) {
    read.text(P::kMLeaderStyle, &D::mleader_style);
  } else if (type == L"Hatch"sv || type == L"MPolygon"sv) {
    read.text(P::kPattern, &D::pattern);
    read.real(P::kPatternScale, &D::pattern_scale);
    read.angle(P::kPatternAngle, &D::pattern_angle);
  } else if (type == L"BlockReference"sv) {
    read.text(P::kBlockName, &D::block_name);
    read.scale(P::kScale, &D::block_scale);
    read.rotated(P::kRotation, &D::rotate);
  } else if (type == L"Polyline"sv) {
    read.real(P::kConstantWidth, &D::constant_width);
    read.real(P::kElevation, &D::elevation);
  } else if (type == L"Text"sv || type == L"MText"sv) {
    read.text(P::kTextStyle, &D::text_style);
    read.real(P::kTextHeight, &D::text_height);
    if (type == L"Text"sv) {
      read.code(P::kTextJustification, &D::text_justification, 0, 14);
    } else {
      read.code(P::kAttachment, &D::mtext_attachment_point, 1, 24);
    }
  }
}

}  // namespace

bool isWritableName(std::wstring_view name) {
  if (name.empty() || name == kAnyText) return false;
  if (name.find_first_of(L"#\t\r\n") != std::wstring_view::npos) return false;
  if (name.front() == L' ' || name.back() == L' ' || name.back() == L'\\') return false;
  return true;
}

DrawingProperties buildDefinitionFromEntity(host::Database& database, host::ObjectId entity,
                                            int precision) {
  return DefinitionReader(database, precision).build(entity);
}

struct DefinitionReader::State {
  State(host::Database& database, int precision) : database(database), written(precision) {}

  host::Database& database;
  WrittenReals written;
  host::PropertyValue value;
  std::wstring host_class;
  std::string key;
};

DefinitionReader::DefinitionReader(host::Database& database, int precision)
    : state_(std::make_unique<State>(database, precision)) {}

DefinitionReader::~DefinitionReader() = default;

const std::string& DefinitionReader::kindKey(host::ObjectId entity) {
  State& s = *state_;
  s.key.clear();
  s.database.entityClassInto(entity, s.host_class);
  std::wstring_view type = objectTypeNameOfClass(s.host_class);
  KeySink sink(s.key);
  sink.value(type);
  if (!type.empty()) readDefinition(s.database, entity, type, s.written, s.value, sink);
  return s.key;
}

DrawingProperties DefinitionReader::build(host::ObjectId entity) {
  State& s = *state_;
  DrawingProperties p;
  std::wstring type = objectTypeName(s.database, entity);
  if (type.empty()) return p;
  DefinitionSink sink(p);
  readDefinition(s.database, entity, type, s.written, s.value, sink);
  if (sink.writable()) p.object_types.push_back(std::move(type));
  return p;
}

bool sameDefinition(const DrawingProperties& a, const DrawingProperties& b) { return a == b; }

}  // namespace draw
