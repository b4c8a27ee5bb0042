#include "base/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <vector>

namespace base {

namespace {

// A link is written through, as an in-place write would: renaming over the link itself
// would turn it into a file of its own and leave its target old.
std::string throughLinks(const std::string& path) {
  std::string target = path;
  struct stat info;
  // A cycle of links ends the walk after as many hops as the system follows; the link
  // reached then is replaced like a file.
  for (int hops = 0; hops < 40 && ::lstat(target.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
       ++hops) {
    std::vector<char> link(PATH_MAX + 1);
    ssize_t n = ::readlink(target.c_str(), link.data(), PATH_MAX);
    if (n <= 0) break;
    std::string next(link.data(), static_cast<size_t>(n));
    size_t slash = target.find_last_of('/');
    if (next.front() != '/' && slash != std::string::npos) {
      next = target.substr(0, slash + 1) + next;
    }
    target = std::move(next);
  }
  return target;
}

// Makes the rename itself survive a power cut; a folder that cannot be flushed (some file
// systems refuse) does not undo a write that is complete.
void flushFolder(const std::string& dir) {
  int fd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

}  // namespace

Status writeFileAtomically(const std::string& requested_path,
                           const std::function<int(int fd)>& write) {
  const std::string path = throughLinks(requested_path);
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
  flushFolder(dir);
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
