#include "catalogue/class_lists.h"

#include <functional>

#include "base/atomic_file.h"
#include "base/crt_numbers.h"
#include "base/text_case.h"
#include "base/utf.h"
#include "catalogue/line_reader.h"
#include "catalogue/resource_files.h"

namespace catalogue {

namespace {

// Calls `entry` with the name and the number of each line that has a TAB. False when the
// file cannot be read.
bool readEntries(const std::wstring& path,
                 const std::function<void(std::wstring, int32_t)>& entry) {
  base::Result<std::string> bytes = readFileBytes(path, kMaxListFileBytes);
  if (!bytes) return false;
  std::wstring text = decodeClassFile(*bytes);
  LineReader reader(text);
  std::wstring_view line;
  while (reader.next(line)) {
    size_t first = line.find_first_not_of(L" \t\n");
    if (first == std::wstring_view::npos) continue;
    line = line.substr(first, line.find_last_not_of(L" \t\n") - first + 1);
    size_t tab = line.find(L'\t');
    if (tab == std::wstring_view::npos) continue;
    entry(std::wstring(line.substr(0, tab)), base::wtoi(line.substr(tab + 1)));
  }
  return true;
}

// Replaced whole, so that a crash while writing never costs the user the old list.
bool writeText(const std::wstring& path, const std::wstring& text) {
  return base::writeFileAtomically(nativePath(path).string(), base::toUtf8(text)).isOk();
}

std::wstring entryLine(const std::wstring& name, int32_t number) {
  return name + L"\t" + std::to_wstring(number) + L"\n";
}

}  // namespace

std::wstring recentFilePath(const std::wstring& class_file) { return class_file + L".recent"; }

std::wstring favoritesFilePath(const std::wstring& class_file) {
  return class_file + L".favorites";
}

bool readRecentFile(const std::wstring& path, RecentList& list) {
  std::vector<RecentEntry> entries;
  bool read = readEntries(path, [&](std::wstring name, int32_t counter) {
    std::wstring key = base::lowerCase(name);
    entries.push_back({std::move(name), std::move(key), counter});
  });
  if (!read) return false;
  list.entries = std::move(entries);
  list.loaded = true;
  return true;
}

bool writeRecentFile(const std::wstring& path, const RecentList& list) {
  std::wstring text;
  for (const RecentEntry& entry : list.entries) text += entryLine(entry.name, entry.counter);
  return writeText(path, text);
}

std::wstring FavoritesList::text() const {
  std::wstring out;
  for (const FavoriteEntry& entry : entries) out += entryLine(entry.name, entry.number);
  return out;
}

bool readFavoritesFile(const std::wstring& path, FavoritesList& list) {
  list.entries.clear();
  list.path = path;
  return readEntries(path, [&](std::wstring name, int32_t number) {
    list.entries.push_back({std::move(name), number});
  });
}

WriteResult writeFavoritesFile(const std::wstring& path, const FavoritesList& list) {
  if (list.path.empty() || !base::equalsIgnoringCase(list.path, path)) return WriteResult::kSkipped;
  return writeText(path, list.text()) ? WriteResult::kWritten : WriteResult::kFailed;
}

}  // namespace catalogue
