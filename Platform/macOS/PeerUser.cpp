#include "Platform/PeerUser.h"

#include <sys/types.h>
#include <unistd.h>

namespace korvell {

std::optional<std::uint32_t> peerUser(int socket) {
  uid_t user = 0;
  gid_t group = 0;
  if (getpeereid(socket, &user, &group) != 0) return std::nullopt;
  return user;
}

} // namespace korvell
