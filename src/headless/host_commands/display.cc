// Display commands. The headless host has no display, so they have nothing to do.
#include "headless/host_commands/host_command.h"

namespace headless::host_commands {

void regen(Context&) {}

}  // namespace headless::host_commands
