// The client's end of the helper's socket; the test itself is the helper, so that nothing waits.

#include "Platform/Linux/HelperSocket.h"

#include "Base/LocalAddress.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <optional>
#include <sys/socket.h>

using namespace korvell;

namespace {

constexpr Seconds ample{30};

struct HelperSocketTests : testing::Test {
  TemporaryFolder folder;
  std::string path = folder / "socket";
  Descriptor listener{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
  Descriptor peer;
  int lost = 0;
  std::vector<UsageHelperAnswer> answers;
  std::shared_ptr<HelperSocket> client;

  HelperSocketTests() {
    EXPECT_TRUE(LocalAddress::of(path)->bind(listener.get()));
    EXPECT_EQ(listen(listener.get(), 4), 0);
    join();
  }
  void join() {
    client = HelperSocket::connect(path, [this] { ++lost; });
    EXPECT_TRUE(client);
    peer = Descriptor(accept(listener.get(), nullptr, nullptr));
  }
  void ask(std::vector<ProcessID> pids) {
    client->request(pids, [this](UsageHelperAnswer answer) { answers.push_back(std::move(answer)); });
  }
  std::optional<std::vector<ProcessID>> heard() const {
    std::vector<std::uint8_t> packet(UsagePackets::mostRequestBytes + 1);
    packet.resize(std::size_t(std::max<ssize_t>(recv(peer.get(), packet.data(), packet.size(), 0), 0)));
    return UsagePackets::parseRequest(packet);
  }
  void say(const std::vector<std::uint8_t>& packet) const {
    EXPECT_EQ(send(peer.get(), packet.data(), packet.size(), MSG_NOSIGNAL), ssize_t(packet.size()));
  }
};

const std::vector<std::uint8_t> record(UsagePackets::recordSize, 7);

} // namespace

TEST_F(HelperSocketTests, asksAndPutsTheAnswerTogether) {
  for (int round = 0; round < 2; ++round) {
    ask({7, 8});
    EXPECT_EQ(heard(), (std::vector<ProcessID>{7, 8}));
    say(record);
    say(record);
    say(UsagePackets::end(2));
    client->await(ample);
  }
  ASSERT_EQ(answers.size(), 2u);
  EXPECT_EQ(answers[1]->size(), 2 * record.size());
  EXPECT_EQ(lost, 0);
}

TEST_F(HelperSocketTests, anAnswerThatIsLateClosesTheConnection) {
  ask({7});
  say(record); // but no end
  client->await(Seconds{0});
  EXPECT_TRUE(answers.empty());
  ask({7});
  EXPECT_THAT(answers, testing::ElementsAre(std::nullopt)) << "a closed connection fails at once";
  EXPECT_EQ(lost, 1);
  client->await(ample);
}

TEST_F(HelperSocketTests, aHelperThatTalksNonsenseOrGoesAwayFails) {
  for (const bool goesAway : {false, true}) {
    SCOPED_TRACE(goesAway);
    lost = 0;
    answers.clear();
    join();
    ask({7});
    say(goesAway ? record : std::vector<std::uint8_t>{1, 2, 3});
    if (goesAway) peer.reset(); // killed midway
    client->await(ample);
    EXPECT_THAT(answers, testing::ElementsAre(std::nullopt));
    EXPECT_EQ(lost, 1);
  }
}

TEST_F(HelperSocketTests, nobodyToConnectTo) {
  listener.reset(); // but the socket's file is there
  for (const auto& nobody : {path, folder / "missing", std::string(), std::string(200, 'a')})
    EXPECT_FALSE(HelperSocket::connect(nobody, [] {})) << nobody;
}
