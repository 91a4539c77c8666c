#pragma once
// What is mounted in the places that a scan looks at. Nothing of it is counted or cleaned, and what a server
// or a program serves is not even looked at: one that is gone would block the scan for ever. Home folders on
// such a file system are the exception, because there everything would.

#include "Core/Storage/StorageLocations.h"
#include "Core/Storage/StorageModels.h"

namespace korvell {

/// The locations without those that are blocked.
StorageLocations withoutBlocked(StorageLocations locations, const std::vector<MountedPlace>& mounts);

/// What a kind found, without items that are mount points, and with a note about what is mounted in the
/// kind's places. Without a finding the note stands alone when it tells why there is none.
std::optional<StorageCategory> withMounts(std::optional<StorageCategory> found, StorageKind kind,
                                          const StorageLocations& locations,
                                          const std::vector<MountedPlace>& mounts);

} // namespace korvell
