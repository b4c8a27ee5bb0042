// The class-definition file parser: one file (or its text) in, a catalogue and the parser's
// messages out. The drawing is read for its stored table definitions and system variables,
// and changed by the resources it imports and the global settings it applies.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "catalogue/catalogue.h"
#include "catalogue/parse_message.h"
#include "host/host.h"

namespace catalogue {

struct ParseResult {
  // Filled on success; empty (only its class-file path set) after any failure.
  Catalogue catalogue;
  // Every error and warning, in the order found.
  std::vector<Diagnostic> messages;
  bool ok = false;
};

// Parses the UTF-8 file at `path`, a full path. A file that cannot be read gives an empty
// catalogue and no message.
ParseResult parseClassFile(const std::wstring& path, host::Host& host);

// Parses `utf8` as the contents of a file at `path`; relative resource paths resolve against
// the folder of `path`.
ParseResult parseClassText(std::string_view utf8, const std::wstring& path, host::Host& host);

}  // namespace catalogue
