// The resource keywords of the class file (`layer`, `linetype`, `pattern`...): which files
// each accepts, how a FILES token becomes a list of files, and the support-path step for
// shape fonts.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "catalogue/parse_message.h"

namespace catalogue {

class ParseEnvironment;

struct ResourceKeyword {
  std::wstring_view keyword;
  // The message for a line with a token count other than 2.
  ParseMessage invalid;
  // Extensions of the files that provide this kind, compared case-sensitively. Drawings are
  // accepted as ".dxf" beside ".dwg" and ".dwt", the formats this program reads.
  std::span<const std::wstring_view> extensions;
  // The host::ResourceKind bit the files are imported for; 0 for `font` and
  // `blockreferencefile`.
  uint32_t kind;
  // ".shx" files are made known through the support path (`font`, `linetype`).
  bool shape_fonts;
  // Each drawing is a block by itself (`blockreferencefile`).
  bool block_files;
};

// The rule of `keyword` (lower case); null for other keywords.
const ResourceKeyword* findResourceKeyword(std::wstring_view keyword);

// A path without a colon and without a leading "/" or "\" is relative: the folder of
// `class_file` (up to its last "/" or "\") and that separator are put in front.
std::wstring resolveResourcePath(std::wstring_view token, std::wstring_view class_file);

// The files that `pattern` names: its last component may hold the wildcards "*" and "?"
// (matched without regard to case, as the platform's file search does). Directories are
// skipped; matches come sorted by name, with full paths. "/" and "\" both separate folders.
std::vector<std::wstring> findFiles(std::wstring_view pattern);

// Whether the first occurrence of `extension` in `path` is at its very end, so that
// "a.dwg.bak" and "x.dwg/a.dwg" are not drawings.
bool hasExtension(std::wstring_view path, std::wstring_view extension);

// The path up to its last "/" or "\" (exclusive); empty when it has none.
std::wstring folderOf(std::wstring_view path);
// The file name without folder and without its last four characters (the extension).
std::wstring blockNameOf(std::wstring_view path);

// The operating system's form of a path written with either separator.
std::filesystem::path nativePath(std::wstring_view path);

// The bytes of the file at `path`. Fails with Code::kInvalid, before more is read, when it
// holds more than `max_bytes`, and with Code::kIo when it is not a readable file (a folder,
// say).
base::Result<std::string> readFileBytes(std::wstring_view path, size_t max_bytes);

// Makes the folder of the shape font `path` known to the host through `environment`: the
// file must open for reading, and the folder is appended to the environment value "ACAD"
// (with ";" around it) unless the value already holds it. Returns false when the file
// cannot be read or the value cannot be written.
bool addToSupportPath(ParseEnvironment& environment, std::wstring_view path);

}  // namespace catalogue
