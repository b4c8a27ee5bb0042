// Hatch pattern angle and scale, and the styles MLINE and MULTILEADER name by handle.
#include <charconv>
#include <cmath>

#include "base/utf.h"
#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/property_tags.h"
#include "dxf/symbol_tables.h"

namespace dxf::props {

namespace {

std::string_view fillMarker(const Document& doc, RecordId id) {
  return doc.type(id) == "MPOLYGON" ? "AcDbMPolygon" : "AcDbHatch";
}

// Where the pattern's angle (52) and scale (41) live: after the boundary paths, from the
// pattern type (76) to the definition lines (78). Searching only there keeps the lookup
// clear of the paths, whose edges reuse many codes.
struct PatternPlace {
  TagRange range;        // where 52 and 41 may be
  size_t insert_at = 0;  // where a missing one goes
};

PatternPlace patternPlace(const Document& doc, std::span<const Tag> tags, std::string_view marker) {
  TagRange group = subclassGroup(doc, tags, marker);
  int type = findCode(doc, tags, group, 76);
  if (type < 0) return {group, group.end};
  TagRange range{static_cast<size_t>(type) + 1, group.end};
  int lines = findCode(doc, tags, range, 78);
  if (lines >= 0) range.end = static_cast<size_t>(lines);
  return {range, range.begin};
}

double patternValue(const Document& doc, RecordId id, std::span<const Tag> tags, int code,
                    double fallback) {
  PatternPlace place = patternPlace(doc, tags, fillMarker(doc, id));
  int at = findCode(doc, tags, place.range, code);
  double out = fallback;
  return at >= 0 && parseDouble(doc.text(tags[at]), out) ? out : fallback;
}

// Turns by `degrees` and scales by `factor` the definition lines that follow 78, as a
// CAD program would regenerate them: 53 angle, 43/44 base point, 45/46 offset, 49 dashes.
bool transformPatternLines(const Document& doc, RecordEdit& edit, std::string_view marker,
                           double degrees, double factor) {
  if (degrees == 0 && factor == 1) return false;
  TagRange group = subclassGroup(doc, edit.tags(), marker);
  int lines = findCode(doc, edit.tags(), group, 78);
  if (lines < 0) return false;
  double c = std::cos(degreesToRadians(degrees));
  double s = std::sin(degreesToRadians(degrees));
  auto real = [&](size_t i) {
    double out = 0;
    return parseDouble(edit.text(i), out) ? out : 0.0;
  };
  bool changed = false;
  for (size_t i = static_cast<size_t>(lines) + 1; i < group.end; ++i) {
    int code = edit.tags()[i].code;
    if (code == 53) {
      double turned = std::fmod(real(i) + degrees, 360.0);
      edit.setText(i, formatDouble(turned < 0 ? turned + 360.0 : turned));
    } else if ((code == 43 || code == 45) && i + 1 < group.end &&
               edit.tags()[i + 1].code == code + 1) {
      double x = real(i), y = real(i + 1);
      edit.setText(i, formatDouble(factor * (c * x - s * y)));
      edit.setText(i + 1, formatDouble(factor * (s * x + c * y)));
      ++i;
    } else if (code == 49) {
      edit.setText(i, formatDouble(factor * real(i)));
    } else if (code != 79) {
      break;  // past the definition lines
    }
    changed = true;
  }
  return changed;
}

base::Status setPatternValue(Document& doc, RecordId id, int code, double value) {
  std::string_view marker = fillMarker(doc, id);
  RecordEdit edit(doc, id);
  double angle = patternValue(doc, id, edit.tags(), 52, 0.0);
  double scale = patternValue(doc, id, edit.tags(), 41, 1.0);
  PatternPlace place = patternPlace(doc, edit.tags(), marker);
  int at = findCode(doc, edit.tags(), place.range, code);
  size_t insert_at = place.insert_at;
  if (code == 41) {  // the scale follows the angle
    int angle_at = findCode(doc, edit.tags(), place.range, 52);
    if (angle_at >= 0) insert_at = static_cast<size_t>(angle_at) + 1;
  }
  bool changed = putTag(edit, at, insert_at, code, formatDouble(value));
  if (code == 52) {
    changed |= transformPatternLines(doc, edit, marker, value - angle, 1.0);
  } else if (scale != 0) {
    changed |= transformPatternLines(doc, edit, marker, 0.0, value / scale);
  }
  if (changed) edit.commit();
  return base::Status::ok();
}

// The style the `at` tag's handle names, listed in `dictionary`; empty when it names none.
std::wstring styleOf(const Document& doc, std::span<const Tag> tags, int at,
                     std::wstring_view dictionary) {
  if (at < 0) return {};
  RecordId style = doc.byHandle(parseHandle(doc.text(tags[at])));
  return style == kNoRecord ? std::wstring() : styleName(doc, dictionary, style);
}

base::Result<RecordId> findNamedStyle(const Document& doc, std::wstring_view dictionary,
                                      std::string_view what, const PropValue& value) {
  const std::wstring* name = asText(value);
  if (!name) return wrongValue("a style name");
  RecordId style = findStyle(doc, dictionary, *name);
  if (style == kNoRecord) {
    return base::Status::notFound(std::string(what) + " '" + base::toUtf8(*name) +
                                  "' does not exist");
  }
  return style;
}

// The MULTILEADER's own 340 follows its context data ("300 CONTEXT_DATA{" .. "301 }"),
// which holds a 340 of its own for the text style.
TagRange mleaderTail(const Document& doc, std::span<const Tag> tags) {
  TagRange range = subclassGroup(doc, tags, "AcDbMLeader");
  for (size_t i = range.end; i-- > range.begin;) {
    if (tags[i].code == 301) return {i + 1, range.end};
  }
  return range;
}

}  // namespace

PropValue getPatternAngle(const Document& doc, RecordId id, std::span<const Tag> tags) {
  return degreesToRadians(patternValue(doc, id, tags, 52, 0.0));
}

base::Status setPatternAngle(Document& doc, RecordId id, const PropValue& value) {
  std::optional<double> angle = asReal(value);
  if (!angle || !std::isfinite(*angle)) return wrongValue("a finite angle");
  return setPatternValue(doc, id, 52, radiansToDegrees(*angle));
}

PropValue getPatternScale(const Document& doc, RecordId id, std::span<const Tag> tags) {
  return patternValue(doc, id, tags, 41, 1.0);
}

base::Status setPatternScale(Document& doc, RecordId id, const PropValue& value) {
  std::optional<double> scale = asReal(value);
  if (!scale || !std::isfinite(*scale) || *scale <= 0) return wrongValue("a positive scale");
  return setPatternValue(doc, id, 41, *scale);
}

PropValue getMLeaderStyle(const Document& doc, RecordId /*id*/, std::span<const Tag> tags) {
  TagRange tail = mleaderTail(doc, tags);
  int at = findCode(doc, tags, tail, 340);
  if (at < 0) return std::wstring(L"Standard");
  return styleOf(doc, tags, at, L"ACAD_MLEADERSTYLE");
}

base::Status setMLeaderStyle(Document& doc, RecordId id, const PropValue& value) {
  auto style = findNamedStyle(doc, L"ACAD_MLEADERSTYLE", "multileader style", value);
  if (!style) return style.status();
  RecordEdit edit(doc, id);
  TagRange tail = mleaderTail(doc, edit.tags());
  int at = findCode(doc, edit.tags(), tail, 340);
  if (putTag(edit, at, tail.begin, 340, formatHandle(doc.record(*style).handle))) edit.commit();
  return base::Status::ok();
}

PropValue getMlineStyle(const Document& doc, RecordId /*id*/, std::span<const Tag> tags) {
  TagRange range = subclassGroup(doc, tags, "AcDbMline");
  // The handle is what CAD programs follow; the name is a copy.
  std::wstring name = styleOf(doc, tags, findCode(doc, tags, range, 340), L"ACAD_MLINESTYLE");
  if (!name.empty()) return name;
  int at = findCode(doc, tags, range, 2);
  return at >= 0 ? doc.codec().decode(doc.text(tags[at])) : std::wstring(L"Standard");
}

base::Status setMlineStyle(Document& doc, RecordId id, const PropValue& value) {
  auto style = findNamedStyle(doc, L"ACAD_MLINESTYLE", "multiline style", value);
  if (!style) return style.status();
  std::string name = doc.codec().encode(styleName(doc, L"ACAD_MLINESTYLE", *style));
  RecordEdit edit(doc, id);
  auto range = [&] { return subclassGroup(doc, edit.tags(), "AcDbMline"); };
  // Both go before the scale, flags and vertices, in the order 2, 340.
  auto first_of = [&](std::initializer_list<int> codes) {
    size_t out = range().end;
    for (int code : codes) {
      int at = findCode(doc, edit.tags(), range(), code);
      if (at >= 0 && static_cast<size_t>(at) < out) out = static_cast<size_t>(at);
    }
    return out;
  };
  bool changed = putTag(edit, findCode(doc, edit.tags(), range(), 2),
                        first_of({340, 40, 70, 71, 72, 73, 10}), 2, name);
  changed |=
      putTag(edit, findCode(doc, edit.tags(), range(), 340), first_of({40, 70, 71, 72, 73, 10}),
             340, formatHandle(doc.record(*style).handle));
  if (changed) edit.commit();
  return base::Status::ok();
}

}  // namespace dxf::props
