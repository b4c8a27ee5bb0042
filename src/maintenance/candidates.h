// The entities a selecting or classifying command works on: the pick-first set or an
// interactive selection, pruned to what may be changed.
#pragma once

#include <optional>
#include <vector>

#include "host/database.h"
#include "host/editor.h"

namespace maintenance {

// What an interactive selection that picked nothing stands for.
enum class EmptyPick {
  kNothing,     // nothing: the command reports that no objects were selected
  kModelSpace,  // every model-space entity
};

// `picked_first` when it is not empty; otherwise the user selects. Nothing when the user
// cancels the selection.
std::optional<std::vector<host::ObjectId>> pickedOrSelected(
    host::Editor& editor, host::Database& database, const std::vector<host::ObjectId>& picked_first,
    EmptyPick empty_pick);

// Keeps, in order, the entities that exist and lie on a layer that is neither frozen, off,
// locked nor hidden.
void pruneCandidates(host::Database& database, std::vector<host::ObjectId>& candidates);

// Removes candidates[index] by moving the last candidate into its place: the order of the
// survivors is not kept, as the commands that select have always done.
void removeBySwap(std::vector<host::ObjectId>& candidates, size_t index);

}  // namespace maintenance
