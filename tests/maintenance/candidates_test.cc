// Pruning the entities a command works on by layer state. Which entities a command is given
// (pick-first set, selection, model-space fallback) and which it keeps the shell tests check
// through the commands.
#include "maintenance/candidates.h"

#include <gtest/gtest.h>

#include "fakes/fake_host.h"

namespace {

using host::EntityProperty;
using host::ObjectId;

TEST(CandidatesTest, PruningKeepsEntitiesOnUsableLayersInOrder) {
  fakes::FakeHost host;
  host.addLayer(L"Frozen", {.frozen = true});
  host.addLayer(L"Off", {.off = true});
  host.addLayer(L"Locked", {.locked = true});
  host.addLayer(L"Hidden", {.hidden = true});
  host.addLayer(L"Open");
  std::vector<ObjectId> ids;
  for (const wchar_t* layer : {L"Open", L"Frozen", L"Off", L"0", L"Locked", L"Hidden", L"Open"})
    ids.push_back(host.addEntity(L"AcDbLine", {{EntityProperty::kLayer, std::wstring(layer)}}));
  ObjectId erased = host.addEntity(L"AcDbLine");
  ASSERT_TRUE(host.database().erase(erased));
  std::vector<ObjectId> candidates = ids;
  candidates.push_back(erased);
  maintenance::pruneCandidates(host.database(), candidates);
  EXPECT_EQ(candidates, (std::vector<ObjectId>{ids[0], ids[3], ids[6]}));
}

}  // namespace
