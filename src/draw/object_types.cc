#include "draw/object_types.h"

#include <algorithm>
#include <utility>

#include "base/text_case.h"

namespace draw {

namespace {

// Exact host classes: a derived class is another type (or none), except for dimensions.
constexpr std::pair<std::wstring_view, std::wstring_view> kHostClasses[] = {
    {L"AcDbFace", L"3DFace"},
    {L"AcDb3dPolyline", L"3DPolyline"},
    {L"AcDb3dSolid", L"3DSolid"},
    {L"AcDbArc", L"Arc"},
    {L"AcDbBlockReference", L"BlockReference"},
    {L"AcDbCircle", L"Circle"},
    {L"AcDbEllipse", L"Ellipse"},
    {L"AcDbHatch", L"Hatch"},
    {L"AcDbLine", L"Line"},
    {L"AcDbSubDMesh", L"Mesh"},
    {L"AcDbMLeader", L"MLeader"},
    {L"AcDbMline", L"Mline"},
    {L"AcDbMPolygon", L"MPolygon"},
    {L"AcDbMText", L"MText"},
    {L"AcDbPoint", L"Point"},
    {L"AcDbPolyFaceMesh", L"PolyFaceMesh"},
    {L"AcDbPolyline", L"Polyline"},
    {L"AcDbRay", L"Ray"},
    {L"AcDbSpline", L"Spline"},
    {L"AcDbSurface", L"Surface"},
    {L"AcDbText", L"Text"},
    {L"AcDbWipeout", L"Wipeout"},
    {L"AcDbXline", L"Xline"},
};

std::wstring_view trimBlanks(std::wstring_view text) {
  size_t first = text.find_first_not_of(L" \t");
  if (first == std::wstring_view::npos) return {};
  size_t last = text.find_last_not_of(L" \t");
  return text.substr(first, last - first + 1);
}

}  // namespace

std::wstring_view canonicalObjectTypeName(std::wstring_view name) {
  for (std::wstring_view type : kObjectTypeNames) {
    if (base::equalsIgnoringCase(type, name)) return type;
  }
  return {};
}

std::vector<std::wstring> parseObjectTypes(std::wstring_view text) {
  std::vector<std::wstring> types;
  size_t start = 0;
  while (start <= text.size()) {
    size_t comma = text.find(L',', start);
    if (comma == std::wstring_view::npos) comma = text.size();
    std::wstring_view part = trimBlanks(text.substr(start, comma - start));
    start = comma + 1;
    if (part.empty()) continue;
    std::wstring_view type =
        part == kTypeNotDrawable ? kTypeNotDrawable : canonicalObjectTypeName(part);
    if (type.empty()) return {std::wstring(kTypeInvalid)};
    if (std::find(types.begin(), types.end(), type) == types.end()) types.emplace_back(type);
  }
  if (types.empty()) return {std::wstring(kTypeUndefined)};
  return types;
}

bool isTypeMarker(std::wstring_view type) { return type == kTypeUndefined || type == kTypeInvalid; }

std::wstring_view objectTypeNameOfClass(std::wstring_view host_class) {
  for (const auto& [cls, type] : kHostClasses) {
    if (cls == host_class) return type;
  }
  if (host_class.starts_with(L"AcDb") && host_class.ends_with(L"Dimension")) {
    return L"Dimension";
  }
  return {};
}

std::wstring objectTypeName(host::Database& database, host::ObjectId entity) {
  return std::wstring(objectTypeNameOfClass(database.entityClass(entity)));
}

}  // namespace draw
