// TAXOR_CLASSIFY and TAXOR_CLASSIFY_AUTO: giving entities a class of the loaded catalogue.
#pragma once

#include "shell/command_context.h"

namespace shell {

// Applies one named class to the selected entities: its drawing properties, its records
// (never a second set), and optionally takes off the classes they carried before.
void classifyCommand(CommandContext& context);

// Works out a class for each selected entity: mode 0 the class whose drawing properties
// the entity keeps (greatest draw order, then first by name), which gets its records;
// mode 1 the class its records name (greatest draw order, first record on a tie), whose
// properties it gets.
void classifyAutoCommand(CommandContext& context);

}  // namespace shell
