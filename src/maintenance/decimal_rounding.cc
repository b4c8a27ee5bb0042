#include "maintenance/decimal_rounding.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace maintenance {

namespace {

// Digits beyond the places asked for that settle almost every value; only a value whose
// extra digits look like a half (5 then zeros, or 4 then nines) needs its exact expansion.
constexpr int kGuardDigits = 20;
// Enough fraction digits to write any double exactly (its least bit is 2^-1074).
constexpr int kExactDigits = 1100;

// The value written with `digits` fraction digits, rounded by to_chars (to nearest, ties to
// even: exact when `digits` is kExactDigits).
std::string fixed(double value, int digits) {
  std::string text(400 + static_cast<size_t>(digits), '\0');
  auto result = std::to_chars(text.data(), text.data() + text.size(), value,
                              std::chars_format::fixed, digits);
  text.resize(static_cast<size_t>(result.ptr - text.data()));
  return text;
}

// Whether the digits after the cut, in `text` from `cut`, are a half or more: true for
// above a half; for an exact half, true too (away from zero). `exact` says whether the
// digits are the whole expansion; otherwise nothing near a half is decided (nullopt).
enum class Tail { kBelowHalf, kHalfOrMore, kUnsure };
Tail tailOf(const std::string& text, size_t cut, bool exact) {
  if (cut >= text.size()) return Tail::kBelowHalf;
  char first = text[cut];
  bool rest_zero = std::all_of(text.begin() + static_cast<std::ptrdiff_t>(cut) + 1, text.end(),
                               [](char c) { return c == '0'; });
  bool rest_nine = std::all_of(text.begin() + static_cast<std::ptrdiff_t>(cut) + 1, text.end(),
                               [](char c) { return c == '9'; });
  if (!exact && ((first == '5' && rest_zero) || (first == '4' && rest_nine))) return Tail::kUnsure;
  return first >= '5' ? Tail::kHalfOrMore : Tail::kBelowHalf;
}

// Adds one unit in the last place of the digits of `text` before `cut` (a "-" and a "." are
// passed over), carrying into a new leading digit where needed.
std::string roundedUp(std::string text, size_t cut) {
  text.resize(cut);
  size_t i = text.size();
  while (i > 0) {
    --i;
    char& c = text[i];
    if (c == '.' || c == '-') continue;
    if (c != '9') {
      ++c;
      return text;
    }
    c = '0';
  }
  text.insert(text[0] == '-' ? 1 : 0, 1, '1');
  return text;
}

}  // namespace

double roundToPlaces(double value, int places) {
  if (!std::isfinite(value) || places < 0) return value;
  places = std::min(places, kExactDigits);
  std::string text = fixed(value, places + kGuardDigits);
  size_t cut = text.find('.') + 1 + static_cast<size_t>(places);
  Tail tail = tailOf(text, cut, false);
  if (tail == Tail::kUnsure) {
    text = fixed(value, kExactDigits);
    cut = text.find('.') + 1 + static_cast<size_t>(places);
    tail = tailOf(text, cut, true);
  }
  text = tail == Tail::kHalfOrMore ? roundedUp(std::move(text), cut) : text.substr(0, cut);
  double rounded = 0;
  std::from_chars(text.data(), text.data() + text.size(), rounded);
  return rounded;
}

int decimalPlaces(std::span<const std::wstring> texts) {
  size_t places = 0;
  for (const std::wstring& text : texts) {
    size_t dot = text.find(L'.');
    if (dot != std::wstring::npos) places = std::max(places, text.size() - dot - 1);
  }
  return static_cast<int>(places);
}

}  // namespace maintenance
