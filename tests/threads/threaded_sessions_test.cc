// Sessions on several threads at once, each over its own drawing and all with one parsed
// class file: a host and all it returns belong to one thread, and a parsed catalogue is
// shared unchanged. Built also under ThreadSanitizer, which reports any data race these
// runs provoke.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "base/utf.h"
#include "catalogue/binding.h"
#include "catalogue/parser.h"
#include "headless/session.h"
#include "test_paths.h"

namespace {

const std::string kExamples = std::string(TAXOR_SOURCE_DIR) + "/examples/";

// Every command that reads and writes records, on the whole drawing.
const std::string kScript =
    "TAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n"
    "AI_DESELECT\nTAXOR_ASSERT\n1\nALL\n\n"
    "AI_DESELECT\nTAXOR_STAT\nALL\n\n"
    "TAXOR_CLASSIFY_AUTO\n1\n0\nALL\n\n"
    "TAXOR_REMOVE\nTree\nALL\n\n"
    "TAXOR_REMOVE_ALL\nALL\n\n";

// Binds `parsed` to a new session over `drawing` and runs the script there.
std::string transcript(const std::string& drawing, const catalogue::ParsedClasses& parsed) {
  testing_session::Session session(drawing);
  catalogue::Binding bound = catalogue::bindCatalogue(parsed, session.host->dxfDatabase());
  EXPECT_TRUE(bound.ok);
  EXPECT_EQ(bound.catalogue, parsed.catalogue);  // shared, not copied
  session.app->state().class_file = parsed.catalogue->class_file;
  session.app->state().catalogue = bound.catalogue;
  session.run(kScript);
  return session.out();
}

TEST(ThreadedSessionsTest, EachSessionGivesWhatItGivesAlone) {
  const std::string drawing = testing_paths::readFile(kExamples + "site.dxf");
  ASSERT_FALSE(drawing.empty());
  testing_session::Session parsing(drawing);
  catalogue::HostEnvironment environment(*parsing.host);
  const catalogue::ParsedClasses parsed =
      catalogue::readClassDefinitions(base::fromUtf8(kExamples + "classes.txt"), environment);
  ASSERT_TRUE(parsed.ok);
  const std::string alone = transcript(drawing, parsed);
  ASSERT_NE(alone.find("Completed: 100/103"), std::string::npos) << alone;

  constexpr int kThreads = 3;
  std::vector<std::string> results(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([&, i] { results[i] = transcript(drawing, parsed); });
  for (std::thread& thread : threads) thread.join();
  for (const std::string& result : results) EXPECT_EQ(result, alone);
}

}  // namespace
