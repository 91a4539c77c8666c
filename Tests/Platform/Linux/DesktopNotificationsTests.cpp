#include "FakeNotificationServer.h"
#include "Platform/Linux/DesktopNotifications.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Urgency = Notification::Urgency;

struct DesktopNotificationsTests : testing::Test {
  TemporaryFolder folder;
  const std::string path = folder / "bus";
  const Notification alert{"one", "A <b> & co", "5 < 6 & \"quoted\"\n", Urgency::critical};
};

TEST_F(DesktopNotificationsTests, sendsWhatTheServiceUnderstands) {
  FakeNotificationServer server(path, {"body", "body-markup", "actions"});
  DesktopNotifications notifications(server.address());
  std::promise<std::string> opened;
  notifications.setOpenHandler([&](const std::string& identifier) { opened.set_value(identifier); });
  notifications.post(alert);
  const auto received = server.next();
  ASSERT_TRUE(received);
  EXPECT_EQ(received->application, "Korvell");
  EXPECT_EQ(received->summary, "A <b> & co") << "a summary has no markup";
  EXPECT_EQ(received->body, "5 &lt; 6 &amp; \"quoted\"\n");
  EXPECT_EQ(received->urgency, 2);
  EXPECT_EQ(received->desktopEntry, "korvell");
  EXPECT_EQ(received->replaces, 0u);
  EXPECT_THAT(received->actions, ElementsAre("default", "Open"));

  server.invoke(41, "other");
  server.invoke(99, "default");
  server.invoke(41, "default");
  auto future = opened.get_future();
  ASSERT_EQ(future.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_EQ(future.get(), "one");
}

TEST_F(DesktopNotificationsTests, aQuestionIsAnsweredByItsButtonsAlone) {
  FakeNotificationServer server(path, {"actions"});
  DesktopNotifications notifications(server.address());
  notifications.setOpenHandler([](const std::string&) { FAIL(); });
  const auto ask = [&](const std::function<void(std::uint32_t)>& act, std::uint32_t id) {
    std::promise<NotificationAnswer> answered;
    notifications.ask(alert, "Quit", "Don't", [&](NotificationAnswer answer) { answered.set_value(answer); });
    EXPECT_THAT(server.next()->actions, ElementsAre("yes", "Quit", "no", "Don't"));
    act(id);
    auto future = answered.get_future();
    EXPECT_EQ(future.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    server.close(id); // as services do
    return future.get();
  };
  const auto press = [&](const char* button) {
    return [&server, button](std::uint32_t id) {
      server.invoke(id, "default");
      server.invoke(id, button);
    };
  };
  EXPECT_EQ(ask(press("yes"), 41), NotificationAnswer::yes);
  EXPECT_EQ(ask(press("no"), 42), NotificationAnswer::no);
  EXPECT_EQ(ask([&](std::uint32_t id) { server.close(id); }, 43), NotificationAnswer::no);
}

TEST_F(DesktopNotificationsTests, aQuestionThatNobodyCanSeeIsImpossible) {
  const auto answerOf = [this](DesktopNotifications& notifications) {
    std::promise<NotificationAnswer> answered;
    notifications.ask(alert, "Quit", "Don't", [&](NotificationAnswer answer) { answered.set_value(answer); });
    return answered.get_future().get();
  };
  DesktopNotifications without(""), nobody("unix:path=" + (folder / "nobody"));
  EXPECT_EQ(answerOf(without), NotificationAnswer::impossible);
  EXPECT_EQ(answerOf(nobody), NotificationAnswer::impossible);
  FakeNotificationServer server(path, {"body"});
  DesktopNotifications plain(server.address());
  EXPECT_EQ(answerOf(plain), NotificationAnswer::impossible);
}

TEST_F(DesktopNotificationsTests, aPlainServiceGetsPlainText) {
  FakeNotificationServer server(path, {"body"});
  DesktopNotifications notifications(server.address());
  notifications.setOpenHandler([](const std::string&) {});
  notifications.post(alert);
  const auto received = server.next();
  ASSERT_TRUE(received);
  EXPECT_EQ(received->body, alert.body);
  EXPECT_THAT(received->actions, IsEmpty());
}

TEST_F(DesktopNotificationsTests, withoutAnythingToOpenThereIsNoAction) {
  FakeNotificationServer server(path, {"actions"});
  DesktopNotifications notifications(server.address());
  notifications.post(alert);
  EXPECT_THAT(server.next()->actions, IsEmpty());
}

TEST_F(DesktopNotificationsTests, theSameIdentifierReplaces) {
  FakeNotificationServer server(path);
  DesktopNotifications notifications(server.address());
  notifications.post({"weekly-report", "1", "", Urgency::low});
  ASSERT_TRUE(server.next());
  notifications.post({"other", "2", "", Urgency::normal});
  EXPECT_EQ(server.next()->replaces, 0u);
  notifications.post({"weekly-report", "3", "", Urgency::low});
  EXPECT_EQ(server.next()->replaces, 41u);
  server.close(41); // by the user
  notifications.post({"other", "4", "", Urgency::normal});
  EXPECT_EQ(server.next()->replaces, 42u);
  notifications.post({"weekly-report", "5", "", Urgency::low});
  EXPECT_EQ(server.next()->replaces, 0u);
}

TEST_F(DesktopNotificationsTests, whatAServiceShowedEndsWithIt) {
  FakeNotificationServer server(path, {"actions"});
  DesktopNotifications notifications(server.address());
  std::promise<std::string> opened;
  notifications.setOpenHandler([&](const std::string& identifier) { opened.set_value(identifier); });
  notifications.post(alert);
  ASSERT_TRUE(server.next());
  std::promise<NotificationAnswer> answered;
  notifications.ask({"question", "?", "", Urgency::normal}, "Quit", "Don't",
                    [&](NotificationAnswer answer) { answered.set_value(answer); });
  ASSERT_TRUE(server.next());
  server.giveWay();
  auto answer = answered.get_future();
  ASSERT_EQ(answer.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_EQ(answer.get(), NotificationAnswer::no);

  notifications.post({"other", "1", "", Urgency::normal});
  ASSERT_TRUE(server.next());
  server.invoke(41, "default"); // that of another program now
  server.invoke(43, "default");
  auto future = opened.get_future();
  ASSERT_EQ(future.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_EQ(future.get(), "other");
  notifications.post(alert);
  EXPECT_EQ(server.next()->replaces, 0u);
}

TEST_F(DesktopNotificationsTests, textThatTheBusRefusesIsRepaired) {
  FakeNotificationServer server(path);
  DesktopNotifications notifications(server.address());
  notifications.post({"x", "bad \xff name", std::string("zero\0byte", 9), Urgency::normal});
  const auto received = server.next();
  ASSERT_TRUE(received);
  EXPECT_EQ(received->summary, "bad \uFFFD name");
  EXPECT_EQ(received->body, "zerobyte");
}

TEST_F(DesktopNotificationsTests, nobodyThereAndThenSomebody) {
  DesktopNotifications none("");
  none.post(alert);
  DesktopNotifications notifications("unix:path=" + path);
  notifications.post(alert); // lost, and no harm done
  FakeNotificationServer server(path);
  // How soon the first one was given up is not ours to say; a later one gets through.
  notifications.post({"later", "later", "", Urgency::normal});
  std::optional<FakeNotificationServer::Received> received;
  do received = server.next();
  while (received && received->summary != "later");
  EXPECT_TRUE(received);
}

TEST_F(DesktopNotificationsTests, aServiceThatHangsHoldsUpNobody) {
  FakeNotificationServer server(path, {}, false);
  DesktopNotifications notifications(server.address());
  for (int i = 0; i < 100; ++i) notifications.post(alert);
  EXPECT_TRUE(server.wasAsked());
  // The end of the scope does not wait for the answer either.
}

TEST_F(DesktopNotificationsTests, aBusThatWentAwayIsFoundAgain) {
  FakeNotificationServer server(path);
  DesktopNotifications notifications(server.address());
  notifications.post(alert);
  ASSERT_TRUE(server.next());
  server.hangUp();
  notifications.post({"two", "again", "", Urgency::normal});
  auto received = server.next();
  // The first one may not have had its answer, and then comes again.
  if (received && received->summary == alert.title) received = server.next();
  ASSERT_TRUE(received);
  EXPECT_EQ(received->summary, "again");
}

} // namespace
} // namespace korvell
