// The class a CAD application gives an entity of the DXF drawing ("AcDbLine"...).
#pragma once

#include <string>

#include "dxf/document.h"

namespace headless {

// The host class name of entity `id`; empty when the record is not an entity.
std::wstring hostEntityClass(const dxf::Document& doc, dxf::RecordId id);

}  // namespace headless
