#include "objdata/value_template.h"

#include <cwchar>

namespace objdata {

namespace {

enum class Source { kClass, kFile, kComputer, kUser, kClock };

struct Variable {
  std::wstring_view name;
  Source source;
  const wchar_t* format = nullptr;  // for kClock
};

constexpr Variable kVariables[] = {
    {L"$(obj_name)", Source::kClass},         {L"$(file_name)", Source::kFile},
    {L"$(computer_name)", Source::kComputer}, {L"$(user_name)", Source::kUser},
    {L"$(day)", Source::kClock, L"%d"},       {L"$(month)", Source::kClock, L"%m"},
    {L"$(year)", Source::kClock, L"%Y"},      {L"$(hour)", Source::kClock, L"%H"},
    {L"$(minute)", Source::kClock, L"%M"},    {L"$(second)", Source::kClock, L"%S"},
};

std::wstring orUnknown(std::wstring name) { return name.empty() ? L"unknown" : name; }

std::wstring valueOf(const Variable& variable, std::wstring_view class_name,
                     const TemplateEnvironment& environment) {
  switch (variable.source) {
    case Source::kClass:
      return std::wstring(class_name);
    case Source::kFile:
      return environment.file_name;
    case Source::kComputer:
      return environment.computer_name;
    case Source::kUser:
      return environment.user_name;
    case Source::kClock: {
      std::tm now = environment.clock();
      wchar_t out[16] = {};
      size_t length = std::wcsftime(out, std::size(out), variable.format, &now);
      return std::wstring(out, length);
    }
  }
  return {};
}

// Replaces every occurrence of `name` in `text`; false when there was none.
bool replaceAll(std::wstring& text, std::wstring_view name, const std::wstring& value) {
  size_t at = text.find(name);
  if (at == std::wstring::npos) return false;
  std::wstring out;
  size_t from = 0;
  for (; at != std::wstring::npos; at = text.find(name, from)) {
    out.append(text, from, at - from);
    out += value;
    from = at + name.size();
  }
  out.append(text, from);
  text = std::move(out);
  return true;
}

// Local time now, cached for the second it stands for: converting to local time reads the
// time zone each call, and a command filling many records asks many times a second. Each
// command run has its own clock, so runs on other threads share nothing.
class LocalClock {
 public:
  std::tm operator()() {
    std::time_t now = std::time(nullptr);
    if (now != cached_at_) {
      localtime_r(&now, &cached_);
      cached_at_ = now;
    }
    return cached_;
  }

 private:
  std::time_t cached_at_ = -1;
  std::tm cached_{};
};

}  // namespace

TemplateEnvironment templateEnvironment(host::Host& host) {
  return {host.document().fileName(), orUnknown(host.computerName()), orUnknown(host.userName()),
          LocalClock()};
}

std::wstring expandTemplates(std::wstring text, std::wstring_view class_name,
                             const TemplateEnvironment& environment) {
  // A replacement that names itself ("$(obj_name)" as a class name) would never settle.
  constexpr int kMaxPasses = 32;
  for (int pass = 0; pass < kMaxPasses && text.find(L"$(") != std::wstring::npos; ++pass) {
    bool replaced = false;
    for (const Variable& variable : kVariables) {
      if (text.find(variable.name) == std::wstring::npos) continue;
      replaced |= replaceAll(text, variable.name, valueOf(variable, class_name, environment));
    }
    if (!replaced) break;
  }
  return text;
}

}  // namespace objdata
