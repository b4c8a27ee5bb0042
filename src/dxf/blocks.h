// Where entities live: model space, paper space and block definitions.
#pragma once

#include <string_view>
#include <vector>

#include "base/status.h"
#include "dxf/document.h"

namespace dxf {

// True for the records that belong to the entity before them: ATTRIB, VERTEX and SEQEND.
bool isSubentity(std::string_view type);

// Model-space entities in drawing-file order, without subentities. The ENTITIES section of
// R2000 and later also holds the active layout's paper-space entities (67 = 1); they are
// left out.
std::vector<RecordId> modelSpaceEntities(const Document& doc);

// The BLOCK record of the block named `name` (case-insensitive), or kNoRecord.
RecordId findBlock(const Document& doc, std::wstring_view name);
// The entities of a block definition between BLOCK and ENDBLK, without subentities.
std::vector<RecordId> blockEntities(const Document& doc, RecordId block);
// The ENDBLK record closing `block`, or kNoRecord.
RecordId blockEnd(const Document& doc, RecordId block);
// The BLOCK_RECORD table entry of the block named `name`, or kNoRecord (R12 has none).
RecordId findBlockRecord(const Document& doc, std::wstring_view name);

// The BLOCK_RECORD of model space: the one named "*Model_Space", or, in drawings whose
// writer named it otherwise, the owner of the model-space entities. kNoRecord in R12.
RecordId modelSpaceBlockRecord(const Document& doc);

// Where a new model-space entity goes: the record before which it is inserted.
RecordId modelSpaceInsertPoint(const Document& doc);

}  // namespace dxf
