#include "test_paths.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <system_error>

namespace testing_paths {

std::string corpusDir() { return TAXOR_CORPUS_DIR; }

std::vector<std::string> corpusFiles() {
  std::vector<std::string> out;
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator(corpusDir(), ec)) {
    if (entry.path().extension() == ".dxf") out.push_back(entry.path().string());
  }
  std::sort(out.begin(), out.end());
  return out;
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

int runCommand(const std::string& command, std::string& output) {
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (!pipe) return -1;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, pipe)) > 0) output.append(buf, n);
  int status = pclose(pipe);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int runChildUntilKilled(const std::function<int(const MidwaySignal& midway)>& work,
                        size_t max_file_bytes) {
  int pipe_fds[2];
  if (pipe(pipe_fds) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  pid_t pid = fork();
  if (pid < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (pid == 0) {
    close(pipe_fds[0]);
    const rlimit no_core{0, 0};
    setrlimit(RLIMIT_CORE, &no_core);
    if (max_file_bytes != 0) {
      const rlimit cap{max_file_bytes, max_file_bytes};
      setrlimit(RLIMIT_FSIZE, &cap);
      signal(SIGXFSZ, SIG_DFL);
    }
    const MidwaySignal midway = [fd = pipe_fds[1]] {
      const char byte = 1;
      while (write(fd, &byte, 1) < 0 && errno == EINTR) {
      }
    };
    // _exit: the child must not run the parent's exit handlers, flush its streams or, after
    // an exception, go on with the parent's tests.
    int code = 127;
    try {
      code = work(midway);
    } catch (...) {
    }
    _exit(code);
  }
  close(pipe_fds[1]);
  char byte = 0;
  ssize_t got;
  while ((got = read(pipe_fds[0], &byte, 1)) < 0 && errno == EINTR) {
  }
  close(pipe_fds[0]);
  // Nothing read: the child ended by itself, which closed its end of the pipe.
  if (got == 1) kill(pid, SIGKILL);
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TempDir::TempDir(std::string_view prefix) {
  std::string pattern =
      (std::filesystem::temp_directory_path() / (std::string(prefix) + "_XXXXXX")).string();
  // mkdtemp picks a name no other process holds and makes the directory in one step.
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::filesystem::filesystem_error("mkdtemp", pattern,
                                            std::error_code(errno, std::generic_category()));
  }
  path_ = pattern;
}

TempDir::~TempDir() {
  if (keep_) return;
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

const char* whyNoEzdxf() {
#ifdef TAXOR_SANITIZED
  return "the ezdxf tests run in the normal build only";
#else
  static const bool available = [] {
    std::string ignored;
    return runCommand("/usr/bin/python3 -c 'import ezdxf'", ignored) == 0;
  }();
  return available ? nullptr : "/usr/bin/python3 cannot import ezdxf";
#endif
}

}  // namespace testing_paths
