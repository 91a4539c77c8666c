#pragma once
// What starting a program needs and the systems do differently. For Shell only.

#include <spawn.h>
#include <sys/types.h>

namespace korvell {

/// A pipe whose ends are not inherited; false when there are no descriptors left.
bool makePrivatePipe(int (&ends)[2]);

/// Makes the child keep the descriptors 0 to 2 only. Called after the actions for those were added; the
/// result is to be added to the flags of the spawn.
short closeOtherDescriptors(posix_spawn_file_actions_t& actions);

/// This process's environment as exec takes it.
char** environmentBlock();

/// A descriptor that poll() finds readable when this child of ours, which nobody has waited for yet, ends; -1
/// when the system offers none.
int openExitNotice(pid_t child);

} // namespace korvell
