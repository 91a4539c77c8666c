#pragma once
// The file tree with Linux's own ways of reading folders, of passing no link and of staying on one mount.

#include "Platform/Posix/PosixFileTree.h"

namespace korvell {

class LinuxFileTree final : public PosixFileTree {
public:
  /// `mountInfo` is the table of mounts in the kernel's form.
  explicit LinuxFileTree(unsigned threads = 0, std::string mountInfo = "/proc/self/mountinfo");

  std::vector<MountedPlace> mounts() override;
  std::vector<std::int64_t> sizes(const std::vector<std::string>& paths,
                                  const Cancellation& cancellation) override;
  std::optional<Date> newestChange(const std::string& folder, const std::vector<std::string_view>& ignored,
                                   Date enough, const Cancellation& cancellation) override;

protected:
  Descriptor openWithoutLinks(const std::string& folder) override;
  FolderOpener opener() const override;
  bool isMountPoint(int folder, const char* name) const override;

private:
  std::string mountInfo_;
};

} // namespace korvell
