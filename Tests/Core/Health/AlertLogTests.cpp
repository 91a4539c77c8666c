#include "Core/Health/AlertLog.h"

#include "Base/Files.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(AlertLogTests, whatWasRaisedIsThereAfterARestartWhateverBecameOfTheFile) {
  const TemporaryFolder folder;
  const auto path = folder / "alerts.json";
  ManualScheduler time{Date{1'772'366'400}};
  const auto open = [&] { return AlertLog(time.factory(), time.clock(), folder.path().string()); };
  EXPECT_TRUE(open().load().empty());
  const std::vector<HealthAlert> alerts = {
      {.id = "2", .kind = HealthAlert::Kind::diskSpace, .title = "Disk is almost full", .date = {1.7e9}},
      {.id = "1", .appName = "A", .bundlePath = "/A", .title = "A is busy", .detail = "x", .date = {1.6e9}}};
  {
    auto log = open();
    log.keep({});
    log.keep(alerts);
  }
  EXPECT_EQ(open().load(), alerts);
  EXPECT_EQ(folder.permissions("alerts.json"), 0600u);

  const auto later = R"({"alerts":[{"id":"3","kind":"battery","title":"Of a later version"},7,)"
                     R"({"id":"1","kind":"cpu","title":"A is busy","unknown":1}],"more":{}})";
  folder.write("alerts.json", later);
  EXPECT_THAT(open().load(), testing::ElementsAre(testing::Field(&HealthAlert::id, "1")));
  EXPECT_EQ(readFile(path, 1000), later);

  for (const auto damaged : {"", "{\"alerts\":[{\"id\"", "[]"}) {
    folder.write("alerts.json", damaged);
    EXPECT_TRUE(open().load().empty()) << damaged;
    EXPECT_FALSE(std::filesystem::exists(path));
  }
  EXPECT_EQ(readFile(folder / "alerts-damaged-2026-03-01-120000.json", 1000), "");
  EXPECT_EQ(readFile(folder / "alerts-damaged-2026-03-01-120000-3.json", 1000), "[]");
}

} // namespace
} // namespace korvell
