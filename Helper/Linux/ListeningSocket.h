#pragma once
// The daemon's listening socket: handed over by systemd, or made under a path.

#include "Base/Descriptor.h"
#include "Base/Result.h"

#include <optional>
#include <string>

#include <sys/types.h>

namespace korvell {

/// The socket of a socket unit (sd_listen_fds(3)), when exactly one was handed to this process and it is a
/// listening local sequenced-packet socket.
std::optional<Descriptor> inheritedListener();

/// Who may connect to a socket's file. Who is answered is decided by the peer's credentials all the same.
enum class SocketReach : mode_t {
  group = 0660,    ///< root and the group
  everyone = 0666, ///< for users who are admitted one by one
};

/// Listens under `path`. A socket that nobody listens on any more is replaced; anything else that is there is
/// left alone.
Result<Descriptor> listenAt(const std::string& path, std::optional<gid_t> group,
                            SocketReach reach = SocketReach::group);

} // namespace korvell
