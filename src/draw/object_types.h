// The object types a class can be drawn as, and the entity classes of the host that each
// type stands for.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "host/database.h"

namespace draw {

// The 24 type names, in the spelling the class file, the writer and the conformity test use.
inline constexpr std::array<std::wstring_view, 24> kObjectTypeNames = {
    L"3DFace",    L"3DPolyline", L"3DSolid", L"Arc",   L"BlockReference", L"Circle",
    L"Dimension", L"Ellipse",    L"Hatch",   L"Line",  L"Mesh",           L"MLeader",
    L"Mline",     L"MPolygon",   L"MText",   L"Point", L"PolyFaceMesh",   L"Polyline",
    L"Ray",       L"Spline",     L"Surface", L"Text",  L"Wipeout",        L"Xline",
};

// Markers that can stand first in a class's type list instead of a type name.
// "?": the class is known but cannot be drawn; such a class is refused when it is closed.
inline constexpr std::wstring_view kTypeNotDrawable = L"?";
// The type line named no type at all.
inline constexpr std::wstring_view kTypeUndefined = L"\x0001";
// The type line named something that is not a type.
inline constexpr std::wstring_view kTypeInvalid = L"\xFFFF";

// Returns the type name that `name` spells, compared without regard to case, or an empty
// view when it is none of the 24.
std::wstring_view canonicalObjectTypeName(std::wstring_view name);

// Builds a class's type list from the text of an `obj_type` line: the text is cut at
// commas, each part trimmed of blanks and tabs, empty parts dropped. Each part must be a
// type name (any case; stored in the canonical spelling) or "?"; a name given twice is kept
// once. Returns {kTypeInvalid} when any part is neither, and {kTypeUndefined} when no part
// is left.
std::vector<std::wstring> parseObjectTypes(std::wstring_view text);

// True for the two one-character markers (undefined, invalid).
bool isTypeMarker(std::wstring_view type);

// The type name for an entity of host class `host_class` ("AcDbLine" gives "Line"); every
// dimension class gives "Dimension". Empty for classes that have no type, such as the
// heavy 2-D polyline or the attribute.
std::wstring_view objectTypeNameOfClass(std::wstring_view host_class);

// The type name of an entity of `database`; empty when it has none.
std::wstring objectTypeName(host::Database& database, host::ObjectId entity);

}  // namespace draw
