#include "base/file_read.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace base {

Result<std::string> readFileUpTo(const std::string& path, size_t max_bytes) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return Status::io("cannot read '" + path + "': " + std::strerror(errno));
  // Read straight into the string, sized from what the file says it holds and one byte more,
  // which is enough to tell that a file is over the limit; files that give no size grow.
  struct stat info;
  size_t expected = 1 << 16;
  if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0) {
    expected = static_cast<size_t>(info.st_size) + 1;
  }
  std::string bytes(std::min(expected, max_bytes + 1), '\0');
  size_t used = 0;
  for (;;) {
    if (used == bytes.size()) {
      if (used > max_bytes) break;
      bytes.resize(std::min(2 * used, max_bytes + 1));
    }
    ssize_t got = ::read(fd, bytes.data() + used, bytes.size() - used);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      Status status = Status::io("cannot read '" + path + "': " + std::strerror(errno));
      ::close(fd);
      return status;
    }
    if (got == 0) break;
    used += static_cast<size_t>(got);
  }
  if (used > max_bytes) {
    ::close(fd);
    return Status::invalid("'" + path + "' is larger than " + std::to_string(max_bytes) + " bytes");
  }
  bytes.resize(used);
  ::close(fd);
  return bytes;
}

}  // namespace base
