// Repairs of classified drawings: duplicate records found and deleted, real values rounded
// to the class file's decimals, and the display ordered by class priority.
#pragma once

#include "shell/command_context.h"

namespace shell {

// Selects the entities carrying a class's records more often than it has tables, naming
// the classes.
void selectDuplicatesCommand(CommandContext& context);
// Deletes surplus records of a class's tables, keeping the last (mode First) or the first.
void deleteDuplicatesCommand(CommandContext& context);
// Rounds the real fields of the entities' records to the places the class file writes.
void roundCommand(CommandContext& context);
// Draws entities of higher class priority above the others, unclassified ones lowest.
void sortCommand(CommandContext& context);

}  // namespace shell
