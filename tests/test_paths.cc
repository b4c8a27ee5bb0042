#include "test_paths.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

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

}  // namespace testing_paths
