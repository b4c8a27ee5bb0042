// TAXOR_ABOUT: the product name and version.
#pragma once

#include "shell/command_context.h"

namespace shell {

// The version of this build ("0.1.0").
const wchar_t* productVersion();
void aboutCommand(CommandContext& context);

}  // namespace shell
