// Giving an existing entity the drawing properties of its class: what classification and
// restoring do to entities that are already drawn.
#pragma once

#include "base/status.h"
#include "draw/object_properties.h"
#include "host/database.h"
#include "host/resources.h"

namespace draw {

// Which properties are applied.
enum class ApplyMode : int {
  // The general properties (colour, layer, linetype, linetype scale, lineweight) and those
  // of the entity's type.
  kAll = 0,
  // The general properties only.
  kGeneral = 1,
};

// Sets every property the class prescribes (set, and its default not the any-marker) to
// the class's default. General: colour (the first colour listed that is not "any"), layer,
// linetype, linetype scale, lineweight. By type, where the entity has it: closed
// (polylines, 3-D polylines, splines, multilines), constant width and elevation
// (polylines), block name and scale (block references), dimension style, multiline
// justification and scale, multileader style, pattern, pattern angle (degrees in the class,
// radians on the entity) and scale, background colour (hatches), text height, text style,
// text justification and mtext attachment. Placement and geometry (rotation, radius,
// contents) and the multiline style are left as drawn. A true colour is given as index 256
// with its red, green and blue. Every property is tried; the first failure is returned.
base::Status applyDrawingProperties(host::Database& database, host::ObjectId entity,
                                    const DrawingProperties& properties, ApplyMode mode);

// The named resources the properties need in a drawing before they can be applied
// (layer, linetype, block, text and dimension style, multileader and multiline style), by
// host::ResourceKind bit. Unset and "any" values need nothing.
host::ResourceNames requiredResources(const DrawingProperties& properties);

}  // namespace draw
