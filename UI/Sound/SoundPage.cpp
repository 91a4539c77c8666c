#include "UI/Sound/SoundPage.h"

#include "Base/Format.h"
#include "Base/Localization.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

using Row = SoundPage::Row;

int percentOf(double volume) { return int(std::lround(volume * 100)); }

std::string spokenVolume(const Row& row) {
  if (row.isMuted) return localized("{name}, muted", {{"name", row.name}});
  return localized("{name}, {n} percent", {{"name", row.name}, {"n", std::to_string(row.percent)}});
}

std::string detailOf(const AudioApp& app) {
  if (!app.isAdjustable) return localized("can't be changed now");
  return app.playing ? std::string() : localized("paused");
}

Row rowOf(const AudioApp& app) {
  Row row{.key = app.key,
          .name = app.name,
          .picture = app.bundlePath.value_or(""),
          .detail = detailOf(app),
          .percent = std::clamp(percentOf(app.volume), 0, loudestPercent),
          .isMuted = app.muted,
          .isPlaying = app.playing,
          .isAdjustable = app.isAdjustable,
          .isRemembered = app.isRemembered};
  // By the sliders' curve: what plays at full scale reaches as far as its knob.
  if (app.level && app.playing) row.level = std::cbrt(std::clamp(*app.level, 0.0, 1.0));
  row.spoken = spokenVolume(row);
  if (!row.detail.empty()) row.spoken += ", " + row.detail;
  return row;
}

Row rowOf(const RememberedApp& app) {
  Row row{.key = app.key,
          .name = app.name,
          .picture = app.bundlePath.value_or(""),
          .percent = std::clamp(percentOf(app.volume), 0, loudestPercent),
          .isMuted = app.muted,
          .isRemembered = true};
  row.spoken = spokenVolume(row);
  return row;
}

Row rowOf(const OutputDevice& output) {
  Row row{.name = output.name,
          .detail = localized(output.isAdjustable ? "Output" : "Output, can't be changed here"),
          .percent = std::clamp(percentOf(output.volume), 0, 100),
          .isMuted = output.muted,
          .isPlaying = true,
          .isAdjustable = output.isAdjustable};
  row.spoken = localized("Output: {row}", {{"row", spokenVolume(row)}});
  return row;
}

void addRemembered(SoundPage& page, const SoundState& state) {
  for (const auto& app : state.remembered)
    if (std::ranges::none_of(page.apps, [&](const Row& row) { return row.key == app.key; }))
      page.remembered.push_back(rowOf(app));
}

/// What is said where no application is heard.
SoundPage::Empty emptinessOf(SoundConnection connection) {
  if (connection == SoundConnection::connected)
    return {localized("Nothing is playing."),
            localized("An app that makes a sound shows up here, with a volume of its own.")};
  return {localized("Sound per app is not available on this system."), title(connection)};
}

} // namespace

SoundPage soundPage(const std::optional<SoundState>& state) {
  SoundPage page;
  if (!state) {
    page.isMeasured = true;
    page.empty = {localized("Sound per app is not available on this system."), {}};
    return page;
  }
  page.isMeasured =
      state->connection != SoundConnection::idle && state->connection != SoundConnection::connecting;
  if (state->access == SoundAccess::denied)
    page.trouble = {
        title(state->access),
        localized("Until it does, every app is heard as loud as it plays. The permission is named "
                  "\"System Audio Recording Only\"; Korvell records nothing."),
        true};
  else if (!state->isStored)
    page.trouble = {localized("Your choice could not be stored."), localized("It holds until Korvell ends.")};
  if (state->access == SoundAccess::unasked) page.note = title(state->access);
  if (state->output) page.output = rowOf(*state->output);
  for (const auto& app : state->apps) page.apps.push_back(rowOf(app));
  addRemembered(page, *state);
  const auto playing = std::ranges::count_if(page.apps, &Row::isPlaying);
  if (playing > 0) page.summary = localized("{n} playing", {{"n", std::to_string(playing)}});
  if (!page.isMeasured) return page;
  const bool isConnected = state->connection == SoundConnection::connected;
  auto emptiness = emptinessOf(state->connection);
  if (page.apps.empty() && page.remembered.empty())
    page.empty = std::move(emptiness);
  else if (page.apps.empty() || !isConnected) // those that played until the server was lost
    page.quiet = isConnected ? emptiness.title : emptiness.sentence;
  return page;
}

SoundPage settled(SoundPage page, const SoundPage& before) {
  for (auto rows : {&SoundPage::apps, &SoundPage::remembered}) {
    std::vector<Row> ordered;
    for (const auto& old : before.*rows)
      for (auto& row : page.*rows)
        if (row.key == old.key) ordered.push_back(row);
    if (ordered.size() == (page.*rows).size()) page.*rows = std::move(ordered);
  }
  return page;
}

} // namespace korvell
