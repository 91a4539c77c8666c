#include "Core/Machine/PrivilegedHelper.h"

#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeUsageHelper.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Manner = FakeUsageHelper::Manner;

constexpr Seconds limit{0.1};

struct PrivilegedHelperTests : testing::Test {
  FakeUsageHelper helper;
  FakeClock clock;
  std::optional<PrivilegedHelper> client{std::in_place, helper, clock};

  PrivilegedHelperTests() { helper.answer = RusageSample::encode({{7, {.diskRead = 70, .start = 1}}}); }
  /// How many samples a question about process 7 is answered with.
  std::size_t ask(double secondsLater = 0) {
    clock.advance(Seconds{secondsLater});
    return client->rusage({7}, limit).size();
  }
};

TEST_F(PrivilegedHelperTests, asksAndAnswersOneQuestionAtATime) {
  client->prepare(Seconds{1}); // before the first cycle
  helper.whileAsked = [&] { EXPECT_THAT(client->rusage({8}, limit), IsEmpty()); };
  for (const auto manner : {Manner::answersWhileWaitedFor, Manner::answersAtOnce}) {
    helper.manner = manner;
    EXPECT_EQ(client->rusage({7, 9}, limit).at(7).diskRead, 70u);
    helper.whileAsked = {};
  }
  EXPECT_THAT(client->rusage({}, limit), IsEmpty()) << "nothing to ask";
  EXPECT_THAT(helper.asked, ElementsAre(IsEmpty(), ElementsAre(7, 9), ElementsAre(7, 9)));
  EXPECT_THAT(helper.awaited, ElementsAre(Seconds{1}, limit, limit));
  EXPECT_EQ(helper.connections, 1) << "one connection serves all questions";
}

TEST_F(PrivilegedHelperTests, onlyWhatWasAskedForIsBelieved) {
  helper.answer = RusageSample::encode({{7, {}}, {8, {}}, {-1, {}}});
  EXPECT_THAT(client->rusage({7, 9}, limit), SizeIs(1));
  helper.answer->resize(55);
  EXPECT_EQ(ask(), 0u) << "cut short";
}

TEST_F(PrivilegedHelperTests, theStatusIsReadEveryThirtySeconds) {
  for (const auto status : {UsageHelperStatus::notEnabled, UsageHelperStatus::requiresApproval}) {
    helper.current = status;
    EXPECT_EQ(ask(30), 0u);
  }
  EXPECT_EQ(helper.connections, 0);
  helper.current = UsageHelperStatus::enabled;
  EXPECT_EQ(ask(30), 1u);
  helper.current = UsageHelperStatus::notEnabled;
  EXPECT_EQ(ask(29.9), 1u) << "not noticed yet";
  EXPECT_EQ(ask(0.1), 0u);
  EXPECT_EQ(helper.statusQuestions, 4);
}

TEST_F(PrivilegedHelperTests, aSlowOrFailingHelperIsLeftAloneForThirtySeconds) {
  const auto good = helper.answer;
  const struct {
    const char* what;
    Manner manner;
    UsageHelperAnswer answer;
    bool refuses = false;
  } rows[] = {{"slow", Manner::isSlow, good},
              {"an error", Manner::answersWhileWaitedFor, std::nullopt},
              {"nobody there", Manner::answersAtOnce, good, true}};
  for (const auto& row : rows) {
    helper.manner = row.manner;
    helper.answer = row.answer;
    helper.refuses = row.refuses;
    EXPECT_TRUE(client->registerHelper());
    EXPECT_EQ(ask(), 0u) << row.what;
    helper.manner = Manner::answersAtOnce;
    helper.answer = good;
    helper.refuses = false;
    clock.wall = clock.wall - Seconds{1e6}; // the wall clock means nothing here
    EXPECT_EQ(ask(29.9), 0u) << row.what;
    EXPECT_EQ(ask(0.1), 1u) << row.what;
  }
}

TEST_F(PrivilegedHelperTests, aLateAnswerIsDropped) {
  helper.manner = Manner::isSlow;
  EXPECT_EQ(ask(), 0u);
  const auto late = std::exchange(helper.late, {}).at(0);
  // It arrives while the next question is waited for, and again when none is.
  helper.whileAsked = [&] { late(RusageSample::encode({{7, {.diskRead = 1}}})); };
  EXPECT_EQ(ask(30), 0u) << "the answer to another question";
  late(std::nullopt);
  helper.whileAsked = {};
  helper.manner = Manner::answersWhileWaitedFor;
  EXPECT_EQ(ask(30), 1u);
  // After the client's end too.
  helper.manner = Manner::isSlow;
  EXPECT_EQ(ask(), 0u);
  client.reset();
  EXPECT_EQ(helper.live, 0);
  helper.late.back()(std::nullopt);
  helper.lost.at(0)();
}

TEST_F(PrivilegedHelperTests, aLostConnectionIsMadeAnew) {
  EXPECT_EQ(ask(), 1u);
  helper.lost.at(0)();
  EXPECT_EQ(helper.live, 0);
  EXPECT_EQ(ask(), 1u);
  helper.lost.at(0)(); // news of the first one, late
  EXPECT_EQ(helper.live, 1);
  EXPECT_EQ(ask(), 1u);
  EXPECT_EQ(helper.connections, 2);
}

TEST_F(PrivilegedHelperTests, turningItOnForgetsWhatWas) {
  helper.current = UsageHelperStatus::notEnabled;
  EXPECT_EQ(ask(), 0u);
  helper.failure = Failure{"not allowed"};
  EXPECT_EQ(client->registerHelper().reason(), "not allowed");
  EXPECT_EQ(ask(), 0u);
  EXPECT_EQ(helper.statusQuestions, 1);
  helper.failure.reset();
  EXPECT_TRUE(client->registerHelper());
  EXPECT_EQ(ask(), 1u) << "without waiting for the next look at the status";
  helper.manner = Manner::isSlow;
  EXPECT_EQ(ask(), 0u);
  helper.manner = Manner::answersAtOnce;
  client->statusChanged();
  EXPECT_EQ(ask(), 1u) << "without waiting for the end of the back-off";
  EXPECT_TRUE(client->unregisterHelper());
  EXPECT_EQ(helper.live, 0);
  EXPECT_EQ(ask(), 0u);
}

} // namespace
} // namespace korvell
