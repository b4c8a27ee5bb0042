// Whether an entity agrees with the drawing properties of a class: its type, general
// properties and the properties of its type, each against the class's constraint.
#pragma once

#include "draw/object_properties.h"
#include "host/database.h"

namespace draw {

// The conformity test. Every constraint that is set must accept the entity's value: the
// any-marker accepts all, then the default, then (List) any alternative, or (Range) a value
// between the first and last alternative, both included. Numbers are equal when they differ
// by less than 0.1 to the power of the drawing's LUPREC; texts when equal after lower-casing;
// ranges of texts compare them as they stand. Angles are compared in degrees, as class
// files give them. A value the entity does not have passes only a constraint that accepts
// anything. An entity whose type is not one of the class's type names never conforms.
bool matchesClassProperties(host::Database& database, host::ObjectId entity,
                            const DrawingProperties& properties);

}  // namespace draw
