#include "Platform/Linux/SocketDiag.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
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
  synSent = 2,
  synReceived = 3,
  finWait1 = 4,
  finWait2 = 5,
  closeWait = 8,
  lastAck = 9,
  listening = 10,
  closing = 11
};
constexpr std::uint32_t listeningState = 1u << listening;
/// From the moment on in which the kernel counts a connection as born.
constexpr std::uint32_t shownStates = 1u << synSent | 1u << synReceived | 1u << established | 1u << finWait1 |
                                      1u << finWait2 | 1u << closeWait | 1u << lastAck | 1u << closing |
                                      listeningState;
constexpr std::uint8_t wantInfo = 1u << (INET_DIAG_INFO - 1);
constexpr int closedQueueBytes = 4 << 20; // at about 1.3 KB a closed socket
/// Sockets that are asked for with one message. Their answers, some 400 bytes each, all wait in the socket's
/// queue, which holds more than 100.
constexpr std::size_t askedAtOnce = 32;
constexpr std::size_t bufferBytes = 64 * 1024;
constexpr std::size_t answerBytes = bufferBytes / askedAtOnce;

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

/// Whether the counters were among them.
bool parseAttributes(std::span<const std::uint8_t> bytes, SocketRecord& record) {
  bool hasCounters = false;
  rtattr attribute;
  while (copyFront(bytes, attribute)) {
    if (attribute.rta_len < sizeof attribute || attribute.rta_len > bytes.size()) break;
    if (attribute.rta_type == INET_DIAG_INFO) {
      const auto info = bytes.subspan(sizeof attribute, attribute.rta_len - sizeof attribute);
      record.received = infoField(info, offsetof(tcp_info, tcpi_bytes_received));
      record.sent = infoField(info, offsetof(tcp_info, tcpi_bytes_acked));
      hasCounters = true;
    }
    bytes = bytes.subspan(std::min<std::size_t>(RTA_ALIGN(attribute.rta_len), bytes.size()));
  }
  return hasCounters;
}

std::optional<SocketRecord> parseMessage(std::span<const std::uint8_t> bytes) {
  inet_diag_msg message;
  if (!copyFront(bytes, message)) return std::nullopt;
  const auto& id = message.id;
  SocketRecord record{.cookie = std::uint64_t{id.idiag_cookie[1]} << 32 | id.idiag_cookie[0],
                      .inode = message.idiag_inode,
                      .user = message.idiag_uid,
                      .listening = message.idiag_state == listening,
                      .ipv6 = message.idiag_family == AF_INET6,
                      .localPort = ntohs(id.idiag_sport),
                      .remotePort = ntohs(id.idiag_dport),
                      .interface = id.idiag_if};
  const std::size_t addressBytes = record.ipv6 ? 16 : 4;
  std::memcpy(record.localAddress.data(), id.idiag_src, addressBytes);
  std::memcpy(record.remoteAddress.data(), id.idiag_dst, addressBytes);
  const bool hasCounters = parseAttributes(bytes.subspan(NLMSG_ALIGN(sizeof message)), record);
  return hasCounters || record.listening ? std::optional(record) : std::nullopt;
}

Descriptor openDiagnostics(int flags) {
  return Descriptor(socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | flags, NETLINK_SOCK_DIAG));
}

struct Question {
  nlmsghdr header;
  inet_diag_req_v2 request;
};

