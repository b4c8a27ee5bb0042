// TAXOR_ASSERT and TAXOR_STAT: which classified entities break their class's rules, and how
// many entities each class has.
#pragma once

#include "shell/command_context.h"

namespace shell {

// Leaves selected exactly the entities with a record whose class's rules it breaks (only
// the required fields unless non-required ones are asked for).
void assertCommand(CommandContext& context);

// Counts the selected entities per class and shows the report in a text box.
void statCommand(CommandContext& context);

}  // namespace shell
