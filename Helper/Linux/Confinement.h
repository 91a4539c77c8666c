#pragma once
// What the daemon gives up before it looks at its first request. The service unit takes away more (file
// system, network, system calls); this is what holds under any supervisor.

namespace korvell {

/// Started as root: becomes the user "nobody" (65534) without groups and keeps only the two capabilities that
/// reading other users' storage counters takes. In any case: no new privileges, no new files, no core dumps,
/// few descriptors. False when something could not be given up; the daemon must not run then.
[[nodiscard]] bool confineProcess();

} // namespace korvell
