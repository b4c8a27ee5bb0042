// An in-memory host for tests: a drawing built in a few lines, scripted answers to prompts,
// selections and dialogs, and a record of what the code under test showed and asked.
//
// Left out: DXF and files (see FakeDatabase), the host's own commands (only registered
// commands run, and only through runCommand), running queued command text (it is only
// recorded), dialog windows (each dialog takes its answer whole from a script), and string
// resources (pushResourceHandle only counts).
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "fakes/fake_database.h"
#include "fakes/fake_editor.h"
#include "host/host.h"

namespace fakes {

using CheckBoxAnswer = std::optional<std::vector<bool>>;       // nothing: Cancel
using ItemsAnswer = std::optional<std::vector<std::wstring>>;  // nothing: Cancel
using FileAnswer = std::optional<std::wstring>;                // nothing: Cancel

struct Message {
  std::wstring caption;
  std::wstring text;
  host::MessageKind kind = host::MessageKind::kInformation;
  bool operator==(const Message&) const = default;
};

// Dialogs answered from scripts, one per kind of dialog; a script that has run out answers
// Cancel. Each dialog shown is written to the transcript.
class FakeDialogs : public host::Dialogs {
 public:
  explicit FakeDialogs(std::wstring& transcript) : transcript_(transcript) {}

  void fileAnswers(std::vector<FileAnswer> more);
  void checkBoxAnswers(std::vector<CheckBoxAnswer> more);
  void itemAnswers(std::vector<ItemsAnswer> more);
  // Every message box shown, in order.
  const std::vector<Message>& messages() const { return messages_; }

  std::optional<std::wstring> openFile(const std::wstring& title,
                                       const std::vector<std::wstring>& extensions,
                                       const std::wstring& initial) override;
  // A path without an extension gets `default_extension`.
  std::optional<std::wstring> saveFile(const std::wstring& title,
                                       const std::wstring& default_extension) override;
  // The answer's states go to the boxes in order; boxes beyond it keep theirs.
  bool checkBoxes(const std::wstring& title, std::vector<host::CheckBox>& boxes) override;
  // The offered items the answer names, in sorted order; others in the answer are dropped,
  // as a list can only return what it shows.
  std::optional<std::vector<std::wstring>> chooseItems(
      const std::wstring& title, const std::vector<std::wstring>& items) override;
  void textBox(const std::wstring& title, const std::wstring& text) override;
  void messageBox(const std::wstring& caption, const std::wstring& text,
                  host::MessageKind kind) override;

 private:
  std::optional<std::wstring> takeFile(const std::wstring& title);

  std::wstring& transcript_;
  std::deque<FileAnswer> files_;
  std::deque<CheckBoxAnswer> check_boxes_;
  std::deque<ItemsAnswer> items_;
  std::vector<Message> messages_;
};

class FakeDocument : public host::Document {
 public:
  explicit FakeDocument(host::Database& database) : database_(database) {}

  void setFileName(std::wstring name) { file_name_ = std::move(name); }
  // Every text passed to sendStringToExecute, in order.
  const std::vector<std::wstring>& queuedStrings() const { return queued_; }
  // Locks taken and not yet released; negative after an unmatched unlock.
  int lockDepth() const { return lock_depth_; }

  host::Database& database() override { return database_; }
  std::wstring fileName() override { return file_name_; }
  void sendStringToExecute(std::wstring_view text) override { queued_.emplace_back(text); }
  void lock() override { ++lock_depth_; }
  void unlock() override { --lock_depth_; }

 private:
  host::Database& database_;
  std::wstring file_name_;
  std::vector<std::wstring> queued_;
  int lock_depth_ = 0;
};

class FakeCommandStack : public host::CommandStack {
 public:
  // The function of the command `name`, which may carry the prefixes "_" and "."; names
  // compare case-insensitively. Nothing for an unknown command.
  std::optional<host::CommandFunction> function(std::wstring_view name) const;
  // The flags `name` was registered with; nothing for an unknown command.
  std::optional<int> flags(std::wstring_view name) const;

