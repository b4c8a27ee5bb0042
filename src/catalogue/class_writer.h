// A class of the catalogue written back as the text of a class-definition file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "catalogue/catalogue.h"

namespace catalogue {

// The draw-order priority a class written from a drawing gets: the highest of its types'
// usual priorities (texts 9000, points 8500, block references 8000, dimensions and
// multileaders 6000, hatches 0...); 0 when it lists none of them.
int32_t defaultDrawOrder(const draw::DrawingProperties& properties);

// The whole text of `cls`, each line ended by "\n": its `obj_name` line, its `obj_type` line,
// its property lines (see draw::appendPropertyLines; numbers with `precision` decimals), then
// its tables with their key and field lines. The icon, enabled flag and draw order come from the
// class of the same name in `catalogue` when there is one; otherwise the icon is
// "Icons/TYPE.png" for the first type, the class is enabled and its draw order is
// defaultDrawOrder. `catalogue` may be null. A TAB inside a text is written with the
// parser's escape (a backslash before it); a text that holds a backslash of its own can
// therefore not always be read back as it was.
std::wstring writeClassDefinition(const ObjectClass& cls, const Catalogue* catalogue,
                                  int precision);
// The same appended to `out`.
void appendClassDefinition(const ObjectClass& cls, const Catalogue* catalogue, int precision,
                           std::wstring& out);
// That of a class named `name` with `properties`, no tables, and in no catalogue.
void appendClassDefinition(std::wstring_view name, const draw::DrawingProperties& properties,
                           int precision, std::wstring& out);

}  // namespace catalogue
