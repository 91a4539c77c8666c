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

  for (const auto damaged : {"", "{\"alerts\":[{\"id\"", "[]"}) {
    folder.write("alerts.json", damaged);
    EXPECT_TRUE(open().load().empty()) << damaged;
    EXPECT_FALSE(std::filesystem::exists(path));
  }
  EXPECT_EQ(readFile(folder / "alerts-damaged-2026-03-01-120000.json", 1000), "");
  EXPECT_EQ(readFile(folder / "alerts-damaged-2026-03-01-120000-3.json", 1000), "[]");
}

TEST(AlertLogTests, whatALaterVersionWroteStaysInItsPlaceAndWithinTheBound) {
  const TemporaryFolder folder;
  ManualScheduler time{Date{1'772'366'400}};
  const std::string battery = R"({"id":"3","kind":"battery","date":"2026-03-01T00:00:00Z","level":7})";
  const std::string old =
      R"({"id":"1","kind":"cpu","title":"A is busy","detail":"","date":"2026-02-01T00:00:00Z","unknown":1})";
  folder.write("alerts.json", R"({"alerts":[)" + battery + ",7," + old + R"(],"more":{}})");
  AlertLog log(time.factory(), time.clock(), folder.path().string());
  auto alerts = log.load();
  ASSERT_THAT(alerts, testing::ElementsAre(testing::Field(&HealthAlert::id, "1")));
  alerts.insert(alerts.begin(), {.id = "4", .title = "New", .date = time.clock().now()});
  log.keep(alerts);
  time.run();
  const auto text = readFile(folder / "alerts.json", 2000).value_or("");
  EXPECT_THAT(text, testing::StartsWith(R"({"alerts":[{"id":"4",)"));
  EXPECT_THAT(text, testing::EndsWith("}," + battery + ",7," + old + "],\"more\":{}}\n"));

  alerts.insert(alerts.begin(), AlertLog::mostEntries - 3, alerts.front());
  log.keep(alerts);
  time.run();
  const auto kept = parseJSON(readFile(folder / "alerts.json", 1 << 20).value_or(""));
  ASSERT_TRUE(kept && kept->find("alerts"));
  EXPECT_EQ(kept->find("alerts")->asArray()->size(), AlertLog::mostEntries);
  EXPECT_EQ(kept->find("alerts")->asArray()->at(98), *parseJSON(battery));
}

TEST(AlertLogTests, whatGoesWrongIsSaidOnceAndNothingIsReplacedUnread) {
  const TemporaryFolder folder;
  const auto path = folder / "alerts.json";
  ManualScheduler time{Date{1'772'366'400}};
  std::vector<std::string> said;
  const auto log = [&] {
    return AlertLog(time.factory(), time.clock(), folder.path().string(),
                    [&](const Trouble& trouble) { said.push_back(trouble.text); });
  };
  folder.write("alerts.json", std::string((4 << 20) + 1, ' '));
  EXPECT_TRUE(log().load().empty());
  EXPECT_EQ(std::filesystem::file_size(folder / "alerts-damaged-2026-03-01-120000.json"), (4u << 20) + 1);
  folder.write("alerts.json", "{");
  EXPECT_TRUE(log().load().empty());
  ASSERT_EQ(said.size(), 2u);
  EXPECT_THAT(said[0], testing::HasSubstr("too large"));
  EXPECT_THAT(said[1], testing::AllOf(testing::HasSubstr(path + " is damaged"),
                                      testing::HasSubstr("alerts-damaged-2026-03-01-120000-2.json")));

  // As with a missing permission, which does not stop root: something is there that can't be read.
  std::filesystem::create_symlink("alerts.json", path);
  {
    auto unread = log();
    EXPECT_TRUE(unread.load().empty());
    unread.keep({{.id = "1"}});
  }
  EXPECT_TRUE(std::filesystem::is_symlink(path));
  ASSERT_EQ(said.size(), 3u);
  EXPECT_THAT(said[2], testing::HasSubstr("can't be read"));

  std::filesystem::remove(path);
  auto writing = log();
  EXPECT_TRUE(writing.load().empty());
  std::filesystem::create_directory(path); // which no file replaces
  for (const auto id : {"1", "2"}) writing.keep({{.id = id}});
  time.run();
  ASSERT_EQ(said.size(), 4u);
  EXPECT_THAT(said[3], testing::HasSubstr("not kept: " + path + " is not a file"));
  std::filesystem::remove(path);
  writing.keep({{.id = "3"}});
  time.run();
  EXPECT_EQ(said.size(), 5u);
  EXPECT_THAT(log().load(), testing::ElementsAre(testing::Field(&HealthAlert::id, "3")));
}

} // namespace
} // namespace korvell
