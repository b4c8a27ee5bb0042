#include "fakes/forwarding_host.h"

namespace fakes {

using base::Result;
using base::Status;
using host::ObjectId;

void ForwardingHost::note(const char* method) const {
  if (tracing_) trace_.emplace_back(method);
}

void ForwardingHost::pushResourceHandle() {
  note("Host::pushResourceHandle");
  target_.pushResourceHandle();
}

void ForwardingHost::popResourceHandle() {
  note("Host::popResourceHandle");
  target_.popResourceHandle();
}

std::wstring ForwardingHost::computerName() {
  note("Host::computerName");
  return target_.computerName();
}

std::wstring ForwardingHost::userName() {
  note("Host::userName");
  return target_.userName();
}

std::optional<std::wstring> ForwardingHost::getEnv(std::wstring_view name) {
  note("Host::getEnv");
  return target_.getEnv(name);
}

base::Status ForwardingHost::writeTextFile(const std::wstring& path, std::string_view contents) {
  note("Host::writeTextFile");
  return target_.writeTextFile(path, contents);
}

bool ForwardingHost::setEnv(std::wstring_view name, std::wstring_view value) {
  note("Host::setEnv");
  return target_.setEnv(name, value);
}

Status ForwardingHost::readXrecordInto(ObjectId xrecord, host::ResBufChain& chain) {
  note("Database::readXrecordInto");
  return targetDatabase().readXrecordInto(xrecord, chain);
}

Status ForwardingHost::dictionaryEntriesInto(
    ObjectId dict, std::vector<std::pair<std::wstring, ObjectId>>& entries) {
  note("Database::dictionaryEntriesInto");
  return targetDatabase().dictionaryEntriesInto(dict, entries);
}

bool ForwardingHost::isEntity(ObjectId id) {
  note("Database::isEntity");
  return targetDatabase().isEntity(id);
}

Result<host::ResourceNames> ForwardingHost::importResources(const std::wstring& path, uint32_t mask,
                                                            const host::ResourceNames& needed) {
  note("Database::importResources");
  return targetDatabase().importResources(path, mask, needed);
}

std::wstring ForwardingHost::fileName() {
  note("Document::fileName");
  return target_.document().fileName();
}

void ForwardingHost::sendStringToExecute(std::wstring_view text) {
  note("Document::sendStringToExecute");
  target_.document().sendStringToExecute(text);
}

void ForwardingHost::lock() {
  note("Document::lock");
  target_.document().lock();
}

void ForwardingHost::unlock() {
  note("Document::unlock");
  target_.document().unlock();
}

ObjectId ForwardingHost::namedObjectsDictionary() {
  note("Database::namedObjectsDictionary");
  return targetDatabase().namedObjectsDictionary();
}

Result<ObjectId> ForwardingHost::dictionaryGet(ObjectId dict, std::wstring_view key) {
  note("Database::dictionaryGet");
  return targetDatabase().dictionaryGet(dict, key);
}

Result<std::vector<std::pair<std::wstring, ObjectId>>> ForwardingHost::dictionaryEntries(
    ObjectId dict) {
  note("Database::dictionaryEntries");
  return targetDatabase().dictionaryEntries(dict);
}

Status ForwardingHost::dictionaryRemove(ObjectId dict, std::wstring_view key) {
  note("Database::dictionaryRemove");
  return targetDatabase().dictionaryRemove(dict, key);
}

Result<ObjectId> ForwardingHost::createDictionary(ObjectId owner, std::wstring_view key) {
  note("Database::createDictionary");
  return targetDatabase().createDictionary(owner, key);
}

Result<ObjectId> ForwardingHost::createXrecord(ObjectId owner, std::wstring_view key) {
  note("Database::createXrecord");
  return targetDatabase().createXrecord(owner, key);
}

Result<ObjectId> ForwardingHost::createXrecordWith(ObjectId owner, std::wstring_view key,
                                                   const host::ResBufChain& chain) {
  note("Database::createXrecordWith");
  return targetDatabase().createXrecordWith(owner, key, chain);
}

Result<ObjectId> ForwardingHost::attachXrecord(ObjectId object, std::wstring_view key,
                                               const host::ResBufChain& chain) {
  note("Database::attachXrecord");
  return targetDatabase().attachXrecord(object, key, chain);
}

Result<host::ResBufChain> ForwardingHost::readXrecord(ObjectId xrecord) {
  note("Database::readXrecord");
  return targetDatabase().readXrecord(xrecord);
}

Status ForwardingHost::writeXrecord(ObjectId xrecord, const host::ResBufChain& chain) {
  note("Database::writeXrecord");
  return targetDatabase().writeXrecord(xrecord, chain);
}

Result<ObjectId> ForwardingHost::extensionDictionary(ObjectId object) {
  note("Database::extensionDictionary");
  return targetDatabase().extensionDictionary(object);
}

Result<ObjectId> ForwardingHost::createExtensionDictionary(ObjectId object) {
  note("Database::createExtensionDictionary");
  return targetDatabase().createExtensionDictionary(object);
}

Result<bool> ForwardingHost::releaseExtensionDictionary(ObjectId object) {
  note("Database::releaseExtensionDictionary");
  return targetDatabase().releaseExtensionDictionary(object);
}

Status ForwardingHost::erase(ObjectId object) {
  note("Database::erase");
  return targetDatabase().erase(object);
}

bool ForwardingHost::isValid(ObjectId id) {
  note("Database::isValid");
  return targetDatabase().isValid(id);
}

std::wstring ForwardingHost::entityClass(ObjectId entity) {
  note("Database::entityClass");
  return targetDatabase().entityClass(entity);
}

std::vector<ObjectId> ForwardingHost::modelSpaceEntities() {
  note("Database::modelSpaceEntities");
  return targetDatabase().modelSpaceEntities();
}

host::PropertyValue ForwardingHost::getProperty(ObjectId entity, host::EntityProperty property) {
  note("Database::getProperty");
  return targetDatabase().getProperty(entity, property);
}

Status ForwardingHost::setProperty(ObjectId entity, host::EntityProperty property,
                                   const host::PropertyValue& value) {
  note("Database::setProperty");
  return targetDatabase().setProperty(entity, property, value);
}

Status ForwardingHost::setRelativeDrawOrder(const std::vector<ObjectId>& entities) {
  note("Database::setRelativeDrawOrder");
  return targetDatabase().setRelativeDrawOrder(entities);
}

bool ForwardingHost::hasSymbol(host::SymbolTable table, std::wstring_view name) {
  note("Database::hasSymbol");
  return targetDatabase().hasSymbol(table, name);
}

bool ForwardingHost::isExternalReference(std::wstring_view block) {
  note("Database::isExternalReference");
  return targetDatabase().isExternalReference(block);
}

bool ForwardingHost::hasAttributeDefinitions(std::wstring_view block) {
  note("Database::hasAttributeDefinitions");
  return targetDatabase().hasAttributeDefinitions(block);
}

Result<host::LayerState> ForwardingHost::layerState(std::wstring_view layer) {
  note("Database::layerState");
  return targetDatabase().layerState(layer);
}

Result<host::SysVar> ForwardingHost::getVar(std::string_view name) {
  note("Database::getVar");
  return targetDatabase().getVar(name);
}

Status ForwardingHost::setVar(std::string_view name, const host::SysVar& value) {
  note("Database::setVar");
  return targetDatabase().setVar(name, value);
}

void ForwardingHost::addReactor(host::DatabaseReactor* reactor) {
  note("Database::addReactor");
  targetDatabase().addReactor(reactor);
}

void ForwardingHost::removeReactor(host::DatabaseReactor* reactor) {
  note("Database::removeReactor");
  targetDatabase().removeReactor(reactor);
}

host::StringInput ForwardingHost::getString(bool allow_spaces, std::wstring_view prompt) {
  note("Editor::getString");
  return target_.editor().getString(allow_spaces, prompt);
}

host::PointInput ForwardingHost::getPoint(std::wstring_view prompt) {
  note("Editor::getPoint");
  return target_.editor().getPoint(prompt);
}

void ForwardingHost::print(std::wstring_view text) {
  note("Editor::print");
  target_.editor().print(text);
}

std::vector<ObjectId> ForwardingHost::impliedSelection() {
  note("Editor::impliedSelection");
  return target_.editor().impliedSelection();
}

host::SelectionInput ForwardingHost::select() {
  note("Editor::select");
  return target_.editor().select();
}

void ForwardingHost::setImpliedSelection(const std::vector<ObjectId>& ids) {
  note("Editor::setImpliedSelection");
  target_.editor().setImpliedSelection(ids);
}

void ForwardingHost::addReactor(host::EditorReactor* reactor) {
  note("Editor::addReactor");
  target_.editor().addReactor(reactor);
}

void ForwardingHost::removeReactor(host::EditorReactor* reactor) {
  note("Editor::removeReactor");
  target_.editor().removeReactor(reactor);
}

void ForwardingHost::postCancel() {
  note("Editor::postCancel");
  target_.editor().postCancel();
}

std::optional<std::wstring> ForwardingHost::openFile(const std::wstring& title,
                                                     const std::vector<std::wstring>& extensions,
                                                     const std::wstring& initial) {
  note("Dialogs::openFile");
  return target_.dialogs().openFile(title, extensions, initial);
}

std::optional<std::wstring> ForwardingHost::saveFile(const std::wstring& title,
                                                     const std::wstring& default_extension) {
  note("Dialogs::saveFile");
  return target_.dialogs().saveFile(title, default_extension);
}

bool ForwardingHost::checkBoxes(const std::wstring& title, std::vector<host::CheckBox>& boxes) {
  note("Dialogs::checkBoxes");
  return target_.dialogs().checkBoxes(title, boxes);
}

std::optional<std::vector<std::wstring>> ForwardingHost::chooseItems(
    const std::wstring& title, const std::vector<std::wstring>& items) {
  note("Dialogs::chooseItems");
  return target_.dialogs().chooseItems(title, items);
}

void ForwardingHost::textBox(const std::wstring& title, const std::wstring& text) {
  note("Dialogs::textBox");
  target_.dialogs().textBox(title, text);
}

void ForwardingHost::messageBox(const std::wstring& caption, const std::wstring& text,
                                host::MessageKind kind) {
  note("Dialogs::messageBox");
  target_.dialogs().messageBox(caption, text, kind);
}

Status ForwardingHost::addCommand(std::wstring_view group, std::wstring_view name, int flags,
                                  host::CommandFunction function) {
  note("CommandStack::addCommand");
  return target_.commands().addCommand(group, name, flags, std::move(function));
}

void ForwardingHost::removeGroup(std::wstring_view group) {
  note("CommandStack::removeGroup");
  target_.commands().removeGroup(group);
}

std::vector<std::wstring> ForwardingHost::commandsOf(std::wstring_view group) const {
  note("CommandStack::commandsOf");
  return target_.commands().commandsOf(group);
}

}  // namespace fakes
