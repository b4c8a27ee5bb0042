// Input that ends (a script) against input that waits (a feed from another thread).
#include "headless/input_source.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "dxf/sample_drawing.h"
#include "headless/session.h"

namespace {

TEST(InputSourceTest, QueueSourceJoinsPiecesIntoLines) {
  struct Case {
    std::vector<std::string> pieces;
    std::vector<std::string> lines;  // read before the source ends
  };
  const Case cases[] = {
      {{"ab", "c\nde", "\n", "f"}, {"abc", "de", "f"}},
      {{"a\n\nb\n"}, {"a", "", "b"}},
      {{"", "x", ""}, {"x"}},
      {{}, {}},
  };
  for (const Case& c : cases) {
    headless::QueueSource source;
    for (const std::string& piece : c.pieces) source.push(piece);
    source.close();
    source.push("after the end\n");
    std::vector<std::string> lines;
    for (std::string line; source.readLine(line);) lines.push_back(line);
    EXPECT_EQ(lines, c.lines) << ::testing::PrintToString(c.pieces);
    EXPECT_FALSE(source.waitUntilReaderWaits());
  }
}

// A server's session: the command arrives in pieces and its prompts are answered later; the
// session waits for each answer where a script's end would cancel the prompt.
TEST(InputSourceTest, ASessionWaitsForAFeedUntilItCloses) {
  testing_session::Session session(sample::drawing());
  auto feed = std::make_shared<headless::QueueSource>();
  session.input.addSource(feed);
  std::thread runner([&] { session.session->run(); });

  const std::string asked =
      "Command: _.attsync\nEnter an option [?/Name/Select] <Select>: _n\n"
      "Enter name of block to synchronize: ";
  struct Step {
    const char* piece;
    std::string out;  // the transcript once the session waits again
  };
  const Step steps[] = {
      {"_.att", "Command: "},
      {"sync _", "Command: "},
      {"n\n", asked},
      {"Do", asked},
      {"or\n", asked + "Door\nATTSYNC block Door: 0 references updated.\nCommand: "},
  };
  for (const Step& step : steps) {
    feed->push(step.piece);
    EXPECT_TRUE(feed->waitUntilReaderWaits());
    // The session writes only while it is not waiting, so the transcript can be read here.
    EXPECT_EQ(session.out(), step.out) << step.piece;
  }
  feed->close();
  runner.join();
  EXPECT_EQ(session.out(), steps[4].out + "\n");
  EXPECT_EQ(session.err(), "");
}

}  // namespace
