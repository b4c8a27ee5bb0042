// The class a CAD application gives an entity of the DXF drawing ("AcDbLine"...).
#pragma once

#include <string>

#include "dxf/document.h"

namespace headless {

// The host class name of entity `id`; empty when the record is not an entity.
std::wstring hostEntityClass(const dxf::Document& doc, dxf::RecordId id);

// Whether hostEntityClass names a class for record `id`, without building the name.
bool isEntityRecord(const dxf::Document& doc, dxf::RecordId id);
// The class every record of structure name `type` has; nullptr when it depends on the
// record, or the records are no entities.
const wchar_t* fixedEntityClass(std::string_view type);
// Whether every record of structure name `type` is an entity; other records are entities
// only by their subclass markers.
bool isEntityType(std::string_view type);

}  // namespace headless
