// Entity colours (62 and 420) and the background colour of pattern fills.
#include <cstdint>

#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/property_tags.h"
#include "dxf/symbol_tables.h"

namespace dxf::props {

namespace {

constexpr std::string_view kBackgroundApp = "HATCHBACKGROUNDCOLOR";

// The high byte of a packed colour says how to read the rest.
constexpr uint32_t kMethodByLayer = 0xC0;
constexpr uint32_t kMethodByBlock = 0xC1;
constexpr uint32_t kMethodRgb = 0xC2;
constexpr uint32_t kMethodIndex = 0xC3;

bool removeInRange(const Document& doc, RecordEdit& edit, TagRange range, int code) {
  int at = findCode(doc, edit.tags(), range, code);
  if (at < 0) return false;
  edit.erase(static_cast<size_t>(at));
  return true;
}

// [begin, end) of the extended data of application `app`, including its 1001 tag;
// begin == end when the record has none.
TagRange appData(const Document& doc, std::span<const Tag> tags, std::string_view app) {
  for (size_t i = 0; i < tags.size(); ++i) {
    if (tags[i].code != 1001 || doc.text(tags[i]) != app) continue;
    size_t end = i + 1;
    while (end < tags.size() && tags[end].code != 1001) ++end;
    return {i, end};
  }
  return {tags.size(), tags.size()};
}

// Extended data needs its application registered in the APPID table.
void registerApp(Document& doc, std::string_view app) {
  std::wstring name = doc.codec().decode(app);
  if (findTableEntry(doc, "APPID", name) != kNoRecord) return;
  Span table = doc.addTable("APPID");
  std::vector<Tag> tags = {doc.makeTag(0, "APPID")};
  if (!doc.isR12()) {
    Handle handle = doc.allocateHandle();
    tags.push_back(doc.makeTag(5, formatHandle(handle)));
    tags.push_back(doc.makeTag(330, formatHandle(doc.record(table.head).handle)));
    tags.push_back(doc.makeTag(100, "AcDbSymbolTableRecord"));
    tags.push_back(doc.makeTag(100, "AcDbRegAppTableRecord"));
  }
  tags.push_back(doc.makeTag(2, app));
  tags.push_back(doc.makeTag(70, "0"));
  doc.insertBefore(table.tail, doc.newRecord(tags));

  RecordEdit head(doc, table.head);
  TagRange range = subclassGroup(doc, head.tags(), "AcDbSymbolTable");
  int at = findCode(doc, head.tags(), range, 70);
  int64_t count = 0;
  if (at >= 0 && !parseInt(head.text(static_cast<size_t>(at)), count)) count = 0;
  putTag(head, at, range.end, 70, formatInt(count + 1));
  head.commit();
}

}  // namespace

PropValue colorOf(const Document& doc, const std::optional<Tag>& index,
                  const std::optional<Tag>& rgb) {
  EntityColor color;
  int64_t number = 0;
  if (index && parseInt(doc.text(*index), number)) color.index = static_cast<int>(number);
  if (rgb && parseInt(doc.text(*rgb), number)) color.rgb = static_cast<uint32_t>(number) & 0xFFFFFF;
  return color;
}

PropValue getColor(const Document& doc, RecordId /*id*/, std::span<const Tag> tags) {
  return colorOf(doc, findInGroup(doc, tags, "AcDbEntity", 62),
                 findInGroup(doc, tags, "AcDbEntity", 420));
}

base::Status setColor(Document& doc, RecordId id, const PropValue& value) {
  const EntityColor* color = asColor(value);
  if (!color || color->index < 0 || color->index > 256 || (color->rgb && *color->rgb > 0xFFFFFF)) {
    return wrongValue("a colour index 0..256 and an optional 24-bit true colour");
  }
  if (color->rgb && doc.version() < "AC1018") {
    return base::Status::unsupported("true colours need an AutoCAD 2004 (AC1018) drawing or later");
  }
  RecordEdit edit(doc, id);
  auto range = [&] { return subclassGroup(doc, edit.tags(), "AcDbEntity"); };
  bool changed = false;
  // A reader applies 62 then 420, so an index written after the true colour would win.
  if (!color->rgb || (color->index >= 1 && color->index <= 255)) {
    int true_color = findCode(doc, edit.tags(), range(), 420);
    size_t insert_at = true_color >= 0 ? static_cast<size_t>(true_color) : range().end;
    changed |= putTag(edit, findCode(doc, edit.tags(), range(), 62), insert_at, 62,
                      formatInt(color->index));
  }
  if (color->rgb) {
    int index = findCode(doc, edit.tags(), range(), 62);
    size_t insert_at = index >= 0 ? static_cast<size_t>(index) + 1 : range().end;
    changed |= putTag(edit, findCode(doc, edit.tags(), range(), 420), insert_at, 420,
                      formatInt(*color->rgb));
  } else {
    changed |= removeInRange(doc, edit, range(), 420);
  }
  // A colour-book name describes the colour replaced here.
  changed |= removeInRange(doc, edit, range(), 430);
  if (changed) edit.commit();
  return base::Status::ok();
}

PropValue getBackgroundColor(const Document& doc, RecordId /*id*/, std::span<const Tag> tags) {
  TagRange data = appData(doc, tags, kBackgroundApp);
  EntityColor none{.index = -1};
  for (size_t i = data.begin + 1; i < data.end; ++i) {
    int64_t number = 0;
    if (tags[i].code != 1071 || !parseInt(doc.text(tags[i]), number)) continue;
    // Writers store the packed colour as a signed or an unsigned 32-bit number.
    uint32_t packed = static_cast<uint32_t>(number);
    switch (packed >> 24) {
      case kMethodByLayer:
        return EntityColor{.index = 256};
      case kMethodByBlock:
        return EntityColor{.index = 0};
      case kMethodIndex:
        return EntityColor{.index = static_cast<int>(packed & 0xFF)};
      case kMethodRgb:
        return EntityColor{.index = 256, .rgb = packed & 0xFFFFFF};
      default:
        return none;
    }
  }
  return none;
}

base::Status setBackgroundColor(Document& doc, RecordId id, const PropValue& value) {
  const EntityColor* color = asColor(value);
  if (!color || color->index < -1 || color->index > 256 || (color->rgb && *color->rgb > 0xFFFFFF)) {
    return wrongValue("a colour index -1..256 and an optional 24-bit true colour");
  }
  RecordEdit edit(doc, id);
  TagRange data = appData(doc, edit.tags(), kBackgroundApp);
  bool none = !color->rgb && color->index == -1;
  if (none) {
    if (data.begin == data.end) return base::Status::ok();
    edit.erase(data.begin, data.end - data.begin);
    edit.commit();
    return base::Status::ok();
  }
  uint32_t packed = kMethodIndex << 24 | static_cast<uint32_t>(color->index);
  if (color->rgb) {
    packed = kMethodRgb << 24 | *color->rgb;
  } else if (color->index == 256) {
    packed = kMethodByLayer << 24;
  } else if (color->index == 0) {
    packed = kMethodByBlock << 24;
  }
  std::string raw = formatInt(static_cast<int32_t>(packed));
  if (data.begin < data.end) edit.erase(data.begin, data.end - data.begin);
  edit.insert(data.begin, 1001, kBackgroundApp);
  edit.insert(data.begin + 1, 1071, raw);
  edit.commit();
  registerApp(doc, kBackgroundApp);
  return base::Status::ok();
}

}  // namespace dxf::props
