#pragma once
// The freedesktop Trash, version 1.0: the user's own in the data home, and on every other volume the one at
// its top, ".Trash/<uid>" where the administrator made a sound ".Trash", else ".Trash-<uid>".
//
// An entry's record is made first, so that it owns the name, and is flushed to the disk; then the entry is
// renamed into place. Dying in between leaves a record without an entry, which every desktop ignores. Nothing
// is ever copied: where a rename can't do it, the outcome says so. A Trash whose folders are links is not
// used: neither is anything put there nor emptied. The same holds for the Trash of a network file system that
// the home folder does not lie on, which could not be looked for without waiting for its server (the user's
// own too, where the data home is there), and of a container's root.

#include "Base/Date.h"
#include "Base/LocalTime.h"
#include "Platform/Formats/MountTable.h"
#include "Platform/Trash.h"

#include <sys/types.h>

namespace korvell {

class LinuxTrash final : public Trash {
public:
  /// `dataHome` is where the user's data is kept; it need not exist yet. `mountInfo` is the table of mounts
  /// in the kernel's form.
  LinuxTrash(std::string home, std::string dataHome, uid_t user, const Clock& clock, const TimeZone& zone,
             std::string mountInfo = "/proc/self/mountinfo");

  std::vector<Outcome> move(const std::vector<TrashRequest>& requests) override;
  std::vector<TrashFolder> folders() override;

private:
  Outcome move(const TrashRequest& request, const std::vector<Mount>& mounts,
               const std::vector<MountedPlace>& places, const std::string& dataHome) const;
  std::string reachableDataHome(const BlockingPlaces& blocking) const;
  bool isEmptied(const std::string& top, const std::vector<Mount>& mounts) const;
  std::vector<Mount> mounts() const;

  std::string home_;
  std::string dataHome_;
  uid_t user_;
  const Clock& clock_;
  const TimeZone& zone_;
  std::string mountInfo_;
};

} // namespace korvell
