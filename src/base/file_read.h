// Whole files read into memory, never more of them than asked for.
#pragma once

#include <string>

#include "base/status.h"

namespace base {

// The bytes of the file at `path`. A file holding more than `max_bytes` is refused (kInvalid,
// "larger than N bytes") before more than that is read, so that neither a huge file nor an
// endless one (a device, a pipe) is taken into memory. Failing to open or read it is kIo.
Result<std::string> readFileUpTo(const std::string& path, size_t max_bytes);

}  // namespace base
