#include "Helper/Linux/ListeningSocket.h"

#include "Base/LocalAddress.h"
#include "Base/Text.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>

namespace korvell {

namespace {

constexpr int firstInherited = 3;
constexpr int backlog = 32;

int option(int socket, int name) {
  int value = -1;
  socklen_t size = sizeof value;
  return getsockopt(socket, SOL_SOCKET, name, &value, &size) == 0 ? value : -1;
}

std::string why(const char* what) { return std::string(what) + ": " + std::strerror(errno); }

/// True when a socket is there that refuses connections: its owner has ended.
bool isAbandoned(const std::string& path, const LocalAddress& address) {
  struct stat info {};
  if (lstat(path.c_str(), &info) != 0 || !S_ISSOCK(info.st_mode)) return false;
  const Descriptor probe(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  return probe && !address.connect(probe.get()) && errno == ECONNREFUSED;
}

} // namespace

std::optional<Descriptor> inheritedListener() {
  const char *pid = std::getenv("LISTEN_PID"), *count = std::getenv("LISTEN_FDS");
  if (!pid || !count || parseInteger<pid_t>(pid) != getpid() || parseInteger<int>(count) != 1)
    return std::nullopt;
  if (option(firstInherited, SO_DOMAIN) != AF_UNIX || option(firstInherited, SO_TYPE) != SOCK_SEQPACKET ||
      option(firstInherited, SO_ACCEPTCONN) != 1)
    return std::nullopt;
  fcntl(firstInherited, F_SETFD, FD_CLOEXEC);
  fcntl(firstInherited, F_SETFL, O_NONBLOCK);
  return Descriptor(firstInherited);
}

Result<Descriptor> listenAt(const std::string& path, std::optional<gid_t> group, SocketReach reach) {
  const auto address = LocalAddress::of(path);
  if (!address) return Failure{"the path is empty or too long"};
  Descriptor listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!listener) return Failure{why("socket")};
  if (isAbandoned(path, *address)) unlink(path.c_str());
  const mode_t before = umask(0177); // nobody connects before the owner is right
  const bool bound = address->bind(listener.get());
  umask(before);
  if (!bound) return Failure{why("bind")};
  if (group && chown(path.c_str(), uid_t(-1), *group) != 0) return Failure{why("the socket's group")};
  const bool isShared = group || reach == SocketReach::everyone;
  if (isShared && chmod(path.c_str(), static_cast<mode_t>(reach)) != 0)
    return Failure{why("the socket's mode")};
  if (listen(listener.get(), backlog) != 0) return Failure{why("listen")};
  return listener;
}

} // namespace korvell
