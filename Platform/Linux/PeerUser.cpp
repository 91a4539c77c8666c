#include "Platform/PeerUser.h"

#include <sys/socket.h>

namespace korvell {

std::optional<std::uint32_t> peerUser(int socket) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) return std::nullopt;
  return credentials.uid;
}

} // namespace korvell
