#include "catalogue/class_writer.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "draw/object_types.h"
#include "draw/property_lines.h"

namespace catalogue {

namespace {

constexpr std::pair<std::wstring_view, int32_t> kDrawOrders[] = {
    {L"3DFace", 5000},    {L"3DPolyline", 5000}, {L"3DSolid", 4000},      {L"Arc", 5000},
    {L"BlockReference", 8000}, {L"Circle", 5000}, {L"Dimension", 6000},   {L"Ellipse", 5000},
    {L"Hatch", 0},        {L"Line", 5000},       {L"Mesh", 4000},         {L"MLeader", 6000},
    {L"Mline", 4000},     {L"MPolygon", 4000},   {L"MText", 9000},        {L"Point", 8500},
    {L"PolyFaceMesh", 4000}, {L"Polyline", 5000}, {L"Ray", 5000},          {L"Spline", 5000},
    {L"Surface", 4000},   {L"Text", 9000},       {L"Wipeout", 5000},
};

std::wstring typeWord(FieldType type) {
  switch (type) {
    case FieldType::kInteger:
      return L"Integer";
    case FieldType::kReal:
      return L"Real";
    default:
      return L"Character";
  }
}

// A text as one column: a TAB in it is written as the parser's escape, a backslash before
// the TAB, so that it does not start a column of its own.
void appendCell(std::wstring_view text, std::wstring& out) {
  for (wchar_t c : text) {
    if (c == L'\t') out += L'\\';
    out += c;
  }
}

std::wstring cell(const std::wstring& text) {
  std::wstring out;
  out.reserve(text.size());
  appendCell(text, out);
  return out;
}

void appendNumber(int32_t value, std::wstring& out) {
  char digits[16];
  auto [end, error] = std::to_chars(digits, digits + sizeof digits, value);
  (void)error;
  out.append(digits, end);
}

// A column the parser would drop when empty keeps its place with a blank.
std::wstring column(const std::wstring& text) { return text.empty() ? L" " : cell(text); }

void writeField(const FieldDefinition& field, std::wstring& out) {
  if (field.kind == ValueKind::kKey) {
    out += L"\t\tvel_key\t" + field.name + L"\n";
    return;
  }
  out += L"\t\tvel_fld\t" + field.name + L"\t" + column(field.description) + L"\t";
  if (field.flags & kFieldConst) out += L"const ";
  if (field.flags & kFieldNotEmpty) out += L"notempty ";
  if (field.flags & kFieldRequired) out += L"required ";
  out += typeWord(field.type);
  bool has_values = field.kind == ValueKind::kList || field.kind == ValueKind::kRange;
  if (has_values || field.kind == ValueKind::kDefault) out += L"\t" + column(field.value);
  if (field.kind == ValueKind::kRange && field.allowed.size() == 2) {
    out += L"\t" + cell(field.allowed.front()) + L":" + cell(field.allowed.back());
  } else if (has_values && !field.allowed.empty()) {
    out += L"\t";
    for (size_t i = 0; i < field.allowed.size(); ++i) {
      if (i > 0) out += L", ";
      out += cell(field.allowed[i]);
    }
  }
  out += L"\n";
}

}  // namespace

int32_t defaultDrawOrder(const draw::DrawingProperties& properties) {
  int32_t order = 0;
  for (const auto& [type, priority] : kDrawOrders) {
    if (draw::listsType(properties, type)) order = std::max(order, priority);
  }
  return order;
}

namespace {

// The obj_name, obj_type and property lines; an empty `icon` is left out.
void appendClass(std::wstring_view name, bool enabled, int32_t draw_order, std::wstring_view icon,
                 const draw::DrawingProperties& properties, int precision, std::wstring& out) {
  out += L"obj_name\t";
  appendCell(name, out);
  out += enabled ? L"\t1\t" : L"\t0\t";
  appendNumber(draw_order, out);
  if (!icon.empty()) {
    out += L'\t';
    appendCell(icon, out);
  }
  out += L"\n\tobj_type\t";
  const std::vector<std::wstring>& types = properties.object_types;
  // A line that names no type (only commas) is read as such; a lone comma writes it back.
  if (types.size() == 1 && types.front() == draw::kTypeUndefined) out += L',';
  for (size_t i = 0; i < types.size() && types.front() != draw::kTypeUndefined; ++i) {
    if (i > 0) out += L", ";
    out += types[i];
  }
  out += L'\n';
  draw::appendPropertyLines(properties, precision, out);
}

}  // namespace

void appendClassDefinition(const ObjectClass& cls, const Catalogue* catalogue, int precision,
                           std::wstring& out) {
  if (const ObjectClass* known = catalogue ? catalogue->findObject(cls.display_name) : nullptr) {
    appendClass(cls.display_name, known->enabled, known->draw_order, known->icon, cls.properties,
                precision, out);
  } else {
    appendClassDefinition(cls.display_name, cls.properties, precision, out);
  }
  for (const TableDefinition& table : cls.tables) {
    out += L"\tvel_name\t";
    out += table.name;
    out += L'\n';
    for (const FieldDefinition& field : table.fields) writeField(field, out);
  }
}

void appendClassDefinition(std::wstring_view name, const draw::DrawingProperties& properties,
                           int precision, std::wstring& out) {
  const std::vector<std::wstring>& types = properties.object_types;
  std::wstring icon = types.empty() ? std::wstring() : L"Icons/" + types.front() + L".png";
  appendClass(name, true, defaultDrawOrder(properties), icon, properties, precision, out);
}

std::wstring writeClassDefinition(const ObjectClass& cls, const Catalogue* catalogue,
                                  int precision) {
  std::wstring out;
  appendClassDefinition(cls, catalogue, precision, out);
  return out;
}

}  // namespace catalogue
