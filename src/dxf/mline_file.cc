// Multiline style files (.mln): per style a line "MLSTYLE", then code/value line pairs as in
// a DXF MLINESTYLE object, closed by code 0.
#include <optional>
#include <unordered_set>

#include "base/utf.h"
#include "dxf/dictionary.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/resource_copy.h"
#include "dxf/resource_internal.h"
#include "dxf/symbol_tables.h"

namespace dxf {

namespace {

using resource_detail::lineError;
using resource_detail::parseReal;
using resource_detail::trim;

std::string quoted(std::wstring_view text) { return "'" + base::toUtf8(text) + "'"; }

bool parseInteger(std::wstring_view text, int& out) {
  double value = 0;
  if (!parseReal(text, value) || value != static_cast<int>(value)) return false;
  out = static_cast<int>(value);
  return true;
}

bool isHeader(std::wstring_view text) { return sameName(trim(text), L"MLSTYLE"); }

// Applies one code/value pair; returns an empty string or what is wrong.
std::string apply(MlineStyleDefinition& def, std::optional<int>& declared, int code,
                  std::wstring_view value) {
  auto number = [&](double& out) { return parseReal(value, out); };
  auto integer = [&](int& out) { return parseInteger(value, out); };
  bool ok = true;
  switch (code) {
    case 2:
      def.name = trim(value);
      break;
    case 3:
      def.description = value;
      break;
    case 70:
      ok = integer(def.flags);
      break;
    case 51:
      ok = number(def.start_angle);
      break;
    case 52:
      ok = number(def.end_angle);
      break;
    case 71: {
      int count = 0;
      ok = integer(count) && count >= 0;
      declared = count;
      break;
    }
    case 62:
      // Before the elements the colour fills the style; after, it belongs to the element.
      ok = def.elements.empty() ? integer(def.fill_color) : integer(def.elements.back().color);
      break;
    case 49:
      def.elements.emplace_back();
      ok = number(def.elements.back().offset);
      break;
    case 6:
      if (def.elements.empty()) return "a linetype (code 6) before the first offset (code 49)";
      def.elements.back().linetype = trim(value);
      break;
    default:
      break;  // codes of later releases (true colours...) carry nothing needed here
  }
  if (!ok) return quoted(value) + " is not a valid value for group code " + std::to_string(code);
  return {};
}

}  // namespace

base::Result<std::vector<MlineStyleDefinition>> parseMlineFile(std::string_view bytes,
                                                               const std::string& name) {
  std::vector<resource_detail::SourceLine> lines = resource_detail::splitLines(bytes);
  std::vector<MlineStyleDefinition> defs;
  std::unordered_set<std::wstring> seen;
  size_t i = 0;
  auto codeDue = [&] {
    while (i < lines.size()) {
      std::wstring_view text = trim(lines[i].text);
      if (!text.empty() && text.front() != L';') return true;
      ++i;
    }
    return false;
  };
  while (codeDue()) {
    if (!isHeader(lines[i].text)) {
      return lineError(name, lines[i].number,
                       "expected MLSTYLE, not " + quoted(trim(lines[i].text)));
    }
    int header_line = lines[i++].number;
    MlineStyleDefinition def;
    std::optional<int> declared;
    bool closed = false;
    while (!closed && codeDue()) {
      int code_line = lines[i].number;
      int code = 0;
      if (!parseInteger(lines[i].text, code)) {
        return lineError(name, code_line, quoted(trim(lines[i].text)) + " is not a group code");
      }
      ++i;
      if (code == 0) {
        closed = true;
        // "0" followed by "MLSTYLE" closes one style and opens the next.
        if (codeDue() && !isHeader(lines[i].text)) {
          return lineError(name, lines[i].number, "expected MLSTYLE after group code 0");
        }
        continue;
      }
      if (i >= lines.size())
        return lineError(name, code_line, "group code " + std::to_string(code) + " has no value");
      std::string error = apply(def, declared, code, lines[i].text);
      if (!error.empty()) return lineError(name, lines[i].number, error);
      ++i;
    }
    if (def.name.empty())
      return lineError(name, header_line, "a multiline style needs a name (code 2)");
    if (def.elements.empty()) {
      return lineError(name, header_line,
                       "multiline style " + quoted(def.name) + " has no elements");
    }
    if (declared && *declared != static_cast<int>(def.elements.size())) {
      return lineError(name, header_line,
                       "multiline style " + quoted(def.name) + " declares " +
                           std::to_string(*declared) + " elements but defines " +
                           std::to_string(def.elements.size()));
    }
    if (seen.insert(resource_detail::upper(def.name)).second) defs.push_back(std::move(def));
  }
  return defs;
}

base::Result<RecordId> addMlineStyle(Document& doc, const MlineStyleDefinition& def) {
  if (base::Status status = requireObjects(doc); !status) return status;
  if (def.name.empty() || def.elements.empty()) {
    return base::Status::invalid("multiline style " + quoted(def.name) +
                                 " needs a name and elements");
  }
  if (RecordId existing = findStyle(doc, L"ACAD_MLINESTYLE", def.name); existing != kNoRecord) {
    return existing;
  }
  auto dict = resource_detail::ensureRootEntry(doc, L"ACAD_MLINESTYLE");
  if (!dict) return dict.status();
  std::string owner = formatHandle(doc.record(*dict).handle);
  std::vector<Tag> tags = {doc.makeTag(0, "MLINESTYLE"),
                           doc.makeTag(102, "{ACAD_REACTORS"),
                           doc.makeTag(330, owner),
                           doc.makeTag(102, "}"),
                           doc.makeTag(330, owner),
                           doc.makeTag(100, "AcDbMlineStyle"),
                           doc.makeTag(2, doc.codec().encode(def.name)),
                           doc.makeTag(70, int64_t{def.flags}),
                           doc.makeTag(3, doc.codec().encode(def.description)),
                           doc.makeTag(62, int64_t{def.fill_color}),
                           doc.makeTag(51, def.start_angle),
                           doc.makeTag(52, def.end_angle),
                           doc.makeTag(71, static_cast<int64_t>(def.elements.size()))};
  for (const MlineStyleElement& element : def.elements) {
    std::wstring linetype = element.linetype;
    // An element cannot name a linetype the drawing lacks; the layer's serves instead.
    bool by = sameName(linetype, L"BYLAYER") || sameName(linetype, L"BYBLOCK");
    if (!by && findTableEntry(doc, "LTYPE", linetype) == kNoRecord) linetype = L"BYLAYER";
    tags.push_back(doc.makeTag(49, element.offset));
    tags.push_back(doc.makeTag(62, int64_t{element.color}));
    tags.push_back(doc.makeTag(6, doc.codec().encode(linetype)));
  }
  auto style = appendObject(doc, std::move(tags));
  if (!style) return style.status();
  dictionarySet(doc, *dict, def.name, *style, false);
  return *style;
}

}  // namespace dxf
