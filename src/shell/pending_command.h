// The handler of commands that this build does not provide yet.
#pragma once

#include "shell/command_context.h"

namespace shell {

// Says plainly that the command is not available yet and changes nothing.
void pendingCommand(CommandContext& context);

}  // namespace shell
