// Linetype definition files (.lin): "*NAME,description" lines, each followed by a pattern
// line "A,dash,gap,..." whose elements may carry a text ["TEXT",STYLE,S=..] or a shape
// [NAME,FILE.shx,...].
#include <cmath>
#include <cwctype>
#include <numbers>
#include <unordered_set>

#include "base/utf.h"
#include "dxf/number_text.h"
#include "dxf/resource_copy.h"
#include "dxf/resource_internal.h"
#include "dxf/symbol_tables.h"

namespace dxf {

namespace {

using resource_detail::lineError;
using resource_detail::parseReal;
using resource_detail::trim;

std::string quoted(std::wstring_view text) { return "'" + base::toUtf8(text) + "'"; }

// Splits at commas outside double quotes and, when `brackets`, outside [...].
base::Result<std::vector<std::wstring_view>> splitFields(std::wstring_view text, bool brackets) {
  std::vector<std::wstring_view> fields;
  bool quoted_text = false;
  int depth = 0;
  size_t start = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    wchar_t c = text[i];
    if (c == L'"') quoted_text = !quoted_text;
    if (quoted_text) continue;
    if (brackets && c == L'[') ++depth;
    if (brackets && c == L']') --depth;
    if (depth < 0 || depth > 1) return base::Status::invalid("unbalanced brackets");
    if (c == L',' && depth == 0) {
      fields.push_back(trim(text.substr(start, i - start)));
      start = i + 1;
    }
  }
  if (quoted_text) return base::Status::invalid("a text is not closed by '\"'");
  if (depth != 0) return base::Status::invalid("a '[' is not closed by ']'");
  fields.push_back(trim(text.substr(start)));
  return fields;
}

// An angle "30", "30d", "0.5r" or "50g", in degrees.
bool parseAngle(std::wstring_view text, double& degrees) {
  text = trim(text);
  double factor = 1;
  if (!text.empty()) {
    wchar_t unit = static_cast<wchar_t>(std::towlower(text.back()));
    if (unit == L'd' || unit == L'r' || unit == L'g') {
      factor = unit == L'r' ? 180 / std::numbers::pi : unit == L'g' ? 0.9 : 1;
      text.remove_suffix(1);
    }
  }
  if (!parseReal(text, degrees)) return false;
  degrees *= factor;
  return true;
}

// Fills `element` from the inside of [...]; returns an empty string or what is wrong.
std::string parseEmbedded(std::wstring_view inside, LinetypeElement& element) {
  auto fields = splitFields(inside, false);
  if (!fields) return fields.status().message();
  if (fields->size() < 2 || (*fields)[0].empty() || (*fields)[1].empty()) {
    return "a complex element needs a text or shape and a style or shape file";
  }
  std::wstring_view first = (*fields)[0];
  if (first.size() >= 2 && first.front() == L'"' && first.back() == L'"') {
    element.embedded = LinetypeElement::Embedded::kText;
    element.text = first.substr(1, first.size() - 2);
  } else {
    element.embedded = LinetypeElement::Embedded::kShape;
    element.text = first;
  }
  element.style = (*fields)[1];
  for (size_t i = 2; i < fields->size(); ++i) {
    std::wstring_view field = (*fields)[i];
    size_t eq = field.find(L'=');
    std::wstring key = resource_detail::upper(trim(field.substr(0, eq)));
    if (eq == std::wstring_view::npos || key.size() != 1) {
      return "expected a parameter such as S=1.0, not " + quoted(field);
    }
    std::wstring_view value = field.substr(eq + 1);
    bool ok = true;
    switch (key[0]) {
      case L'S':
        ok = parseReal(value, element.scale);
        break;
      case L'X':
        ok = parseReal(value, element.x_offset);
        break;
      case L'Y':
        ok = parseReal(value, element.y_offset);
        break;
      case L'R':
      case L'U':
        ok = parseAngle(value, element.rotation_deg);
        break;
      case L'A':
        ok = parseAngle(value, element.rotation_deg);
        element.absolute_rotation = true;
        break;
      default:
        return "unknown parameter " + quoted(key) + " in a complex element";
    }
    if (!ok) return quoted(value) + " is not a number";
  }
  return {};
}

// Parses "A,..." into `def`; returns an empty string or what is wrong.
std::string parsePattern(std::wstring_view line, LinetypeDefinition& def) {
  auto fields = splitFields(line, true);
  if (!fields) return fields.status().message();
  if (fields->size() < 2 || ((*fields)[0] != L"A" && (*fields)[0] != L"a")) {
    return "a pattern line starts with 'A,' and holds at least one dash";
  }
  for (size_t i = 1; i < fields->size(); ++i) {
    std::wstring_view field = (*fields)[i];
    if (field.starts_with(L"[")) {
      if (def.elements.empty() ||
          def.elements.back().embedded != LinetypeElement::Embedded::kNone) {
        return "a complex element must follow a dash of its own";
      }
      if (!field.ends_with(L"]")) return "a '[' is not closed by ']'";
      std::string error = parseEmbedded(field.substr(1, field.size() - 2), def.elements.back());
      if (!error.empty()) return error;
      continue;
    }
    LinetypeElement element;
    if (!parseReal(field, element.length)) return quoted(field) + " is not a number";
    def.elements.push_back(element);
  }
  if (def.elements.empty()) return "a pattern line holds at least one dash";
  return {};
}

bool validName(std::wstring_view name) {
  return !name.empty() && name.find_first_of(L"<>/\\\":;?*|=`") == std::wstring_view::npos;
}

}  // namespace

