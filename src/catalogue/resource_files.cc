#include "catalogue/resource_files.h"

#include <algorithm>
#include <fstream>

#include "base/file_read.h"
#include "base/text_case.h"
#include "base/utf.h"
#include "catalogue/parser.h"
#include "host/resources.h"

namespace catalogue {

namespace {

constexpr std::wstring_view kDrawings[] = {L".dwg", L".dwt", L".dxf"};
constexpr std::wstring_view kLinetypeFiles[] = {L".dwg", L".dwt", L".dxf", L".lin"};
constexpr std::wstring_view kMlineFiles[] = {L".dwg", L".dwt", L".dxf", L".mln"};
constexpr std::wstring_view kPatternFiles[] = {L".pat"};
constexpr std::wstring_view kFontFiles[] = {L".shx"};

using PM = ParseMessage;

constexpr ResourceKeyword kKeywords[] = {
    {L"blockreference", PM::kInvalidBlockReference, kDrawings, host::kResourceBlocks, false, false},
    {L"blockreferencefile", PM::kInvalidBlockReferenceFile, kDrawings, 0, false, true},
    {L"dimension", PM::kInvalidDimension, kDrawings, host::kResourceDimensionStyles, false, false},
    {L"font", PM::kInvalidFont, kFontFiles, 0, true, false},
    {L"layer", PM::kInvalidLayer, kDrawings, host::kResourceLayers, false, false},
    {L"layout", PM::kInvalidLayout, kDrawings, host::kResourceLayouts, false, false},
    {L"linetype", PM::kInvalidLinetype, kLinetypeFiles, host::kResourceLinetypes, true, false},
    {L"mleader", PM::kInvalidMleader, kDrawings, host::kResourceMLeaderStyles, false, false},
    {L"mline", PM::kInvalidMline, kMlineFiles, host::kResourceMlineStyles, false, false},
    {L"pattern", PM::kInvalidPattern, kPatternFiles, host::kResourcePatterns, false, false},
    {L"textstyle", PM::kInvalidTextStyle, kDrawings, host::kResourceTextStyles, false, false},
};

bool isSeparator(wchar_t c) { return c == L'/' || c == L'\\'; }

size_t lastSeparator(std::wstring_view path) { return path.find_last_of(L"/\\"); }

// "*" any run of characters, "?" any one character; letters compared without case.
bool matchesWildcard(std::wstring_view name, std::wstring_view pattern) {
  size_t n = 0, p = 0, star = std::wstring_view::npos, resume = 0;
  while (n < name.size()) {
    if (p < pattern.size() &&
        (pattern[p] == L'?' || base::lowerChar(pattern[p]) == base::lowerChar(name[n]))) {
      ++n, ++p;
    } else if (p < pattern.size() && pattern[p] == L'*') {
      star = p++;
      resume = n;
    } else if (star != std::wstring_view::npos) {
      p = star + 1;
      n = ++resume;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == L'*') ++p;
  return p == pattern.size();
}

std::wstring fromNative(const std::filesystem::path& path) {
#ifdef _WIN32
  return path.wstring();
#else
  return base::fromUtf8(path.string());
#endif
}

}  // namespace

const ResourceKeyword* findResourceKeyword(std::wstring_view keyword) {
  for (const ResourceKeyword& rule : kKeywords) {
    if (rule.keyword == keyword) return &rule;
  }
  return nullptr;
}

std::wstring resolveResourcePath(std::wstring_view token, std::wstring_view class_file) {
  bool relative = token.find(L':') == std::wstring_view::npos &&
                  !(!token.empty() && isSeparator(token.front()));
  if (!relative) return std::wstring(token);
  size_t sep = lastSeparator(class_file);
  if (sep == std::wstring_view::npos) return std::wstring(token);
  return std::wstring(class_file.substr(0, sep + 1)) + std::wstring(token);
}

std::filesystem::path nativePath(std::wstring_view path) {
#ifdef _WIN32
  return std::filesystem::path(std::wstring(path));
#else
  std::wstring copy(path);
  std::replace(copy.begin(), copy.end(), L'\\', L'/');
  return std::filesystem::path(base::toUtf8(copy));
#endif
}

base::Result<std::string> readFileBytes(std::wstring_view path, size_t max_bytes) {
  return base::readFileUpTo(nativePath(path).string(), max_bytes);
}

std::vector<std::wstring> findFiles(std::wstring_view pattern) {
  std::vector<std::wstring> found;
  std::error_code ec;
  size_t sep = lastSeparator(pattern);
  std::wstring_view name = sep == std::wstring_view::npos ? pattern : pattern.substr(sep + 1);
  std::wstring_view folder = sep == std::wstring_view::npos ? L"" : pattern.substr(0, sep + 1);
  if (name.find_first_of(L"*?") == std::wstring_view::npos) {
    auto status = std::filesystem::status(nativePath(pattern), ec);
    if (!ec && std::filesystem::exists(status) && !std::filesystem::is_directory(status)) {
      found.push_back(fromNative(nativePath(pattern)));
    }
    return found;
  }
  std::filesystem::directory_iterator it(nativePath(folder.empty() ? L"." : folder), ec);
  for (; !ec && it != std::filesystem::directory_iterator(); it.increment(ec)) {
    std::wstring entry = fromNative(it->path().filename());
    if (entry == L"." || entry == L".." || it->is_directory(ec)) continue;
    if (matchesWildcard(entry, name)) found.push_back(entry);
  }
  std::sort(found.begin(), found.end());
  for (std::wstring& file : found) file = fromNative(nativePath(std::wstring(folder) + file));
  return found;
}

bool hasExtension(std::wstring_view path, std::wstring_view extension) {
  return path.size() >= extension.size() && path.find(extension) == path.size() - extension.size();
}

std::wstring folderOf(std::wstring_view path) {
  size_t sep = lastSeparator(path);
  return sep == std::wstring_view::npos ? std::wstring() : std::wstring(path.substr(0, sep));
}

std::wstring blockNameOf(std::wstring_view path) {
  size_t sep = lastSeparator(path);
  std::wstring_view name = sep == std::wstring_view::npos ? path : path.substr(sep + 1);
  return std::wstring(name.substr(0, name.size() >= 4 ? name.size() - 4 : 0));
}

bool addToSupportPath(ParseEnvironment& environment, std::wstring_view path) {
  std::ifstream file(nativePath(path), std::ios::binary);
  if (!file) return false;
  std::wstring folder = folderOf(path);
  // An unset value is an empty one: the folder is then the first entry.
  std::wstring value = environment.getEnv(L"ACAD").value_or(L"");
  if (value.find(folder) != std::wstring::npos) return true;
  if (!value.empty() && value.back() != L';') value += L';';
  value += folder + L";";
  return environment.setEnv(L"ACAD", value);
}

}  // namespace catalogue
