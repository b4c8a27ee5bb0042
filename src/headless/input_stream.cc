#include "headless/input_stream.h"

#include <sstream>

#include "base/utf.h"

namespace headless {

void InputStream::addSource(std::shared_ptr<InputSource> source) {
  sources_.push_back(std::move(source));
}

void InputStream::addSource(std::unique_ptr<std::istream> source) {
  addSource(std::make_shared<StreamSource>(std::move(source)));
}

void InputStream::addText(const std::string& utf8) {
  addSource(std::make_unique<std::istringstream>(utf8));
}

void InputStream::pushFront(const std::wstring& text) {
  buffer_ = text + buffer_.substr(pos_);
  pos_ = 0;
}

bool InputStream::fill() {
  // Lines are pulled one at a time so that an interactive user is read only when needed.
  while (pos_ >= buffer_.size()) {
    if (sources_.empty()) return false;
    std::string line;
    if (!sources_.front()->readLine(line)) {
      sources_.pop_front();
      continue;
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    buffer_ = base::fromUtf8(line) + L"\n";
    pos_ = 0;
  }
  return true;
}

int InputStream::get() {
  if (!fill()) return kEnd;
  return buffer_[pos_++];
}

int InputStream::peek() {
  if (!fill()) return kEnd;
  return buffer_[pos_];
}

}  // namespace headless
