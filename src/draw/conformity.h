// Whether an entity agrees with the drawing properties of a class: its type, general
// properties and the properties of its type, each against the class's constraint.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "draw/object_properties.h"
#include "host/database.h"

namespace draw {

// The drawing's linear precision (LUPREC), which sets the tolerance of number comparisons;
// 4 when the host does not report it.
int linearPrecision(host::Database& database);

// The dimension mode of a dimension entity ("linear", "radius"...): from its host class, or
// from its dimension type where the host names every dimension by the base class. Empty
// for any other entity.
std::wstring dimensionMode(host::Database& database, host::ObjectId entity);

class Matcher;

// The conformity test of one entity against many classes: the entity's type and properties
// are read from the host once, whatever the number of classes tested. A walk over many
// entities resets one test to each in turn, reusing what it holds.
class EntityConformity {
 public:
  // Tests nothing until reset to an entity.
  EntityConformity(host::Database& database, int precision);
  ~EntityConformity();
  EntityConformity(const EntityConformity&) = delete;
  EntityConformity& operator=(const EntityConformity&) = delete;

  // Tests `entity` from now on; what was read of an entity before is forgotten.
  void reset(host::ObjectId entity);
  // The entity's type name; empty when it has none.
  std::wstring_view type() const { return type_; }
  // matchesClassProperties for this entity.
  bool matches(const DrawingProperties& properties) const;

 private:
  host::Database& database_;
  host::ObjectId entity_;
  std::wstring_view type_;  // one of the type names' constants
  std::wstring host_class_;  // read into entity after entity
  std::unique_ptr<Matcher> matcher_;
};

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
