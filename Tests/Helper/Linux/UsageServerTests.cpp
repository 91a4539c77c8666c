// The daemon's socket against peers of all manners, in one thread: the test says when the server has its
// turn.

#include "Helper/Linux/UsageServer.h"

#include "Base/LocalAddress.h"
#include "Helper/Linux/ListeningSocket.h"
#include "Helper/Linux/PeerAdmission.h"
#include "Platform/Formats/UsagePackets.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <numeric>
#include <sys/socket.h>

using namespace korvell;

namespace {

using State = UsageAnswerReader::State;

std::vector<ProcessID> upTo(int count) {
  std::vector<ProcessID> pids(static_cast<std::size_t>(count));
  std::iota(pids.begin(), pids.end(), 1);
  return pids;
}

class Client {
public:
  explicit Client(const std::string& path) : socket_(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0)) {
    EXPECT_TRUE(LocalAddress::of(path)->connect(socket_.get()));
  }
  void say(const std::vector<std::uint8_t>& packet) {
    send(socket_.get(), packet.data(), packet.size(), MSG_NOSIGNAL);
  }
  void ask(const std::vector<ProcessID>& pids) { say(UsagePackets::request(pids)); }
  /// Reads what is there; an end of the connection reads as malformed.
  State hear() {
    std::vector<std::uint8_t> packet(65536);
    auto state = State::incomplete;
    while (state == State::incomplete) {
      const auto size = recv(socket_.get(), packet.data(), packet.size(), 0);
      if (size < 0) return state;
      state = reader_.take(std::span(packet).first(std::size_t(size)));
    }
    return state;
  }
  std::size_t records() { return std::exchange(reader_, {}).records().size() / RusageSample::recordSize; }
  void leave() { socket_.reset(); }

private:
  Descriptor socket_;
  UsageAnswerReader reader_;
};

struct UsageServerTests : testing::Test {
  TemporaryFolder folder;
  std::string path = folder / "socket";
  FakeClock clock;
  std::optional<std::uint32_t> user = 1000; ///< of the next peer
  std::function<void(ProcessID)> whileReading = [](ProcessID) {};
  UsageServer server{std::move(*listenAt(path, std::nullopt)),
                     RusageService(
                         [this](ProcessID pid) {
                           whileReading(pid);
                           return RusageSample{.diskRead = std::uint64_t(pid)};
                         },
                         [] {}),
                     [this](int) { return user; },
                     clock,
                     {}};

  Client join() {
    Client client(path);
    server.turn(Seconds{0});
    return client;
  }
  void turns(int count) {
    while (count-- > 0) server.turn(Seconds{0});
  }
  /// Lets the server work and the client read until there is an answer; the number of its records.
  std::optional<std::size_t> answer(Client& client, const std::vector<ProcessID>& question) {
    client.ask(question);
    auto state = State::incomplete;
    for (int i = 0; i < 200 && state == State::incomplete; ++i) {
      turns(1);
      state = client.hear();
    }
    return state == State::complete ? std::optional(client.records()) : std::nullopt;
  }
};

} // namespace

TEST_F(UsageServerTests, answersRequestsOfAllSizes) {
  auto client = join();
  for (const int count : {3, 0, 256, 257, 8192}) EXPECT_EQ(answer(client, upTo(count)), std::size_t(count));
  EXPECT_EQ(answer(client, {-5, 0, 4}), 1u);
}

