#include "headless/headless_document.h"

#include <filesystem>

namespace headless {

namespace {

// A CAD program names a document by its full path, however it was opened.
std::wstring fullPath(const std::wstring& path) {
  if (path.empty()) return path;
  std::error_code error;
  std::filesystem::path full = std::filesystem::absolute(std::filesystem::path(path), error);
  return error ? path : full.lexically_normal().wstring();
}

}  // namespace

HeadlessDocument::HeadlessDocument(DxfDatabase& database, const std::wstring& file_name)
    : database_(database), file_name_(fullPath(file_name)) {}

}  // namespace headless
