#include "Tests/App/AppFixture.h"

#include <unistd.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Sent = FakeProcessTable::Sent;
using enum ProcessSignal;

struct ActionsTests : AppFixture {
  ActionsTests() { attention.watched = false; }

  Result<DescribedAction> describe(const ActionRequest& request) {
    Result<DescribedAction> told = Failure{"<nothing>"};
    actions->describe(request, [&](const auto& described) { told = described; });
    time.run();
    return told;
  }
  ActionAnswer perform(const ActionRequest& request, Seconds patience = Seconds{4}) {
    auto told = ActionAnswer::refused("<nothing>");
    actions->perform(request, [&](const ActionAnswer& answer) { told = answer; });
    time.advance(patience);
    return told;
  }
};

TEST_F(ActionsTests, whatWasDescribedEndsAndNothingThatCameLater) {
  table.add(10, "editor");
  table.add(11, "worker");
  table.add(12, "worker");
  table.add(13, "foreign").deniesSignals = true;
  table.add(getpid(), "korvell");
  time.advance(Seconds{12});
  table.add(14, "young"); // no cycle has seen it yet
  struct Row {
    QuitRequest request;
    const char *message, *button;
    std::vector<std::string> details;
    std::vector<Sent> sent;
    const char* answer;
  };
  const Row rows[] = {{{.app = "Worker"},
                       "The 2 processes of worker will be asked to quit.",
                       "Quit",
                       {"11 worker", "12 worker"},
                       {{11, terminate}, {12, terminate}},
                       "worker was told to end."},
                      {{.app = "12", .force = true},
                       "worker (PID 12) will be ended at once. Unsaved work is lost.",
                       "Force Quit",
                       {"12 worker"},
                       {{12, kill}},
                       "worker (PID 12) was told to end."},
                      {{.app = "young"},
                       "young will be asked to quit.",
                       "Quit",
                       {"14 young"},
                       {{14, terminate}},
                       "young was told to end."},
                      {{.bundlePath = "/opt/editor"},
                       "editor will be asked to quit.",
                       "Quit",
                       {"10 editor"},
                       {{10, terminate}},
                       "editor was told to end."},
                      {{.app = "foreign"},
                       "foreign will be asked to quit.",
                       "Quit",
                       {"13 foreign"},
                       {},
                       "foreign belongs to another user."},
                      {{.processes = {{10, 7}}},
                       "editor (PID 10) will be asked to quit.",
                       "Quit",
                       {"10 editor"},
                       {},
                       "editor (PID 10) is not running any more."},
                      {{.processes = {{10, 7}}, .name = "Calculator, which hangs"},
                       "editor will be asked to quit.",
                       "Quit",
                       {"10 editor"},
                       {},
                       "editor is not running any more."},
                      {{.processes = {{11, 7}, {12, 7}}, .name = "editor"},
                       "The 2 processes of worker will be asked to quit.",
                       "Quit",
                       {"11 worker", "12 worker"},
                       {},
                       "worker is not running any more."},
                      {{.processes = {{12, 7}}, .name = "editor"},
                       "worker (PID 12) will be asked to quit.",
                       "Quit",
                       {"12 worker"},
                       {},
                       "worker (PID 12) is not running any more."}};
  for (const auto& row : rows) {
    table.sent.clear();
    const auto described = describe(row.request);
    ASSERT_TRUE(described) << row.message << described.reason();
    EXPECT_EQ(described->description.message, row.message);
    EXPECT_EQ(described->description.button, row.button) << row.message;
    EXPECT_EQ(described->description.details, row.details);
    EXPECT_EQ(perform(row.request).worked && row.request.processes.empty(), false)
        << "vague: " << row.message;
    const auto answer = perform(described->request);
    EXPECT_EQ(answer.message, row.answer);
    EXPECT_EQ(answer.worked, !row.sent.empty()) << row.message;
    EXPECT_EQ(table.sent, row.sent) << row.message;
  }

  // Between the question and the answer the id went to somebody else.
  table.sent.clear();
  const auto described = describe(QuitRequest{.app = "editor"});
  table.add(10, "stranger").counters.start = 555;
  EXPECT_EQ(perform(described->request).message, "editor is not running any more.");
  EXPECT_THAT(table.sent, IsEmpty());
}

