#include "Platform/Linux/LinuxFileTree.h"

#include "Tests/Contracts/FileTreeContract.h"
#include "Tests/Fakes/PortableFileTree.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

namespace korvell {
namespace {

template <class Tree, unsigned threads>
std::unique_ptr<FileTree> make() {
  return std::make_unique<Tree>(threads);
}

/// Runs in a process that may mount; returns its exit status, or nothing where the machine forbids it.
template <class Work>
std::optional<int> withMounts(Work work) {
  constexpr int forbidden = 77;
  const pid_t child = fork();
  if (child == 0) {
    const bool mayMount = unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
    _exit(mayMount && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 ? work() : forbidden);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == forbidden) return std::nullopt;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

TEST(LinuxFileTreeTests, otherFileSystemsAreNotEntered) {
  GeneratedTree disk;
  disk.file("a/f", 10'000);
  disk.folder("a/mounted");
  const auto expected = disk.independentSize("a");
  const auto status = withMounts([&] {
    if (mount("none", (disk / "a/mounted").c_str(), "tmpfs", 0, nullptr) != 0) return 77;
    disk.file("a/mounted/f", 10'000);
    LinuxFileTree tree(1);
    if (tree.sizes({disk / "a"}, {}).front() != expected) return 1;
    if (tree.sizes({disk / "a/mounted"}, {}).front() == 0) return 2; // as a starting point of its own
    if (tree.remove(disk.root(), {"a"}) != 0) return 3;
    return tree.info(disk / "a/mounted/f") ? 0 : 4;
  });
  if (!status) GTEST_SKIP() << "this machine lets nobody mount";
  EXPECT_EQ(status, 0);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(LinuxOneThread, FileTreeContract, testing::Values(make<LinuxFileTree, 1>));
INSTANTIATE_TEST_SUITE_P(LinuxThreads, FileTreeContract, testing::Values(make<LinuxFileTree, 4>));
INSTANTIATE_TEST_SUITE_P(Portable, FileTreeContract, testing::Values(make<PortableFileTree, 2>));

} // namespace korvell
