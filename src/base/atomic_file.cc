#include "base/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

namespace base {

Status writeFileAtomically(const std::string& path, const std::function<int(int fd)>& write) {
  std::string dir = ".";
  size_t slash = path.find_last_of('/');
  if (slash != std::string::npos) dir = slash == 0 ? "/" : path.substr(0, slash);
  std::string temp = path + ".XXXXXX";
  std::vector<char> temp_name(temp.begin(), temp.end());
  temp_name.push_back('\0');
  int fd = ::mkstemp(temp_name.data());
  if (fd < 0) {
    return Status::io("cannot create a temporary file in '" + dir + "': " + std::strerror(errno) +
                      "; check that the folder exists and is writable");
  }
  auto fail = [&](const char* what) {
    std::string message =
        std::string(what) + " '" + temp_name.data() + "': " + std::strerror(errno);
    ::close(fd);
    ::unlink(temp_name.data());
    return Status::io(message + "; '" + path + "' was left unchanged");
  };
  struct stat existing;
  mode_t mode = 0666;
  if (::stat(path.c_str(), &existing) == 0) {
    mode = existing.st_mode & 07777;
  } else {
    mode_t mask = ::umask(0);
    ::umask(mask);
    mode &= ~mask;
  }
  if (::fchmod(fd, mode) != 0) return fail("cannot set the permissions of");
  if (int error = write(fd); error != 0) {
    errno = error;
    return fail("cannot write");
  }
  if (::fsync(fd) != 0) return fail("cannot flush");
  if (::close(fd) != 0) {
    std::string message =
        std::string("cannot close '") + temp_name.data() + "': " + std::strerror(errno);
    ::unlink(temp_name.data());
    return Status::io(message + "; '" + path + "' was left unchanged");
  }
  if (::rename(temp_name.data(), path.c_str()) != 0) {
    std::string message = "cannot replace '" + path + "': " + std::strerror(errno);
    ::unlink(temp_name.data());
    return Status::io(message + "; it was left unchanged");
  }
  return Status::ok();
}

Status writeFileAtomically(const std::string& path, std::string_view contents) {
  return writeFileAtomically(path, [contents](int fd) {
    for (size_t written = 0; written < contents.size();) {
      ssize_t n = ::write(fd, contents.data() + written, contents.size() - written);
      if (n < 0) {
        if (errno == EINTR) continue;
        return errno;
      }
      written += static_cast<size_t>(n);
    }
    return 0;
  });
}

}  // namespace base
