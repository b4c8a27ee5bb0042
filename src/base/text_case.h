// Lower-case keys for case-insensitive names. Names in class files are often not English
// ("POTRUBÍ", "ДОРОГА"), and the C library lower-cases only ASCII unless a process-wide
// locale is set, so the mapping is the program's own: Latin (with the Latin-1, Extended-A,
// Extended-B and Extended Additional blocks), Greek, Cyrillic, Armenian, Georgian and the
// full-width forms. Kept header-only so that every core library can use it without linking
// the catalogue.
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace base {

namespace text_case_internal {

// Blocks where upper and lower case alternate: even code upper, odd code lower.
constexpr bool evenUpper(char32_t c, char32_t first, char32_t last) {
  return c >= first && c <= last && (c - first) % 2 == 0;
}

// Latin Extended-B letters whose lower case lies elsewhere.
inline constexpr std::pair<char32_t, char32_t> kIrregularLatin[] = {
    {0x01C4, 0x01C6}, {0x01C5, 0x01C6}, {0x01C7, 0x01C9}, {0x01C8, 0x01C9}, {0x01CA, 0x01CC},
    {0x01CB, 0x01CC}, {0x01F1, 0x01F3}, {0x01F2, 0x01F3}, {0x01F4, 0x01F5}, {0x0181, 0x0253},
    {0x0186, 0x0254}, {0x0189, 0x0256}, {0x018A, 0x0257}, {0x018F, 0x0259}, {0x0190, 0x025B},
    {0x0193, 0x0260}, {0x0194, 0x0263}, {0x0196, 0x0269}, {0x0197, 0x0268}, {0x019C, 0x026F},
    {0x019D, 0x0272}, {0x01A9, 0x0283}, {0x01AE, 0x0288}, {0x01B1, 0x028A}, {0x01B2, 0x028B},
    {0x01B7, 0x0292}, {0x0182, 0x0183}, {0x0184, 0x0185}, {0x0187, 0x0188}, {0x018B, 0x018C},
    {0x0191, 0x0192}, {0x0198, 0x0199}, {0x01A0, 0x01A1}, {0x01A2, 0x01A3}, {0x01A4, 0x01A5},
    {0x01A7, 0x01A8}, {0x01AC, 0x01AD}, {0x01AF, 0x01B0}, {0x01B3, 0x01B4}, {0x01B5, 0x01B6},
    {0x01B8, 0x01B9}, {0x01BC, 0x01BD}, {0x023B, 0x023C}, {0x0241, 0x0242},
};

constexpr char32_t lowerNonAscii(char32_t c) {
  if (c < 0x00C0) return c;
  if (c <= 0x00DE) return c == 0x00D7 ? c : c + 32;
  if (c < 0x0100) return c;
  if (c <= 0x017F) {
    if (c == 0x0130) return U'i';
    if (c == 0x0178) return 0x00FF;
    if ((c >= 0x0139 && c <= 0x0148) || (c >= 0x0179 && c <= 0x017E)) {
      return c % 2 == 1 ? c + 1 : c;
    }
    if (evenUpper(c, 0x0100, 0x012F) || evenUpper(c, 0x0132, 0x0137) ||
        evenUpper(c, 0x014A, 0x0177)) {
      return c + 1;
    }
    return c;
  }
  if (c <= 0x024F) {
    if (c >= 0x01CD && c <= 0x01DC) return c % 2 == 1 ? c + 1 : c;
    if (evenUpper(c, 0x01DE, 0x01EF) || evenUpper(c, 0x01F8, 0x021F) ||
        evenUpper(c, 0x0222, 0x0233) || evenUpper(c, 0x0246, 0x024F)) {
      return c + 1;
    }
    for (const auto& [upper, lower] : kIrregularLatin) {
      if (c == upper) return lower;
    }
    return c;
  }
  if (c >= 0x0370 && c <= 0x03FF) {
    if (c >= 0x0391 && c <= 0x03AB && c != 0x03A2) return c + 32;
    switch (c) {
      case 0x0386:
        return 0x03AC;
      case 0x0388:
      case 0x0389:
      case 0x038A:
        return c + 37;
      case 0x038C:
        return 0x03CC;
      case 0x038E:
      case 0x038F:
        return c + 63;
      default:
        break;
    }
    if (evenUpper(c, 0x03D8, 0x03EF)) return c + 1;
    return c;
  }
  if (c >= 0x0400 && c <= 0x052F) {
    if (c <= 0x040F) return c + 80;
    if (c <= 0x042F) return c + 32;
    if (c == 0x04C0) return 0x04CF;
    if (c >= 0x04C1 && c <= 0x04CE) return c % 2 == 1 ? c + 1 : c;
    if (evenUpper(c, 0x0460, 0x0481) || evenUpper(c, 0x048A, 0x04BF) ||
        evenUpper(c, 0x04D0, 0x052F)) {
      return c + 1;
    }
    return c;
  }
  if (c >= 0x0531 && c <= 0x0556) return c + 48;
  if (c >= 0x10A0 && c <= 0x10C5) return c + 7264;
  if (c >= 0x1E00 && c <= 0x1EFF) {
    if (c == 0x1E9E) return 0x00DF;
    if (evenUpper(c, 0x1E00, 0x1E95) || evenUpper(c, 0x1EA0, 0x1EFF)) return c + 1;
    return c;
  }
  if (c >= 0xFF21 && c <= 0xFF3A) return c + 32;
  return c;
}

}  // namespace text_case_internal

// Returns the lower-case form of one character; characters without one are returned as
// they are.
constexpr wchar_t lowerChar(wchar_t c) {
  if (c < 0x80) return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c + 32) : c;
  return static_cast<wchar_t>(text_case_internal::lowerNonAscii(static_cast<char32_t>(c)));
}

// Returns `text` lower-cased character by character: the key under which the catalogue
// files a name.
inline std::wstring lowerCase(std::wstring_view text) {
  std::wstring out(text);
  for (wchar_t& c : out) c = lowerChar(c);
  return out;
}

// True when `a` and `b` have the same lower-case form.
inline bool equalsIgnoringCase(std::wstring_view a, std::wstring_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    // Names are mostly compared with themselves, written alike.
    if (a[i] != b[i] && lowerChar(a[i]) != lowerChar(b[i])) return false;
  }
  return true;
}

}  // namespace base
