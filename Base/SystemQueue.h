#pragma once
// The queues of the running system: threads of our own on Linux, dispatch queues on macOS.

#include "Base/Queue.h"

namespace korvell {

QueueFactory systemQueueFactory();
/// Makes queues whose work gives way to everything else, with the processes that it starts.
QueueFactory utilityQueueFactory();

} // namespace korvell
