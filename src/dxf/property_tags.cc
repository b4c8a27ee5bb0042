#include "dxf/property_tags.h"

#include <numbers>

namespace dxf::props {

namespace {

bool isOneOf(std::string_view name, std::string_view markers) {
  while (!markers.empty()) {
    size_t bar = markers.find('|');
    if (markers.substr(0, bar) == name) return true;
    if (bar == std::string_view::npos) break;
    markers.remove_prefix(bar + 1);
  }
  return false;
}

// Embedded objects (101) and extended data close every subclass group.
bool endsGroups(const Tag& tag) { return tag.code == 101 || tag.code >= 1000; }

}  // namespace

TagRange subclassGroup(const Document& doc, std::span<const Tag> tags, std::string_view markers,
                       int occurrence) {
  size_t end_of_data = tags.size();
  for (size_t i = 1; i < tags.size(); ++i) {
    if (endsGroups(tags[i])) {
      end_of_data = i;
      break;
    }
  }
  int seen = 0;
  for (size_t i = 1; i < end_of_data; ++i) {
    if (tags[i].code != 100 || !isOneOf(doc.text(tags[i]), markers)) continue;
    if (seen++ < occurrence) continue;
    size_t end = i + 1;
    while (end < end_of_data && tags[end].code != 100) ++end;
    return {i + 1, end};
  }
  return {tags.empty() ? 0 : size_t{1}, end_of_data};
}

int findCode(const Document& doc, std::span<const Tag> tags, TagRange range, int code,
             size_t from) {
  bool in_app_group = false;
  for (size_t i = range.begin; i < range.end; ++i) {
    // Tags inside "102 {APP ... 102 }" belong to the application, not the subclass.
    if (tags[i].code == 102) {
      std::string_view text = doc.text(tags[i]);
      in_app_group = !text.empty() && text.front() == '{';
      continue;
    }
    if (!in_app_group && i >= from && tags[i].code == code) return static_cast<int>(i);
  }
  return -1;
}

template <typename Tags>
std::optional<Tag> findInGroup(const Document& doc, const Tags& tags, std::string_view markers,
                               int code) {
  // Until the marker is seen, the first match of the whole record is kept: it is the answer
  // for a record without the marker (R12).
  std::optional<Tag> fallback;
  bool inside = false;
  bool in_app_group = false;
  bool first = true;
  for (const Tag& tag : tags) {
    if (first) {
      first = false;
      continue;
    }
    if (endsGroups(tag)) break;
    if (tag.code == 100) {
      if (inside) return std::nullopt;
      if (isOneOf(doc.text(tag), markers)) {
        inside = true;
        in_app_group = false;
        continue;
      }
    }
    if (tag.code == 102) {
      std::string_view text = doc.text(tag);
      in_app_group = !text.empty() && text.front() == '{';
      continue;
    }
    if (in_app_group || tag.code != code) continue;
    if (inside) return tag;
    if (!fallback) fallback = tag;
  }
  return inside ? std::nullopt : fallback;
}
template std::optional<Tag> findInGroup(const Document&, const std::span<const Tag>&,
                                        std::string_view, int);
template std::optional<Tag> findInGroup(const Document&, const TagScan&, std::string_view, int);

bool putTag(RecordEdit& edit, int at, size_t insert_at, int code, std::string_view raw) {
  if (at < 0) {
    edit.insert(insert_at, code, raw);
    return true;
  }
  if (edit.text(static_cast<size_t>(at)) == raw) return false;
  edit.setText(static_cast<size_t>(at), raw);
  return true;
}

bool putInRange(const Document& doc, RecordEdit& edit, TagRange range, int code,
                std::string_view raw) {
  return putTag(edit, findCode(doc, edit.tags(), range, code), range.end, code, raw);
}

std::optional<double> asReal(const PropValue& value) {
  if (const double* real = std::get_if<double>(&value)) return *real;
  if (const int64_t* integer = std::get_if<int64_t>(&value)) return static_cast<double>(*integer);
  return std::nullopt;
}

std::optional<int64_t> asInt(const PropValue& value) {
  if (const int64_t* integer = std::get_if<int64_t>(&value)) return *integer;
  return std::nullopt;
}

const std::wstring* asText(const PropValue& value) { return std::get_if<std::wstring>(&value); }

const EntityColor* asColor(const PropValue& value) { return std::get_if<EntityColor>(&value); }

base::Status wrongValue(std::string_view expected) {
  return base::Status::invalid("the property takes " + std::string(expected));
}

base::Status checkText(const std::wstring& text) {
  if (text.find_first_of(L"\r\n") != std::wstring::npos) {
    return base::Status::invalid("a DXF text value cannot hold a line break");
  }
  return base::Status::ok();
}

double degreesToRadians(double degrees) { return degrees * std::numbers::pi / 180.0; }
double radiansToDegrees(double radians) { return radians * 180.0 / std::numbers::pi; }

}  // namespace dxf::props
