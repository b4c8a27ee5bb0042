// Where tests find the shared corpus of real drawings, and the helpers that reach outside
// the process.
#pragma once

#include <string>
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

}  // namespace testing_paths
