// Where tests find the shared corpus of real drawings, and the helpers that reach outside
// the process.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace testing_paths {

std::string corpusDir();
// Every .dxf file of the corpus, sorted by name; empty when the corpus is not there.
std::vector<std::string> corpusFiles();
// Reads a whole file; empty when it cannot be read.
std::string readFile(const std::string& path);
// Runs a shell command; returns its exit code (-1 when it did not exit) and puts what it
// printed, both streams, into `output`.
int runCommand(const std::string& command, std::string& output);

// Runs `work` in a child process, as a crash test does, and returns the signal that ended
// the child, or 0 when it exited (its exit code being what `work` returned). The child may
// call `midway` once, in the middle of a write: the parent then kills it with SIGKILL. A
// `max_file_bytes` other than 0 caps the size of every file the child writes, so that the
// write that goes past it kills the child with SIGXFSZ right there.
using MidwaySignal = std::function<void()>;
int runChildUntilKilled(const std::function<int(const MidwaySignal& midway)>& work,
                        size_t max_file_bytes = 0);

// A new, empty directory under the system's temporary directory whose name no other process
// has: two builds' tests or two checkouts running at once never share a file. Removed, with
// everything in it, with the object. Throws std::filesystem::filesystem_error when it cannot
// be made.
class TempDir {
 public:
  // The directory's name begins with `prefix`, to tell what left it behind.
  explicit TempDir(std::string_view prefix);
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }
  // Leaves the directory in place, for a look after a failure.
  void keep() { keep_ = true; }

 private:
  std::filesystem::path path_;
  bool keep_ = false;
};

// Why the tests that run /usr/bin/python3 with ezdxf do not run here, or null when they do.
// They do not run in a sanitizer build: the time goes to python, and the code of ours that
// they run is run by the normal build and by other tests under the sanitizers.
const char* whyNoEzdxf();

}  // namespace testing_paths

// Skips the current test when whyNoEzdxf() says so.
#define TAXOR_SKIP_WITHOUT_EZDXF()                                    \
  if (const char* taxor_why_no_ezdxf = ::testing_paths::whyNoEzdxf()) \
  GTEST_SKIP() << taxor_why_no_ezdxf
