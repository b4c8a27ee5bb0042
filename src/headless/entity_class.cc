#include "headless/entity_class.h"

#include <optional>
#include <string_view>
#include <unordered_map>

#include "base/utf.h"
#include "dxf/group_code.h"

namespace headless {

namespace {

// DXF entity types whose class does not depend on their data.
const std::unordered_map<std::string_view, const wchar_t*>& fixedClasses() {
  static const std::unordered_map<std::string_view, const wchar_t*> kClasses = {
      {"3DFACE", L"AcDbFace"},
      {"3DSOLID", L"AcDb3dSolid"},
      {"ACAD_TABLE", L"AcDbTable"},
      {"ARC", L"AcDbArc"},
      {"ARC_DIMENSION", L"AcDbArcDimension"},
      {"ATTDEF", L"AcDbAttributeDefinition"},
      {"ATTRIB", L"AcDbAttribute"},
      {"BODY", L"AcDbBody"},
      {"CIRCLE", L"AcDbCircle"},
      {"DGNUNDERLAY", L"AcDbDgnReference"},
      {"DWFUNDERLAY", L"AcDbDwfReference"},
      {"ELLIPSE", L"AcDbEllipse"},
      {"EXTRUDEDSURFACE", L"AcDbExtrudedSurface"},
      {"HATCH", L"AcDbHatch"},
      {"HELIX", L"AcDbHelix"},
      {"IMAGE", L"AcDbRasterImage"},
      {"LARGE_RADIAL_DIMENSION", L"AcDbRadialDimensionLarge"},
      {"LEADER", L"AcDbLeader"},
      {"LIGHT", L"AcDbLight"},
      {"LINE", L"AcDbLine"},
      {"LOFTEDSURFACE", L"AcDbLoftedSurface"},
      {"LWPOLYLINE", L"AcDbPolyline"},
      {"MESH", L"AcDbSubDMesh"},
      {"MLINE", L"AcDbMline"},
      {"MPOLYGON", L"AcDbMPolygon"},
      {"MTEXT", L"AcDbMText"},
      {"MULTILEADER", L"AcDbMLeader"},
      {"NURBSURFACE", L"AcDbNurbSurface"},
      {"OLE2FRAME", L"AcDbOle2Frame"},
      {"PDFUNDERLAY", L"AcDbPdfReference"},
      {"PLANESURFACE", L"AcDbPlaneSurface"},
      {"POINT", L"AcDbPoint"},
      {"RAY", L"AcDbRay"},
      {"REGION", L"AcDbRegion"},
      {"REVOLVEDSURFACE", L"AcDbRevolvedSurface"},
      {"SECTION", L"AcDbSection"},
      {"SHAPE", L"AcDbShape"},
      {"SOLID", L"AcDbSolid"},
      {"SPLINE", L"AcDbSpline"},
      {"SURFACE", L"AcDbSurface"},
      {"SWEPTSURFACE", L"AcDbSweptSurface"},
      {"TEXT", L"AcDbText"},
      {"TOLERANCE", L"AcDbFcf"},
      {"TRACE", L"AcDbTrace"},
      {"VIEWPORT", L"AcDbViewport"},
      {"WIPEOUT", L"AcDbWipeout"},
      {"XLINE", L"AcDbXline"},
  };
  return kClasses;
}

// The last subclass marker of a record that has the entity marker; empty for others.
std::string_view lastMarkerOfEntity(const dxf::Document& doc, dxf::RecordId id) {
  bool entity = false;
  std::string_view last_marker;
  for (const dxf::Tag& tag : doc.tags(id)) {
    if (tag.code != 100) continue;
    if (doc.text(tag) == "AcDbEntity") entity = true;
    last_marker = doc.text(tag);
  }
  return entity ? last_marker : std::string_view();
}

}  // namespace

const wchar_t* fixedEntityClass(std::string_view type) {
  auto it = fixedClasses().find(type);
  return it == fixedClasses().end() ? nullptr : it->second;
}

std::wstring hostEntityClass(const dxf::Document& doc, dxf::RecordId id) {
  std::string_view type = doc.type(id);
  if (const wchar_t* fixed = fixedEntityClass(type)) return fixed;
  if (type == "POLYLINE") {
    int64_t flags = doc.intValue(id, 70, 0);
    if (flags & 8) return L"AcDb3dPolyline";
    if (flags & 64) return L"AcDbPolyFaceMesh";
    if (flags & 16) return L"AcDbPolygonMesh";
    return L"AcDb2dPolyline";
  }
  if (type == "INSERT") {
    // Several columns or rows make an array insert, a class of its own. Most inserts have
    // neither count: one scan looks for both.
    std::optional<dxf::Tag> columns, rows;
    for (const dxf::Tag& tag : doc.scan(id)) {
      if (tag.code == 70 && !columns) columns = tag;
      if (tag.code == 71 && !rows) rows = tag;
      if (columns && rows) break;
    }
    auto count = [&](const std::optional<dxf::Tag>& tag) {
      int64_t n = 1;
      return tag && dxf::parseInt(doc.text(*tag), n) ? n : 1;
    };
    return count(columns) > 1 || count(rows) > 1 ? L"AcDbMInsertBlock" : L"AcDbBlockReference";
  }
  if (type == "DIMENSION") {
    static const wchar_t* const kByType[] = {
        L"AcDbRotatedDimension",   L"AcDbAlignedDimension", L"AcDb2LineAngularDimension",
        L"AcDbDiametricDimension", L"AcDbRadialDimension",  L"AcDb3PointAngularDimension",
        L"AcDbOrdinateDimension"};
    int64_t kind = doc.intValue(id, 70, 0) & 7;
    return kind < 7 ? kByType[kind] : L"AcDbDimension";
  }
  // Other entities (proxies, custom objects of vertical products) are named by their last
  // subclass marker, as the application that made them would.
  std::string_view marker = lastMarkerOfEntity(doc, id);
  return marker.empty() ? std::wstring() : base::fromUtf8(marker);
}

bool isEntityType(std::string_view type) {
  return fixedClasses().contains(type) || type == "POLYLINE" || type == "INSERT" ||
         type == "DIMENSION";
}

bool isEntityRecord(const dxf::Document& doc, dxf::RecordId id) {
  return isEntityType(doc.type(id)) || !lastMarkerOfEntity(doc, id).empty();
}

}  // namespace headless
