#include "Core/Machine/PrivilegedHelper.h"

#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeUsageHelper.h"

#include <gmock/gmock.h>

using namespace korvell;
using testing::ElementsAre;
using Manner = FakeUsageHelper::Manner;

namespace {

constexpr Seconds limit{0.1};

struct World : testing::Test {
  FakeUsageHelper helper;
  FakeClock clock;
  PrivilegedHelper client{helper, clock};

  World() { helper.answer = RusageSample::encode({{7, {.diskRead = 70, .start = 1}}}); }
  /// How many samples a question about process 7 is answered with.
  std::size_t ask() { return client.rusage({7}, limit).size(); }
};

using PrivilegedHelperTests = World;

} // namespace

TEST_F(PrivilegedHelperTests, asksAndAnswers) {
  client.prepare(Seconds{1}); // before the first cycle
  for (const auto manner : {Manner::answersWhileWaitedFor, Manner::answersAtOnce}) {
    helper.manner = manner;
    const auto samples = client.rusage({7, 8}, limit);
    ASSERT_EQ(samples.size(), 1u);
    EXPECT_EQ(samples.at(7).diskRead, 70u);
  }
  EXPECT_THAT(helper.asked, ElementsAre(ElementsAre(), ElementsAre(7, 8), ElementsAre(7, 8)));
  EXPECT_THAT(helper.awaited, ElementsAre(Seconds{1}, limit, limit));
  EXPECT_EQ(helper.connections, 1) << "one connection serves all questions";
  EXPECT_TRUE(client.rusage({}, limit).empty());
  EXPECT_EQ(helper.asked.size(), 3u) << "nothing to ask";
}

TEST_F(PrivilegedHelperTests, onlyWhatWasAskedForIsBelieved) {
  helper.answer = RusageSample::encode({{7, {}}, {8, {}}, {-1, {}}});
  EXPECT_EQ(client.rusage({7, 9}, limit).size(), 1u);
  helper.answer->resize(55);
  EXPECT_EQ(ask(), 0u) << "cut short";
  helper.answer = RusageSample::encode({{7, {}}});
  helper.answer->resize(60);
  EXPECT_EQ(ask(), 1u) << "an incomplete second record";
}

TEST_F(PrivilegedHelperTests, theStatusIsReadEveryThirtySeconds) {
  for (const auto status : {UsageHelperStatus::notEnabled, UsageHelperStatus::requiresApproval,
                            UsageHelperStatus::notFound, UsageHelperStatus::notPermitted}) {
    helper.current = status;
    EXPECT_EQ(ask(), 0u);
    clock.advance(Seconds{30});
  }
  EXPECT_EQ(helper.statusQuestions, 4);
  EXPECT_EQ(helper.connections, 0);
  helper.current = UsageHelperStatus::enabled;
  EXPECT_EQ(ask(), 1u);
  helper.current = UsageHelperStatus::notEnabled;
  clock.advance(Seconds{29.9});
  EXPECT_EQ(ask(), 1u) << "not noticed yet";
  clock.advance(Seconds{0.1});
  EXPECT_EQ(ask(), 0u);
  EXPECT_EQ(helper.statusQuestions, 6);
}

TEST_F(PrivilegedHelperTests, aSlowOrFailingHelperIsLeftAloneForThirtySeconds) {
  const struct {
    const char* what;
    Manner manner;
    bool answers, refuses;
  } rows[] = {{"slow", Manner::isSlow, true, false},
              {"an error", Manner::answersWhileWaitedFor, false, false},
              {"an error at once", Manner::answersAtOnce, false, false},
              {"nobody there", Manner::answersAtOnce, true, true}};
  const auto good = helper.answer;
  for (const auto& row : rows) {
    helper.manner = row.manner;
    helper.refuses = row.refuses;
    if (!row.answers) helper.answer.reset();
    client.statusChanged();
    EXPECT_EQ(ask(), 0u) << row.what;
    helper.manner = Manner::answersAtOnce;
    helper.answer = good;
    helper.refuses = false;
    clock.wall = clock.wall - Seconds{1e6}; // the wall clock means nothing here
    clock.advance(Seconds{29.9});
    EXPECT_EQ(ask(), 0u) << row.what;
    clock.advance(Seconds{0.1});
    EXPECT_EQ(ask(), 1u) << row.what;
  }
}

TEST_F(PrivilegedHelperTests, aLateAnswerIsDropped) {
  helper.manner = Manner::isSlow;
  EXPECT_EQ(ask(), 0u);
  clock.advance(Seconds{30});
  const auto late = std::move(helper.late.at(0));
  helper.late.clear();
  // It arrives while the next question is waited for, and again when none is.
  helper.whileAsked = [&] { late(RusageSample::encode({{7, {.diskRead = 1}}})); };
  EXPECT_EQ(ask(), 0u) << "the answer to another question";
  late(std::nullopt);
  helper.whileAsked = {};
  helper.manner = Manner::answersWhileWaitedFor;
  clock.advance(Seconds{30});
  EXPECT_EQ(client.rusage({7}, limit).at(7).diskRead, 70u);
}

TEST_F(PrivilegedHelperTests, oneQuestionAtATime) {
  helper.whileAsked = [&] { EXPECT_TRUE(client.rusage({8}, limit).empty()); };
  EXPECT_EQ(ask(), 1u);
  EXPECT_EQ(helper.asked.size(), 1u);
}

TEST_F(PrivilegedHelperTests, aLostConnectionIsMadeAnew) {
  EXPECT_EQ(ask(), 1u);
  helper.lost.at(0)();
  EXPECT_EQ(helper.live, 0);
  EXPECT_EQ(ask(), 1u);
  EXPECT_EQ(helper.connections, 2);
  helper.lost.at(0)(); // news of the first one, late
  EXPECT_EQ(helper.live, 1);
  EXPECT_EQ(ask(), 1u);
  EXPECT_EQ(helper.connections, 2);
}

TEST_F(PrivilegedHelperTests, turningItOnForgetsWhatWas) {
  helper.current = UsageHelperStatus::notEnabled;
  EXPECT_EQ(ask(), 0u);
  helper.failure = Failure{"not allowed"};
  const auto refused = client.registerHelper();
  EXPECT_FALSE(refused);
  EXPECT_EQ(refused.reason(), "not allowed");
  EXPECT_EQ(ask(), 0u);
  EXPECT_EQ(helper.statusQuestions, 1);
  helper.failure.reset();
  EXPECT_TRUE(client.registerHelper());
  EXPECT_EQ(ask(), 1u) << "without waiting for the next look at the status";
  EXPECT_TRUE(client.unregisterHelper());
  EXPECT_EQ(helper.live, 0);
  EXPECT_EQ(ask(), 0u);
}

TEST(PrivilegedHelper, anAnswerMayComeAfterItsEnd) {
  FakeUsageHelper helper;
  FakeClock clock;
  helper.manner = Manner::isSlow;
  {
    PrivilegedHelper client(helper, clock);
    client.rusage({7}, limit);
  }
  EXPECT_EQ(helper.live, 0);
  helper.late.at(0)(std::nullopt);
  helper.lost.at(0)();
}
