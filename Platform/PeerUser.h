#pragma once
// Who is at the other end of a local socket, as the kernel tells it; nothing when it does not.

#include <cstdint>
#include <optional>

namespace korvell {

/// The effective user id of the process that connected, or that listens.
std::optional<std::uint32_t> peerUser(int socket);

} // namespace korvell
