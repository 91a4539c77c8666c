#include "UI/Gallery/MadeUp.h"
#include "UI/Panel/PanelPage.h"
#include "UI/Sound/SoundPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

SoundState playing() {
  AudioApp music{.key = "m", .name = "Music", .bundlePath = "/m.desktop", .volume = 0.6, .playing = true};
  music.level = 0.125;
  music.isRemembered = true;
  AudioApp call{.key = "c", .name = "Call", .muted = true, .playing = true, .isAdjustable = false};
  AudioApp loud{.key = "l", .name = "Loud", .volume = 3, .level = 0.5};
  return {.connection = SoundConnection::connected,
          .output = OutputDevice{.name = "Speakers", .volume = 1.4, .muted = false, .isAdjustable = false},
          .apps = {music, call, loud},
          .remembered = {{.key = "m", .name = "Music", .volume = 0.6},
                         {.key = "p", .name = "Podcasts", .volume = 1.2, .muted = true}}};
}

TEST(SoundPageTests, whoPlaysAndWhatIsRememberedBeside) {
  const auto page = soundPage(playing());
  EXPECT_TRUE(page.isMeasured);
  EXPECT_EQ(page.summary, "2 playing");
  ASSERT_EQ(page.apps.size(), 3);
  const auto &music = page.apps[0], &call = page.apps[1], &loud = page.apps[2];
  EXPECT_EQ(music.spoken, "Music, 60 percent");
  EXPECT_EQ(music.picture, "/m.desktop");
  EXPECT_DOUBLE_EQ(*music.level, 0.5) << "by the sliders' curve";
  EXPECT_TRUE(music.isRemembered);
  EXPECT_EQ(call.spoken, "Call, muted, can't be changed now");
  EXPECT_EQ(loud.percent, loudestPercent) << "where the slider ends";
  EXPECT_EQ(loud.detail, "paused");
  EXPECT_FALSE(loud.level) << "an old peak is no sound";
  EXPECT_THAT(page.remembered, ElementsAre(Field(&SoundPage::Row::name, "Podcasts"))) << "each stands once";
  EXPECT_EQ(page.output->percent, 100);
  EXPECT_EQ(page.output->spoken, "Output: Speakers, 100 percent");
  EXPECT_FALSE(page.empty || page.trouble);
  EXPECT_EQ(page.quiet + page.note, "");
}

TEST(SoundPageTests, oneSentenceInsteadOfAList) {
  EXPECT_EQ(soundPage(std::nullopt).empty->title, "Sound per app is not available on this system.");
  EXPECT_FALSE(soundPage(SoundState{.connection = SoundConnection::connecting}).isMeasured);
  EXPECT_EQ(soundPage(SoundState{.connection = SoundConnection::connected}).empty->title,
            "Nothing is playing.");
  auto state = playing();
  state.apps.clear();
  auto page = soundPage(state);
  EXPECT_FALSE(page.empty) << "what is remembered can be changed all the same";
  EXPECT_EQ(page.quiet, "Nothing is playing.");
  for (const auto connection : {SoundConnection::noServer, SoundConnection::noLibrary}) {
    state.connection = connection;
    EXPECT_EQ(soundPage(state).quiet, title(connection));
    state.apps = playing().apps;
    EXPECT_EQ(soundPage(state).quiet, title(connection)) << "also over those that played a minute ago";
    state.apps.clear();
    EXPECT_EQ(soundPage(SoundState{.connection = connection}).empty->sentence, title(connection));
  }
}

TEST(SoundPageTests, aMissingPermissionIsToldWhereItIsGiven) {
  auto state = playing();
  state.access = SoundAccess::unasked;
  EXPECT_FALSE(soundPage(state).trouble);
  EXPECT_EQ(soundPage(state).note, title(SoundAccess::unasked));
  state.access = SoundAccess::denied;
  EXPECT_TRUE(soundPage(state).trouble->isPermission);
  state.access = SoundAccess::granted;
  state.isStored = false;
  EXPECT_FALSE(soundPage(state).trouble->isPermission);
}

TEST(SoundPageTests, thePanelShowsThoseWhoPlayWhereItIsAsked) {
  const auto machine = usualMachine();
  auto state = playing();
  EXPECT_THAT(panelPage(*machine, UsageKey::cpu, {}, false).sounds, IsEmpty());
  EXPECT_THAT(panelPage(*machine, UsageKey::cpu, {}, false, &state).sounds,
              ElementsAre(Field(&SoundPage::Row::name, "Music"), Field(&SoundPage::Row::name, "Call")));
  state.apps.insert(state.apps.end(), 5, state.apps.front());
  EXPECT_EQ(panelPage(*machine, UsageKey::cpu, {}, false, &state).sounds.size(), PanelPage::mostSounds);
}

TEST(SoundPageTests, nothingMovesUnderAPointer) {
  const auto before = soundPage(playing());
  auto state = playing();
  std::swap(state.apps[0], state.apps[2]);
  EXPECT_EQ(settled(soundPage(state), before).apps, before.apps);
  state.apps.pop_back();
  const auto names = [&] {
    const auto page = settled(soundPage(state), before);
    std::string all;
    for (const auto& row : page.apps) all += row.name + " ";
    all += "|";
    for (const auto& row : page.remembered) all += " " + row.name;
    return all;
  };
  EXPECT_EQ(names(), "Music Call Loud | Podcasts") << "what ended is remembered and keeps its place";
  state.apps.insert(state.apps.begin(), {.key = "n", .name = "A New", .playing = true});
  EXPECT_EQ(names(), "Music Call Loud A New | Podcasts") << "one has come";
  state.apps.insert(state.apps.begin(), {.key = "p", .name = "Podcasts", .playing = true});
  EXPECT_EQ(names(), "Music Call Loud A New | Podcasts") << "one that is remembered begins to play";
}

} // namespace
} // namespace korvell
