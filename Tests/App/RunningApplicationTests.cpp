// Starts of the application: the first keeps, later ones and links reach it.

#include "App/DeepLink.h"
#include "App/HandOver.h"
#include "App/RunningApplication.h"
#include "Base/ThreadQueue.h"
#include "Tests/App/AppFixture.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <csignal>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(DeepLinkTests, aLinkOpensASectionAndNothingElse) {
  EXPECT_EQ(linkedSection("korvell://page/memory"), SidebarItem::memory);
  EXPECT_EQ(linkedSection("Korvell://Page/devServers?from=mail#x"), SidebarItem::devServers);
  EXPECT_EQ(linkedSection("korvell://page/a/b/storage/"), SidebarItem::storage);
  for (const auto* unknown :
       {"korvell://page", "korvell://page/", "korvell://page/nothing", "korvell://page/%6d"})
    EXPECT_EQ(linkedSection(unknown), SidebarItem::overview) << unknown;
  for (const auto* other : {"", "korvell:", "korvell://clean/all", "korvell://pages/memory",
                            "http://page/memory", "korvell://page@evil/memory", "korvell://page:80/memory"})
    EXPECT_EQ(linkedSection(other), std::nullopt) << other;
  for (const auto& section : EnumTable<SidebarItem>::cases)
    EXPECT_EQ(linkedSection(deepLink(section.value)), section.value);
}

struct AppDelegateTests : testing::Test {
  FakeUserDefaults defaults;
  std::vector<std::optional<SidebarItem>> shown;
  AppDelegate delegate{defaults, [this](std::optional<SidebarItem> item) { shown.push_back(item); }};
};

TEST_F(AppDelegateTests, theWindowShowsItselfAtTheFirstLaunchOnly) {
  delegate.applicationDidFinishLaunching();
  EXPECT_THAT(shown, ElementsAre(std::nullopt));
  defaults.set(AppDelegate::hasLaunchedKey, true);
  delegate.applicationDidFinishLaunching();
  EXPECT_EQ(shown.size(), 1u);
  delegate.applicationShouldHandleReopen(false);
  EXPECT_EQ(shown.size(), 2u);
  delegate.applicationOpen({"korvell://page/cpu", "korvell://page/memory"});
  EXPECT_EQ(shown.back(), SidebarItem::cpu);
  delegate.applicationOpen({"korvell://elsewhere/cpu"});
  delegate.applicationOpen({});
  EXPECT_EQ(shown.size(), 3u);
}

/// An application that keeps: its model is a machine of fakes, its socket is real.
struct RunningApplicationTests : AppFixture {
  static constexpr Seconds patience{20};
  UserFolders folders;
  std::vector<std::optional<SidebarItem>> shown;
  std::vector<std::string> activations;
  AppDelegate delegate{defaults, [this](std::optional<SidebarItem> item) { shown.push_back(item); }};
  Keeper keeper{*main, *model, *actions};

  RunningApplicationTests() {
    std::signal(SIGPIPE, SIG_IGN);
    folders.data = folder.path().string();
    folders.runtime = folder / "runtime";
  }
  void answer(const KeeperLock& lock) {
    ASSERT_TRUE(keeper.listen(keeperSocketPath(folders)));
    lock.announce(keeperSocketPath(folders));
  }
  /// Another start, on a thread of its own, while the main queue of the first runs.
  Launch startAgain(const OpenRequest& request, Seconds limit = patience) {
    auto again = std::async(std::launch::async, [&] { return launch(folders, request, limit); });
    while (again.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) time.run();
    return again.get();
  }
};

TEST_F(RunningApplicationTests, aSecondStartShowsTheFirst) {
  auto first = launch(folders, {}, Seconds{0});
  ASSERT_TRUE(first.lock);
  answer(*first.lock);
  answerOpening(keeper, delegate, [this](const std::string& token) { activations.push_back(token); });

  auto second = startAgain({.urls = {}, .activation = "token"});
  EXPECT_FALSE(second.lock);
  EXPECT_EQ(second.trouble, "");
  second = startAgain({.urls = {"korvell://page/memory"}, .activation = ""});
  EXPECT_FALSE(second.lock);
  EXPECT_THAT(shown, ElementsAre(std::nullopt, SidebarItem::memory));
  EXPECT_THAT(activations, ElementsAre("token", ""));
  const std::string endless(1 << 20, 'a');
  second = startAgain({.urls = {"korvell://page/" + endless}, .activation = ""});
  EXPECT_EQ(second.trouble, "");
  EXPECT_EQ(shown.size(), 3u) << "longer than a keeper reads";

  bool agreed = true;
  keeper.handle(Value::object({{"do", yieldAction}}),
                [&](const Value& told) { agreed = told.find("ok")->asBool().value_or(true); });
  EXPECT_FALSE(agreed) << "the application keeps";
}

TEST_F(RunningApplicationTests, oneThatNeverAnswersIsSaidAndAHeadlessKeeperStepsBack) {
  auto lock = KeeperLock::acquire(folders);
  ASSERT_TRUE(lock);
  const auto waited = startAgain({}, Seconds{0});
  EXPECT_FALSE(waited.lock);
  EXPECT_EQ(waited.trouble, "Korvell is already running.");

  std::optional<KeeperLock> held(std::move(*lock));
  answer(*held);
  keeper.addAction(yieldAction, [&](const Value&, const Keeper::Answer& reply) {
    held.reset();
    reply(Value::object({{"ok", true}}));
  });
  EXPECT_TRUE(startAgain({}).lock);
  EXPECT_THAT(shown, IsEmpty());
}

} // namespace
} // namespace korvell
