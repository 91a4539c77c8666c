#include "App/KeeperClient.h"

#include "App/KeeperLock.h"
#include "App/LineServer.h"

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <vector>

namespace korvell {

namespace {

constexpr std::size_t longestAnswer = std::size_t{64} << 20;

} // namespace

std::optional<KeeperClient> KeeperClient::connect(const UserFolders& folders) {
  std::vector<std::string> places;
  if (const auto said = keeperAnnouncement(folders))
    places = {said->socket};
  else if (isKeeperRunning(folders))
    places = {keeperSocketPath(folders), spareSocketPath(folders)};
  for (const auto& path : places)
    if (Descriptor socket = connectLocal(path); socket && isSameUser(socket.get()))
      return KeeperClient(std::move(socket));
  return std::nullopt;
}

std::optional<Value> KeeperClient::ask(const Value& request, Seconds patience) {
  const Seconds limit = clock_.monotonic() + patience;
  if (isLost_ || !send(dumpJSON(request) + "\n", limit)) return std::nullopt;
  return next(limit - clock_.monotonic());
}

void KeeperClient::hangUp() const { shutdown(socket_.get(), SHUT_RDWR); }

std::optional<Value> KeeperClient::next(Seconds patience) {
  const auto line = !isLost_ ? readLine(clock_.monotonic() + patience) : std::nullopt;
  auto answer = line ? parseJSON(*line) : std::nullopt;
  if (!answer) isLost_ = true; // a late answer must not be taken for that of the next request
  return answer;
}

bool KeeperClient::waitFor(short events, Seconds limit) const {
  for (;;) {
    const double left = (limit - clock_.monotonic()).count() * 1000;
    pollfd polled{socket_.get(), events, 0};
    const int count = poll(&polled, 1, int(std::clamp(left + 1, 0.0, 60'000.0)));
    if (count > 0) return true;
    if ((count < 0 && errno != EINTR) || clock_.monotonic() >= limit) return false;
  }
}

bool KeeperClient::send(std::string_view bytes, Seconds limit) {
  while (!bytes.empty()) {
    const auto count = write(socket_.get(), bytes.data(), bytes.size());
    if (count > 0) bytes.remove_prefix(std::size_t(count));
    if (count < 0 && errno != EINTR && (errno != EAGAIN || !waitFor(POLLOUT, limit))) return false;
  }
  return true;
}

std::optional<std::string> KeeperClient::readLine(Seconds limit) {
  char buffer[16 << 10];
  for (std::size_t searched = 0;;) {
    if (const auto end = pending_.find('\n', searched); end != std::string::npos) {
      auto line = pending_.substr(0, end);
      pending_.erase(0, end + 1);
      return line;
    }
    searched = pending_.size();
    if (searched > longestAnswer || !waitFor(POLLIN, limit)) return std::nullopt;
    const auto count = read(socket_.get(), buffer, sizeof buffer);
    if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) return std::nullopt;
    if (count > 0) pending_.append(buffer, std::size_t(count));
  }
}

} // namespace korvell