/// For the one socket that the record is of. What nothing else is said about is zero.
Question questionFor(const SocketRecord& record) {
  Question question;
  std::memset(&question, 0, sizeof question);
  question.header.nlmsg_len = sizeof question;
  question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
  question.header.nlmsg_flags = NLM_F_REQUEST;
  auto& request = question.request;
  request.sdiag_family = record.ipv6 ? AF_INET6 : AF_INET;
  request.sdiag_protocol = IPPROTO_TCP;
  request.idiag_ext = wantInfo;
  request.id.idiag_sport = htons(record.localPort);
  request.id.idiag_dport = htons(record.remotePort);
  std::memcpy(request.id.idiag_src, record.localAddress.data(), record.localAddress.size());
  std::memcpy(request.id.idiag_dst, record.remoteAddress.data(), record.remoteAddress.size());
  request.id.idiag_if = record.interface;
  request.id.idiag_cookie[0] = static_cast<std::uint32_t>(record.cookie);
  request.id.idiag_cookie[1] = static_cast<std::uint32_t>(record.cookie >> 32);
  return question;
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

bool parseSocketAnswer(std::span<const std::uint8_t> datagram, std::vector<SocketRecord>& into) {
  nlmsghdr header;
  if (!copyFront(datagram, header)) return false;
  if (header.nlmsg_type != NLMSG_ERROR) return parseSocketDiag(datagram, into);
  nlmsgerr answer;
  // Nobody has those addresses and ports, or another socket has them.
  return copyFront(datagram.subspan(sizeof header), answer) &&
         (answer.error == -ENOENT || answer.error == -ESTALE);
}

NetlinkSockets::NetlinkSockets()
    : queries_(openDiagnostics(0)), closings_(openDiagnostics(SOCK_NONBLOCK)),
      counters_(open("/proc/net/snmp", O_RDONLY | O_CLOEXEC)), buffer_(bufferBytes) {
  setsockopt(closings_.get(), SOL_SOCKET, SO_RCVBUF, &closedQueueBytes, sizeof closedQueueBytes);
  setsockopt(closings_.get(), SOL_SOCKET, SO_RCVBUFFORCE, &closedQueueBytes, sizeof closedQueueBytes);
  // Without an address of its own the socket would count as the sender of what the kernel multicasts.
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  bind(closings_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  for (const int group : {SKNLGRP_INET_TCP_DESTROY, SKNLGRP_INET6_TCP_DESTROY})
    setsockopt(closings_.get(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group);
}

bool NetlinkSockets::dump(std::vector<SocketRecord>& into) { return dumpStates(shownStates, into); }

bool NetlinkSockets::dumpListening(std::vector<SocketRecord>& into) {
  return dumpStates(listeningState, into);
}

bool NetlinkSockets::dumpStates(std::uint32_t states, std::vector<SocketRecord>& into) {
  into.clear();
  if (oneWalk_ && request(AF_UNSPEC, states, into)) return true;
  oneWalk_ = false;
  into.clear();
  return request(AF_INET, states, into) && request(AF_INET6, states, into);
}

bool NetlinkSockets::ask(std::span<const SocketRecord> known, std::vector<SocketRecord>& into) {
  while (!known.empty()) {
    const auto some = known.first(std::min(known.size(), askedAtOnce));
    if (!askSome(some, into)) {
      queries_ = openDiagnostics(0); // what is still in its queue answers nothing that is asked next
      return false;
    }
    known = known.subspan(some.size());
  }
  return true;
}

bool NetlinkSockets::askSome(std::span<const SocketRecord> some, std::vector<SocketRecord>& into) {
  std::array<Question, askedAtOnce> questions;
  std::ranges::transform(some, questions.begin(), questionFor);
  if (send(queries_.get(), questions.data(), some.size() * sizeof(Question), 0) < 0) return false;
  std::array<iovec, askedAtOnce> places{};
  std::array<mmsghdr, askedAtOnce> answers{};
  for (std::size_t i = 0; i < some.size(); ++i) {
    places[i] = {buffer_.data() + i * answerBytes, answerBytes};
    answers[i].msg_hdr.msg_iov = &places[i];
    answers[i].msg_hdr.msg_iovlen = 1;
  }
  // The kernel has answered before send() returns, each question with one datagram.
  const auto count = static_cast<unsigned>(some.size());
  if (recvmmsg(queries_.get(), answers.data(), count, MSG_DONTWAIT, nullptr) != static_cast<int>(count))
    return false;
  for (std::size_t i = 0; i < some.size(); ++i)
    if (!parseSocketAnswer({buffer_.data() + i * answerBytes, answers[i].msg_len}, into)) return false;
  return true;
}

std::optional<ConnectionsBorn> NetlinkSockets::born() {
  const auto bytes = pread(counters_.get(), buffer_.data(), buffer_.size(), 0);
  if (bytes <= 0) return std::nullopt;
  return parseConnectionsBorn({reinterpret_cast<const char*>(buffer_.data()), std::size_t(bytes)});
}

bool NetlinkSockets::request(int family, std::uint32_t states, std::vector<SocketRecord>& into) {
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
    query.both.idiag_states = states;
    query.both.idiag_ext = wantInfo;
  } else {
    query.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    query.header.nlmsg_len = NLMSG_LENGTH(sizeof query.one);
    query.one = {.sdiag_family = static_cast<std::uint8_t>(family),
                 .sdiag_protocol = IPPROTO_TCP,
                 .idiag_ext = wantInfo,
                 .idiag_states = states};
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
