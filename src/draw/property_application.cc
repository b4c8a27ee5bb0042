#include "draw/property_application.h"

#include <numbers>
#include <string>
#include <string_view>
#include <utility>

#include "base/text_case.h"
#include "draw/object_types.h"

namespace draw {

using namespace std::literals;

namespace {

using P = host::EntityProperty;

template <typename T>
bool prescribed(const PropertyConstraint<T>& c) {
  return c.isSet() && !c.isAny(c.value);
}

// The first colour that is not "any": the default of a colour list.
const ColorSpec* defaultColor(const std::vector<ColorSpec>& colors) {
  for (const ColorSpec& color : colors) {
    if (color.size() == 1 || color.size() == 3) return &color;
  }
  return nullptr;
}

// A true colour goes to the host with the ByLayer index beside it: choosing a palette
// approximation is the host's business, and the drawing readers report true colours the
// same way, so what is applied reads back equal.
host::Color hostColor(const ColorSpec& color) {
  if (color.size() == 1) return host::Color{.index = color[0]};
  return host::Color{.index = 256, .rgb = packedRgb(color)};
}

// Sets properties one after the other, keeping the first failure so that one missing name
// does not stop the rest.
// Names (the only texts applied) are the same in any case, as symbol tables compare them.
bool sameValue(const host::PropertyValue& current, const host::PropertyValue& wanted) {
  const auto* a = std::get_if<std::wstring>(&current);
  const auto* b = std::get_if<std::wstring>(&wanted);
  if (a && b) return base::equalsIgnoringCase(*a, *b);
  return current == wanted;
}

class Applier {
 public:
  Applier(host::Database& database, host::ObjectId entity) : database_(database), entity_(entity) {}

  base::Status status() const { return status_; }

  void set(const char* key, P property, const host::PropertyValue& value) {
    // An entity that has the value already is left untouched, so that the drawing keeps
    // its own record of it.
    if (sameValue(database_.getProperty(entity_, property), value)) return;
    base::Status s = database_.setProperty(entity_, property, value);
    if (!s.isOk() && status_.isOk()) status_ = s.withContext(std::string("applying ") + key);
  }

  void color(const char* key, P property, const std::vector<ColorSpec>& colors) {
    if (const ColorSpec* first = defaultColor(colors)) set(key, property, hostColor(*first));
  }

  void text(const char* key, P property, const PropertyConstraint<std::wstring>& c) {
    if (prescribed(c)) set(key, property, c.value);
  }

  void real(const char* key, P property, const PropertyConstraint<double>& c, double factor = 1) {
    if (prescribed(c)) set(key, property, c.value * factor);
  }

  template <typename T>
  void integer(const char* key, P property, const PropertyConstraint<T>& c) {
    if (prescribed(c)) set(key, property, static_cast<int64_t>(c.value));
  }

  void closed(const PropertyConstraint<int8_t>& c) {
    if (prescribed(c)) set("closed", P::kClosed, int64_t{c.value != 0 ? 1 : 0});
  }

  void scale(const PropertyConstraint<Scale3>& c) {
    if (prescribed(c)) {
      set("blockscale", P::kScale, host::Point3{c.value.x, c.value.y, c.value.z});
    }
  }

 private:
  host::Database& database_;
  host::ObjectId entity_;
  base::Status status_;
};

void applyTypeProperties(Applier& a, const DrawingProperties& p, std::wstring_view type) {
  if (type == L"Polyline"sv) {
    a.closed(p.closed);
    a.real("constantwidth", P::kConstantWidth, p.constant_width);
    a.real("elevation", P::kElevation, p.elevation);
  } else if (type == L"3DPolyline"sv || type == L"Spline"sv) {
    a.closed(p.closed);
  } else if (type == L"Mline"sv) {
    a.closed(p.closed);
    a.integer("mlinejustification", P::kMlineJustification, p.mline_justification);
    a.real("mlinescale", P::kMlineScale, p.mline_scale);
  } else if (type == L"BlockReference"sv) {
    a.text("blockname", P::kBlockName, p.block_name);
    a.scale(p.block_scale);
  } else if (type == L"Dimension"sv) {
    a.text("dimensionstyle", P::kDimensionStyle, p.dimension_style);
  } else if (type == L"MLeader"sv) {
    a.text("mleaderstyle", P::kMLeaderStyle, p.mleader_style);
  } else if (type == L"Hatch"sv || type == L"MPolygon"sv) {
    a.text("pattern", P::kPattern, p.pattern);
    a.real("patternangle", P::kPatternAngle, p.pattern_angle, std::numbers::pi / 180);
    a.real("patternscale", P::kPatternScale, p.pattern_scale);
    // The host has no property for an MPolygon's pattern colour.
    if (type == L"Hatch"sv) a.color("backgroundcolor", P::kBackgroundColor, p.background_color);
  } else if (type == L"Text"sv || type == L"MText"sv) {
    a.real("textheight", P::kTextHeight, p.text_height);
    a.text("textstyle", P::kTextStyle, p.text_style);
    if (type == L"Text"sv) {
      a.integer("textjustification", P::kTextJustification, p.text_justification);
    } else {
      a.integer("mtextattachmentpoint", P::kAttachment, p.mtext_attachment_point);
    }
  }
}

}  // namespace

base::Status applyDrawingProperties(host::Database& database, host::ObjectId entity,
                                    const DrawingProperties& properties, ApplyMode mode) {
  Applier a(database, entity);
  a.color("color", P::kColor, properties.color);
  a.text("layer", P::kLayer, properties.layer);
  a.text("linetype", P::kLinetype, properties.linetype);
  a.real("linetypescale", P::kLinetypeScale, properties.linetype_scale);
  a.integer("lineweight", P::kLineweight, properties.lineweight);
  if (mode == ApplyMode::kAll) {
    applyTypeProperties(a, properties, objectTypeName(database, entity));
  }
  return a.status();
}

host::ResourceNames requiredResources(const DrawingProperties& properties) {
  const std::pair<uint32_t, const PropertyConstraint<std::wstring>*> kNamed[] = {
      {host::kResourceLayers, &properties.layer},
      {host::kResourceLinetypes, &properties.linetype},
      {host::kResourceBlocks, &properties.block_name},
      {host::kResourceTextStyles, &properties.text_style},
      {host::kResourceDimensionStyles, &properties.dimension_style},
      {host::kResourceMLeaderStyles, &properties.mleader_style},
      {host::kResourceMlineStyles, &properties.mline_style},
  };
  host::ResourceNames names;
  for (const auto& [kind, constraint] : kNamed) {
    if (prescribed(*constraint)) names[kind].push_back(constraint->value);
  }
  return names;
}

}  // namespace draw
