// The end-of-file resource steps: which resources the classes need and which declared files
// serve them (part of the parse), then importing them into a drawing and warning of names
// the drawing still lacks (part of binding the catalogue to that drawing).
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

// Plans the resources of the finished `catalogue`: lists the needed names (a needed block
// that a block file provides is served by that file, which is kept in the catalogue's block
// files; the others are dropped); clears in each file the bits of kinds nobody needs (never
// the layout bit) and keeps the files left with some as the catalogue's imports.
void planResources(Catalogue& catalogue, const DependencyTable& dependencies);

// Imports each of the catalogue's files into `database`, filing the names it provided and
// its path into `loaded`; then warns of each needed name the drawing does not have.
// Returns false after "unable to load" for a file the host cannot import.
bool loadResources(const Catalogue& catalogue, host::Database& database,
                   std::vector<Diagnostic>& messages, DrawingResources& loaded);

}  // namespace catalogue
