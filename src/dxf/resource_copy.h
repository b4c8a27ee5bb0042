// Named resources made available in a drawing from other files: records copied from another
// drawing (blocks, styles, layers...), linetypes from .lin files, multiline styles from .mln
// files, and hatch patterns from .pat files.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "dxf/document.h"

namespace dxf {

// Kinds of resources as bits of a mask; the values are those of the host boundary.
namespace resource {
constexpr uint32_t kBlocks = 1;
constexpr uint32_t kDimensionStyles = 2;
constexpr uint32_t kLayers = 4;
constexpr uint32_t kLayouts = 8;
constexpr uint32_t kLinetypes = 16;
constexpr uint32_t kMLeaderStyles = 32;
constexpr uint32_t kMlineStyles = 64;
constexpr uint32_t kPatterns = 128;
constexpr uint32_t kTextStyles = 256;
}  // namespace resource

// Names by kind, one bit of the mask per key.
using ResourceNameMap = std::map<uint32_t, std::vector<std::wstring>>;

// --- Copies between drawings.

// Copies the records that `needed` names, of the kinds in `mask`, from `source` into
// `target`, as a CAD program's deep clone does: every copy gets a new handle and every
// handle it holds is translated, to the copy of the record it named, else to the target's
// record of the same name, else to "0". What the copies use and the target lacks comes too:
// a block's nested blocks, the layers, linetypes, text styles, dimension styles and
// registered applications its entities name, a linetype's text styles, a style's blocks.
// Anonymous blocks ("*U7") always come as new anonymous blocks under a free name. A name the
// target has already (compared case-insensitively) is not copied again but counts as
// provided. Text is re-encoded when the drawings' encodings differ.
//
// Returns, by kind, the needed names that the target has afterwards, spelt as in `needed`.
// Fails, changing nothing, when the caller needs layouts (`mask` has kLayouts and `needed`
// has a kLayouts entry, even an empty one, since layouts are taken whole), when an R12
// target should get multileader or multiline styles (R12 has no dictionaries), or when the
// source is R12 and the target is not (its records lack what later formats require).
// An R12 target gets what its format holds: records lose subclass markers, pointers and
// later codes, and entities that R12 does not know (LWPOLYLINE, MTEXT...) are left out.
base::Result<ResourceNameMap> copyResources(Document& target, const Document& source, uint32_t mask,
                                            const ResourceNameMap& needed);

// Reads a drawing to take resources from: DXF directly; DWG and DWT through the program
// that the environment variable TAXOR_DWG_CONVERTER names, run as
// `PROGRAM INPUT.dwg OUTPUT.dxf` into a temporary file. Without it a DWG is an error that
// says how to proceed.
base::Result<Document> loadDrawingForResources(const std::string& path);

// --- Linetype definition files (.lin).

// An element of a linetype: a dash (> 0), a gap (< 0) or a dot (0), optionally carrying a
// text or a shape.
struct LinetypeElement {
  enum class Embedded : uint8_t { kNone, kText, kShape };
  double length = 0;
  Embedded embedded = Embedded::kNone;
  std::wstring text;   // the text of a text element, or the shape's name
  std::wstring style;  // the text style, or the shape file
  double scale = 1;
  double rotation_deg = 0;
  bool absolute_rotation = false;  // A= rather than R= (or U=)
  double x_offset = 0;
  double y_offset = 0;
};

struct LinetypeDefinition {
  std::wstring name;
  std::wstring description;
  std::vector<LinetypeElement> elements;
};

// Parses a .lin file held in `bytes` (UTF-8, else Windows-1252); `name` is used in error
// messages ("NAME:LINE: what is wrong"). A name defined again is ignored, as CAD programs
// take the first definition.
base::Result<std::vector<LinetypeDefinition>> parseLinetypeFile(std::string_view bytes,
                                                                const std::string& name);
// Adds an LTYPE entry for `def` unless the drawing has one of that name, and returns the
// entry. A text element whose style the drawing lacks, and every shape element (whose shape
// number only the shape file knows), are kept as their plain dash; R12 keeps plain dashes.
base::Result<RecordId> addLinetype(Document& doc, const LinetypeDefinition& def);

// --- Multiline style files (.mln).

struct MlineStyleElement {
  double offset = 0;
  int color = 256;
  std::wstring linetype = L"BYLAYER";
};

struct MlineStyleDefinition {
  std::wstring name;
  int flags = 0;
  std::wstring description;
  int fill_color = 256;
  double start_angle = 90;
  double end_angle = 90;
  std::vector<MlineStyleElement> elements;
};

// Parses a .mln file: per style the line "MLSTYLE", then code/value line pairs closed by
// code 0. Lines starting with ';' where a code is due are comments.
base::Result<std::vector<MlineStyleDefinition>> parseMlineFile(std::string_view bytes,
                                                               const std::string& name);
// Adds an MLINESTYLE object to the ACAD_MLINESTYLE dictionary (made when missing) unless the
// drawing has a style of that name, and returns it. An element linetype the drawing lacks
// becomes BYLAYER. Fails on R12 drawings.
base::Result<RecordId> addMlineStyle(Document& doc, const MlineStyleDefinition& def);

// --- Hatch pattern files (.pat).

struct PatternLine {
  double angle = 0;
  double x_origin = 0;
  double y_origin = 0;
  double delta_x = 0;
  double delta_y = 0;
  std::vector<double> dashes;
};

struct PatternDefinition {
  std::wstring name;
  std::wstring description;
  std::vector<PatternLine> lines;
};

// Parses a .pat file; ';' starts a comment anywhere on a line.
base::Result<std::vector<PatternDefinition>> parsePatternFile(std::string_view bytes,
                                                              const std::string& name);
// True for SOLID and the patterns CAD programs ship in acad.pat (case-insensitive).
bool isPredefinedPattern(std::wstring_view name);

// --- Files of any kind.

// Makes the needed resources of the file at `path` available: a drawing (.dxf, .dwg, .dwt)
// through copyResources; a .lin or .mln file by adding entries to `target`; a .pat file by
// storing the needed definitions in `patterns` (replacing those of the same name), which a
// drawing does not hold. Returns the needed names now available, counting names the target
// has (or, for patterns, predefined or already in `patterns`). Kinds a file cannot hold are
// ignored. Fails, changing nothing, when the file cannot be read or parsed.
base::Result<ResourceNameMap> importResourceFile(Document& target,
                                                 std::vector<PatternDefinition>& patterns,
                                                 const std::string& path, uint32_t mask,
                                                 const ResourceNameMap& needed);

}  // namespace dxf
