#pragma once
// The storage clean-up of the machine that a process runs on.

#include "Core/Storage/StorageScan.h"
#include "Platform/Host.h"

#include <memory>

namespace korvell {

/// With this host's table of locations. The host and the clock outlive it.
std::shared_ptr<const StorageScan> makeStorageScan(const Host& host, const Clock& clock,
                                                   CommandRunner run = Shell::run);

} // namespace korvell
