// Binding a parsed class file to one drawing: what loading the file does to and learns from
// that drawing, kept out of the catalogue so that the catalogue stays shared and unchanged.
#pragma once

#include <memory>
#include <vector>

#include "catalogue/catalogue.h"
#include "catalogue/parse_message.h"
#include "catalogue/parser.h"
#include "host/database.h"

namespace catalogue {

struct Binding {
  // The catalogue to use with the drawing: the parsed one, or after any failure an empty
  // one with the same class-file path.
  std::shared_ptr<const Catalogue> catalogue;
  // The whole report of loading the file into this drawing, in the order it is printed:
  // the parse's messages with the drawing's own where loading meets them.
  std::vector<Diagnostic> messages;
  DrawingResources resources;
  bool ok = false;
};

// Compares each table the parse closed with the definition `database` stores for it, in
// file order: a mismatch is an error at the table's line that ends the report there, as the
// file ended there. A file that failed to parse goes no further. Otherwise imports the
// catalogue's resource files, warns of needed names the drawing lacks and applies the
// global settings; a file that cannot be imported is a failure.
Binding bindCatalogue(const ParsedClasses& parsed, host::Database& database);

}  // namespace catalogue
