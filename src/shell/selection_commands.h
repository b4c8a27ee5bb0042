// The six selecting commands: each tests the candidate entities against the loaded classes
// and leaves the survivors as the pick-first set, printing how many there are.
#pragma once

#include "shell/command_context.h"

namespace shell {

// By a class or, when no class has the name, a tree group.
void selectCommand(CommandContext& context);
// By a tree group only.
void selectGroupCommand(CommandContext& context);
// By a class, with its records, its drawing properties or both; the matching or the others.
void selectExtendedCommand(CommandContext& context);
// Against the classes the entities' own records name; the matching or the others.
void selectAllCommand(CommandContext& context);
// The entities that do, or do not, carry a class of the loaded file.
void selectClassifiedCommand(CommandContext& context);
// The entities whose records have empty text fields (all, or the required ones).
void selectNullCommand(CommandContext& context);

}  // namespace shell
