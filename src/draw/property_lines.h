// The `obj_prop` lines that give a class its drawing properties, as a class file holds them.
#pragma once

#include <string>

#include "draw/object_properties.h"

namespace draw {

// `value` in fixed point with `precision` decimals, as "%.Nlf" prints it.
std::wstring formatReal(double value, int precision);
// The number formatReal writes, read back: what a class file made from `value` will hold.
double writtenReal(double value, int precision);

// One "\t\tobj_prop\tKEY\tVALUE[\tALTERNATIVES]\n" line per property that is set and not
// the any-marker, in the fixed key order of class files. Numbers get `precision` decimals
// (the drawing's LUPREC); `angle` and `patternAngle` are held in radians and written in
// degrees. A list is the first value, then a TAB and the others joined by ", "; a range the
// value, then a TAB and "lower:upper". Colour lists are written as lists, so that they read
// back as the same specs. A circle class without mode or radius gets "circleMode Center".
// Appended to `out`: a template writes thousands of classes.
void appendPropertyLines(const DrawingProperties& properties, int precision, std::wstring& out);

}  // namespace draw
