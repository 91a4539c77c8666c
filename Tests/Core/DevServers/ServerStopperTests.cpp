#include "Base/ManualQueue.h"
#include "Core/DevServers/ServerStopper.h"
#include "Tests/Fakes/FakeProcessTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using enum StopOutcome;
using testing::ElementsAre;
using testing::IsEmpty;

struct ServerStopperTests : testing::Test {
  /// Stops process 10 as the server that it was at 100 s.
  void stop() {
    queue->async([this] {
      stopper.stop(10, Date{100}, [this](StopOutcome outcome) { outcomes.push_back(outcome); });
    });
    time.run();
  }
  ManualScheduler time;
  FakeProcessTable table;
  std::unique_ptr<Queue> queue = time.makeQueue("sampler");
  ServerStopper stopper{*queue, table, table};
  std::vector<StopOutcome> outcomes;
  const FakeProcessTable::Sent terminate{10, ProcessSignal::terminate}, kill{10, ProcessSignal::kill};
};

TEST_F(ServerStopperTests, whoIgnoresTheFirstSignalIsKilledAfterThreeSeconds) {
  table.add(10, "node");
  stop();
  time.advance(Seconds{2.9});
  EXPECT_THAT(table.sent, ElementsAre(terminate));
  time.advance(Seconds{0.3});
  EXPECT_THAT(outcomes, ElementsAre(killed));
  time.advance(Seconds{60});
  stop(); // the same object stops again
  table.processes.erase(10);
  time.advance(Seconds{0.2});
  EXPECT_THAT(table.sent, ElementsAre(terminate, kill, terminate));
  EXPECT_THAT(outcomes, ElementsAre(killed, ended));
}

TEST_F(ServerStopperTests, aReusedIdReceivesNothing) {
  table.add(10, "stranger").counters.start = 101;
  stop(); // between the question and the stop
  table.add(10, "foreign").deniesSignals = true;
  stop();
  EXPECT_THAT(table.sent, IsEmpty());
  table.add(10, "node").deniesSignals = false;
  stop();
  table.add(10, "stranger").counters.start = 101; // within the three seconds
  time.advance(Seconds{1});
  EXPECT_THAT(table.sent, ElementsAre(terminate));
  EXPECT_THAT(outcomes, ElementsAre(gone, denied, ended));
}

} // namespace
} // namespace korvell
