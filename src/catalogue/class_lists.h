// The recent and favorite classes of a class file, kept beside it in "<class file>.recent"
// and "<class file>.favorites": UTF-8 text, one entry a line, "name<TAB>number".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace catalogue {

std::wstring recentFilePath(const std::wstring& class_file);
std::wstring favoritesFilePath(const std::wstring& class_file);

struct RecentEntry {
  std::wstring name;  // as shown
  std::wstring key;   // lower case, for lookups
  int32_t counter = 0;
  bool operator==(const RecentEntry&) const = default;
};

// The list of the recent palette.
struct RecentList {
  std::vector<RecentEntry> entries;
  // True once the list came from a file or was filled by the palette; only then is it
  // written back.
  bool loaded = false;
};

// A list holds some dozens of entries of a line each: a file far larger is not one, and is
// refused before it is read.
inline constexpr size_t kMaxListFileBytes = 1 << 20;

// Replaces the entries of `list` with those of the file at `path`: each line trimmed of
// blanks, TABs and LF, then name before the first TAB and counter read from the rest as
// _wtoi does; lines without a TAB are skipped. When the file cannot be read, or is larger
// than kMaxListFileBytes, the list keeps its entries (so a class file without recent classes
// shows the previous ones) and false is returned.
bool readRecentFile(const std::wstring& path, RecentList& list);

// Writes every entry as "name<TAB>counter", replacing the file whole (see
// base::writeFileAtomically). False, leaving the old file as it was, when it cannot be
// written.
bool writeRecentFile(const std::wstring& path, const RecentList& list);

struct FavoriteEntry {
  std::wstring name;
  int32_t number = 0;
  bool operator==(const FavoriteEntry&) const = default;
};

// The list of the favorites palette and the file it belongs to.
struct FavoritesList {
  std::vector<FavoriteEntry> entries;
  std::wstring path;  // the favorites file last read; empty before

  // The entries as the file holds them.
  std::wstring text() const;
};

// Empties `list` and remembers `path` whether or not the file exists (a class file without
// favorites has none), then adds the entries of the file: lines trimmed as for the recent
// file, empty lines and lines without a TAB skipped. False when the file cannot be read.
bool readFavoritesFile(const std::wstring& path, FavoritesList& list);

enum class WriteResult { kWritten, kSkipped, kFailed };

// Writes the list to `path`, but only when it belongs there (its remembered path equals
// `path` without regard to case), so that one class file's favorites never land under
// another's name: kSkipped otherwise. Replaced whole as the recent file; kFailed, leaving the
// old file, when it cannot be written.
WriteResult writeFavoritesFile(const std::wstring& path, const FavoritesList& list);

}  // namespace catalogue
