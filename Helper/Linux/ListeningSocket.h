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

/// Listens under `path`, which root and the group may connect to (mode 0660). A socket that nobody listens on
/// any more is replaced; anything else that is there is left alone.
Result<Descriptor> listenAt(const std::string& path, std::optional<gid_t> group);

} // namespace korvell
