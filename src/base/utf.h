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

}  // namespace base

namespace base {
// Returns true iff `in` is well-formed UTF-8 (no overlong forms, no surrogates).
bool isValidUtf8(std::string_view in);
}  // namespace base
