#pragma once
// The file tree with Linux's own ways of reading folders and of passing no link.

#include "Platform/Posix/PosixFileTree.h"

namespace korvell {

class LinuxFileTree final : public PosixFileTree {
public:
  using PosixFileTree::PosixFileTree;

  std::vector<std::int64_t> sizes(const std::vector<std::string>& paths,
                                  const Cancellation& cancellation) override;
  std::optional<Date> newestChange(const std::string& folder, const std::vector<std::string_view>& ignored,
                                   Date enough, const Cancellation& cancellation) override;

protected:
  Descriptor openWithoutLinks(const std::string& folder) override;
};

} // namespace korvell
