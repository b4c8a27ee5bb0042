// The command line and the selection: prompts, printing, the pick-first set.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/types.h"

namespace host {

// Told of the end of every host command while registered (see Editor::addReactor).
//
// Each host command that runs is announced exactly once, by one of the three calls, named in
// upper case without the "_" and "." prefixes: commandCancelled when the user cancelled it
// (Escape or the end of input at one of its prompts, or Editor::postCancel while it ran),
// commandFailed when it could not do what it was asked (an unknown option, an error),
// commandEnded otherwise. The call comes after every object the command appended or erased
// has been announced to the database reactors. Text that names no command is announced to
// no one. A reactor may add or remove reactors while it is told, itself included.
class EditorReactor {
 public:
  virtual ~EditorReactor() = default;
  virtual void commandEnded(std::wstring_view /*name*/) {}
  virtual void commandCancelled(std::wstring_view /*name*/) {}
  virtual void commandFailed(std::wstring_view /*name*/) {}
};

struct StringInput {
  InputStatus status = InputStatus::kCancel;
  std::wstring text;  // the answer when status is kNormal
};

struct PointInput {
  InputStatus status = InputStatus::kCancel;
  Point3 point;
};

struct SelectionInput {
  InputStatus status = InputStatus::kCancel;
  std::vector<ObjectId> ids;
};

class Editor {
 public:
  // The longest answer getString accepts, in UTF-16 code units; a longer one is an error
  // result.
  static constexpr size_t kMaxInput = 132;

  Editor() = default;
  Editor(const Editor&) = delete;
  Editor& operator=(const Editor&) = delete;
  virtual ~Editor() = default;

  // Shows `prompt` and reads an answer. With `allow_spaces` the answer is the rest of the
  // line; otherwise a blank ends it. kCancel on Escape or end of input; kError when the
  // answer is longer than kMaxInput UTF-16 code units.
  virtual StringInput getString(bool allow_spaces, std::wstring_view prompt) = 0;
  virtual PointInput getPoint(std::wstring_view prompt) = 0;
  // Prints text as it stands (callers end lines with "\n").
  virtual void print(std::wstring_view text) = 0;

  // The pick-first set: what was selected before the command started.
  virtual std::vector<ObjectId> impliedSelection() = 0;
  // Asks the user to select objects; kCancel when the user cancels.
  virtual SelectionInput select() = 0;
  // Replaces the pick-first set (empty clears it).
  virtual void setImpliedSelection(const std::vector<ObjectId>& ids) = 0;

  virtual void addReactor(EditorReactor* reactor) = 0;
  virtual void removeReactor(EditorReactor* reactor) = 0;
  // Cancels the host command in progress, as Escape would.
  virtual void postCancel() = 0;
};

}  // namespace host
