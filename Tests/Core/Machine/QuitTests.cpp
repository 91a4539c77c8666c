#include "Core/Machine/Quit.h"

#include "Tests/Fakes/FakeProcessTable.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;

TEST(QuitTests, theMainProcessIsAskedAndForceMeansAll) {
  const StartTimes starts{{10, 100}, {11, 110}};
  AppUsage app{.mainPID = 10, .processes = {{.pid = 10}, {.pid = 11}, {.pid = 12}}};
  EXPECT_THAT(quitTargets(app, starts, false, 99), ElementsAre(QuitTarget{10, 100}));
  EXPECT_THAT(quitTargets(app, starts, true, 99), ElementsAre(QuitTarget{10, 100}, QuitTarget{11, 110}))
      << "nobody whose start is unknown";
  app.mainPID.reset();
  EXPECT_THAT(quitTargets(app, starts, false, 99), ElementsAre(QuitTarget{10, 100}, QuitTarget{11, 110}));
  EXPECT_THAT(quitTargets(app, starts, true, 10), ElementsAre(QuitTarget{11, 110})) << "never itself";
}

TEST(QuitTests, onlyTheSystemsOwnGroupIsTheSystem) {
  EXPECT_TRUE(isSystemGroup({.id = "system", .name = "Linux"}));
  EXPECT_TRUE(isSystemGroup({.id = "macOS", .name = "anything"}));
  EXPECT_FALSE(isSystemGroup({.id = "proc:system", .name = "Linux"}));
  EXPECT_FALSE(isSystemGroup({.id = "system", .bundlePath = "/a.desktop"}));
}

TEST(QuitTests, aReusedProcessIDGetsNoSignal) {
  FakeProcessTable table;
  FakeRunningApplications applications;
  table.add(10, "editor").counters.start = 100;
  table.add(11, "reused").counters.start = 999;
  table.add(12, "foreign").deniesSignals = true;
  table.add(13, "app");
  applications.applications = {{11, "/reused.app"}, {13, "/app.app"}};
  const std::vector<QuitTarget> targets{{10, 100}, {11, 110}, {12, 120}, {13, 130}, {14, 140}};
  EXPECT_EQ(quitProcesses(targets, false, {table, applications, table}),
            (QuitResult{.sent = 2, .gone = 2, .denied = 1}));
  EXPECT_THAT(table.sent, ElementsAre(FakeProcessTable::Sent{10, ProcessSignal::terminate}));
  EXPECT_THAT(applications.quits, ElementsAre(std::pair{13, false}));
  (void)quitProcesses({{10, 100}}, true, {table, applications, table});
  EXPECT_EQ(table.sent.back().signal, ProcessSignal::kill);
}

} // namespace
} // namespace korvell
