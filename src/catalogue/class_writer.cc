#include "catalogue/class_writer.h"

#include <algorithm>
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
std::wstring cell(const std::wstring& text) {
  std::wstring out;
  out.reserve(text.size());
  for (wchar_t c : text) {
    if (c == L'\t') out += L'\\';
    out += c;
  }
  return out;
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

std::wstring writeClassDefinition(const ObjectClass& cls, const Catalogue* catalogue,
                                  int precision) {
  const std::vector<std::wstring>& types = cls.objectTypes();
  std::wstring icon = types.empty() ? std::wstring() : L"Icons/" + types.front() + L".png";
  bool enabled = true;
  int32_t draw_order = defaultDrawOrder(cls.properties);
  if (const ObjectClass* known = catalogue ? catalogue->findObject(cls.display_name) : nullptr) {
    icon = known->icon;
    enabled = known->enabled;
    draw_order = known->draw_order;
  }
  std::wstring out = L"obj_name\t" + cell(cls.display_name) + L"\t" + (enabled ? L"1" : L"0") +
                     L"\t" + std::to_wstring(draw_order);
  if (!icon.empty()) out += L"\t" + cell(icon);
  out += L"\n\tobj_type\t";
  for (size_t i = 0; i < types.size(); ++i) {
    if (i > 0) out += L", ";
    out += types[i];
  }
  out += L"\n";
  out += draw::propertyLines(cls.properties, precision);
  for (const TableDefinition& table : cls.tables) {
    out += L"\tvel_name\t" + table.name + L"\n";
    for (const FieldDefinition& field : table.fields) writeField(field, out);
  }
  return out;
}

}  // namespace catalogue
