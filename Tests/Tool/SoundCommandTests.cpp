#include "Audio/SoundMemory.h"
#include "KeeperFixture.h"
#include "Tests/Fakes/FakeUserDefaults.h"

namespace korvell {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

/// Without an environment no sound server is found.
struct SoundCommandTests : KeeperFixture {
  FakeUserDefaults* const defaults = new FakeUserDefaults; ///< owned by the host

  SoundCommandTests() {
    host.defaults.reset(defaults);
    SoundMemory(*defaults).remember(
        {{"proc:a", "Tune\x1b[2J", {}, 0.6, true}, {"proc:b", "Radio", {}, 1, false}});
  }
};

TEST_F(SoundCommandTests, withoutAServerItSaysSoAndRemembers) {
  EXPECT_EQ(run({"sound"}), exitOK);
  EXPECT_THAT(out, AllOf(HasSubstr("No sound server runs here"),
                         ContainsRegex("Tune.* 60% +muted · remembered"), Not(HasSubstr("\x1b"))));
  EXPECT_EQ(run({"sound", "radio", "--volume", "25", "--mute", "--json"}), exitOK);
  EXPECT_THAT(out, HasSubstr(R"("volume":0.25,"muted":true)"));
  EXPECT_EQ(SoundMemory(*defaults).all().back(), (RememberedApp{"proc:b", "Radio", {}, 0.25, true}));
  EXPECT_EQ(run({"sound", "proc:b", "--reset"}), exitOK);
  EXPECT_THAT(out, HasSubstr("Radio is back at 100%"));
  EXPECT_EQ(SoundMemory(*defaults).all().size(), 1U);
  EXPECT_EQ(run({"sound", "radio"}), exitFailed);
  defaults->readOnly = true;
  EXPECT_EQ(run({"sound", "proc:a", "--unmute"}), exitFailed);
}

TEST_F(SoundCommandTests, aRunningApplicationAnswersAndAHeadlessKeeperIsNotAsked) {
  bool hasSound = true;
  playKeeper([&](const Value& request) {
    if (request.find("ask"))
      return *parseJSON(hasSound ? R"({"ok":true,"actions":["quit","listSound","changeSound"]})"
                                 : R"({"ok":true,"actions":["quit"]})");
    if (*request.find("do") == Value("listSound"))
      return *parseJSON(R"({"ok":true,"sound":{"connection":"connected","apps":[{"key":"k","name":"Film",)"
                        R"("volume":1.5,"playing":true}],"remembered":[]}})");
    return *parseJSON(R"({"ok":false,"error":"It\nrefuses."})");
  });
  EXPECT_EQ(run({"sound"}), exitOK);
  EXPECT_THAT(out, AllOf(ContainsRegex("Film.* 150% +plays"), Not(HasSubstr("Radio"))));
  EXPECT_EQ(run({"sound", "Film", "--volume", "30"}), exitFailed);
  EXPECT_THAT(err, HasSubstr("refuses."));
  EXPECT_EQ(orders.back(), R"({"app":"Film","volume":0.3,"reset":false,"do":"changeSound"})");
  hasSound = false;
  EXPECT_EQ(run({"sound", "Radio", "--volume", "30"}), exitOK);
  EXPECT_EQ(orders.size(), 2U);
}

TEST_F(SoundCommandTests, whatItDoesNotTakeIsRefused) {
  const std::vector<std::string> rows[] = {{"sound", "--mute"},
                                           {"sound", "Radio", "--volume", "151"},
                                           {"sound", "Radio", "--mute", "--unmute"},
                                           {"sound", "Radio", "--reset", "--volume", "5"}};
  for (const auto& row : rows) EXPECT_EQ(run(row), exitUsage) << row.back();
  EXPECT_EQ(SoundMemory(*defaults).all().size(), 2U);
}

} // namespace
} // namespace korvell
