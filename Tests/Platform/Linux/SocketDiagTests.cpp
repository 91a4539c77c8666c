#include "Platform/Linux/SocketDiag.h"

#include <gtest/gtest.h>

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

} // namespace
} // namespace korvell
