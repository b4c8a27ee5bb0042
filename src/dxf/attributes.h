// Attribute references of block inserts kept in line with the block's definitions.
#pragma once

#include <string_view>

#include "base/status.h"
#include "dxf/document.h"

namespace dxf {

// Brings the ATTRIBs of every INSERT of block `block_name` in line with the block's
// (non-constant) ATTDEFs: missing ones are added with the definition's default value and
// placed as the insert transforms the definition, extra ones are removed, kept ones keep
// their values; the order becomes the definitions' order. Returns how many inserts
// changed; kNotFound when there is no such block.
// Whether block `block_name` has a non-constant ATTDEF; false when there is no such block.
bool hasAttributeDefinitions(const Document& doc, std::wstring_view block_name);

base::Result<int> synchronizeAttributes(Document& doc, std::wstring_view block_name);

}  // namespace dxf
