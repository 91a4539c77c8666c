#include "Helper/Linux/PeerAdmission.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>

namespace korvell {

std::optional<Peer> peerOf(int socket) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) return std::nullopt;
  Peer peer{credentials.uid, std::vector<gid_t>(64)};
  for (;;) {
    size = socklen_t(peer.groups.size() * sizeof(gid_t));
    if (getsockopt(socket, SOL_SOCKET, SO_PEERGROUPS, peer.groups.data(), &size) == 0) break;
    if (errno != ERANGE || size <= peer.groups.size() * sizeof(gid_t)) return std::nullopt;
    peer.groups.resize(size / sizeof(gid_t)); // the kernel told how many there are
  }
  peer.groups.resize(size / sizeof(gid_t));
  peer.groups.push_back(credentials.gid);
  return peer;
}

bool PeerAdmission::admits(const Peer& peer) const {
  if (peer.user == 0 || std::find(users.begin(), users.end(), peer.user) != users.end()) return true;
  return group && std::find(peer.groups.begin(), peer.groups.end(), *group) != peer.groups.end();
}

} // namespace korvell
