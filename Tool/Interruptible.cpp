#include "Tool/Interruptible.h"

#include "Base/SystemQueue.h"
#include "Tool/HeadlessLoop.h"

namespace korvell {

void runInterruptibly(const std::function<void(const Cancellation&)>& work,
                      const std::function<void()>& interrupted) {
  HeadlessLoop loop;
  const Cancellation cancellation;
  bool done = false;
  const auto queue = systemQueueFactory()("Korvell.command");
  queue->async([&] {
    work(cancellation);
    loop.main().async([&] {
      done = true;
      loop.quit();
    });
  });
  loop.run();
  while (!done) {
    if (interrupted && !cancellation.isCancelled()) interrupted();
    cancellation.cancel();
    loop.run();
  }
}

} // namespace korvell
