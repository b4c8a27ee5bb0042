// The headless command line's terminal: prompts and echoed answers on standard output,
// the host's own errors on standard error, answers from an InputStream.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "headless/input_stream.h"
#include "host/editor.h"

namespace headless {

class Console {
 public:
  // With `echo`, answers are written after their prompts so that a transcript of scripted
  // input reads like a CAD command line; a terminal echoes typed answers itself. With
  // `quiet`, prompts and echoes are left out and only messages are printed.
  Console(InputStream& input, std::ostream& out, std::ostream& err, bool echo, bool quiet)
      : input_(input), out_(out), err_(err), echo_(echo && !quiet), quiet_(quiet) {}

  // A message: always printed.
  void print(std::wstring_view text);
  // A prompt: printed unless quiet.
  void prompt(std::wstring_view text);
  void error(std::wstring_view text);

  // Reads one answer: it ends at a newline, or also at a blank unless `allow_spaces`.
  // kCancel at an Escape character or the end of the input; kError when the answer is
  // longer than `max_length` UTF-16 code units (the whole answer is consumed either way).
  host::StringInput readAnswer(bool allow_spaces, size_t max_length);

  InputStream& input() { return input_; }

 private:
  InputStream& input_;
  std::ostream& out_;
  std::ostream& err_;
  bool echo_;
  bool quiet_;
};

}  // namespace headless
