// Making the drawing resources a class's properties name available before they are applied.
#pragma once

#include "catalogue/catalogue.h"
#include "host/database.h"

namespace objdata {

// Makes sure the drawing has every layer, linetype, block and style that `cls` prescribes
// as its default: a name the drawing lacks is imported from the file that provided it when
// the class file was bound to the drawing (`provided`), or, without that record, from the
// first of the class file's resource files for its kind that has it. False when a name is
// still missing afterwards.
bool loadClassDependencies(host::Database& database, const catalogue::Catalogue& catalogue,
                           const catalogue::DrawingResources* provided,
                           const catalogue::ObjectClass& cls);

}  // namespace objdata
