#include "catalogue/line_reader.h"

#include "base/utf.h"

namespace catalogue {

std::wstring decodeClassFile(std::string_view utf8) {
  if (utf8.starts_with("\xEF\xBB\xBF")) utf8.remove_prefix(3);
  std::wstring wide;
  base::utf8ToWide(utf8, wide);
  std::wstring out;
  out.reserve(wide.size());
  for (size_t i = 0; i < wide.size(); ++i) {
    if (wide[i] == L'\r' && i + 1 < wide.size() && wide[i + 1] == L'\n') continue;
    out.push_back(wide[i]);
  }
  return out;
}

bool LineReader::next(std::wstring_view& line) {
  if (pos_ >= text_.size()) return false;
  size_t end = text_.find(L'\n', pos_);
  end = end == std::wstring_view::npos ? text_.size() : end + 1;
  line = text_.substr(pos_, end - pos_);
  // The buffer holds UTF-16 units whatever wchar_t is here.
  line = line.substr(0, base::utf16Prefix(line, kLineBufferSize - 1));
  pos_ += line.size();
  return true;
}

std::vector<std::wstring> tokenizeLine(std::wstring_view line) {
  line = line.substr(0, line.find(L'#'));
  std::vector<std::wstring> tokens;
  size_t start = 0;
  while (start < line.size()) {
    size_t tab = line.find(L'\t', start);
    if (tab == std::wstring_view::npos) tab = line.size();
    if (tab > start) tokens.emplace_back(line.substr(start, tab - start));
    start = tab + 1;
  }

  // The backslash ending a token is replaced by the character after the next backslash of
  // the line from `search` on, normally the TAB that follows it; backslashes elsewhere on
  // the line (in paths) are counted too, as files written for the original reader expect.
  size_t search = 0;
  for (size_t i = 0; i + 1 < tokens.size();) {
    if (tokens[i].empty() || tokens[i].back() != L'\\') {
      ++i;
      continue;
    }
    size_t at = line.find(L'\\', search);
    wchar_t used = L'\t';
    if (at != std::wstring_view::npos && at + 1 < line.size()) {
      used = line[at + 1];
      search = at + 2;
    }
    tokens[i].back() = used;
    tokens[i] += tokens[i + 1];
    tokens.erase(tokens.begin() + static_cast<std::ptrdiff_t>(i) + 1);
  }

  if (!tokens.empty()) {
    std::wstring& first = tokens.front();
    first.erase(0, std::min(first.find_first_not_of(L" \t"), first.size()));
    std::wstring& last = tokens.back();
    size_t keep = last.find_last_not_of(L" \t\r\n");
    last.erase(keep == std::wstring::npos ? 0 : keep + 1);
  }
  std::erase_if(tokens, [](const std::wstring& token) { return token.empty(); });
  return tokens;
}

bool hasInvalidNameCharacter(std::wstring_view name) {
  return name.find_first_of(L"`~!@#$%^&*()=+[]{};:'\"\\|,<.>/? \t") != std::wstring_view::npos;
}

}  // namespace catalogue
