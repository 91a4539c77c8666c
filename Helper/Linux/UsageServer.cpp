#include "Helper/Linux/UsageServer.h"

#include "Platform/Formats/UsagePackets.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <poll.h>
#include <sys/socket.h>

namespace korvell {

namespace {

constexpr int acceptsPerTurn = 16;
/// Bytes of an answer that the kernel keeps for a slow reader; it grants twice as much.
constexpr int kernelBuffer = 96 << 10;

enum class Sent { whole, notNow, failed };

Sent send(int socket, std::span<const std::uint8_t> packet) {
  if (::send(socket, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0) return Sent::whole;
  return errno == EAGAIN || errno == ENOBUFS ? Sent::notNow : Sent::failed;
}

int milliseconds(Seconds span) { return int(std::clamp(std::ceil(span.count() * 1000), 0.0, 3'600'000.0)); }

} // namespace

UsageServer::UsageServer(Descriptor listener, RusageService service, Admission admission, const Clock& clock,
                         Limits limits)
    : listener_(std::move(listener)), service_(std::move(service)), admission_(std::move(admission)),
      clock_(clock), limits_(limits), lastRequest_(clock.monotonic()) {}

void UsageServer::turn(Seconds longest) {
  std::vector<pollfd> descriptors{{listener_.get(), POLLIN, 0}};
  for (const auto& connection : connections_) {
    const bool isFull = !connection.waiting.empty(); // the only thing that an answer waits for
    if (connection.answering)
      longest = isFull ? std::min(longest, connection.deadline - clock_.monotonic()) : Seconds{0};
    const short events = connection.answering ? (isFull ? POLLOUT : 0) : POLLIN;
    descriptors.push_back({connection.socket.get(), events, 0});
  }
  if (poll(descriptors.data(), descriptors.size(), milliseconds(longest)) < 0) return;

  std::vector<Connection> staying;
  for (std::size_t i = 0; i < connections_.size(); ++i)
    if (serve(connections_[i], descriptors[i + 1].revents) == Fate::stays)
      staying.push_back(std::move(connections_[i]));
  connections_ = std::move(staying);
  if (descriptors[0].revents & POLLIN) acceptNew();
}

void UsageServer::acceptNew() {
  for (int i = 0; i < acceptsPerTurn; ++i) {
    Descriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket) return;
    setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &kernelBuffer, sizeof kernelBuffer);
    const auto user = admission_(socket.get());
    if (!user || !makeRoom(*user)) continue;
    Connection connection;
    connection.socket = std::move(socket);
    connection.user = *user;
    connection.lastHeard = clock_.monotonic();
    connections_.push_back(std::move(connection));
  }
}

/// Gives up the connection that was silent longest when there is no room for another one; false when all are
/// being answered.
bool UsageServer::makeRoom(std::uint32_t user) {
  const auto ofUser = std::count_if(connections_.begin(), connections_.end(),
                                    [user](const auto& connection) { return connection.user == user; });
  const bool userIsFull = std::size_t(ofUser) >= limits_.connectionsOfOneUser;
  if (!userIsFull && connections_.size() < limits_.connections) return true;
  auto silent = connections_.end();
  for (auto it = connections_.begin(); it != connections_.end(); ++it) {
    if (it->answering || (userIsFull && it->user != user)) continue;
    if (silent == connections_.end() || it->lastHeard < silent->lastHeard) silent = it;
  }
  if (silent == connections_.end()) return false;
  connections_.erase(silent);
  return true;
}

UsageServer::Fate UsageServer::serve(Connection& connection, short events) {
  if (connection.answering) {
    if (clock_.monotonic() >= connection.deadline) return finish(connection);
    return events || connection.waiting.empty() ? answer(connection) : Fate::stays;
  }
  return events ? receive(connection) : Fate::stays;
}

UsageServer::Fate UsageServer::receive(Connection& connection) {
  std::array<std::uint8_t, UsagePackets::mostRequestBytes + 1> buffer; // one more shows what is too long
  const auto size = recv(connection.socket.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
  if (size < 0) return errno == EAGAIN || errno == EINTR ? Fate::stays : Fate::closes;
  auto pids = UsagePackets::parseRequest(std::span(buffer).first(std::size_t(size)));
  if (!pids) return Fate::closes;
  service_.noteRequest();
  lastRequest_ = connection.lastHeard = clock_.monotonic();
  connection.deadline = lastRequest_ + limits_.answerTime;
  connection.pids = std::move(*pids);
  connection.next = connection.sent = 0;
  connection.answering = true;
  return answer(connection);
}

/// Sends the next packet, or the end.
UsageServer::Fate UsageServer::answer(Connection& connection) {
  auto& waiting = connection.waiting;
  if (waiting.empty() && connection.next < connection.pids.size()) {
    const auto left = std::span(connection.pids).subspan(connection.next);
    const auto part = left.first(std::min(left.size(), processesAtOnce));
    waiting = RusageSample::encode(service_.read(part));
    connection.next += part.size();
  }
  if (waiting.empty()) return connection.next < connection.pids.size() ? Fate::stays : finish(connection);
  const auto sent = send(connection.socket.get(), waiting);
  if (sent == Sent::failed) return Fate::closes;
  if (sent == Sent::notNow) return Fate::stays;
  if (connection.ending) return done(connection);
  connection.sent += std::uint32_t(waiting.size() / RusageSample::recordSize);
  waiting.clear();
  return connection.next == connection.pids.size() ? finish(connection) : Fate::stays;
}

/// Sends the end. A reader that is only a moment behind gets it while the answer's time lasts.
UsageServer::Fate UsageServer::finish(Connection& connection) {
  auto end = UsagePackets::end(connection.sent);
  const auto sent = send(connection.socket.get(), end);
  if (sent == Sent::whole) return done(connection);
  if (sent == Sent::failed || clock_.monotonic() >= connection.deadline) return Fate::closes;
  connection.waiting = std::move(end);
  connection.ending = true;
  return Fate::stays;
}

UsageServer::Fate UsageServer::done(Connection& connection) {
  connection.answering = connection.ending = false;
  connection.pids = {};
  connection.waiting = {};
  return Fate::stays;
}

} // namespace korvell
