// What only the fake host does and other tests lean on: the depths of document locks and
// resource handles, which they expect back at 0 once the code under test is done. How its
// prompts read answers, and the rest of the contract it shares with the other hosts, are
// tested over every host in tests/host.
#include "fakes/fake_host.h"

#include <gtest/gtest.h>

namespace {

// A depth stuck at 0 would let every such check pass.
TEST(FakeHostTest, LockAndResourceDepthsCountWhatIsNotReleased) {
  fakes::FakeHost host;
  host::Document& doc = host.document();
  {
    host::DocumentLock outer(doc);
    host::DocumentLock inner(doc);
    EXPECT_EQ(host.lockDepth(), 2);
  }
  EXPECT_EQ(host.lockDepth(), 0);
  doc.unlock();
  EXPECT_EQ(host.lockDepth(), -1);  // an unmatched unlock shows
  host.pushResourceHandle();
  host.pushResourceHandle();
  host.popResourceHandle();
  EXPECT_EQ(host.resourceDepth(), 1);
}

}  // namespace
