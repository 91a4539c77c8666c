#include "Platform/Linux/SocketDiag.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

namespace korvell {

namespace {

// States of include/net/tcp_states.h, which user space is not given.
enum TCPState {
  established = 1,
  finWait1 = 4,
  finWait2 = 5,
  closeWait = 8,
  lastAck = 9,
  listening = 10,
  closing = 11
};
constexpr std::uint32_t shownStates = 1u << established | 1u << finWait1 | 1u << finWait2 | 1u << closeWait |
                                      1u << lastAck | 1u << listening | 1u << closing;
constexpr std::uint8_t wantInfo = 1u << (INET_DIAG_INFO - 1);
constexpr int closedQueueBytes = 4 << 20; // at about 1.3 KB a closed socket

template <class T>
bool copyFront(std::span<const std::uint8_t> bytes, T& into) {
  if (bytes.size() < sizeof(T)) return false;
  std::memcpy(&into, bytes.data(), sizeof(T));
  return true;
}

std::uint64_t infoField(std::span<const std::uint8_t> info, std::size_t offset) {
  std::uint64_t value = 0; // older kernels write a shorter record
  if (info.size() >= offset + sizeof value) std::memcpy(&value, info.data() + offset, sizeof value);
  return value;
}

void parseAttributes(std::span<const std::uint8_t> bytes, SocketRecord& record) {
  rtattr attribute;
  while (copyFront(bytes, attribute)) {
    if (attribute.rta_len < sizeof attribute || attribute.rta_len > bytes.size()) return;
    if (attribute.rta_type == INET_DIAG_INFO) {
      const auto info = bytes.subspan(sizeof attribute, attribute.rta_len - sizeof attribute);
      record.received = infoField(info, offsetof(tcp_info, tcpi_bytes_received));
      record.sent = infoField(info, offsetof(tcp_info, tcpi_bytes_acked));
    }
    bytes = bytes.subspan(std::min<std::size_t>(RTA_ALIGN(attribute.rta_len), bytes.size()));
  }
}

std::optional<SocketRecord> parseMessage(std::span<const std::uint8_t> bytes) {
  inet_diag_msg message;
  if (!copyFront(bytes, message)) return std::nullopt;
  const auto& id = message.id;
  SocketRecord record{.cookie = std::uint64_t{id.idiag_cookie[1]} << 32 | id.idiag_cookie[0],
                      .inode = message.idiag_inode,
                      .user = message.idiag_uid,
                      .listening = message.idiag_state == listening,
                      .localPort = ntohs(id.idiag_sport),
                      .remotePort = ntohs(id.idiag_dport)};
  std::memcpy(record.remoteAddress.data(), id.idiag_dst, message.idiag_family == AF_INET6 ? 16 : 4);
  parseAttributes(bytes.subspan(NLMSG_ALIGN(sizeof message)), record);
  return record;
}

} // namespace

bool parseSocketDiag(std::span<const std::uint8_t> datagram, std::vector<SocketRecord>& into) {
  nlmsghdr header;
  while (copyFront(datagram, header)) {
    if (header.nlmsg_len < sizeof header || header.nlmsg_len > datagram.size()) return false;
    if (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR) return false;
    if (const auto record = parseMessage(datagram.first(header.nlmsg_len).subspan(sizeof header)))
      into.push_back(*record);
    datagram = datagram.subspan(std::min<std::size_t>(NLMSG_ALIGN(header.nlmsg_len), datagram.size()));
  }
  return true;
}

NetlinkSockets::NetlinkSockets()
    : queries_(socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG)),
      closings_(socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_SOCK_DIAG)),
      buffer_(64 * 1024) {
  setsockopt(closings_.get(), SOL_SOCKET, SO_RCVBUF, &closedQueueBytes, sizeof closedQueueBytes);
  setsockopt(closings_.get(), SOL_SOCKET, SO_RCVBUFFORCE, &closedQueueBytes, sizeof closedQueueBytes);
  // Without an address of its own the socket would count as the sender of what the kernel multicasts.
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  bind(closings_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  for (const int group : {SKNLGRP_INET_TCP_DESTROY, SKNLGRP_INET6_TCP_DESTROY})
    setsockopt(closings_.get(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group);
}

bool NetlinkSockets::dump(std::vector<SocketRecord>& into) {
  into.clear();
  if (oneWalk_ && request(AF_UNSPEC, into)) return true;
  oneWalk_ = false;
  into.clear();
  return request(AF_INET, into) && request(AF_INET6, into);
}

bool NetlinkSockets::request(int family, std::vector<SocketRecord>& into) {
  struct {
    nlmsghdr header;
    union {
      inet_diag_req both;
      inet_diag_req_v2 one;
    };
  } query;
  std::memset(&query, 0, sizeof query);
  query.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  if (family == AF_UNSPEC) {
    query.header.nlmsg_type = TCPDIAG_GETSOCK;
    query.header.nlmsg_len = NLMSG_LENGTH(sizeof query.both);
    query.both.idiag_states = shownStates;
    query.both.idiag_ext = wantInfo;
  } else {
    query.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    query.header.nlmsg_len = NLMSG_LENGTH(sizeof query.one);
    query.one = {.sdiag_family = static_cast<std::uint8_t>(family),
                 .sdiag_protocol = IPPROTO_TCP,
                 .idiag_ext = wantInfo,
                 .idiag_states = shownStates};
  }
  if (send(queries_.get(), &query, query.header.nlmsg_len, 0) < 0) return false;
  for (;;) {
    const auto bytes = recv(queries_.get(), buffer_.data(), buffer_.size(), 0);
    if (bytes < static_cast<long>(sizeof(nlmsghdr))) return false;
    if (parseSocketDiag({buffer_.data(), static_cast<std::size_t>(bytes)}, into)) continue;
    // The last message tells whether the answer is complete.
    nlmsghdr header;
    std::memcpy(&header, buffer_.data(), sizeof header);
    return header.nlmsg_type != NLMSG_ERROR;
  }
}

void NetlinkSockets::drainClosed(std::vector<SocketRecord>& into) {
  into.clear();
  for (;;) {
    const auto bytes = recv(closings_.get(), buffer_.data(), buffer_.size(), 0);
    if (bytes > 0) {
      parseSocketDiag({buffer_.data(), static_cast<std::size_t>(bytes)}, into);
    } else if (bytes == 0 || errno != ENOBUFS) {
      return; // nothing more; after a full queue (ENOBUFS) what is left in it still counts
    }
  }
}

} // namespace korvell
