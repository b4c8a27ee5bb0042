// The headless command line's input: a sequence of sources read one after another, with
// queued command text put in front of whatever is left.
#pragma once

#include <deque>
#include <istream>
#include <memory>
#include <string>

#include "headless/input_source.h"

namespace headless {

class InputStream {
 public:
  static constexpr int kEnd = -1;
  static constexpr wchar_t kEscape = 0x1B;

  // Reads `source` after every source added before it. UTF-8; each line, the last one
  // included, ends with a newline. A source that blocks makes get() and peek() block.
  void addSource(std::shared_ptr<InputSource> source);
  void addSource(std::unique_ptr<std::istream> source);
  void addText(const std::string& utf8);
  // Puts `text` before the rest of the input, as if typed next.
  void pushFront(const std::wstring& text);

  // The next character, or kEnd when every source has ended.
  int get();
  // The next character without taking it.
  int peek();

 private:
  bool fill();

  std::wstring buffer_;
  size_t pos_ = 0;
  std::deque<std::shared_ptr<InputSource>> sources_;
};

}  // namespace headless
