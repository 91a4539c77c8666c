#include "Platform/Linux/HelperSocket.h"

#include "Base/LocalAddress.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <poll.h>
#include <sys/socket.h>

namespace korvell {

HelperSocket::Answer HelperSocket::probe(const std::string& path) {
  const auto address = LocalAddress::of(path);
  const Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!address || !socket) return Answer::nobody;
  if (address->connect(socket.get()) || errno == EAGAIN) return Answer::listening; // or too busy just now
  return errno == EACCES ? Answer::forbidden : Answer::nobody;
}

std::shared_ptr<HelperSocket> HelperSocket::connect(const std::string& path, std::function<void()> lost) {
  const auto address = LocalAddress::of(path);
  Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!address || !socket || !address->connect(socket.get())) return nullptr;
  return std::shared_ptr<HelperSocket>(new HelperSocket(std::move(socket), std::move(lost)));
}

void HelperSocket::request(std::span<const ProcessID> pids, Handler handler) {
  handler_ = std::move(handler);
  answer_ = {};
  const auto packet = UsagePackets::request(pids);
  const auto sent =
      socket_ ? send(socket_.get(), packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL) : -1;
  if (sent == ssize_t(packet.size())) return;
  close();
  give(std::nullopt);
}

void HelperSocket::await(Seconds timeout) {
  const SystemClock clock;
  const auto deadline = clock.monotonic() + timeout;
  while (handler_) {
    const auto state = readPackets();
    if (state == UsageAnswerReader::State::complete) return give(std::move(answer_.records()));
    if (state == UsageAnswerReader::State::malformed) {
      close();
      return give(std::nullopt);
    }
    const auto left = deadline - clock.monotonic();
    if (left <= Seconds{0}) {
      handler_ = nullptr;
      return close();
    }
    pollfd readable{socket_.get(), POLLIN, 0};
    poll(&readable, 1, int(std::clamp(std::ceil(left.count() * 1000), 0.0, 60'000.0)));
  }
}

/// Takes the packets that are there; the end of the connection counts as malformed.
UsageAnswerReader::State HelperSocket::readPackets() {
  std::vector<std::uint8_t> buffer(UsagePackets::mostAnswerPacket + 1);
  auto state = UsageAnswerReader::State::incomplete;
  while (state == UsageAnswerReader::State::incomplete) {
    const auto size = recv(socket_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (size < 0) return errno == EAGAIN || errno == EINTR ? state : UsageAnswerReader::State::malformed;
    state = answer_.take(std::span(buffer).first(std::size_t(size)));
  }
  return state;
}

void HelperSocket::give(UsageHelperAnswer answer) {
  if (const auto handler = std::exchange(handler_, nullptr)) handler(std::move(answer));
}

void HelperSocket::close() {
  socket_.reset();
  if (const auto lost = std::exchange(lost_, nullptr)) lost();
}

} // namespace korvell
