// Lookups in the symbol tables (LAYER, LTYPE, STYLE, DIMSTYLE, BLOCK_RECORD...) and in the
// style dictionaries of the named-objects dictionary.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dxf/document.h"

namespace dxf {

// Entries of `table` ("LAYER"), in file order.
std::vector<RecordId> tableEntries(const Document& doc, std::string_view table);
// The entry of `table` named `name`, compared case-insensitively as CAD programs do;
// kNoRecord when there is none.
RecordId findTableEntry(const Document& doc, std::string_view table, std::wstring_view name);
// The name (code 2) of a table entry, BLOCK or style object... decoded.
std::wstring recordName(const Document& doc, RecordId id);

// What a layer's flags say. DXF records no "hidden" state for layers, so it is always false
// here; a host that has one reports it itself.
struct LayerState {
  bool frozen = false;  // 70 bit 1
  bool locked = false;  // 70 bit 4
  bool off = false;     // negative colour number
};
LayerState layerState(const Document& doc, RecordId layer);

// A style object listed by name in the named-objects dictionary entry `dictionary`
// ("ACAD_MLINESTYLE", "ACAD_MLEADERSTYLE"), or kNoRecord.
RecordId findStyle(const Document& doc, std::wstring_view dictionary, std::wstring_view name);
// The key under which `style` is listed in `dictionary`, or empty.
std::wstring styleName(const Document& doc, std::wstring_view dictionary, RecordId style);

// Case-insensitive comparison of names as CAD programs do it.
bool sameName(std::wstring_view a, std::wstring_view b);

}  // namespace dxf
