// How a keeper is found and asked by other processes.

#include "App/Assembly.h"
#include "App/HandOver.h"
#include "App/Keeper.h"
#include "App/KeeperClient.h"
#include "App/KeeperLock.h"
#include "Base/ThreadQueue.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <atomic>
#include <csignal>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace korvell {
namespace {

struct KeeperSocketTests : testing::Test {
  static constexpr Seconds patience{20};
  TemporaryFolder folder;
  UserFolders folders;
  const Value askState = Value::object({{"ask", "state"}});

  KeeperSocketTests() {
    std::signal(SIGPIPE, SIG_IGN); // as the tool's main does
    folders.data = folder / "data";
    folders.runtime = folder / "runtime";
  }
  KeeperLock announced() const {
    auto lock = KeeperLock::acquire(folders);
    lock->announce(keeperSocketPath(folders));
    return std::move(*lock);
  }
};

TEST_F(KeeperSocketTests, thereIsOneKeeperAndItsFileTellsWhereItAnswers) {
  const auto said = [](const char* socket) { return KeeperAnnouncement{getpid(), socket}; };
  EXPECT_EQ(keeperAnnouncement(folders), std::nullopt);
  EXPECT_FALSE(isKeeperRunning(folders));
  EXPECT_FALSE(std::filesystem::exists(folders.data)) << "who looks makes nothing";
  {
    auto first = KeeperLock::acquire(folders);
    ASSERT_TRUE(first);
    EXPECT_EQ(keeperAnnouncement(folders), said(""));
    first->announce("/run/somewhere/keeper.sock");
    EXPECT_EQ(KeeperLock::acquire(folders).reason(), "Korvell is already running.");
    EXPECT_EQ(keeperAnnouncement(folders), said("/run/somewhere/keeper.sock"));
    EXPECT_TRUE(isKeeperRunning(folders));
  }
  EXPECT_EQ(keeperAnnouncement(folders), std::nullopt);
  EXPECT_FALSE(isKeeperRunning(folders));
  EXPECT_TRUE(KeeperLock::acquire(folders));

  auto unwritable = folders;
  unwritable.data = folder / "data/keeper.lock/below";
  EXPECT_THAT(KeeperLock::acquire(unwritable).reason(), testing::HasSubstr("can't write"));
  EXPECT_EQ(keeperSocketPath({.data = "/d", .runtime = "/r"}), "/r/keeper.sock");
  EXPECT_EQ(keeperSocketPath({.data = "/d", .runtime = ""}), "/d/keeper.sock");
}

TEST_F(KeeperSocketTests, clientsAskARunningKeeper) {
  const auto lock = announced();
  EXPECT_FALSE(KeeperClient::connect(folders)) << "announced, but nobody is there";

  Host host;
  host.folders = folders;
  host.machine = std::make_unique<FakeMachineCounters>();
  const SystemClock clock;
  Assembly assembly(host, clock);
  const FixedAttention unwatched(false);
  ThreadQueue main("main");
  std::unique_ptr<AppModel> model;
  std::unique_ptr<Keeper> keeper;
  main.sync([&] {
    model = assembly.makeWatchingModel(main, unwatched);
    keeper = std::make_unique<Keeper>(main, *model);
    EXPECT_TRUE(keeper->listen(keeperSocketPath(folders)));
  });
  folder.write("data/keeper.lock", ""); // as on a full disk
  auto client = KeeperClient::connect(folders);
  ASSERT_TRUE(client);
  EXPECT_EQ(client->ask(Value("no object"), patience), refusal("not a JSON object"));
  const auto state = client->ask(askState, patience);
  ASSERT_TRUE(state);
  EXPECT_NE(state->find("snapshot"), nullptr);
  main.sync([&] {
    keeper.reset();
    model.reset();
  });
  EXPECT_EQ(client->ask(askState, patience), std::nullopt);
}

TEST_F(KeeperSocketTests, aKeeperStepsBackForWhoAsksAndComesBackWhenItIsFree) {
  auto lock = std::optional(announced());
  std::atomic<bool> refuses = true;
  const auto server = LineServer::listen(
      keeperSocketPath(folders),
      [&](const std::string& line, const LineServer::Peer& peer) {
        EXPECT_EQ(line, R"({"do":"yield"})");
        if (!refuses) lock.reset();
        peer.answer(refuses ? R"({"ok":false})" : R"({"ok":true})");
      },
      {}, isSameUser);
  EXPECT_EQ(takeOver(folders).reason(), "The running Korvell does not step back.");
  EXPECT_TRUE(lock);
  refuses = false;
  auto next = std::optional(takeOver(folders));
  ASSERT_TRUE(*next) << next->reason();

  std::promise<void> freed;
  ThreadQueue main("main");
  const LockWait wait(main, folders, [&] { freed.set_value(); });
  {
    const LockWait given(main, folders, [] { ADD_FAILURE() << "nobody waits for that any more"; });
  }
  auto free = freed.get_future();
  EXPECT_EQ(free.wait_for(std::chrono::milliseconds(1)), std::future_status::timeout);
  next.reset();
  free.get();
  EXPECT_TRUE(takeOver(folders)) << "there is nobody to be asked";
}

TEST_F(KeeperSocketTests, aKeeperThatDoesNotAnswerInTimeIsGivenUp) {
  const auto lock = announced();
  std::promise<LineServer::Peer> late;
  const auto server = LineServer::listen(
      keeperSocketPath(folders),
      [&](const std::string& line, const LineServer::Peer& peer) {
        if (line == "\"silence\"") late.set_value(peer);
        if (line == "\"noise\"") peer.answer("\xff{not json");
      },
      {}, isSameUser);
  auto client = KeeperClient::connect(folders);
  ASSERT_TRUE(client);
  EXPECT_EQ(client->ask(Value("silence"), Seconds{0.01}), std::nullopt);
  late.get_future().get().answer("1");
  EXPECT_EQ(client->ask(Value("again"), patience), std::nullopt) << "that was the answer to the first";
  client = KeeperClient::connect(folders);
  EXPECT_EQ(client->ask(Value("noise"), patience), std::nullopt);
}

} // namespace
} // namespace korvell
