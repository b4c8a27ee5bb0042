// Files written whole or not at all.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "base/status.h"

namespace base {

// Writes `path` through a temporary file in the same folder, flushed to disk and then
// renamed over `path`: a reader never sees a part, and on failure the file that was there
// stays as it was. `write` fills the open descriptor and returns 0, or the errno of its
// failure. An existing file keeps its permissions; a new one gets the usual ones (0666 less
// the umask). A symbolic link is written through: its target is replaced and the link
// stays. A write killed midway leaves the old file and a temporary "<path>.XXXXXX" beside
// it, which no later write trips over.
Status writeFileAtomically(const std::string& path, const std::function<int(int fd)>& write);
// The same for bytes in memory.
Status writeFileAtomically(const std::string& path, std::string_view contents);

}  // namespace base
