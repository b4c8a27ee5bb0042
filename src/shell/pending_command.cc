#include "shell/pending_command.h"

namespace shell {

void pendingCommand(CommandContext& context) {
  context.editor().print(context.command() + L" is not available yet in this version.\n");
}

}  // namespace shell
