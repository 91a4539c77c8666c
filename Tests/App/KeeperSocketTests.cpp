// How a keeper is found and asked by other processes.

#include "App/Assembly.h"
#include "App/HandOver.h"
#include "App/Keeper.h"
#include "App/KeeperClient.h"
#include "App/KeeperLock.h"
#include "App/RemoteActions.h"
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

/// Remote actions with an end to wait for.
class Asking {
public:
  explicit Asking(const UserFolders& folders, Seconds silence = Seconds{20})
      : actions_(
            main_, [](std::string label) { return std::make_unique<ThreadQueue>(std::move(label)); }, folders,
            silence) {}
  Result<DescribedAction> described(const ActionRequest& request) {
    return wait<Result<DescribedAction>>([&](auto done) { actions_.describe(request, done); });
  }
  ActionAnswer performed(const ActionRequest& request) {
    return wait<ActionAnswer>([&](auto done) { actions_.perform(request, done); });
  }

private:
  template <class Told>
  Told wait(const std::function<void(std::function<void(const Told&)>)>& begin) {
    std::promise<Told> told;
    main_.sync([&] { begin([&](const Told& result) { told.set_value(result); }); });
    return told.get_future().get();
  }
  ThreadQueue main_{"asking"};
  RemoteActions actions_;
};

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
  std::unique_ptr<Actions> actions;
  std::unique_ptr<Keeper> keeper;
  main.sync([&] {
    model = assembly.makeWatchingModel(main, unwatched);
    actions = assembly.makeActions(
        main, [&]() -> AppModel& { return *model; }, assembly.lateStorageScanner(main));
    keeper = std::make_unique<Keeper>(main, *model, *actions);
    EXPECT_TRUE(keeper->listen(keeperSocketPath(folders)));
  });
  folder.write("data/keeper.lock", ""); // as on a full disk
  auto client = KeeperClient::connect(folders);
  ASSERT_TRUE(client);
  EXPECT_EQ(client->ask(Value("no object"), patience), refusal("not a JSON object"));
  const auto state = client->ask(askState, patience);
  ASSERT_TRUE(state);
  EXPECT_NE(state->find("snapshot"), nullptr);

  Asking asking(folders);
  const ChangeSettingRequest change{"alert.cpu", false};
  EXPECT_EQ(asking.described(change)->request, ActionRequest(change));
  EXPECT_EQ(asking.described(ChangeSettingRequest{"nonsense", 1}).reason(), "There is no setting nonsense.");
  EXPECT_EQ(asking.performed(change), ActionAnswer::refused("the setting could not be stored"));
  EXPECT_TRUE(asking.performed(RescanStartupItemsRequest{}).json.find("startupItems"));
  const CleanStorageRequest tooMuch{{std::string(70'000, 'x')}, Date{1}};
  EXPECT_THAT(asking.performed(tooMuch).message, testing::HasSubstr("more than can be told"));
  main.sync([&] {
    keeper.reset();
    actions.reset();
    model.reset();
  });
  EXPECT_EQ(asking.performed(change), ActionAnswer::refused("No Korvell is running any more."));
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

TEST_F(KeeperSocketTests, aKeeperOfAnotherVersionAndASilentOneRefuseActions) {
  const auto lock = announced();
  std::atomic<int> orders = 0;
  std::atomic<bool> isSilent = false;
  const auto server = LineServer::listen(
      keeperSocketPath(folders),
      [&](const std::string& line, const LineServer::Peer& peer) {
        if (isSilent) return;
        orders += line.find("\"do\"") != std::string::npos;
        peer.answer(R"({"ok":false,"error":"unknown request"})");
      },
      {}, isSameUser);
  const StopServerRequest stop{10, Date{1}};
  const std::string old = "The Korvell that runs is of another version and can't do that. Restart it.";
  EXPECT_EQ(Asking(folders).described(stop).reason(), old);
  EXPECT_EQ(Asking(folders).performed(stop).message, old);
  EXPECT_EQ(orders, 1);
  isSilent = true;
  const auto answer = Asking(folders, Seconds{0.01}).performed(stop);
  EXPECT_EQ(answer.message, "Korvell is running but does not answer: it is busy or hangs.");
  EXPECT_TRUE(answer.isKnown) << "it was not told";
  EXPECT_EQ(orders, 1) << "what it might carry out later is not sent";
}

} // namespace
} // namespace korvell
