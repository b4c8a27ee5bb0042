// TAXOR_REMOVE, TAXOR_REMOVE_ALL and TAXOR_RESTORE: taking classes off entities, and giving
// classified entities their class's drawing properties again.
#pragma once

#include "shell/command_context.h"

namespace shell {

// Takes one named class off the selected entities.
void removeCommand(CommandContext& context);

// Deletes every record whose class the loaded catalogue knows; records of other tables stay.
void removeAllCommand(CommandContext& context);

// Applies again the drawing properties of a named class to the selected entities that carry
// it, or, without a name, of every class each entity carries. The records stay as they are.
void restoreCommand(CommandContext& context);

}  // namespace shell
