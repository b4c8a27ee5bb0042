// Conversions between UTF-8 byte strings and wide strings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace base {

// Decodes UTF-8. Invalid sequences become U+FFFD; returns false iff any were found.
bool utf8ToWide(std::string_view in, std::wstring& out);
std::wstring fromUtf8(std::string_view in);

// Encodes to UTF-8. A lone surrogate (possible where wchar_t is 16 bits) becomes U+FFFD.
std::string toUtf8(std::wstring_view in);

// Appends the UTF-8 encoding of `cp` to `out`.
void appendUtf8(char32_t cp, std::string& out);
// Appends `cp` to wide text (as a surrogate pair where wchar_t is 16 bits).
void appendWide(char32_t cp, std::wstring& out);

// Lengths in UTF-16 code units, the unit in which the class file and the command line limit
// text on every platform: a character beyond the Basic Multilingual Plane counts two, whether
// wchar_t holds it whole or as a surrogate pair.
size_t utf16Length(std::wstring_view text);
// The number of wide characters at the start of `text` that take at most `max_units` UTF-16
// code units. A character is never split: a surrogate pair that would cross the limit is left
// out whole.
size_t utf16Prefix(std::wstring_view text, size_t max_units);

}  // namespace base

namespace base {
// Returns true iff `in` is well-formed UTF-8 (no overlong forms, no surrogates).
bool isValidUtf8(std::string_view in);
}  // namespace base
