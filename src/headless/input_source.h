// Where the headless command line's lines come from: a script that ends, or a feed that
// waits for more (a server passing on lines as they arrive).
#pragma once

#include <condition_variable>
#include <istream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace headless {

class InputSource {
 public:
  InputSource() = default;
  InputSource(const InputSource&) = delete;
  InputSource& operator=(const InputSource&) = delete;
  virtual ~InputSource() = default;

  // Sets `line` to the next line, UTF-8, without its line end, and returns true; returns
  // false once the source has ended (`line` is then unspecified). May block until a line
  // comes or the source ends. Called from one thread at a time.
  virtual bool readLine(std::string& line) = 0;
};

// The lines of a stream (a script file, a text, standard input); ends with the stream.
class StreamSource : public InputSource {
 public:
  explicit StreamSource(std::unique_ptr<std::istream> stream) : stream_(std::move(stream)) {}
  bool readLine(std::string& line) override;

 private:
  std::unique_ptr<std::istream> stream_;
};

// Text fed from other threads, in pieces of any size; a reader waits for a whole line until
// the source is closed. Every method may be called from any thread.
class QueueSource : public InputSource {
 public:
  // Appends `text` to what is still to be read. Ignored after close().
  void push(std::string_view text);
  // Ends the source: what is left is still read, a last line without a line end included;
  // then readLine returns false.
  void close();
  // Blocks until a reader is waiting for a line that has not been pushed yet, or the
  // source is closed. Returns true iff a reader is waiting.
  bool waitUntilReaderWaits();

  bool readLine(std::string& line) override;

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::string pending_;
  bool closed_ = false;
  bool reader_waiting_ = false;
};

}  // namespace headless
