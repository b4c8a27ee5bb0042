#include "headless/input_source.h"

#include <utility>

namespace headless {

bool StreamSource::readLine(std::string& line) {
  return static_cast<bool>(std::getline(*stream_, line));
}

void QueueSource::push(std::string_view text) {
  std::lock_guard lock(mutex_);
  if (closed_) return;
  pending_ += text;
  // The reader has a line now, even before it wakes: a waitUntilReaderWaits() must not
  // take it for still waiting.
  if (text.find('\n') != std::string_view::npos) reader_waiting_ = false;
  changed_.notify_all();
}

void QueueSource::close() {
  std::lock_guard lock(mutex_);
  closed_ = true;
  reader_waiting_ = false;
  changed_.notify_all();
}

bool QueueSource::waitUntilReaderWaits() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return reader_waiting_ || closed_; });
  return reader_waiting_;
}

bool QueueSource::readLine(std::string& line) {
  std::unique_lock lock(mutex_);
  size_t end;
  while ((end = pending_.find('\n')) == std::string::npos && !closed_) {
    reader_waiting_ = true;
    changed_.notify_all();
    changed_.wait(lock);
  }
  reader_waiting_ = false;
  if (end == std::string::npos) {
    if (pending_.empty()) return false;
    line = std::exchange(pending_, {});
    return true;
  }
  line = pending_.substr(0, end);
  pending_.erase(0, end + 1);
  return true;
}

}  // namespace headless
