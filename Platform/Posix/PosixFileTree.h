#pragma once
// The file tree through what both systems share. A system adds how a folder is opened without following any
// link, and may replace what it can do faster or knows better.

#include "Base/Descriptor.h"
#include "Platform/FileTree.h"
#include "Platform/Posix/FileTreeRemoval.h"

#include <sys/stat.h>

namespace korvell {

class PosixFileTree : public FileTree {
public:
  /// `threads` that may measure at the same time; 0: as many as help on this machine.
  explicit PosixFileTree(unsigned threads = 0);

  std::optional<std::string> located(const std::string& path) override;
  std::string resolved(const std::string& path, const BlockingPlaces& blocking) override;
  std::optional<FileInfo> info(const std::string& path) override;
  FolderListing list(const std::string& folder) override;
  bool isExecutable(const std::string& path) override;
  std::vector<std::int64_t> sizes(const std::vector<std::string>& paths,
                                  const Cancellation& cancellation) override;
  std::optional<Date> newestChange(const std::string& folder, const std::vector<std::string_view>& ignored,
                                   Date enough, const Cancellation& cancellation) override;
  std::vector<Removal> remove(const std::string& folder, const std::vector<std::string>& names,
                              const Cancellation& cancellation) override;

protected:
  /// The folder of an absolute path, opened for reading; not open when any part of the path is a link.
  virtual Descriptor openWithoutLinks(const std::string& folder) = 0;
  /// How the folders of a tree that is removed are opened.
  virtual FolderOpener opener() const;
  /// Whether something is mounted on a folder in an open folder.
  virtual bool isMountPoint(int folder, const char* name) const;
  /// When a file came into its folder.
  virtual Date added(const std::string& path, const struct stat& status);

  unsigned threads() const { return threads_; }

private:
  unsigned threads_;
};

/// True for a name that means an entry of a folder and nothing else: not empty, no "/", not "." or "..".
bool isPlainName(std::string_view name);

} // namespace korvell
