// Selection commands.
#include "headless/host_commands/host_command.h"

namespace headless::host_commands {

// A script's way to empty the pick-first set, which commands that select leave behind.
void aiDeselect(Context& context) { context.editor().setImpliedSelection({}); }

}  // namespace headless::host_commands
