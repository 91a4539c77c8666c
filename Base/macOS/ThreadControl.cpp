#include "Base/ThreadControl.h"

#include <pthread.h>

namespace korvell {

void nameCurrentThread(const std::string& name) { pthread_setname_np(name.c_str()); }

void setCurrentTimerSlack(Seconds) {} // no such call; the dispatch queues' timers have their leeway

} // namespace korvell
