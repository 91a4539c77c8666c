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

/// What a signal meets.
auto handlerOf(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler;
}

TEST(HeadlessLoopTests, aSignalEndsItUnlessItWasIgnoredBefore) {
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    HeadlessLoop loop;
    loop.main().async([signal] { raise(signal); });
    loop.run(); // returns
  }
  std::signal(SIGHUP, SIG_IGN); // as nohup does
  {
    const HeadlessLoop loop;
    EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
    EXPECT_NE(handlerOf(SIGTERM), SIG_DFL);
  }
  EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN) << "and stays so afterwards";
  EXPECT_EQ(handlerOf(SIGTERM), SIG_DFL) << "what was there is put back";
  std::signal(SIGHUP, SIG_DFL);
}

} // namespace
} // namespace korvell
