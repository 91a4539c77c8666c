#include "App/SettingsStore.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;

TEST(SettingsStoreTests, changesAreStoredAsideInTheirOrderAndNoneIsLostAtTheEnd) {
  ManualScheduler time;
  const auto main = time.makeMainQueue();
  FakeUserDefaults defaults;
  std::vector<bool> told;
  std::optional<SettingsStore> store(std::in_place, defaults, *main, time.factory());
  const auto note = [&](bool stored) { told.push_back(stored); };
  store->set("style", "score", note);
  store->set("style", "graphs", note);
  EXPECT_EQ(defaults.string("style"), std::nullopt) << "the main queue waits for no disk";
  time.run();
  EXPECT_EQ(defaults.string("style"), "graphs");
  defaults.readOnly = true;
  store->set("style", Value(), note);
  time.run();
  EXPECT_THAT(told, ElementsAre(true, true, false));
  defaults.readOnly = false;
  store->change([](UserDefaults& settings) { return settings.remove("style"); }, note);
  store.reset();
  EXPECT_EQ(defaults.value("style"), std::nullopt);
  time.run();
  EXPECT_EQ(told.size(), 3u) << "whoever asked may be gone";
}

} // namespace
} // namespace korvell
