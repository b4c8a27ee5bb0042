// Files written whole or not at all.
#pragma once

#include <string>
#include <string_view>

#include "base/status.h"

namespace headless {

// Writes `contents` to `path` through a temporary file in the same folder, flushed to disk
// and then renamed over `path`: a reader never sees a part, and on failure the file that was
// there stays as it was. An existing file keeps its permissions; a new one gets the usual
// ones (0666 less the umask).
base::Status writeFileAtomically(const std::string& path, std::string_view contents);

}  // namespace headless
