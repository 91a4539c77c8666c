#include "Platform/Linux/LinuxFileTree.h"

#include "Tests/Contracts/FileTreeContract.h"
#include "Tests/Fakes/PortableFileTree.h"

#include <cstddef>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
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

/// From now on the kernel behaves as one without openat2.
bool forbidOpenat2() {
  sock_filter program[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat2, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog filter{std::size(program), program};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

struct MountTests : testing::TestWithParam<bool> {};

TEST_P(MountTests, whatIsMountedIsNotEntered) {
  GeneratedTree disk;
  disk.file("a/f", 10'000);
  disk.file("precious/f", 10'000);
  disk.date("precious", Date{5e9});
  for (const auto* place : {"a/other", "a/same"}) disk.folder(place);
  disk.file("a/file", 0);
  const auto expected = disk.independentSize("a");
  const auto status = withMounts([&] {
    const auto precious = disk / "precious";
    if (mount("none", (disk / "a/other").c_str(), "tmpfs", 0, nullptr) != 0 ||
        mount(precious.c_str(), (disk / "a/same").c_str(), nullptr, MS_BIND, nullptr) != 0 ||
        mount((precious + "/f").c_str(), (disk / "a/file").c_str(), nullptr, MS_BIND, nullptr) != 0)
      return 77;
    if (GetParam() && !forbidOpenat2()) return 77;
    disk.file("a/other/f", 10'000);
    LinuxFileTree tree(1);
    if (tree.sizes({disk / "a"}, {}).front() != expected) return 1;
    if (tree.sizes({disk / "a/same"}, {}).front() == 0) return 2; // as a starting point of its own
    const std::vector<FolderEntry> listed = {{"f", FileKind::regular},
                                             {"file", FileKind::regular},
                                             {"other", FileKind::mountPoint},
                                             {"same", FileKind::mountPoint}};
    if (tree.list(disk / "a").entries != listed) return 3;
    if (tree.newestChange(disk / "a", {"file"}, Date{1e18}, {}) >= Date{5e9}) return 4;
    const auto mounts = tree.mounts();
    for (const auto* place : {"a/other", "a/same", "a/file"})
      if (!mountInside(disk / place, mounts)) return 5;
    const auto removal = tree.remove(disk.root(), {"a"}, {}).front();
    if (removal.outcome || removal.freed != expected) return 6;
    return tree.info(disk / "a/other/f") && tree.info(disk / "a/same/f") ? 0 : 7;
  });
  if (!status) GTEST_SKIP() << "this machine lets nobody mount";
  EXPECT_EQ(status, 0);
  EXPECT_THAT(disk.names("precious"), ElementsAre("f"));
}

INSTANTIATE_TEST_SUITE_P(Kernels, MountTests, testing::Bool(), [](const auto& info) {
  return std::string(info.param ? "withoutOpenat2" : "withOpenat2");
});

} // namespace

INSTANTIATE_TEST_SUITE_P(LinuxOneThread, FileTreeContract, testing::Values(make<LinuxFileTree, 1>));
INSTANTIATE_TEST_SUITE_P(LinuxThreads, FileTreeContract, testing::Values(make<LinuxFileTree, 4>));
INSTANTIATE_TEST_SUITE_P(Portable, FileTreeContract, testing::Values(make<PortableFileTree, 2>));

} // namespace korvell
