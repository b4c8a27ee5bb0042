// TAXOR_LOAD and TAXOR_RELOAD: making a class-definition file current, and keeping the
// recent and favorites lists beside it.
#pragma once

#include <string>

#include "catalogue/parse_message.h"
#include "shell/command_context.h"

namespace shell {

// Asks for a class file, makes it the current one and parses it into the new catalogue
// (current even when empty; the parser's messages are the report). Clears the pick-first
// set. The previous file's lists are not written; the new file's are read into the lists
// that exist.
void loadCommand(CommandContext& context);

// Parses the current class file again; nothing before a file was loaded. Clears the
// pick-first set and writes the lists of the previous catalogue first; the lists in memory
// are not read again.
void reloadCommand(CommandContext& context);

// Each writes its list for the current class file when the list exists, warning of a file
// that cannot be written; nothing while no catalogue is loaded. Reload writes the recent list
// first, unload the favorites list.
void saveRecentList(CommandContext& context);
void saveFavoritesList(CommandContext& context);

// The text of a parser message, as the string table words it.
std::wstring diagnosticText(const StringTable& strings, const catalogue::Diagnostic& diagnostic);

}  // namespace shell