TEST_F(UsageServerTests, closesOnWhatIsNoRequestAndOnStrangersAndServesTheOthers) {
  auto good = join();
  for (const std::size_t size : {0u, 1u, 7u, 32'769u, 32'772u, 100'000u}) {
    auto bad = join();
    bad.say(std::vector<std::uint8_t>(size, 0x41));
    turns(1);
    EXPECT_EQ(bad.hear(), State::malformed) << size;
  }
  user.reset();
  EXPECT_EQ(join().hear(), State::malformed);
  EXPECT_EQ(answer(good, {1}), 1u);
  EXPECT_EQ(server.connections(), 1u);
}

TEST_F(UsageServerTests, sendsWhatItHasWhenTheTimeIsOver) {
  whileReading = [this](ProcessID) { clock.advance(Seconds{0.0001}); };
  auto client = join();
  const auto records = answer(client, upTo(8192));
  ASSERT_TRUE(records);
  EXPECT_EQ(*records % UsageServer::processesAtOnce, 0u);
  EXPECT_GE(*records, 768u);
  EXPECT_LE(*records, 1024u) << "0.08 s at 0.1 ms a process, and the part that was under way";
  whileReading = [](ProcessID) {};
  EXPECT_EQ(answer(client, {1, 2}), 2u);
}

TEST_F(UsageServerTests, aPeerThatDoesNotReadHoldsNobodyAndIsGivenUp) {
  auto silent = join(), good = join();
  silent.ask(upTo(8192));
  turns(50);
  EXPECT_EQ(answer(good, {1}), 1u);
  EXPECT_EQ(server.connections(), 2u);
  clock.advance(Seconds{0.081});
  turns(1);
  EXPECT_EQ(server.connections(), 1u);
  EXPECT_EQ(answer(good, {1}), 1u);
  good.ask(upTo(8192));
  turns(1);
  good.leave(); // midway
  turns(50);
  EXPECT_EQ(server.connections(), 0u);
}

TEST_F(UsageServerTests, aUserHasFewConnectionsAndAllTogetherNotMany) {
  auto first = join(), second = join();
  for (int i = 0; i < 2; ++i) {
    clock.advance(Seconds{1});
    join().leave(); // gone, but not noticed before the next turn
  }
  EXPECT_EQ(answer(first, {1}), 1u); // heard from more lately than the second
  std::vector<Client> more;
  for (int i = 0; i < 4; ++i) {
    clock.advance(Seconds{1});
    more.push_back(join());
  }
  EXPECT_EQ(server.connections(), 4u);
  EXPECT_EQ(second.hear(), State::malformed);
  for (std::uint32_t other = 2000; other < 2100; ++other) {
    user = other;
    more.push_back(join());
  }
  EXPECT_EQ(server.connections(), 32u);
  EXPECT_EQ(answer(more.back(), {1}), 1u);
}

TEST_F(UsageServerTests, thousandsOfConnectionsLeaveItServing) {
  user = 1;
  auto good = join();
  user = 2;
  std::vector<Client> hostile;
  for (int i = 0; i < 3000; ++i) {
    hostile.push_back(join());
    if (i % 3 == 0) hostile.back().say({1, 2, 3});
    if (i % 3 == 1) hostile.back().leave();
    if (hostile.size() > 100) hostile.clear();
  }
  EXPECT_EQ(answer(good, upTo(300)), 300u);
  EXPECT_LE(server.connections(), 5u);
}

TEST_F(UsageServerTests, onlyRequestsKeepItAwake) {
  const auto begin = server.lastRequest();
  clock.advance(Seconds{10});
  auto client = join();
  client.say({1});
  turns(1);
  EXPECT_EQ(server.lastRequest(), begin);
  auto asking = join();
  answer(asking, {1});
  EXPECT_EQ(server.lastRequest(), begin + Seconds{10});
}

TEST(ListeningSocket, takesThePlaceOfAnAbandonedOneOnly) {
  const TemporaryFolder folder;
  const auto path = folder / "socket";
  {
    const auto first = listenAt(path, getgid());
    ASSERT_TRUE(first);
    EXPECT_EQ(folder.permissions("socket"), 0660u);
    EXPECT_FALSE(listenAt(path, std::nullopt)) << "somebody listens there";
  }
  EXPECT_TRUE(listenAt(path, std::nullopt)) << "nobody does any more";
  folder.write("file", "mine");
  EXPECT_FALSE(listenAt(folder / "file", std::nullopt));
  EXPECT_EQ(folder.text("file"), "mine");
  EXPECT_FALSE(listenAt(std::string(200, 'a'), std::nullopt));
}

TEST(PeerAdmission, rootTheGroupAndNamedUsersMayAsk) {
  const PeerAdmission admission{.group = 77, .users = {1001}};
  EXPECT_TRUE(admission.admits({0, {}}));
  EXPECT_TRUE(admission.admits({1001, {100}}));
  EXPECT_TRUE(admission.admits({1002, {100, 77}}));
  EXPECT_FALSE(admission.admits({1002, {100, 78}}));
  EXPECT_FALSE(PeerAdmission{}.admits({1002, {0}}));

  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
  const auto self = peerOf(ends[0]);
  ASSERT_TRUE(self);
  EXPECT_EQ(self->user, geteuid());
  EXPECT_THAT(self->groups, testing::Contains(getegid()));
  close(ends[0]);
  close(ends[1]);
  EXPECT_FALSE(peerOf(-1));
}
