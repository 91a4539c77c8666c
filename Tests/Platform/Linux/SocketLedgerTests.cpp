#include "Platform/Linux/SocketLedger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::IsEmpty;

SocketRecord connection(std::uint64_t cookie, std::uint64_t in, std::uint64_t out) {
  return {.cookie = cookie,
          .inode = std::uint32_t(cookie * 10),
          .user = 1000,
          .localPort = 40000,
          .remotePort = 443,
          .received = in,
          .sent = out};
}
SocketRecord listener(std::uint64_t cookie, std::uint16_t port) {
  return {.cookie = cookie, .inode = std::uint32_t(cookie * 10), .listening = true, .localPort = port};
}
SocketRecord closed(SocketRecord record) {
  record.inode = 0;
  return record;
}
using Records = std::vector<SocketRecord>;

struct SocketLedgerTests : testing::Test {
  SocketLedger ledger;
  void cycle(const Records& alive, const Records& closed = {}) { ledger.update(alive, closed); }
};

TEST_F(SocketLedgerTests, closingConnectionsHandInTheirLastBytesOnce) {
  const struct {
    const char* what;
    Records alive, closed;
  } rows[] = {{"the cycle finds it closed", {}, {closed(connection(1, 150, 40))}},
              {"it is on both lists", {connection(1, 120, 10)}, {closed(connection(1, 150, 40))}}};
  for (const auto& row : rows) {
    ledger = {};
    cycle({});
    cycle({connection(1, 100, 10)});
    ledger.assign(10, 7);
    EXPECT_EQ(ledger.total(7), (ByteCounters{100, 10})) << row.what;
    cycle(row.alive, row.closed);
    cycle({});
    EXPECT_EQ(ledger.total(7), (ByteCounters{150, 40})) << row.what;
  }
  ledger = {};
  cycle({});
  cycle({connection(1, 100, 0)});
  ledger.assign(10, 7);
  cycle({});
  cycle({}, {closed(connection(1, 900, 0))});
  EXPECT_EQ(ledger.total(7).in, 900u) << "last words may come a cycle late";
}

TEST_F(SocketLedgerTests, whatWasCountedBeforeTheFirstLookIsNobodys) {
  cycle({connection(1, 5000, 5000)});
  ledger.assign(10, 7);
  EXPECT_EQ(ledger.total(7), ByteCounters{});
  cycle({connection(1, 5001, 5002)});
  EXPECT_EQ(ledger.total(7), (ByteCounters{1, 2}));
  for (const std::uint64_t steppedBack : {4000, 5001}) {
    cycle({connection(1, steppedBack, 5002)});
    EXPECT_EQ(ledger.total(7), (ByteCounters{1, 2})) << "nothing counts twice";
  }
}

TEST_F(SocketLedgerTests, shortConnectionsBelongToWhoHeldTheLastOneOrListens) {
  cycle({});
  cycle({connection(1, 1, 1), listener(2, 8080)});
  ledger.assign(10, 7);
  ledger.assign(20, 8);
  auto accepted = connection(4, 0, 300);
  accepted.localPort = 8080, accepted.remotePort = 50123;
  auto elsewhere = connection(5, 77, 0);
  elsewhere.remotePort = 25;
  cycle({listener(2, 8080)}, {closed(connection(3, 20, 2)), closed(accepted), closed(elsewhere)});
  EXPECT_EQ(ledger.total(7), (ByteCounters{21, 3}));
  EXPECT_EQ(ledger.total(8), (ByteCounters{0, 300}));
  EXPECT_EQ(ledger.listeningPorts(), (PortsByPID{{8, {8080}}}));
}

TEST_F(SocketLedgerTests, aSocketOutlivesItsHolder) {
  cycle({});
  cycle({connection(1, 100, 0)});
  ledger.assign(10, 7);
  ledger.forget(7);
  cycle({connection(1, 150, 0)});
  EXPECT_TRUE(ledger.wanted().contains(10));
  ledger.assign(10, 9); // the child that inherited it
  EXPECT_EQ(ledger.total(9).in, 50u);
  EXPECT_EQ(ledger.total(7).in, 0u);
}

TEST_F(SocketLedgerTests, aListeningSocketIsServedByAllThatHoldIt) {
  cycle({});
  cycle({listener(2, 8080)});
  for (const ProcessID pid : {8, 9, 9}) ledger.assign(20, pid);
  EXPECT_TRUE(ledger.wanted().contains(20)) << "the scan goes on";
  ledger.settle();
  EXPECT_THAT(ledger.wanted(), IsEmpty());
  cycle({listener(2, 8080), connection(1, 5, 0)});
  ledger.assign(20, 10); // forked later, met while the connection's holder was looked for
  EXPECT_EQ(ledger.listeningPorts(), (PortsByPID{{8, {8080}}, {9, {8080}}, {10, {8080}}}));
  ledger.forget(9);
  ledger.forget(8);
  cycle({listener(2, 8080)});
  EXPECT_EQ(ledger.listeningPorts(), (PortsByPID{{10, {8080}}}));
  EXPECT_THAT(ledger.wanted(), IsEmpty());
}

TEST_F(SocketLedgerTests, whatNobodyHoldsIsLookedForLessAndLessOften) {
  int looks = 0;
  for (int i = 0; i < 200; ++i) {
    cycle({connection(1, 0, 0), closed(connection(2, 0, 0))});
    looks += ledger.wanted().contains(10);
    EXPECT_FALSE(ledger.wanted().contains(0));
    ledger.giveUp();
  }
  EXPECT_EQ(looks, 4); // cycles 1, 16, 46, 106
  EXPECT_THAT(ledger.wanted(), IsEmpty());
}

TEST(SocketDiagTests, damagedDatagramsAreRefused) {
  // One message of 72 + 16 bytes: header, inet_diag_msg, no attributes.
  std::vector<std::uint8_t> datagram(88);
  datagram[0] = 88;
  datagram[4] = 20;                         // SOCK_DIAG_BY_FAMILY
  datagram[16] = 2;                         // AF_INET
  datagram[17] = 10;                        // listening
  datagram[20] = 0x1f, datagram[21] = 0x90; // port 8080, in network order
  datagram[84] = 99;                        // inode
  Records records;
  EXPECT_TRUE(parseSocketDiag(datagram, records));
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].localPort, 8080);
  EXPECT_EQ(records[0].inode, 99u);
  EXPECT_TRUE(records[0].listening);
  for (std::size_t length = 1; length < 88; ++length) {
    Records none;
    parseSocketDiag(std::span(datagram).first(length), none);
    EXPECT_THAT(none, IsEmpty()) << length;
  }
  datagram[0] = 20; // a message too short for what it should carry
  records.clear();
  parseSocketDiag(std::span(datagram).first(20), records);
  EXPECT_THAT(records, IsEmpty());
}

} // namespace
} // namespace korvell
