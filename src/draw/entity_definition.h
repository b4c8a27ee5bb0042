// The drawing properties that describe one existing entity, from which a template class is
// written, and the equality that keeps one class per distinct kind of entity.
#pragma once

#include <memory>
#include <string>

#include "draw/object_properties.h"
#include "host/database.h"

namespace draw {

// The entity's type name and single-valued properties: layer, colour, linetype, linetype
// scale and lineweight for every entity, and by type the dimension mode and style, the
// multiline style, scale, justification and closedness, the multileader style, the hatch
// pattern, scale and angle, the block name, scale and whether the reference is rotated, a
// lightweight polyline's constant width and elevation, and a text's or mtext's style,
// height and justification or attachment.
// Numbers are held as a class file written at `precision` decimals holds them (angles in
// radians from their rounded degrees), so definitions written alike are equal and a written
// definition reads back as built. Properties the entity lacks stay unset. An entity without a
// type name, or with a name the class file cannot hold (see isWritableName), gives no type.
DrawingProperties buildDefinitionFromEntity(host::Database& database, host::ObjectId entity,
                                            int precision);

// Reads the definitions of many entities, one after another, with the same buffers: a
// drawing has far fewer kinds of entity than entities, and a definition is costly to build.
class DefinitionReader {
 public:
  DefinitionReader(host::Database& database, int precision);
  ~DefinitionReader();

  // What buildDefinitionFromEntity reads of `entity`, as the file would hold it, in a text
  // that is only good until the next call. Entities of equal keys have equal definitions,
  // and entities whose definitions have a type have equal keys only then.
  const std::string& kindKey(host::ObjectId entity);
  // buildDefinitionFromEntity(database, entity, precision).
  DrawingProperties build(host::ObjectId entity);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// Whether `name` reads back from a class-file column as written: not empty, not the
// any-marker, no comment sign, TAB or line end, no blank at either end, no final backslash.
bool isWritableName(std::wstring_view name);

// Equal type lists and equal settings of every key: modes, values and alternatives, colour
// lists entry by entry; texts compared with case, numbers exactly as held.
bool sameDefinition(const DrawingProperties& a, const DrawingProperties& b);

}  // namespace draw
