#include "Helper/Linux/Confinement.h"

#include <grp.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace korvell {

namespace {

constexpr unsigned long kept[] = {CAP_SYS_PTRACE, CAP_DAC_READ_SEARCH};

bool isKept(unsigned long capability) {
  for (const auto one : kept)
    if (one == capability) return true;
  return false;
}

bool keepOnlyCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct data[2]{};
  for (const auto capability : kept) {
    data[capability / 32].effective |= 1u << (capability % 32);
    data[capability / 32].permitted |= 1u << (capability % 32);
  }
  return syscall(SYS_capset, &header, data) == 0;
}

bool leaveRoot(const Account& account) {
  for (unsigned long capability = 0; prctl(PR_CAPBSET_READ, capability, 0, 0, 0) >= 0; ++capability)
    if (!isKept(capability) && prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) != 0) return false;
  const auto [user, group] = account;
  return user != 0 && prctl(PR_SET_KEEPCAPS, 1, 0, 0, 0) == 0 && setgroups(0, nullptr) == 0 &&
         setresgid(group, group, group) == 0 && setresuid(user, user, user) == 0 && keepOnlyCapabilities();
}

bool limit(__rlimit_resource resource, rlim_t most) {
  const rlimit limits{most, most};
  return setrlimit(resource, &limits) == 0;
}

} // namespace

bool confineProcess(const Account& account) {
  if (geteuid() == 0 && !leaveRoot(account)) return false;
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && limit(RLIMIT_FSIZE, 0) && limit(RLIMIT_CORE, 0) &&
         limit(RLIMIT_NOFILE, 64) && limit(RLIMIT_NPROC, 0);
}

} // namespace korvell
