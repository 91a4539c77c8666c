// Who makes a sound, in every state that the page knows.

#include "Base/ManualQueue.h"
#include "UI/Gallery/Gallery.h"
#include "UI/Gallery/PageFrame.h"
#include "UI/Sound/SoundView.h"

namespace korvell {

namespace {

using Made = std::unique_ptr<QWidget>;

/// A sound server that is set by hand.
struct Sounds {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  Published<SoundState> state{*main};
};
using State = std::shared_ptr<Sounds>;

AudioApp app(std::string name, double volume, std::optional<double> level = {}) {
  AudioApp made{.key = name, .name = name, .volume = volume, .playing = level.has_value(), .level = level};
  made.isRemembered = volume != 1;
  return made;
}

RememberedApp remembered(std::string name, double volume, bool muted = false) {
  return {.key = name, .name = name, .volume = volume, .muted = muted};
}

State stateOf(const std::function<void(SoundState&)>& change) {
  auto made = std::make_shared<Sounds>();
  SoundState state{.connection = SoundConnection::connected,
                   .output = OutputDevice{.name = "Built-in Audio Analog Stereo", .volume = 0.65}};
  change(state);
  made->state.set(std::move(state));
  return made;
}

void play(SoundState& state) {
  auto music = app("Music", 0.6, 0.12), meeting = app("Meeting", 1.3, 0.4), quiet = app("Terminal", 1);
  auto muted = app("Chat", 0.8, 0.0);
  muted.muted = true;
  state.apps = {app("Firefox", 1, 0.5), meeting, music, muted, quiet};
  state.remembered = {remembered("Chat", 0.8, true), remembered("Meeting", 1.3), remembered("Music", 0.6),
                      remembered("Podcasts", 1.2), remembered("Video Player", 0, true)};
}

void playLong(SoundState& state) {
  const std::string longName = "An application whose name is longer than any row of any list has room for";
  auto call = app("Meeting with a name of its own", 1, 0.3);
  call.isAdjustable = false;
  state.apps = {app(longName, 0.75, 1.0), call};
  state.apps.front().isRemembered = true;
  state.remembered = {remembered(longName + ", remembered", 1.5)};
  state.output =
      OutputDevice{.name = "A receiver with a name that ends somewhere far to the right of everything, "
                           "HDMI / DisplayPort 3 Output",
                   .volume = 1,
                   .muted = true,
                   .isAdjustable = false};
}

void silent(SoundState&) {}
void remember(SoundState& state) {
  state.remembered = {remembered("Meeting", 1.3), remembered("Music", 0.6)};
}
void ask(SoundState& state) {
  state.access = SoundAccess::unasked;
  state.apps = {app("Firefox", 1, 0.5)};
}
void deny(SoundState& state) {
  play(state);
  state.access = SoundAccess::denied;
}
void loseServer(SoundState& state) {
  state = {.connection = SoundConnection::noServer};
  remember(state);
}
void haveNoServer(SoundState& state) { state = {.connection = SoundConnection::noServer}; }
void haveNoLibrary(SoundState& state) { state = {.connection = SoundConnection::noLibrary}; }
void connect(SoundState& state) { state = {.connection = SoundConnection::connecting}; }

Made page(const Theme& theme, const State& sounds) {
  SoundView::Services services{.sound = {.state = sounds ? &sounds->state : nullptr,
                                         .watchLevels = {},
                                         .setVolume = [](const std::string&, double) {},
                                         .setMuted = [](const std::string&, bool) {},
                                         .reset = [](const std::string&) {},
                                         .resetAll = [] {},
                                         .setOutputVolume = [](double) {},
                                         .setOutputMuted = [](bool) {}},
                               .theme = theme,
                               .openPermission = [] {}};
  return std::make_unique<PageFrame>(theme, sounds, new SoundView(std::move(services), nullptr));
}

const QSize usual{884, 760}, low{664, 526}, wide{1184, 760};

GalleryView view(std::string name, const std::function<void(SoundState&)>& change,
                 std::vector<QSize> sizes = {usual}) {
  return {std::move(name), std::move(sizes),
          [=](const Theme& theme) -> Made { return page(theme, stateOf(change)); }};
}

} // namespace

std::vector<GalleryView> soundViews() {
  return {
      view("sound", play, {usual, low, wide}),
      view("sound-long", playLong, {usual, low}),
      view("sound-silent", silent, {usual, low}),
      view("sound-remembered", remember),
      view("sound-unasked", ask),
      view("sound-denied", deny, {usual, low}),
      view("sound-lost-server", loseServer),
      view("sound-no-server", haveNoServer, {usual, low}),
      view("sound-no-library", haveNoLibrary),
      view("sound-connecting", connect),
      {"sound-not-offered", {usual}, [](const Theme& theme) -> Made { return page(theme, nullptr); }},
  };
}

} // namespace korvell
