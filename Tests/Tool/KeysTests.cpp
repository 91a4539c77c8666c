#include "Tool/HeadlessLoop.h"
#include "Tool/Keys.h"

#include <csignal>
#include <gmock/gmock.h>

namespace korvell {
namespace {

TEST(KeysTests, bytesBecomeKeysInWhateverPiecesTheyCome) {
  struct Row {
    std::vector<std::string> pieces;
    std::vector<int> keys;
  };
  for (const auto& [pieces, keys] : {
           Row{{"cq"}, {'c', 'q'}},
           Row{{"\x1b[A\x1bOB\x1b[5~\x1b[4~x"}, {Key::up, Key::down, Key::pageUp, Key::end, 'x'}},
           Row{{"\x1b", "[", "Aq"}, {Key::up, 'q'}},
           Row{{"\x1b[1;", "5Cq"}, {'q'}}, // with Ctrl: unknown here
           Row{{"\x1bxq"}, {'q'}},         // Alt-x takes no other key along
           Row{{"\x1b[200~q"}, {'q'}},     // a paste begins
           Row{{"\x1b[\x03"}, {}},         // broken off
           Row{{"\x1b"}, {Key::escape}},
           Row{{"\x1b[12"}, {}},
           Row{{"\x1b[" + std::string(40, '1') + "q"},
               {'1', '1', '1', '1', '1', '1', '1', '1', '1', '1', 'q'}},
           Row{{"\xc3\xa4"}, {0xc3, 0xa4}},
       }) {
    KeyParser parser;
    std::vector<int> found;
    const auto add = [&](const std::vector<int>& more) {
      found.insert(found.end(), more.begin(), more.end());
    };
    for (const auto& piece : pieces) add(parser.take(piece));
    if (parser.isWaiting()) add(parser.finish());
    EXPECT_EQ(found, keys) << testing::PrintToString(pieces);
    EXPECT_FALSE(parser.isWaiting());
  }
}

struct HeadlessLoopTests : testing::Test {
  ~HeadlessLoopTests() override { std::signal(SIGHUP, SIG_DFL); }
  /// What has run of these tasks when the loop ends: the first one raises the signal.
  static int tasksAround(int signal) {
    HeadlessLoop loop;
    int tasks = 0;
    loop.main().async([&] {
      ++tasks;
      raise(signal);
      loop.main().async([&] {
        ++tasks;
        loop.main().async([&] {
          ++tasks;
          loop.quit();
        });
      });
    });
    loop.run();
    return tasks;
  }
};

TEST_F(HeadlessLoopTests, aSignalEndsItUnlessItWasIgnoredBefore) {
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) EXPECT_LE(tasksAround(signal), 3) << signal;
  std::signal(SIGHUP, SIG_IGN); // as nohup does
  EXPECT_EQ(tasksAround(SIGHUP), 3);
  EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN) << "and stays ignored afterwards";
  tasksAround(SIGTERM);
  EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), SIG_DFL) << "what was there is put back";
}

} // namespace
} // namespace korvell
