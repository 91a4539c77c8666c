#include "UI/Sound/SoundView.h"

#include "Base/ManualQueue.h"
#include "Tests/UI/Kit/KitFixture.h"
#include "UI/Panel/PanelSound.h"

namespace korvell {
namespace {

using testing::_;
using testing::ElementsAre;
using testing::Pair;

struct SliderTests : KitTests {
  std::vector<int> told;
  Slider slider{theme, "Volume", 150, 100, nullptr};

  SliderTests() {
    slider.resize(314, 28); // two pixels a percent
    slider.onMove([this](int value) { told.push_back(value); });
    show(slider);
  }
  void drag(double from, double to) {
    mouse(slider, QEvent::MouseButtonPress, {from, 12});
    mouse(slider, QEvent::MouseMove, {to, 12});
    mouse(slider, QEvent::MouseButtonRelease, {to, 12});
  }
};

TEST_F(SliderTests, isDraggedAndStopsAtTheNotch) {
  drag(7 + 100, 7 + 203); // past the notch by less than is meant
  drag(7 + 200, 7 + 900);
  EXPECT_THAT(told, ElementsAre(50, 100, 150));
  slider.setValue(20);
  EXPECT_EQ(told.size(), 3) << "nobody is told what they said";
  mouse(slider, QEvent::MouseButtonPress, {7 + 40, 12}); // on the knob
  slider.setValue(90);
  EXPECT_EQ(slider.value(), 20) << "not out of a hand that holds it";
  mouse(slider, QEvent::MouseButtonRelease, {7 + 40, 12});
  mouse(slider, QEvent::MouseButtonDblClick, {7 + 40, 12});
  EXPECT_EQ(slider.value(), 100);
}

TEST_F(SliderTests, takesKeysInTheDirectionOfReading) {
  slider.setValue(60);
  slider.setFocus();
  key(slider, Qt::Key_Right);
  key(slider, Qt::Key_Left, Qt::ShiftModifier);
  key(slider, Qt::Key_PageUp);
  key(slider, Qt::Key_End);
  key(slider, Qt::Key_Home);
  slider.setLayoutDirection(Qt::RightToLeft);
  key(slider, Qt::Key_Left);
  drag(7 + 300 - 100, 7 + 300 - 102);
  EXPECT_THAT(told, ElementsAre(61, 51, 61, 150, 0, 1, 50, 51));
  auto* spoken = QAccessible::queryAccessibleInterface(&slider);
  ASSERT_TRUE(spoken && spoken->valueInterface());
  EXPECT_EQ(spoken->valueInterface()->maximumValue().toDouble(), 150);
  spoken->valueInterface()->setCurrentValue(70);
  EXPECT_EQ(slider.value(), 70);
  EXPECT_EQ(slider.spokenValue(), "70 percent");
}

struct SoundViewTests : KitTests {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  Published<SoundState> state{*main};
  std::vector<std::string> asked;
  std::shared_ptr<int> watching = std::make_shared<int>(0);
  std::unique_ptr<SoundView> view;

