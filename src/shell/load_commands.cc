#include "shell/load_commands.h"

#include <memory>

#include "catalogue/binding.h"
#include "catalogue/parser.h"

namespace shell {

namespace {

// The parser's messages are in the string table in the parser's own order, in two runs:
// the size limits came after the table's later identifiers had been given out.
constexpr int kFirstRun = static_cast<int>(StringId::kParseTextStyleNotFound) -
                          static_cast<int>(StringId::kParseInvalidBlockReference) + 1;
static_assert(kFirstRun + static_cast<int>(StringId::kParseExpansionTooLong) -
                      static_cast<int>(StringId::kParseFileTooLarge) + 1 ==
                  catalogue::kParseMessageCount,
              "one string per parser message");

static_assert(catalogue::kMaxClassFileBytes == size_t{16} << 20,
              "the text of kParseFileTooLarge names the limit");

StringId stringIdOf(catalogue::ParseMessage message) {
  const int index = static_cast<int>(message);
  if (index < kFirstRun) {
    return static_cast<StringId>(static_cast<int>(StringId::kParseInvalidBlockReference) + index);
  }
  return static_cast<StringId>(static_cast<int>(StringId::kParseFileTooLarge) + index - kFirstRun);
}

// Parses the current class file into the current catalogue and prints the messages.
void parseCurrentFile(CommandContext& context) {
  ProcessState& state = context.state();
  catalogue::HostEnvironment environment(context.host());
  catalogue::ParsedClasses parsed = catalogue::readClassDefinitions(state.class_file, environment);
  catalogue::Binding bound = catalogue::bindCatalogue(parsed, context.database());
  for (const catalogue::Diagnostic& diagnostic : bound.messages) {
    context.editor().print(diagnosticText(context.strings(), diagnostic));
  }
  state.catalogue = std::move(bound.catalogue);
  state.resources = std::make_shared<const catalogue::DrawingResources>(std::move(bound.resources));
  // The classification tree and the properties palette are pointed at the new catalogue
  // here once those palettes exist.
}

}  // namespace

std::wstring diagnosticText(const StringTable& strings, const catalogue::Diagnostic& diagnostic) {
  StringId id = stringIdOf(diagnostic.message);
  if (diagnostic.line == 0) return strings.format(id, {diagnostic.argument});
  return strings.format(id, {diagnostic.line, diagnostic.argument});
}

void loadCommand(CommandContext& context) {
  ProcessState& state = context.state();
  // The dialog's title is the description part of the file filter ("Text files (*.txt)").
  std::wstring filter = context.text(StringId::kTextFileFilter);
  std::optional<std::wstring> path = context.host().dialogs().openFile(
      filter.substr(0, filter.find(L'|')), {L"txt"}, state.class_file);
  if (!path) return;
  state.class_file = *path;
  context.editor().setImpliedSelection({});
  // The previous file's lists are deliberately not written: only reload and unload do.
  state.catalogue.reset();
  parseCurrentFile(context);
  if (state.recent_list) {
    catalogue::readRecentFile(catalogue::recentFilePath(state.class_file), *state.recent_list);
  }
  if (state.favorites_list) {
    catalogue::readFavoritesFile(catalogue::favoritesFilePath(state.class_file),
                                 *state.favorites_list);
  }
}

void reloadCommand(CommandContext& context) {
  ProcessState& state = context.state();
  if (state.class_file.empty()) return;
  context.editor().setImpliedSelection({});
  if (state.catalogue) {
    saveRecentList(context);
    saveFavoritesList(context);
    state.catalogue.reset();
  }
  parseCurrentFile(context);
}

void saveRecentList(CommandContext& context) {
  ProcessState& state = context.state();
  if (!state.catalogue || !state.recent_list || !state.recent_list->loaded) return;
  std::wstring path = catalogue::recentFilePath(state.class_file);
  if (!catalogue::writeRecentFile(path, *state.recent_list)) {
    context.print(StringId::kWarnUnableToOpenList, {path});
  }
}

void saveFavoritesList(CommandContext& context) {
  ProcessState& state = context.state();
  if (!state.catalogue || !state.favorites_list) return;
  std::wstring path = catalogue::favoritesFilePath(state.class_file);
  if (catalogue::writeFavoritesFile(path, *state.favorites_list) ==
      catalogue::WriteResult::kFailed) {
    context.print(StringId::kWarnUnableToOpenList, {state.favorites_list->path});
  }
}

}  // namespace shell
