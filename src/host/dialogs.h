// The dialogs that commands show. Each host presents them its own way (windows in a CAD
// application, prompts on a text command line); commands see only the answers.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace host {

// A check box of a dialog: its label and state.
struct CheckBox {
  std::wstring label;
  bool checked = false;
};

enum class MessageKind { kInformation, kWarning, kError };

class Dialogs {
 public:
  Dialogs() = default;
  Dialogs(const Dialogs&) = delete;
  Dialogs& operator=(const Dialogs&) = delete;
  virtual ~Dialogs() = default;

  // Asks for a file to open, offering `initial` (may be empty). `extensions` lists accepted
  // extensions without the dot ("txt"); empty accepts any. Returns the chosen path, or
  // nothing on Cancel.
  virtual std::optional<std::wstring> openFile(const std::wstring& title,
                                               const std::vector<std::wstring>& extensions,
                                               const std::wstring& initial) = 0;
  // Asks for a file to write, offering `default_extension`; nothing on Cancel.
  virtual std::optional<std::wstring> saveFile(const std::wstring& title,
                                               const std::wstring& default_extension) = 0;
  // Shows check boxes in order; on OK updates their states and returns true, on Cancel
  // leaves them and returns false.
  virtual bool checkBoxes(const std::wstring& title, std::vector<CheckBox>& boxes) = 0;
  // A sorted multiple-selection list of `items`, none selected at first. Returns the
  // selected items on OK (possibly none), nothing on Cancel.
  virtual std::optional<std::vector<std::wstring>> chooseItems(
      const std::wstring& title, const std::vector<std::wstring>& items) = 0;
  // Shows a read-only text for the user to read.
  virtual void textBox(const std::wstring& title, const std::wstring& text) = 0;
  virtual void messageBox(const std::wstring& caption, const std::wstring& text,
                          MessageKind kind) = 0;
};

}  // namespace host