  SoundViewTests() {
    state.set(
        {.connection = SoundConnection::connected,
         .output = OutputDevice{.name = "Speakers", .volume = 0.5},
         .apps = {{.key = "m", .name = "Music", .volume = 0.6, .playing = true, .isRemembered = true}}});
    SoundControls sound{
        .state = &state,
        .watchLevels = [this] { return watching; },
        .setVolume = [this](const std::string& app, double volume) { set(app, volume); },
        .setMuted = [this](const std::string& app,
                           bool muted) { asked.push_back(app + (muted ? " muted" : " heard")); },
        .reset = [this](const std::string& app) { asked.push_back(app + " reset"); },
        .resetAll = [] {},
        .setOutputVolume = [this](double volume) { set("output", volume); },
        .setOutputMuted = [](bool) {}};
    view =
        std::make_unique<SoundView>(SoundView::Services{.sound = std::move(sound), .theme = theme}, nullptr);
    view->resize(900, 600);
  }
  void set(const std::string& app, double volume) {
    asked.push_back(app + " " + std::to_string(int(volume * 100 + 0.5)));
    auto changed = *state;
    for (auto& each : changed.apps)
      if (each.key == app) each.volume = volume;
    state.set(changed); // as the mixer does, at once
  }
};

TEST_F(SoundViewTests, changesWhatIsPointedAtAndListensOnlyWhileItIsSeen) {
  EXPECT_EQ(watching.use_count(), 1);
  show(*view);
  EXPECT_EQ(watching.use_count(), 2);
  auto sliders = all<Slider>(*view);
  ASSERT_EQ(sliders.size(), 2);
  sliders[1]->setFocus();
  key(*view, Qt::Key_Right);
  key(*view, Qt::Key_Delete);
  key(*view, Qt::Key_Up); // to the output
  key(*view, Qt::Key_Right);
  key(*view, Qt::Key_Delete);
  EXPECT_THAT(asked, ElementsAre("m 61", "m reset", "output 51"));
  const auto buttons = all<IconButton>(*view);
  click(*buttons[1]);
  EXPECT_EQ(asked.back(), "m muted");
  view->hide();
  EXPECT_EQ(watching.use_count(), 1);
}

TEST_F(SoundViewTests, whoComesOrGoesTakesNothingOutOfAHand) {
  show(*view);
  auto* music = all<Slider>(*view)[1];
  const auto put = [this](std::vector<AudioApp> apps) {
    auto now = *state;
    now.apps = std::move(apps);
    state.set(now);
  };
  const AudioApp playsMusic = state->apps.front();
  const AudioApp early{.key = "a", .name = "Alarm", .volume = 0.9, .playing = true};
  mouse(*music, QEvent::MouseButtonPress, {100, 12});
  asked.clear();
  put({early, playsMusic});
  mouse(*music, QEvent::MouseMove, {160, 12});
  ASSERT_EQ(asked.size(), 1);
  EXPECT_EQ(asked.front().front(), 'm') << asked.front();
  mouse(*music, QEvent::MouseButtonRelease, {160, 12});

  // Somebody who works with the keys keeps the row too, and the Tab key goes down the page.
  music->setFocus();
  put({early, playsMusic, {.key = "z", .name = "Zoo", .playing = true}});
  put({playsMusic, {.key = "z", .name = "Zoo", .playing = true}});
  asked.clear();
  key(*view, Qt::Key_Right);
  key(*view, Qt::Key_Delete);
  EXPECT_THAT(asked, ElementsAre("m 61", "m reset"));
  view->clearFocus();
  music->clearFocus();
  put({early, playsMusic, {.key = "z", .name = "Zoo", .playing = true}});
  std::string names;
  auto* at = all<Slider>(*view)[0];
  for (int i = 0; i < 3; ++i) {
    QWidget* next = at;
    do next = next->nextInFocusChain();
    while (!dynamic_cast<Slider*>(next));
    at = static_cast<Slider*>(next);
    names += QAccessible::queryAccessibleInterface(at)->text(QAccessible::Name).toStdString() + ", ";
  }
  EXPECT_EQ(names, "Volume of Alarm, Volume of Music, Volume of Zoo, ");
}

TEST_F(KitTests, aRowOfThePanelMutesWhomItShowed) {
  std::vector<std::string> muted;
  PanelSounds sounds(
      theme, {.open = [] {}, .mute = [&](const std::string& app, bool) { muted.push_back(app); }}, nullptr);
  const auto row = [](const char* app) { return SoundPage::Row{.key = app, .name = app, .isPlaying = true}; };
  sounds.show({row("m")});
  show(sounds);
  auto* button = all<IconButton>(sounds).front();
  mouse(*button, QEvent::MouseButtonPress, {5, 5});
  sounds.show({row("a"), row("m")});
  mouse(*button, QEvent::MouseButtonRelease, {5, 5});
  EXPECT_THAT(muted, ElementsAre("m"));
  sounds.show({row("m")});
  button->setFocus();
  sounds.show({row("b"), row("m")});
  QApplication::processEvents();
  std::map<int, std::string> places;
  for (const auto* each : all<PanelSound>(sounds))
    if (!each->isHidden()) places[each->y()] = each->key();
  EXPECT_THAT(places, ElementsAre(Pair(_, "m"), Pair(_, "b"))) << "nothing moves while it is in use";
  sounds.show({});
  EXPECT_TRUE(sounds.isHidden());
}

} // namespace
} // namespace korvell
