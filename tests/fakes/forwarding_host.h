// A host that passes every call on to another host, so that a test can derive from it and
// override one call (to inject a failure), and can record which calls code makes.
//
//   class EraseFails : public fakes::ForwardingHost {
//     using ForwardingHost::ForwardingHost;
//     base::Status erase(host::ObjectId) override { return base::Status::io("disk full"); }
//   };
//
// The parts (document, database, editor, dialogs, commands) are all this one object, so
// that every call made through any of them reaches an override.
#pragma once

#include <string>
#include <vector>

#include "host/host.h"

namespace fakes {

class ForwardingHost : public host::Host,
                       public host::Document,
                       public host::Database,
                       public host::Editor,
                       public host::Dialogs,
                       public host::CommandStack {
 public:
  // Forwards to `target`, which must outlive this object. With `trace`, every call of a
  // host method (other than the accessors of the parts) is recorded.
  explicit ForwardingHost(host::Host& target, bool trace = false)
      : target_(target), tracing_(trace) {}

  // The calls made, as "Interface::method" ("Database::erase"), oldest first.
  const std::vector<std::string>& trace() const { return trace_; }
  void clearTrace() { trace_.clear(); }
  host::Host& target() { return target_; }

  // host::Host
  host::Document& document() override { return *this; }
  host::Editor& editor() override { return *this; }
  host::Dialogs& dialogs() override { return *this; }
  host::CommandStack& commands() override { return *this; }
  void pushResourceHandle() override;
  void popResourceHandle() override;
  std::wstring computerName() override;
  std::wstring userName() override;
  std::optional<std::wstring> getEnv(std::wstring_view name) override;
  bool setEnv(std::wstring_view name, std::wstring_view value) override;
  base::Status writeTextFile(const std::wstring& path, std::string_view contents) override;

  // host::Document
  host::Database& database() override { return *this; }
  std::wstring fileName() override;
  void sendStringToExecute(std::wstring_view text) override;
  void lock() override;
  void unlock() override;

  // host::Database
  host::ObjectId namedObjectsDictionary() override;
  base::Result<host::ObjectId> dictionaryGet(host::ObjectId dict, std::wstring_view key) override;
  base::Result<std::vector<std::pair<std::wstring, host::ObjectId>>> dictionaryEntries(
      host::ObjectId dict) override;
  base::Status dictionaryRemove(host::ObjectId dict, std::wstring_view key) override;
  base::Result<host::ObjectId> createDictionary(host::ObjectId owner,
                                                std::wstring_view key) override;
  base::Result<host::ObjectId> createXrecord(host::ObjectId owner, std::wstring_view key) override;
  base::Result<host::ObjectId> createXrecordWith(host::ObjectId owner, std::wstring_view key,
                                                 const host::ResBufChain& chain) override;
  base::Result<host::ObjectId> attachXrecord(host::ObjectId object, std::wstring_view key,
                                             const host::ResBufChain& chain) override;
  base::Result<host::ResBufChain> readXrecord(host::ObjectId xrecord) override;
  base::Status readXrecordInto(host::ObjectId xrecord, host::ResBufChain& chain) override;
  base::Status dictionaryEntriesInto(
      host::ObjectId dict, std::vector<std::pair<std::wstring, host::ObjectId>>& entries) override;
  base::Status writeXrecord(host::ObjectId xrecord, const host::ResBufChain& chain) override;
  base::Result<host::ObjectId> extensionDictionary(host::ObjectId object) override;
  base::Result<host::ObjectId> createExtensionDictionary(host::ObjectId object) override;
  base::Result<bool> releaseExtensionDictionary(host::ObjectId object) override;
  base::Status erase(host::ObjectId object) override;
  bool isValid(host::ObjectId id) override;
  std::wstring entityClass(host::ObjectId entity) override;
  bool isEntity(host::ObjectId id) override;
  std::vector<host::ObjectId> modelSpaceEntities() override;
  host::PropertyValue getProperty(host::ObjectId entity, host::EntityProperty property) override;
  base::Status setProperty(host::ObjectId entity, host::EntityProperty property,
                           const host::PropertyValue& value) override;
  base::Status setRelativeDrawOrder(const std::vector<host::ObjectId>& entities) override;
  bool hasSymbol(host::SymbolTable table, std::wstring_view name) override;
  bool hasAttributeDefinitions(std::wstring_view block) override;
  bool isExternalReference(std::wstring_view block) override;
  base::Result<host::LayerState> layerState(std::wstring_view layer) override;
  base::Result<host::SysVar> getVar(std::string_view name) override;
  base::Status setVar(std::string_view name, const host::SysVar& value) override;
  base::Result<host::ResourceNames> importResources(const std::wstring& path, uint32_t mask,
                                                    const host::ResourceNames& needed) override;
  void addReactor(host::DatabaseReactor* reactor) override;
  void removeReactor(host::DatabaseReactor* reactor) override;

  // host::Editor
  host::StringInput getString(bool allow_spaces, std::wstring_view prompt) override;
  host::PointInput getPoint(std::wstring_view prompt) override;
  void print(std::wstring_view text) override;
  std::vector<host::ObjectId> impliedSelection() override;
  host::SelectionInput select() override;
  void setImpliedSelection(const std::vector<host::ObjectId>& ids) override;
  void addReactor(host::EditorReactor* reactor) override;
  void removeReactor(host::EditorReactor* reactor) override;
  void postCancel() override;

  // host::Dialogs
  std::optional<std::wstring> openFile(const std::wstring& title,
                                       const std::vector<std::wstring>& extensions,
                                       const std::wstring& initial) override;
  std::optional<std::wstring> saveFile(const std::wstring& title,
                                       const std::wstring& default_extension) override;
  bool checkBoxes(const std::wstring& title, std::vector<host::CheckBox>& boxes) override;
  std::optional<std::vector<std::wstring>> chooseItems(
      const std::wstring& title, const std::vector<std::wstring>& items) override;
  void textBox(const std::wstring& title, const std::wstring& text) override;
  void messageBox(const std::wstring& caption, const std::wstring& text,
                  host::MessageKind kind) override;

  // host::CommandStack
  base::Status addCommand(std::wstring_view group, std::wstring_view name, int flags,
                          host::CommandFunction function) override;
  void removeGroup(std::wstring_view group) override;
  std::vector<std::wstring> commandsOf(std::wstring_view group) const override;

 protected:
  // Records `method` when tracing; for overrides that want their calls in the trace.
  void note(const char* method) const;

 private:
  host::Database& targetDatabase() { return target_.document().database(); }

  host::Host& target_;
  bool tracing_;
  mutable std::vector<std::string> trace_;  // commandsOf is const
};

}  // namespace fakes
