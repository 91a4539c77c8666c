#include "Platform/Formats/SocketCensus.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

/// A kernel with sockets that come and go, which counts what it is asked for.
struct Kernel final : SocketSource {
  std::vector<SocketRecord> sockets;
  std::optional<ConnectionsBorn> counters = ConnectionsBorn{};
  bool answersQuestions = true, answersDumps = true;
  std::function<void()> behindTheWalk;
  int walks = 0;
  std::size_t questions = 0;

  void connect(std::uint64_t cookie, std::uint32_t user = 0) {
    sockets.push_back({.cookie = cookie, .user = user});
    if (counters) ++counters->active;
  }
  void accept(std::uint64_t cookie) {
    sockets.push_back({.cookie = cookie});
    ++counters->passive;
  }
  void listen(std::uint64_t cookie, std::uint32_t user = 0) {
    sockets.push_back({.cookie = cookie, .user = user, .listening = true});
  }
  void close(std::uint64_t cookie) {
    std::erase_if(sockets, [cookie](const auto& socket) { return socket.cookie == cookie; });
  }

  bool dump(std::vector<SocketRecord>& into) override {
    ++walks;
    into = sockets;
    if (behindTheWalk) behindTheWalk();
    return answersDumps;
  }
  bool dumpListening(std::vector<SocketRecord>& into) override {
    std::ranges::copy_if(sockets, std::back_inserter(into), &SocketRecord::listening);
    return answersDumps;
  }
  bool ask(std::span<const SocketRecord> known, std::vector<SocketRecord>& into) override {
    questions += known.size();
    for (const auto& record : known)
      for (const auto& socket : sockets)
        if (socket.cookie == record.cookie) into.push_back(socket);
    return answersQuestions;
  }
  std::optional<ConnectionsBorn> born() override { return counters; }
  void drainClosed(std::vector<SocketRecord>&) override {}
};

struct SocketCensusTests : testing::Test {
  Kernel kernel;
  SocketCensus census;
  Seconds now{50'000};
  std::vector<SocketRecord> alive;

  std::vector<std::uint64_t> cookies() {
    now += Seconds{10};
    EXPECT_TRUE(census.take(kernel, now, alive));
    std::vector<std::uint64_t> cookies;
    for (const auto& record : alive) cookies.push_back(record.cookie);
    return cookies;
  }
};

TEST_F(SocketCensusTests, walksOnlyWhenAConnectionWasBorn) {
  kernel.connect(1);
  kernel.listen(2);
  EXPECT_THAT(cookies(), UnorderedElementsAre(1, 2));
  kernel.sockets[0].received = 77;
  kernel.listen(3); // counted nowhere
  EXPECT_THAT(cookies(), UnorderedElementsAre(1, 2, 3));
  EXPECT_EQ(std::ranges::find(alive, 1u, &SocketRecord::cookie)->received, 77u);
  kernel.close(1);
  kernel.close(2);
  EXPECT_THAT(cookies(), ElementsAre(3));
  EXPECT_EQ(kernel.walks, 1);
  cookies();
  EXPECT_EQ(kernel.questions, 2u) << "what has gone is not asked for again";

  kernel.accept(4);
  EXPECT_THAT(cookies(), UnorderedElementsAre(3, 4));
  kernel.connect(5);
  EXPECT_THAT(cookies(), UnorderedElementsAre(3, 4, 5));
  kernel.close(5);
  kernel.connect(6);
  kernel.counters = ConnectionsBorn{}; // as many as at first: they may step back, too
  EXPECT_THAT(cookies(), UnorderedElementsAre(3, 4, 6));
  EXPECT_EQ(kernel.walks, 4);
}

TEST_F(SocketCensusTests, aConnectionThatTheWalkMissedIsFoundByTheNext) {
  kernel.behindTheWalk = [this] { kernel.connect(9); };
  EXPECT_THAT(cookies(), testing::IsEmpty());
  kernel.behindTheWalk = {};
  EXPECT_THAT(cookies(), ElementsAre(9));
}

TEST_F(SocketCensusTests, walksWhereverAskingIsNoHelp) {
  const auto walks = [this] {
    const auto before = kernel.walks;
    cookies();
    return kernel.walks - before;
  };
  for (std::uint64_t i = 1; i <= SocketCensus::mostAsked; ++i) kernel.connect(i);
  walks();
  EXPECT_EQ(walks(), 0);
  now += SocketCensus::longestWithoutWalk;
  EXPECT_EQ(walks(), 1) << "what is counted nowhere is found in the end";
  kernel.connect(1000);
  EXPECT_EQ(walks(), 1);
  EXPECT_EQ(walks(), 1) << "too many to ask for each";
  kernel.close(1000);
  EXPECT_EQ(walks(), 1);
  EXPECT_EQ(walks(), 0);
  kernel.answersQuestions = false;
  EXPECT_EQ(walks(), 1);
  kernel.counters.reset();
  EXPECT_EQ(walks(), 1);
  EXPECT_EQ(walks(), 1) << "without counters two that are both missing are not the same";
}

TEST_F(SocketCensusTests, afterAWalkThatFailedTheNextCycleWalks) {
  cookies();
  kernel.connect(1);
  kernel.answersDumps = false;
  EXPECT_FALSE(census.take(kernel, now, alive));
  kernel.answersDumps = true;
  EXPECT_THAT(cookies(), ElementsAre(1));
}

TEST_F(SocketCensusTests, otherUsersSocketsAreNotAskedFor) {
  census = SocketCensus(1000);
  kernel.connect(1, 1000);
  kernel.connect(2, 0);
  kernel.listen(3, 1000);
  kernel.listen(4, 0);
  EXPECT_THAT(cookies(), UnorderedElementsAre(1, 3));
  EXPECT_THAT(cookies(), UnorderedElementsAre(1, 3));
  EXPECT_EQ(kernel.questions, 1u);
}

TEST_F(SocketCensusTests, bornConnectionsAreFoundByTheirColumn) {
  const char* text = "Icmp: InMsgs ActiveOpens\nIcmp: 1 9\n"
                     "Tcp: RtoAlgorithm ActiveOpens MaxConn PassiveOpens\nTcp: 1 26 -1 18446744073709551615\n"
                     "Udp: InDatagrams\nUdp: 5\n";
  EXPECT_EQ(parseConnectionsBorn(text), (ConnectionsBorn{26, ~std::uint64_t{0}}));
  for (const char* none : {"", "Tcp: ActiveOpens PassiveOpens\n", "Tcp: ActiveOpens PassiveOpens\nTcp: 1\n",
                           "Tcp: ActiveOpens\nTcp: 1 2\n", "Tcp: ActiveOpens PassiveOpens\nTcp: x 1\n"})
    EXPECT_FALSE(parseConnectionsBorn(none)) << none;
}

} // namespace
} // namespace korvell
