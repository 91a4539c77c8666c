// The client's end of the helper's socket; the test itself is the helper, so that nothing waits.

#include "Platform/Linux/HelperSocket.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <optional>
#include <sys/socket.h>
#include <sys/un.h>

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
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(listener.get(), 4), 0);
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
  EXPECT_EQ(lost, 1);
  ask({7});
  EXPECT_EQ(answers.size(), 1u) << "a closed connection fails at once";
  EXPECT_FALSE(answers.at(0));
  EXPECT_EQ(lost, 1);
  client->await(ample);
}

TEST_F(HelperSocketTests, whatIsNoAnswerFails) {
  ask({7});
  say({1, 2, 3});
  client->await(ample);
  ASSERT_EQ(answers.size(), 1u);
  EXPECT_FALSE(answers[0]);
  EXPECT_EQ(lost, 1);
}

TEST_F(HelperSocketTests, aHelperThatGoesAwayFails) {
  ask({7});
  say(record);
  peer.reset(); // killed midway
  client->await(ample);
  ASSERT_EQ(answers.size(), 1u);
  EXPECT_FALSE(answers[0]);
  EXPECT_EQ(lost, 1);
}

TEST_F(HelperSocketTests, nobodyToConnectTo) {
  EXPECT_FALSE(HelperSocket::connect(folder / "missing", [] {}));
  EXPECT_FALSE(HelperSocket::connect("", [] {}));
  EXPECT_FALSE(HelperSocket::connect(std::string(200, 'a'), [] {}));
  listener.reset();
  EXPECT_FALSE(HelperSocket::connect(path, [] {})) << "nobody listens any more";
}
