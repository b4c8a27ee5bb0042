// The lexical layer of the class file: lines as a 10240-unit line buffer reads them,
// comments, TAB-separated tokens and the backslash escape.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace catalogue {

// UTF-16 code units of the line buffer, the terminating zero included.
inline constexpr size_t kLineBufferSize = 10240;

// Decodes a UTF-8 class file as a text-mode read would: a leading byte-order mark is
// dropped, CR LF becomes LF, and invalid sequences become U+FFFD.
std::wstring decodeClassFile(std::string_view utf8);

// Hands out the lines of a decoded file as a read into the line buffer gets them: up to and
// including the next LF, but at most kLineBufferSize - 1 UTF-16 units, so a longer line comes
// in pieces, each read (and counted) as a line of its own. A piece never ends inside a
// surrogate pair: the character goes whole to the next piece.
class LineReader {
 public:
  explicit LineReader(std::wstring_view text) : text_(text) {}
  // False when the text is used up.
  bool next(std::wstring_view& line);

 private:
  std::wstring_view text_;
  size_t pos_ = 0;
};

// The tokens of one line: everything from the first "#" is cut; the rest is cut at TABs (a
// run of TABs is one separator); a token ending with a backslash is joined with the next
// (see the .cc for the character put in its place); the first token loses leading blanks and
// TABs, the last trailing blanks, TABs, CR and LF; empty tokens are dropped.
std::vector<std::wstring> tokenizeLine(std::wstring_view line);

// Whether `name` holds a character that table, field and macro names may not hold.
bool hasInvalidNameCharacter(std::wstring_view name);

}  // namespace catalogue
