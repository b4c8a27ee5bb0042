#include "headless/console.h"

#include "base/utf.h"

namespace headless {

void Console::print(std::wstring_view text) {
  out_ << base::toUtf8(text);
  out_.flush();
}

void Console::prompt(std::wstring_view text) {
  if (!quiet_) print(text);
}

void Console::error(std::wstring_view text) {
  out_.flush();
  err_ << base::toUtf8(text);
  err_.flush();
}

host::StringInput Console::readAnswer(bool allow_spaces, size_t max_length) {
  host::StringInput result;
  std::wstring text;
  for (;;) {
    int c = input_.get();
    if (c == InputStream::kEnd || c == InputStream::kEscape) {
      prompt(L"*Cancel*\n");
      result.status = host::InputStatus::kCancel;
      return result;
    }
    if (c == L'\n' || (!allow_spaces && c == L' ')) break;
    text.push_back(static_cast<wchar_t>(c));
  }
  if (echo_) prompt(text + L"\n");
  if (base::utf16Length(text) > max_length) {
    error(L"The answer is longer than " + std::to_wstring(max_length) + L" characters.\n");
    result.status = host::InputStatus::kError;
    return result;
  }
  result.status = host::InputStatus::kNormal;
  result.text = std::move(text);
  return result;
}

}  // namespace headless
