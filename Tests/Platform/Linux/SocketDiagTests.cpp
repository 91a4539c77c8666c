#include "Platform/Linux/SocketDiag.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace korvell {
namespace {

TEST(SocketDiagTests, damagedDatagramsAreRefused) {
  // One message of 72 + 16 bytes: header, inet_diag_msg, no attributes.
  std::vector<std::uint8_t> datagram(88);
  datagram[0] = 88;
  datagram[4] = 20;                         // SOCK_DIAG_BY_FAMILY
  datagram[16] = 2;                         // AF_INET
  datagram[17] = 10;                        // listening
  datagram[20] = 0x1f, datagram[21] = 0x90; // port 8080, in network order
  datagram[84] = 99;                        // inode
  std::vector<SocketRecord> records;
  EXPECT_TRUE(parseSocketDiag(datagram, records));
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].localPort, 8080);
  EXPECT_EQ(records[0].inode, 99u);
  EXPECT_TRUE(records[0].listening);
  for (std::size_t length = 1; length < 88; ++length) {
    std::vector<SocketRecord> none;
    parseSocketDiag(std::span(datagram).first(length), none);
    EXPECT_TRUE(none.empty()) << length;
  }
  datagram[0] = 20; // a message too short for what it should carry
  records.clear();
  parseSocketDiag(std::span(datagram).first(20), records);
  EXPECT_TRUE(records.empty());
}

TEST(SocketDiagTests, oneSocketsAnswer) {
  std::vector<std::uint8_t> refusal(36);
  refusal[0] = 36;
  refusal[4] = 2; // NLMSG_ERROR
  const auto setError = [&](std::int32_t error) { std::memcpy(&refusal[16], &error, sizeof error); };
  std::vector<SocketRecord> records;
  for (const int gone : {ENOENT, ESTALE}) {
    setError(-gone);
    EXPECT_TRUE(parseSocketAnswer(refusal, records)) << gone;
  }
  for (const int unknown : {EINVAL, EOPNOTSUPP, ENOMEM, 0}) {
    setError(-unknown);
    EXPECT_FALSE(parseSocketAnswer(refusal, records)) << unknown;
  }
  EXPECT_FALSE(parseSocketAnswer(std::span(refusal).first(17), records));
  EXPECT_FALSE(parseSocketAnswer({}, records));

  // What remains of a connection for a minute has no counters and is none any more.
  std::vector<std::uint8_t> remains(88);
  remains[0] = 88;
  remains[4] = 20;
  remains[16] = 2;
  remains[17] = 6; // TIME_WAIT
  EXPECT_TRUE(parseSocketAnswer(remains, records));
  EXPECT_TRUE(records.empty());
  remains[0] = 92; // counters whose record is of an older kernel and empty
  remains.resize(92);
  remains[17] = 1;
  remains[88] = 4;
  remains[90] = 2; // INET_DIAG_INFO
  EXPECT_TRUE(parseSocketAnswer(remains, records));
  EXPECT_EQ(records.size(), 1u);
}

/// A connection over the loopback interface.
struct Connection {
  Descriptor listener{socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  Descriptor client{socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0)};
  Descriptor server;
  std::uint16_t port = 0;
  bool made = false;

  Connection() {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_loopback;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    if (bind(listener.get(), generic, length) != 0 || listen(listener.get(), 1) != 0 ||
        getsockname(listener.get(), generic, &length) != 0 || connect(client.get(), generic, length) != 0)
      return;
    server = Descriptor(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    port = ntohs(address.sin6_port);
    made = bool(server);
  }
};

TEST(SocketDiagTests, aLivingConnectionIsFoundByWalkAndByQuestion) {
  NetlinkSockets sockets;
  std::vector<SocketRecord> walked;
  const auto before = sockets.born();
  Connection connection;
  if (!before || !connection.made || !sockets.dump(walked)) GTEST_SKIP() << "no IPv6 or no diagnostics here";
  EXPECT_NE(sockets.born(), before);
  std::erase_if(walked, [&](const SocketRecord& record) {
    return record.listening || (record.localPort != connection.port && record.remotePort != connection.port);
  });
  ASSERT_EQ(walked.size(), 2u) << "both ends";
  ASSERT_EQ(write(connection.client.get(), "four", 4), 4);
  std::vector<SocketRecord> asked;
  ASSERT_TRUE(sockets.ask(walked, asked));
  ASSERT_EQ(asked.size(), 2u);
  EXPECT_EQ(asked[0].received + asked[1].received, 4u);
  for (std::size_t i = 0; i < 2; ++i) {
    auto same = walked[i];
    same.received = asked[i].received;
    same.sent = asked[i].sent;
    EXPECT_EQ(asked[i], same);
  }
  auto other = walked;
  other[0].cookie += 1'000'000; // the same ends, but another connection
  connection.client.reset();
  connection.server.reset();
  asked.clear();
  ASSERT_TRUE(sockets.ask(other, asked));
  EXPECT_TRUE(asked.empty());
}

} // namespace
} // namespace korvell