base::Result<std::vector<LinetypeDefinition>> parseLinetypeFile(std::string_view bytes,
                                                                const std::string& name) {
  std::vector<LinetypeDefinition> defs;
  std::unordered_set<std::wstring> seen;
  LinetypeDefinition pending;
  int pending_line = 0;  // 0: no header waits for its pattern
  for (const resource_detail::SourceLine& line : resource_detail::splitLines(bytes)) {
    std::wstring_view text = trim(line.text);
    if (text.empty() || text.front() == L';') continue;
    if (text.front() == L'*') {
      if (pending_line != 0) {
        return lineError(name, pending_line,
                         "linetype " + quoted(pending.name) + " has no pattern line");
      }
      text.remove_prefix(1);
      size_t comma = text.find(L',');
      pending = {};
      pending.name = trim(text.substr(0, comma));
      if (comma != std::wstring_view::npos) pending.description = trim(text.substr(comma + 1));
      if (!validName(pending.name)) {
        return lineError(name, line.number, quoted(pending.name) + " is not a valid linetype name");
      }
      pending_line = line.number;
      continue;
    }
    if (pending_line == 0) {
      return lineError(name, line.number, "a pattern line must follow a *NAME line");
    }
    if (std::string error = parsePattern(text, pending); !error.empty()) {
      return lineError(name, line.number, error);
    }
    // CAD programs take the first definition of a name.
    if (seen.insert(resource_detail::upper(pending.name)).second)
      defs.push_back(std::move(pending));
    pending_line = 0;
  }
  if (pending_line != 0) {
    return lineError(name, pending_line,
                     "linetype " + quoted(pending.name) + " has no pattern line");
  }
  return defs;
}

base::Result<RecordId> addLinetype(Document& doc, const LinetypeDefinition& def) {
  if (!validName(def.name) || def.elements.empty()) {
    return base::Status::invalid("linetype " + quoted(def.name) + " needs a valid name and dashes");
  }
  if (RecordId existing = findTableEntry(doc, "LTYPE", def.name); existing != kNoRecord) {
    return existing;
  }
  bool r12 = doc.isR12();
  Span table = doc.addTable("LTYPE");
  std::vector<Tag> tags = {doc.makeTag(0, "LTYPE")};
  if (resource_detail::usesHandles(doc))
    tags.push_back(doc.makeTag(5, formatHandle(doc.allocateHandle())));
  if (!r12) {
    tags.push_back(doc.makeTag(330, formatHandle(doc.record(table.head).handle)));
    tags.push_back(doc.makeTag(100, "AcDbSymbolTableRecord"));
    tags.push_back(doc.makeTag(100, "AcDbLinetypeTableRecord"));
  }
  double total = 0;
  for (const LinetypeElement& element : def.elements) total += std::fabs(element.length);
  tags.push_back(doc.makeTag(2, doc.codec().encode(def.name)));
  tags.push_back(doc.makeTag(70, int64_t{0}));
  tags.push_back(doc.makeTag(3, doc.codec().encode(def.description)));
  tags.push_back(doc.makeTag(72, int64_t{65}));  // 'A', the only alignment
  tags.push_back(doc.makeTag(73, static_cast<int64_t>(def.elements.size())));
  tags.push_back(doc.makeTag(40, total));
  for (const LinetypeElement& element : def.elements) {
    tags.push_back(doc.makeTag(49, element.length));
    if (r12) continue;
    RecordId style = element.embedded == LinetypeElement::Embedded::kText
                         ? findTableEntry(doc, "STYLE", element.style)
                         : kNoRecord;
    if (style == kNoRecord || doc.record(style).handle == 0) {
      tags.push_back(doc.makeTag(74, int64_t{0}));
      continue;
    }
    tags.push_back(doc.makeTag(74, int64_t{element.absolute_rotation ? 3 : 2}));
    tags.push_back(doc.makeTag(75, int64_t{0}));
    tags.push_back(doc.makeTag(340, formatHandle(doc.record(style).handle)));
    tags.push_back(doc.makeTag(46, element.scale));
    tags.push_back(doc.makeTag(50, element.rotation_deg * std::numbers::pi / 180));
    tags.push_back(doc.makeTag(44, element.x_offset));
    tags.push_back(doc.makeTag(45, element.y_offset));
    tags.push_back(doc.makeTag(9, doc.codec().encode(element.text)));
  }
  return resource_detail::addTableEntry(doc, "LTYPE", tags);
}

}  // namespace dxf
