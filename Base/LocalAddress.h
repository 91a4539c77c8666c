#pragma once
// The address of a socket in the file system.

#include <optional>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>

namespace korvell {

class LocalAddress {
public:
  /// Nothing for a path that is empty or too long for an address.
  static std::optional<LocalAddress> of(const std::string& path) {
    LocalAddress local;
    if (path.empty() || path.size() >= sizeof local.address_.sun_path) return std::nullopt;
    local.address_.sun_family = AF_UNIX;
    path.copy(local.address_.sun_path, path.size());
    return local;
  }
  // False with errno set, as the calls of that name leave it.
  bool connect(int socket) const { return ::connect(socket, plain(), sizeof address_) == 0; }
  bool bind(int socket) const { return ::bind(socket, plain(), sizeof address_) == 0; }

private:
  const sockaddr* plain() const { return reinterpret_cast<const sockaddr*>(&address_); }
  sockaddr_un address_{};
};

} // namespace korvell
