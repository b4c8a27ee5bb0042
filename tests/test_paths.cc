#include "test_paths.h"

#include <stdlib.h>
#include <sys/wait.h>

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
