// Dialogs as command-line prompts, in the order of the dialog's controls, each with its
// default in "<...>", so that scripts can answer them.
#pragma once

#include "headless/console.h"
#include "host/dialogs.h"

namespace headless {

class HeadlessDialogs : public host::Dialogs {
 public:
  explicit HeadlessDialogs(Console& console) : console_(console) {}

  // "File to open, TITLE: "; a relative path is taken from the working
  // directory; an empty answer or a cancel is Cancel, as the dialog's Cancel button.
  std::optional<std::wstring> openFile(const std::wstring& title,
                                       const std::vector<std::wstring>& extensions,
                                       const std::wstring& initial) override;
  std::optional<std::wstring> saveFile(const std::wstring& title,
                                       const std::wstring& default_extension) override;
  // One "LABEL [0/1] <state>: " prompt per box; an empty answer keeps the state.
  bool checkBoxes(const std::wstring& title, std::vector<host::CheckBox>& boxes) override;
  // "Select All [0/1] <0>: ", then, unless all, one "ITEM [0/1] <0>: " per item in order.
  std::optional<std::vector<std::wstring>> chooseItems(
      const std::wstring& title, const std::vector<std::wstring>& items) override;
  void textBox(const std::wstring& title, const std::wstring& text) override;
  void messageBox(const std::wstring& caption, const std::wstring& text,
                  host::MessageKind kind) override;

 private:
  // Asks a 0/1 question; nothing on cancel.
  std::optional<bool> askFlag(const std::wstring& label, bool current);

  Console& console_;
};

}  // namespace headless