  // Names compare case-insensitively and are kept as registered.
  base::Status addCommand(std::wstring_view group, std::wstring_view name, int flags,
                          host::CommandFunction function) override;
  void removeGroup(std::wstring_view group) override;
  std::vector<std::wstring> commandsOf(std::wstring_view group) const override;

 private:
  struct Command {
    std::wstring group;
    std::wstring name;
    int flags = 0;
    host::CommandFunction function;
  };
  const Command* find(std::wstring_view name) const;

  std::vector<Command> commands_;
};

class FakeHost : public host::Host {
 public:
  FakeHost() = default;

  // --- The parts, for what the shortcuts below leave out.
  FakeDatabase& fakeDatabase() { return database_; }
  FakeEditor& fakeEditor() { return editor_; }
  FakeDialogs& fakeDialogs() { return dialogs_; }
  FakeCommandStack& fakeCommands() { return commands_; }

  // --- Building the drawing (see FakeDatabase).
  host::ObjectId addEntity(std::wstring_view entity_class, const Properties& properties = {}) {
    return database_.addEntity(entity_class, properties);
  }
  void addLayer(std::wstring_view name, host::LayerState state = {}) {
    database_.addLayer(name, state);
  }
  void addSymbol(host::SymbolTable table, std::wstring_view name) {
    database_.addSymbol(table, name);
  }
  // Defines the variable with the type of `value` (Database::setVar keeps the type).
  void setVar(std::string_view name, host::SysVar value) { database_.defineVar(name, value); }
  void setFileName(std::wstring name) { document_.setFileName(std::move(name)); }
  void setMachine(std::wstring computer, std::wstring user) {
    computer_name_ = std::move(computer);
    user_name_ = std::move(user);
  }

  // --- Scripting the user.
  void answers(std::vector<Answer> more) { editor_.answers(std::move(more)); }
  void selections(std::vector<Selection> more) { editor_.selections(std::move(more)); }
  void fileAnswers(std::vector<FileAnswer> more) { dialogs_.fileAnswers(std::move(more)); }
  void checkBoxAnswers(std::vector<CheckBoxAnswer> more) {
    dialogs_.checkBoxAnswers(std::move(more));
  }
  void itemAnswers(std::vector<ItemsAnswer> more) { dialogs_.itemAnswers(std::move(more)); }
  // Runs the registered command `name` as if typed, then tells the editor reactors that
  // it was cancelled (a prompt cancelled or a cancel posted) or else ended, naming it in
  // upper case without prefixes. kNotFound for an unknown command.
  base::Status runCommand(std::wstring_view name);

  // --- Reading back.
  // Everything printed, prompted, answered and shown in dialogs, in order.
  const std::wstring& transcript() const { return transcript_; }
  const std::vector<std::wstring>& queuedStrings() const { return document_.queuedStrings(); }
  int lockDepth() const { return document_.lockDepth(); }
  // Resource handles pushed and not yet popped.
  int resourceDepth() const { return resource_depth_; }

  // host::Host
  host::Document& document() override { return document_; }
  host::Editor& editor() override { return editor_; }
  host::Dialogs& dialogs() override { return dialogs_; }
  host::CommandStack& commands() override { return commands_; }
  void pushResourceHandle() override { ++resource_depth_; }
  void popResourceHandle() override { --resource_depth_; }
  std::wstring computerName() override { return computer_name_; }
  std::wstring userName() override { return user_name_; }

 private:
  std::wstring transcript_;
  FakeDatabase database_;
  FakeEditor editor_{database_, transcript_};
  FakeDialogs dialogs_{transcript_};
  FakeDocument document_{database_};
  FakeCommandStack commands_;
  int resource_depth_ = 0;
  std::wstring computer_name_ = L"WORKSTATION";
  std::wstring user_name_ = L"draughtsman";
};

}  // namespace fakes
