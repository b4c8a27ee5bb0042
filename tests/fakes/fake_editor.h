// The command line of FakeHost: prompts answered from a script, everything shown kept in a
// transcript that reads like a CAD command line.
//
// Left out: typed selection options (each select() takes one scripted selection whole),
// the previous selection, and object snaps or picks for points (points are typed "x,y").
#pragma once

#include <deque>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "fakes/fake_database.h"
#include "host/editor.h"

namespace fakes {

// One scripted answer to a prompt: a line of text ended with Enter, or an Escape (cancel)
// or an answer the host refuses (error).
struct Answer {
  Answer(std::wstring line) : text(std::move(line)) {}  // NOLINT: implicit by design
  Answer(const wchar_t* line) : text(line) {}           // NOLINT: implicit by design
  static Answer cancel() { return Answer(host::InputStatus::kCancel); }

  host::InputStatus status = host::InputStatus::kNormal;
  std::wstring text;

 private:
  explicit Answer(host::InputStatus s) : status(s) {}
};

// One scripted answer to select(): the objects picked, or a cancel.
struct Selection {
  Selection(std::initializer_list<host::ObjectId> ids) : ids(ids) {}
  Selection(std::vector<host::ObjectId> picked) : ids(std::move(picked)) {}  // NOLINT
  static Selection cancel() {
    Selection out{};
    out.status = host::InputStatus::kCancel;
    return out;
  }

  host::InputStatus status = host::InputStatus::kNormal;
  std::vector<host::ObjectId> ids;
};

class FakeEditor : public host::Editor {
 public:
  // Writes to `transcript`; both arguments must outlive the editor.
  FakeEditor(host::Database& database, std::wstring& transcript)
      : database_(database), transcript_(transcript) {}

  // Appends answers to the script. When the script runs out, every prompt is cancelled.
  void answers(std::vector<Answer> more) {
    answers_.insert(answers_.end(), more.begin(), more.end());
  }
  void selections(std::vector<Selection> more) {
    selections_.insert(selections_.end(), more.begin(), more.end());
  }
  // How often postCancel was called.
  int cancelsPosted() const { return cancels_posted_; }
  // Whether a prompt was cancelled or a cancel posted since the last call: how the command
  // running now ends.
  bool takeCancelled() { return std::exchange(cancelled_, false); }

  // Tell the reactors that the host command `name` ended or was cancelled.
  void tellCommandEnded(std::wstring_view name);
  void tellCommandCancelled(std::wstring_view name);

  // Takes the next answer. Without `allow_spaces` a blank ends the answer and the rest of
  // the line answers the next prompt. An answer is echoed after its prompt; a cancel shows
  // "*Cancel*" and an error "*Invalid*".
  host::StringInput getString(bool allow_spaces, std::wstring_view prompt) override;
  // Reads "x,y" or "x,y,z"; an empty answer is kNone; anything else prompts again.
  host::PointInput getPoint(std::wstring_view prompt) override;
  void print(std::wstring_view text) override { transcript_ += text; }
  // The pick-first set, without objects erased since it was set.
  std::vector<host::ObjectId> impliedSelection() override;
  // Takes the next scripted selection as it stands.
  host::SelectionInput select() override;
  void setImpliedSelection(const std::vector<host::ObjectId>& ids) override { pick_first_ = ids; }
  void addReactor(host::EditorReactor* reactor) override { reactors_.push_back(reactor); }
  void removeReactor(host::EditorReactor* reactor) override { std::erase(reactors_, reactor); }
  void postCancel() override {
    ++cancels_posted_;
    cancelled_ = true;
  }

 private:
  void showPrompt(std::wstring_view prompt);
  host::StringInput readAnswer(bool allow_spaces);

  host::Database& database_;
  std::wstring& transcript_;
  std::deque<Answer> answers_;
  std::deque<Selection> selections_;
  std::vector<host::ObjectId> pick_first_;
  std::vector<host::EditorReactor*> reactors_;
  int cancels_posted_ = 0;
  bool cancelled_ = false;
};

}  // namespace fakes
