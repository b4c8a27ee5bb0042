// The end-of-file resource steps of the parser: which resources the classes need, which
// declared files serve them, importing them into the drawing, and warning of names the
// drawing still lacks.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "catalogue/catalogue.h"
#include "catalogue/parse_message.h"
#include "host/database.h"
#include "host/resources.h"

namespace catalogue {

// A file named by a resource keyword, with the host::ResourceKind bits it was named for.
struct DependencyFile {
  std::wstring path;  // as found; the table is keyed by its lower-case form
  uint32_t mask = 0;
};
using DependencyTable = std::map<std::wstring, DependencyFile>;

// The resource names the classes of `catalogue` use, by kind, each once, in class order:
// block, dimension style, layers, linetypes, multileader style, multiline style, pattern,
// text style. Empty names and "*" are left out.
host::ResourceNames neededResources(const Catalogue& catalogue);

// Runs the steps in order: lists the needed names (a needed block that a block file provides
// is served by that file, which is kept in the catalogue's block files; the others are
// dropped); clears in each file the bits of kinds nobody needs (never the layout bit) and
// drops files left with none; imports each remaining file into `database`, filing the names
// it provided into the catalogue's resources and its path into the loaded files; then warns
// of each needed name the drawing does not have.
// Returns false after "unable to load" for a file the host cannot import; the catalogue is
// then incomplete and the caller empties it.
bool loadResources(Catalogue& catalogue, const DependencyTable& dependencies,
                   host::Database& database, std::vector<Diagnostic>& messages);

}  // namespace catalogue
