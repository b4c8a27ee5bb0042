#include "base/utf.h"

namespace base {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

size_t utf16Units(wchar_t c) {
  if constexpr (sizeof(wchar_t) == 2) {
    return 1;
  } else {
    return static_cast<char32_t>(c) > 0xFFFF ? 2 : 1;
  }
}

}  // namespace

size_t utf16Length(std::wstring_view text) {
  size_t units = 0;
  for (wchar_t c : text) units += utf16Units(c);
  return units;
}

size_t utf16Prefix(std::wstring_view text, size_t max_units) {
  size_t units = 0;
  size_t end = 0;
  while (end < text.size() && units + utf16Units(text[end]) <= max_units) {
    units += utf16Units(text[end++]);
  }
  if constexpr (sizeof(wchar_t) == 2) {
    // The limit fell between the halves of a pair: the pair goes whole to what follows.
    if (end > 0 && end < text.size() && text[end - 1] >= 0xD800 && text[end - 1] <= 0xDBFF &&
        text[end] >= 0xDC00 && text[end] <= 0xDFFF) {
      --end;
    }
  }
  return end;
}

void appendWide(char32_t cp, std::wstring& out) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out.push_back(static_cast<wchar_t>(0xD800 + (cp >> 10)));
      out.push_back(static_cast<wchar_t>(0xDC00 + (cp & 0x3FF)));
      return;
    }
  }
  out.push_back(static_cast<wchar_t>(cp));
}

void appendUtf8(char32_t cp, std::string& out) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

bool utf8ToWide(std::string_view in, std::wstring& out) {
  out.clear();
  out.reserve(in.size());
  bool clean = true;
  size_t i = 0;
  while (i < in.size()) {
    unsigned char c = static_cast<unsigned char>(in[i]);
    if (c < 0x80) {
      out.push_back(static_cast<wchar_t>(c));
      ++i;
      continue;
    }
    int extra = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : -1;
    char32_t cp = extra == 3 ? (c & 0x07) : extra == 2 ? (c & 0x0F) : (c & 0x1F);
    bool ok = extra > 0 && c < 0xF5 && i + static_cast<size_t>(extra) < in.size();
    for (int k = 1; ok && k <= extra; ++k) {
      unsigned char cc = static_cast<unsigned char>(in[i + k]);
      if ((cc & 0xC0) != 0x80) ok = false;
      cp = (cp << 6) | (cc & 0x3F);
    }
    // Overlong forms and surrogates are not UTF-8.
    if (ok && ((extra == 1 && cp < 0x80) || (extra == 2 && cp < 0x800) ||
               (extra == 3 && (cp < 0x10000 || cp > 0x10FFFF)) || (cp >= 0xD800 && cp <= 0xDFFF))) {
      ok = false;
    }
    if (!ok) {
      clean = false;
      out.push_back(static_cast<wchar_t>(kReplacement));
      ++i;
      continue;
    }
    appendWide(cp, out);
    i += extra + 1;
  }
  return clean;
}

std::wstring fromUtf8(std::string_view in) {
  std::wstring out;
  utf8ToWide(in, out);
  return out;
}

std::string toUtf8(std::wstring_view in) {
  std::string out;
  out.reserve(in.size());
  for (size_t i = 0; i < in.size(); ++i) {
    char32_t cp = static_cast<char32_t>(in[i]);
    if constexpr (sizeof(wchar_t) == 2) {
      if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < in.size()) {
        char32_t lo = static_cast<char32_t>(in[i + 1]);
        if (lo >= 0xDC00 && lo <= 0xDFFF) {
          cp = 0x10000 + ((cp - 0xD800) << 10) + (lo - 0xDC00);
          ++i;
        }
      }
    }
    if ((cp >= 0xD800 && cp <= 0xDFFF) || cp > 0x10FFFF) cp = kReplacement;
    appendUtf8(cp, out);
  }
  return out;
}

}  // namespace base

namespace base {

bool isValidUtf8(std::string_view in) {
  size_t i = 0;
  // Most drawing text is ASCII: skip it eight bytes at a time.
  while (i + 8 <= in.size()) {
    uint64_t word;
    __builtin_memcpy(&word, in.data() + i, 8);
    if (word & 0x8080808080808080ull) break;
    i += 8;
  }
  for (; i < in.size(); ++i) {
    if (static_cast<unsigned char>(in[i]) >= 0x80) {
      std::wstring scratch;
      return utf8ToWide(in.substr(i), scratch);
    }
  }
  return true;
}

}  // namespace base
