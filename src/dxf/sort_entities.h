// Draw order: the SORTENTSTABLE of a block record (R2000 and later). An entity is drawn by
// its sort handle, ascending; one the table does not list sorts by its own handle, one
// with sort handle 0 is drawn last (as CAD programs do), and entities with equal sort
// handles keep their file order.
#pragma once

#include <span>
#include <vector>

#include "base/status.h"
#include "dxf/document.h"

namespace dxf {

struct SortEntry {
  Handle entity = 0;
  Handle sort = 0;
};

// The SORTENTSTABLE named "ACAD_SORTENTS" in the extension dictionary of the BLOCK_RECORD
// `block_record`, or kNoRecord.
RecordId findSortEntsTable(const Document& doc, RecordId block_record);
// The table of `block_record`, made (empty) when missing, together with the extension
// dictionary that holds it. Fails on R12 drawings.
base::Result<RecordId> ensureSortEntsTable(Document& doc, RecordId block_record);
// The (entity, sort handle) pairs of `table`, in the table's order.
std::vector<SortEntry> sortEntries(const Document& doc, RecordId table);

// Model-space entities (as modelSpaceEntities lists them) in the order they are drawn.
std::vector<RecordId> modelSpaceDrawOrder(const Document& doc);

// Makes the entities `ordered` draw in that order relative to one another, first lowest,
// while every other entity keeps its place: the sort handles the entities use now are
// dealt out again in the new order. The entities must have handles and belong to the
// table's block record, each listed once; otherwise kInvalid and nothing changes.
base::Status setRelativeDrawOrder(Document& doc, RecordId table, std::span<const RecordId> ordered);

}  // namespace dxf
