#include "maintenance/candidates.h"

#include <string>
#include <unordered_map>

namespace maintenance {

std::optional<std::vector<host::ObjectId>> pickedOrSelected(
    host::Editor& editor, host::Database& database, const std::vector<host::ObjectId>& picked_first,
    EmptyPick empty_pick) {
  if (!picked_first.empty()) return picked_first;
  host::SelectionInput selection = editor.select();
  if (selection.status == host::InputStatus::kCancel) return std::nullopt;
  if (selection.ids.empty() && empty_pick == EmptyPick::kModelSpace)
    return database.modelSpaceEntities();
  return std::move(selection.ids);
}

void pruneCandidates(host::Database& database, std::vector<host::ObjectId>& candidates) {
  // Few layers, many entities: each layer's state is asked once.
  std::unordered_map<std::wstring, bool> usable_layers;
  host::PropertyValue value;  // read into again and again, its text buffer kept
  auto usable = [&](host::ObjectId id) {
    if (!database.isEntity(id)) return false;
    database.getPropertyInto(id, host::EntityProperty::kLayer, value);
    const std::wstring* layer = std::get_if<std::wstring>(&value);
    if (!layer) return false;
    auto it = usable_layers.find(*layer);
    if (it == usable_layers.end()) {
      it = usable_layers.emplace(*layer, false).first;
      auto state = database.layerState(*layer);
      // CAD programs create a layer the table lacks when they load the drawing, with every
      // switch at its default: its entities are as usable as any.
      if (!state) it->second = state.status().code() == base::Code::kNotFound;
      else it->second = !state->frozen && !state->off && !state->locked && !state->hidden;
    }
    return it->second;
  };
  std::erase_if(candidates, [&](host::ObjectId id) { return !usable(id); });
}

void removeBySwap(std::vector<host::ObjectId>& candidates, size_t index) {
  candidates[index] = candidates.back();
  candidates.pop_back();
}

}  // namespace maintenance
