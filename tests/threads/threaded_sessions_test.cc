// Sessions on several threads at once, each over its own drawing: a host and all it returns
// belong to one thread, and nothing else is shared. Built also under ThreadSanitizer, which
// reports any data race these runs provoke.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "headless/session.h"
#include "test_paths.h"

namespace {

const std::string kExamples = std::string(TAXOR_SOURCE_DIR) + "/examples/";

// Every command that reads and writes records, on the whole drawing.
const std::string kScript = "TAXOR_LOAD\n" + kExamples +
                            "classes.txt\n"
                            "TAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n"
                            "AI_DESELECT\nTAXOR_ASSERT\n1\nALL\n\n"
                            "AI_DESELECT\nTAXOR_STAT\nALL\n\n"
                            "TAXOR_CLASSIFY_AUTO\n1\n0\nALL\n\n"
                            "TAXOR_REMOVE\nTree\nALL\n\n"
                            "TAXOR_REMOVE_ALL\nALL\n\n";

std::string transcript(const std::string& drawing) {
  testing_session::Session session(drawing);
  session.run(kScript);
  return session.out();
}

TEST(ThreadedSessionsTest, EachSessionGivesWhatItGivesAlone) {
  const std::string drawing = testing_paths::readFile(kExamples + "site.dxf");
  ASSERT_FALSE(drawing.empty());
  const std::string alone = transcript(drawing);
  ASSERT_NE(alone.find("Completed: 100/103"), std::string::npos) << alone;

  constexpr int kThreads = 3;
  std::vector<std::string> results(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] { results[i] = transcript(drawing); });
  for (std::thread& thread : threads) thread.join();
  for (const std::string& result : results) EXPECT_EQ(result, alone);
}

}  // namespace
