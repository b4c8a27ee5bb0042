// The editor of the headless host: prompts on the console, selection by typed answers.
#pragma once

#include <vector>

#include "headless/console.h"
#include "headless/dxf_database.h"
#include "headless/id_sequence.h"
#include "host/editor.h"

namespace headless {

class HeadlessEditor : public host::Editor {
 public:
  HeadlessEditor(Console& console, DxfDatabase& database)
      : console_(console), database_(database) {}

  host::StringInput getString(bool allow_spaces, std::wstring_view prompt) override;
  host::PointInput getPoint(std::wstring_view prompt) override;
  void print(std::wstring_view text) override { console_.print(text); }
  std::vector<host::ObjectId> impliedSelection() override;
  // "Select objects: " until an empty answer. Answers: an entity handle (hex), ALL (every
  // model-space entity), L (the last one created), P (the previous selection).
  host::SelectionInput select() override;
  void setImpliedSelection(const std::vector<host::ObjectId>& ids) override;
  void addReactor(host::EditorReactor* reactor) override;
  void removeReactor(host::EditorReactor* reactor) override;
  void postCancel() override { cancelled_ = true; }

  // For the host's command loop.
  const std::vector<host::EditorReactor*>& reactors() const { return reactors_; }
  // Whether a prompt was cancelled (Escape, end of input) or a cancel posted since the last
  // call: how the command running now ends.
  bool takeCancelled() { return std::exchange(cancelled_, false); }

 private:
  Console& console_;
  DxfDatabase& database_;
  std::vector<host::ObjectId> pick_first_;
  IdSequence previous_;
  std::vector<host::EditorReactor*> reactors_;
  bool cancelled_ = false;
};

}  // namespace headless
