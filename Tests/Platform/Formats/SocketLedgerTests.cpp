#include "Platform/Formats/SocketLedger.h"

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

TEST_F(SocketLedgerTests, othersAreWalkedSeldomAndOnlyForWhatThoseThatRanDoNotHold) {
  using Walk = SocketLedger::Walk;
  std::vector<Walk> walks;
  const auto find = [&](double now, ProcessID ran, ProcessID others = 0) {
    walks.clear();
    ledger.findHolders(Seconds{now}, [&](Walk walk) {
      walks.push_back(walk);
      if (const auto pid = walk == Walk::thoseThatRan ? ran : others) ledger.assign(10, pid);
    });
    return walks;
  };
  EXPECT_THAT(find(0, 7), IsEmpty()) << "nothing is wanted";
  cycle({connection(1, 0, 0)});
  EXPECT_EQ(find(1, 7), (std::vector{Walk::thoseThatRan}));
  const std::vector both{Walk::thoseThatRan, Walk::allOthers};
  ledger.forget(7);
  cycle({connection(1, 0, 0)});
  EXPECT_EQ(find(2, 0, 8), both);
  ledger.forget(8);
  cycle({connection(1, 0, 0)});
  EXPECT_EQ(find(7.9, 0, 8), (std::vector{Walk::thoseThatRan})) << "all others were walked six seconds ago";
  EXPECT_EQ(find(8, 0), both);
  cycle({connection(1, 0, 0)});
  EXPECT_THAT(find(20, 7), IsEmpty()) << "given up for a while";
}

TEST_F(SocketLedgerTests, aSocketThatClosedWhileItWasListedIsLookedForNoMore) {
  const Records all{connection(1, 10, 0), listener(2, 80), connection(3, 10, 0)};
  cycle({});
  cycle(all, {closed(all[0]), closed(all[1])});
  EXPECT_EQ(ledger.wanted().size(), 1u);
  ledger.findHolders(Seconds{1}, [&](SocketLedger::Walk) {
    for (const auto& record : all) ledger.assign(record.inode, 7); // they are still open in a descriptor
  });
  EXPECT_EQ(ledger.total(7).in, 10u);
  EXPECT_THAT(ledger.listeningPorts(), IsEmpty());
}

} // namespace
} // namespace korvell
