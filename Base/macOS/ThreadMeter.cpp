#include "Base/ThreadMeter.h"

#include "Base/CPUTime.h"

namespace korvell {

// The system tells nobody how long a thread of his waited for a processor.
ThreadMeter::ThreadMeter() = default;

ThreadMeter::Times ThreadMeter::read() const { return {.computing = threadCPUTime()}; }

bool ThreadMeter::isMachineBusy() { return false; }

} // namespace korvell
