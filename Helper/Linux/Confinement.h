#pragma once
// What the daemon gives up before it looks at its first request. The service unit takes away more (file
// system, network, system calls); this is what holds under any supervisor.

#include <sys/types.h>

namespace korvell {

struct Account {
  uid_t user = 0;
  gid_t group = 0;
};

/// Started as root: becomes that account without further groups and keeps only the two capabilities that
/// reading other users' storage counters takes. It must be an account of its own: whatever runs under the
/// same user may signal this process and end it. In any case: no new privileges, no new files, no core dumps,
/// few descriptors. False when something could not be given up; the daemon must not run then.
[[nodiscard]] bool confineProcess(const Account& account);

} // namespace korvell
