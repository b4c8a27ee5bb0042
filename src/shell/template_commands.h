// The commands that read a drawing for a class file to be written from it.
#pragma once

#include "shell/command_context.h"

namespace shell {

// Writes a starting class-definition file: one class per distinct kind of selected entity.
void templateCommand(CommandContext& context);
// Prints the distinct object types of the selected entities.
void typeCommand(CommandContext& context);

}  // namespace shell