TEST_F(ActionsTests, whatCanNotBeQuitIsSaid) {
  table.add(getpid(), "korvell");
  table.add(10, "editor");
  table.add(11, "Editor");
  time.advance(Seconds{12});
  const std::pair<QuitRequest, const char*> rows[] = {
      {{.app = "nobody"}, "Nothing called nobody is running."},
      {{.app = "99"}, "There is no process 99."},
      {{.bundlePath = "/opt/nobody"}, "Nothing called /opt/nobody is running."},
      {{.app = "EDITOR"}, "There are several of that name; say which one:"},
      {{.app = "korvell"}, "korvell is Korvell itself."}};
  for (const auto& [request, reason] : rows) EXPECT_THAT(describe(request).reason(), HasSubstr(reason));
  const QuitRequest itself{.processes = {{getpid(), std::uint64_t(getpid()) * 10}}};
  EXPECT_FALSE(perform(itself).worked);
  EXPECT_THAT(table.sent, IsEmpty());
}

TEST_F(ActionsTests, listedServersStop) {
  table.add(10, "node").directory = "/home/u/shop";
  table.add(11, "postgres").directory = "/var";
  table.ports = {{10, {3000, 3001}}, {11, {5432}}};
  time.advance(Seconds{2});
  const auto described = describe(StopServerRequest{.pid = 10});
  ASSERT_TRUE(described) << described.reason();
  EXPECT_EQ(described->description.title, "Stop node?");
  EXPECT_EQ(described->description.message, "node will receive a stop signal.");
  EXPECT_THAT(described->description.details, ElementsAre("shop: node (PID 10), ports 3000, 3001"));
  for (const StopServerRequest& request : {StopServerRequest{10, {}},
                                           {10, Date{101}},
                                           {11, Date{110}}}) // vague, another one's start, not listed
    EXPECT_EQ(perform(request), ActionAnswer::refused("There is no such server any more.")) << request.pid;
  EXPECT_THAT(describe(StopServerRequest{.pid = 11}).reason(), HasSubstr("11 is none of the servers"));
  EXPECT_THAT(table.sent, IsEmpty());

  table.processes.at(10).deniesSignals = true;
  EXPECT_EQ(perform(described->request).message, "node (PID 10) belongs to another user.");
  table.processes.at(10).deniesSignals = false;
  std::string told;
  actions->perform(described->request, [&](const ActionAnswer& answer) {
    told = answer.message;
    EXPECT_TRUE(model->projects->empty()) << "who asks next sees it gone";
    EXPECT_EQ(*answer.json.find("outcome")->asString(), "killed");
  });
  time.advance(Seconds{2.9});
  EXPECT_EQ(told, "");
  table.ports.erase(10); // what the kill does
  time.advance(Seconds{0.3});
  EXPECT_EQ(told, "node (PID 10) did not stop by itself and was killed.");
}

TEST_F(ActionsTests, idleServersStopUnlessTheyWereUsedSinceTheQuestion) {
  EXPECT_TRUE(describe(StopIdleServersRequest{})->description.isHarmless);
  EXPECT_EQ(perform(StopIdleServersRequest{}).worked, false) << "vague";
  for (const auto& [pid, name] : {std::pair(10, "node"), std::pair(20, "ruby"), std::pair(30, "php")}) {
    table.add(pid, name).directory = "/home/u/shop";
    table.ports[pid] = {pid};
  }
  time.advance(Seconds{1900});
  const auto described = describe(StopIdleServersRequest{});
  EXPECT_EQ(described->description.title, "Stop 3 idle servers?");
  EXPECT_EQ(described->description.details.size(), 3u);
  // As it comes back from a process that asked.
  const auto request = *readActionRequest(toValue(described->request));

  table.processes.at(30).deniesSignals = true;
  for (int cycle = 0; cycle < 4; ++cycle) { // somebody uses one
    table.processes.at(20).counters.cpuTime += 5'000'000'000;
    time.advance(Seconds{10});
  }
  actions->perform(request, [&](const ActionAnswer& answer) {
    EXPECT_FALSE(answer.worked);
    EXPECT_THAT(answer.problems, ElementsAre("ruby (PID 20) is no longer idle and was left alone.",
                                             "php (PID 30) belongs to another user."));
    EXPECT_EQ(answer.message, "1 server stopped. 0 B freed.");
    EXPECT_EQ(answer.json.find("spared")->asArray()->size(), 1u);
    EXPECT_EQ(answer.json.find("stopped")->asArray()->size(), 2u);
  });
  time.advance(Seconds{4});
  EXPECT_EQ(table.sent.front(), (Sent{10, terminate}));
}

