#include "Agents/MetricsListener.h"

#include "Base/Localization.h"
#include "Base/Text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace korvell {

namespace {

struct Address {
  sockaddr_storage storage{};
  socklen_t length = 0;
  std::string host; ///< as it is written in a URL
};

/// Nothing for what is no address of the loopback with a port.
std::optional<Address> parse(std::string_view text) {
  const auto colon = text.rfind(':');
  if (colon == std::string_view::npos || !isLoopbackHost(text)) return std::nullopt;
  const auto port = parseInteger<std::uint16_t>(text.substr(colon + 1));
  if (!port) return std::nullopt;
  Address address;
  address.host = text.substr(0, colon);
  if (address.host == "[::1]") {
    auto& six = reinterpret_cast<sockaddr_in6&>(address.storage);
    six.sin6_family = AF_INET6;
    six.sin6_addr = in6addr_loopback;
    six.sin6_port = htons(*port);
    address.length = sizeof six;
    return address;
  }
  if (lowercased(address.host) == "localhost") address.host = "127.0.0.1";
  auto& four = reinterpret_cast<sockaddr_in&>(address.storage);
  four.sin_family = AF_INET;
  four.sin_port = htons(*port);
  address.length = sizeof four;
  if (inet_pton(AF_INET, address.host.c_str(), &four.sin_addr) != 1) return std::nullopt;
  return address;
}

void makePrivate(int descriptor) {
  fcntl(descriptor, F_SETFD, FD_CLOEXEC);
  fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
}

/// The port that the socket got; both families have it in the same place.
int portOf(int socket) {
  sockaddr_storage storage{};
  socklen_t length = sizeof storage;
  if (getsockname(socket, reinterpret_cast<sockaddr*>(&storage), &length) != 0) return 0;
  return ntohs(reinterpret_cast<const sockaddr_in&>(storage).sin_port);
}

} // namespace

std::string MetricsListener::refusal(std::string_view address) {
  if (parse(address)) return "";
  return localized("Korvell listens only where this machine alone can reach it: 127.0.0.1:PORT, "
                   "[::1]:PORT or localhost:PORT.");
}

Result<MetricsListener> MetricsListener::listen(std::string_view text, MetricsBody body, Limits limits) {
  const auto address = parse(text);
  if (!address) return Failure{refusal(text)};
  Descriptor socket(::socket(address->storage.ss_family, SOCK_STREAM, 0));
  constexpr int on = 1;
  if (socket) {
    makePrivate(socket.get());
    setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  }
  constexpr int backlog = 128;
  if (!socket ||
      bind(socket.get(), reinterpret_cast<const sockaddr*>(&address->storage), address->length) != 0 ||
      ::listen(socket.get(), backlog) != 0)
    return Failure{localized("Korvell can't listen at {address}: {reason}",
                             {{"address", escapedControls(text)}, {"reason", std::strerror(errno)}})};
  auto name = address->host + ":" + std::to_string(portOf(socket.get()));
  return MetricsListener(std::move(socket), std::move(name), std::move(body), limits);
}

void MetricsListener::run(const WakePipe& end) {
  for (;;) {
    const Seconds before = clock_.monotonic();
    std::vector<pollfd> polled{{end.descriptor(), POLLIN, 0},
                               {before >= noAcceptBefore_ ? listener_.get() : -1, POLLIN, 0}};
    Seconds next{60};
    if (before < noAcceptBefore_) next = noAcceptBefore_ - before;
    for (const auto& client : clients_) {
      polled.push_back({client.socket.get(), short(client.out.empty() ? POLLIN : POLLOUT), 0});
      next = std::min(next, client.deadline - before);
    }
    const bool isIdle = clients_.empty() && before >= noAcceptBefore_;
    const int wait = isIdle ? -1 : int(std::clamp(next.count() * 1000 + 1, 0.0, 60'000.0));
    if (poll(polled.data(), nfds_t(polled.size()), wait) < 0 && errno != EINTR) return;
    if (polled[0].revents != 0) return;
    const Seconds now = clock_.monotonic();
    auto events = polled.begin() + 2;
    for (auto client = clients_.begin(); client != clients_.end(); ++events) {
      const bool stays = now < client->deadline && (events->revents == 0 || serve(*client));
      client = stays ? std::next(client) : clients_.erase(client);
    }
    if (polled[1].revents != 0) accept();
  }
}

void MetricsListener::accept() {
  for (std::size_t count = 0; count < limits_.clients; ++count) {
    Descriptor socket(::accept(listener_.get(), nullptr, nullptr));
    if (!socket) {
      if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS)
        noAcceptBefore_ = clock_.monotonic() + Seconds{1};
      return;
    }
    makePrivate(socket.get());
    if (clients_.size() >= limits_.clients) clients_.pop_front();
    clients_.push_back({.socket = std::move(socket), .deadline = clock_.monotonic() + limits_.patience});
    // Most requests are there already: who is answered at once can't be crowded out.
    if (!receive(clients_.back())) clients_.pop_back();
  }
}

bool MetricsListener::serve(Client& client) { return client.out.empty() ? receive(client) : send(client); }

bool MetricsListener::receive(Client& client) {
  char buffer[4096];
  const auto count = read(client.socket.get(), buffer, sizeof buffer);
  if (count < 0) return errno == EAGAIN || errno == EINTR;
  if (count == 0) return false;
  client.in.append(buffer, std::size_t(count));
  if (const auto length = lengthOfHead(client.in))
    client.out = answerToScrape(std::string_view(client.in).substr(0, *length), body_);
  else if (client.in.size() > limits_.request)
    client.out = answerToTooMuch();
  else
    return true;
  client.deadline = clock_.monotonic() + limits_.patience;
  return send(client);
}

bool MetricsListener::send(Client& client) {
  const auto count = write(client.socket.get(), client.out.data(), client.out.size());
  if (count < 0) return errno == EAGAIN || errno == EINTR;
  client.out.erase(0, std::size_t(count));
  return !client.out.empty();
}

} // namespace korvell
