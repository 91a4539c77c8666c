#pragma once
// A folder on the real disk in which a test builds what it needs, and an independent look at it.

#include "Base/Date.h"
#include "Base/Descriptor.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <cstdint>
#include <fcntl.h>
#include <sys/resource.h>

namespace korvell {

class GeneratedTree : public TemporaryFolder {
public:
  std::string root() const { return path().string(); }

  void folder(const std::string& name) { std::filesystem::create_directories(*this / name); }
  void file(const std::string& name, std::size_t bytes) { write(name, std::string(bytes, 'x')); }
  /// A hole with some bytes at its end.
  void sparseFile(const std::string& name, off_t length, std::size_t bytes) {
    makeParent(name);
    const Descriptor fd(open((*this / name).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    const std::string end(bytes, 'x');
    check(pwrite(fd.get(), end.data(), end.size(), length - off_t(bytes)) == ssize_t(bytes));
  }
  void link(const std::string& target, const std::string& name) {
    makeParent(name);
    check(symlink(target.c_str(), (*this / name).c_str()) == 0);
  }
  void hardLink(const std::string& existing, const std::string& name) {
    makeParent(name);
    check(::link((*this / existing).c_str(), (*this / name).c_str()) == 0);
  }
  void fifo(const std::string& name) { check(mkfifo((*this / name).c_str(), 0600) == 0); }
  void mode(const std::string& name, mode_t mode) { check(chmod((*this / name).c_str(), mode) == 0); }
  void move(const std::string& from, const std::string& to) {
    std::filesystem::rename(*this / from, *this / to);
  }
  void date(const std::string& name, Date date) {
    const timespec both[] = {{time_t(date.sinceEpoch), 0}, {time_t(date.sinceEpoch), 0}};
    check(utimensat(AT_FDCWD, (*this / name).c_str(), both, AT_SYMLINK_NOFOLLOW) == 0);
  }

  /// Folders within folders, each named `below`; on each level a file of one byte and a folder with another.
  void deepTree(const std::string& name, int depth, const std::string& below) {
    folder(name);
    Descriptor at(open((*this / name).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const auto writeByte = [](int folder, const char* name) {
      const Descriptor fd(openat(folder, name, O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
      check(::write(fd.get(), "x", 1) == 1);
    };
    for (int level = 0; level < depth; ++level) {
      writeByte(at.get(), "f");
      check(mkdirat(at.get(), "side", 0700) == 0);
      const Descriptor side(openat(at.get(), "side", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
      writeByte(side.get(), "f");
      check(mkdirat(at.get(), below.c_str(), 0700) == 0);
      at = Descriptor(openat(at.get(), below.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
  }

  /// Puts a link in the place of an entry for a moment. Does nothing when there is no such entry.
  static void exchangeForLink(const std::string& entry, const std::string& target, const std::string& aside) {
    if (rename(entry.c_str(), aside.c_str()) != 0) return;
    if (symlink(target.c_str(), entry.c_str()) == 0) unlink(entry.c_str());
    if (rename(aside.c_str(), entry.c_str()) != 0) std::filesystem::remove_all(aside);
  }

  /// Allocated bytes of the regular files with one name, by lstat alone.
  std::int64_t independentSize(const std::string& name) const {
    std::int64_t sum = ownSize(*this / name);
    const std::filesystem::path path = *this / name;
    if (std::filesystem::is_directory(std::filesystem::symlink_status(path)))
      for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
        sum += ownSize(entry.path());
    return sum;
  }
  /// What a file of one byte takes on this disk.
  std::int64_t smallestFile() {
    file("smallest-file", 1);
    return independentSize("smallest-file");
  }

private:
  static void check(bool done) {
    if (!done) throw std::runtime_error("the test's tree could not be built");
  }
  static std::int64_t ownSize(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink > 1) return 0;
    return status.st_blocks * 512;
  }
  void makeParent(const std::string& name) {
    std::filesystem::create_directories(std::filesystem::path(*this / name).parent_path());
  }
};

/// While it lives this process can't open many files.
class FewDescriptors {
public:
  explicit FewDescriptors(rlim_t count) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit few{count, before_.rlim_max};
    if (setrlimit(RLIMIT_NOFILE, &few) != 0) throw std::runtime_error("no limit of descriptors");
  }
  ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
  rlimit before_{};
};

/// While it lives the test runs without the rights of root, if it had them: the tree is handed to an ordinary
/// user first.
class AsOrdinaryUser {
public:
  explicit AsOrdinaryUser(const GeneratedTree& tree) {
    if (geteuid() != 0) return;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(tree.root())) own(entry.path());
    own(tree.root());
    changed_ = setegid(nobody) == 0 && seteuid(nobody) == 0;
  }
  ~AsOrdinaryUser() {
    if (changed_ && (seteuid(0) != 0 || setegid(0) != 0)) std::abort();
  }
  AsOrdinaryUser(const AsOrdinaryUser&) = delete;
  AsOrdinaryUser& operator=(const AsOrdinaryUser&) = delete;

private:
  static constexpr uid_t nobody = 65534;
  static void own(const std::filesystem::path& path) {
    if (lchown(path.c_str(), nobody, nobody) != 0)
      throw std::runtime_error("the tree could not be handed over");
  }
  bool changed_ = false;
};

} // namespace korvell