TEST_F(ActionsTests, listedLeftoversAreRemoved) {
  launchItems.existing = {"/opt/here"};
  launchItems.addUnit(LaunchScope::user, "/u/here.service", "/opt/here");
  launchItems.addUnit(LaunchScope::user, "/u/gone.service", "/opt/gone");
  const auto removal = [](const std::string& name, const std::string& program) {
    return RemoveStartupItemRequest{"/u/" + name, name, program};
  };
  EXPECT_EQ(perform(removal("new.service", "/opt/gone")),
            ActionAnswer::refused("There is no such startup item any more."));
  launchItems.addUnit(LaunchScope::user, "/u/new.service", "/opt/gone");
  EXPECT_FALSE(perform(removal("new.service", "/opt/gone")).worked) << "not listed yet";
  EXPECT_TRUE(perform(RescanStartupItemsRequest{}).worked);
  EXPECT_FALSE(describe(removal("gone.service", "/opt/other")));
  EXPECT_THAT(describe(removal("here.service", "/opt/here")).reason(), HasSubstr("is no leftover"));

  const auto described = describe(removal("new.service", "/opt/gone"));
  EXPECT_EQ(described->description.title, "Remove new.service?");
  EXPECT_FALSE(described->description.isPermanent);
  const auto answer = perform(described->request);
  EXPECT_EQ(answer.message, "Moved /u/new.service to the Trash.");
  EXPECT_EQ(*answer.json.find("outcome")->asString(), "trashed");
  EXPECT_EQ(model->startupItems->size(), 2u);
  launchItems.protection = "It is the system's.";
  const auto refused = perform(removal("gone.service", "/opt/gone"));
  EXPECT_EQ(refused.message, "It is the system's.");
  EXPECT_EQ(*refused.json.find("error")->asString(), "It is the system's.");
  EXPECT_THAT(trash.moved, ElementsAre("/u/new.service"));
}

