#include "catalogue/binding.h"

#include "base/utf.h"
#include "catalogue/resource_loader.h"
#include "catalogue/table_builder.h"
#include "objdata/stored_table.h"

namespace catalogue {

namespace {

std::shared_ptr<const Catalogue> emptyCatalogue(const Catalogue& parsed) {
  auto empty = std::make_shared<Catalogue>();
  empty->class_file = parsed.class_file;
  return empty;
}

// The first table that `database` stores with another definition.
const StoredTableCheck* firstMismatch(const ParsedClasses& parsed, host::Database& database) {
  if (parsed.table_checks.empty()) return nullptr;
  host::ObjectId dictionary = objdata::findTableDictionary(database);
  for (const StoredTableCheck& check : parsed.table_checks) {
    objdata::StoredTable stored;
    if (objdata::readStoredTable(database, dictionary, check.table.name, stored) ==
            objdata::kStatusOk &&
        !matchesStoredTable(check.table, stored)) {
      return &check;
    }
  }
  return nullptr;
}

ParseResult bindToCurrentDrawing(const ParsedClasses& parsed, host::Host& host) {
  Binding binding = bindCatalogue(parsed, host.database());
  return {*binding.catalogue, std::move(binding.resources), std::move(binding.messages),
          binding.ok};
}

}  // namespace

Binding bindCatalogue(const ParsedClasses& parsed, host::Database& database) {
  Binding binding;
  if (const StoredTableCheck* mismatch = firstMismatch(parsed, database)) {
    auto end = parsed.messages.begin() + static_cast<std::ptrdiff_t>(mismatch->messages_before);
    binding.messages.assign(parsed.messages.begin(), end);
    binding.messages.push_back(
        {ParseMessage::kTableMismatch, mismatch->line, mismatch->table.name});
    binding.catalogue = emptyCatalogue(*parsed.catalogue);
    return binding;
  }
  binding.messages = parsed.messages;
  const Catalogue& catalogue = *parsed.catalogue;
  if (!parsed.ok || !loadResources(catalogue, database, binding.messages, binding.resources)) {
    binding.resources = {};
    binding.catalogue = emptyCatalogue(catalogue);
    return binding;
  }
  for (const SysVarSetting& setting : catalogue.global_settings) {
    if (auto value = toSysVar(setting)) (void)database.setVar(base::toUtf8(setting.name), *value);
  }
  binding.catalogue = parsed.catalogue;
  binding.ok = true;
  return binding;
}

ParseResult parseClassText(std::string_view utf8, const std::wstring& path, host::Host& host) {
  HostEnvironment environment(host);
  return bindToCurrentDrawing(parseClassDefinitions(utf8, path, environment), host);
}

ParseResult parseClassFile(const std::wstring& path, host::Host& host) {
  HostEnvironment environment(host);
  return bindToCurrentDrawing(readClassDefinitions(path, environment), host);
}

}  // namespace catalogue
