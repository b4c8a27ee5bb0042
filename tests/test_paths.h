// Where tests find the shared corpus of real drawings.
#pragma once

#include <string>
#include <vector>

namespace testing_paths {

std::string corpusDir();
// Every .dxf file of the corpus, sorted by name; empty when the corpus is not there.
std::vector<std::string> corpusFiles();
// Reads a whole file; empty when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace testing_paths