TEST_F(ActionsTests, storageIsCleanedAsItWasDescribed) {
  using enum StorageKind;
  disk = {{npm, 4'000'000}, {pip, 1'000'000}};
  const std::string npmItem = "/home/u/npm", pipItem = "/home/u/pip";
  const std::string stale = "What was found is out of date. Scan again.";
  EXPECT_EQ(describe(CleanStorageRequest{{npmItem}}).reason(), stale);
  EXPECT_EQ(perform(ScanStorageRequest{}).message, "5.00 MB can be freed.");
  EXPECT_EQ(describe(CleanStorageRequest{{npmItem, "/home/u/other"}}).reason(), stale);

  const auto described = describe(CleanStorageRequest{{npmItem}});
  ASSERT_TRUE(described) << described.reason();
  EXPECT_EQ(described->description.title, "Move 4.00 MB to the Trash?");
  EXPECT_EQ(described->description.bytes, 4'000'000u);
  EXPECT_THAT(described->description.details, ElementsAre("move " + npmItem));
  EXPECT_EQ(perform(CleanStorageRequest{{npmItem}}).message, stale) << "vague";
  EXPECT_EQ(perform(CleanStorageRequest{{npmItem}, Date{1}}).message, stale) << "of another scan";

  storage->working.set({npm});
  EXPECT_EQ(perform(described->request).message, "npm cache is being cleaned.");
  storage->working.set({});

  // Twice at the same time; and while a scan begins.
  const auto request = *readActionRequest(toValue(described->request));
  std::vector<std::string> told;
  const auto note = [&](const ActionAnswer& answer) { told.push_back(answer.message); };
  actions->perform(request, note);
  actions->perform(request, note);
  time.run();
  EXPECT_THAT(told, ElementsAre("Moved 4.00 MB to the Trash. Empty the Trash to get the space back.", stale));
  EXPECT_FALSE(disk.contains(npm));
  const auto next = describe(CleanStorageRequest{{pipItem}});
  ASSERT_TRUE(next) << next.reason();
  actions->perform(next->request, note);
  storage->scan({pip});
  time.run();
  EXPECT_EQ(told.back(), stale);
  EXPECT_TRUE(disk.contains(pip));

  // Interrupted before it began.
  EXPECT_TRUE(perform(ScanStorageRequest{{{pip}}}).worked);
  actions->perform(describe(CleanStorageRequest{{pipItem}})->request, note);
  storage->interrupt();
  time.run();
  EXPECT_EQ(told.back(), "Interrupted before anything was freed.");
  EXPECT_TRUE(disk.contains(pip));
  actions->perform(ScanStorageRequest{}, note);
  storage->cancel();
  EXPECT_EQ(told.back(), "The scan was interrupted.");
}

TEST_F(ActionsTests, onlyTheUsersSettingsAreStored) {
  EXPECT_EQ(
      perform(SwitchAlertsRequest{HealthAlert::Kind::disk, false}).json.find("kinds")->asArray()->size(),
      allCases<HealthAlert::Kind>().size());
  EXPECT_EQ(defaults.value("alert.disk"), Value(false));
  EXPECT_TRUE(perform(ChangeSettingRequest{"menuBarStyle", "graphs"}).worked);
  EXPECT_EQ(defaults.value("menuBarStyle"), Value("graphs"));
  EXPECT_TRUE(perform(ChangeSettingRequest{"menuBarStyle", {}}).worked);
  EXPECT_EQ(defaults.value("menuBarStyle"), std::nullopt);
  const std::pair<ChangeSettingRequest, const char*> rows[] = {
      {{"menuBarStyle", "purple"}, "takes one of icon"},
      {{"alert.cpu", 1}, "takes true or false"},
      {{"storage.freedTotal", 1}, "Korvell keeps storage.freedTotal by itself."},
      {{"nonsense", true}, "There is no setting nonsense."}};
  for (const auto& [request, reason] : rows) {
    EXPECT_THAT(describe(request).reason(), HasSubstr(reason));
    EXPECT_THAT(perform(request).message, HasSubstr(reason));
    EXPECT_EQ(defaults.value(request.key), std::nullopt);
  }
}

TEST_F(ActionsTests, everyRequestComesBackFromItsJSON) {
  const ActionRequest requests[] = {QuitRequest{.processes = {{10, 100}}, .force = true, .name = "editor"},
                                    StopServerRequest{10, Date{1.5}},
                                    StopIdleServersRequest{{{{.pid = 10, .name = "node", .ports = {80}}}}},
                                    RemoveStartupItemRequest{"/u/a", "a", "/opt/a"},
                                    RescanStartupItemsRequest{},
                                    ScanStorageRequest{{{StorageKind::npm, StorageKind::trash}}},
                                    CleanStorageRequest{{"/a", "/b"}, Date{2}},
                                    SwitchAlertsRequest{HealthAlert::Kind::network, false},
                                    ChangeSettingRequest{"key", Value::object({{"a", 1}})}};
  EXPECT_EQ(std::size(requests), actionNames().size());
  for (const auto& request : requests) {
    const auto text = dumpJSON(toValue(request, "describe"));
    const auto read = readActionRequest(*parseJSON(text), "describe");
    ASSERT_TRUE(read) << text << read.reason();
    EXPECT_EQ(*read, request) << text;
  }
}

} // namespace
} // namespace korvell
