#pragma once
// Who may ask the helper: root, members of one group, and users that the administrator named. The kernel
// tells who connected, with the groups that the process had at that moment; no name service is asked.

#include <cstdint>
#include <optional>
#include <vector>

#include <sys/types.h>

namespace korvell {

struct Peer {
  uid_t user = 0;
  std::vector<gid_t> groups; ///< the effective and the supplementary ones
};

/// Nothing when the kernel does not tell.
std::optional<Peer> peerOf(int socket);

struct PeerAdmission {
  std::optional<gid_t> group;
  std::vector<uid_t> users;

  bool admits(const Peer& peer) const;
};

} // namespace korvell
