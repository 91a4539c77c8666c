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

void keepOrder(std::vector<Row>& rows, const std::vector<std::string>& before) {
  std::ranges::stable_sort(
      rows, {}, [&](const Row& row) { return std::ranges::find(before, row.key) - before.begin(); });
}

SoundPage settled(SoundPage page, const SoundPage& before) {
  const auto keysOf = [](const std::vector<Row>& rows) {
    std::vector<std::string> keys;
    for (const auto& row : rows) keys.push_back(row.key);
    return keys;
  };
  const auto apps = keysOf(before.apps), remembered = keysOf(before.remembered);
  const auto moveBack = [](std::vector<Row>& from, std::vector<Row>& to, const auto& keys) {
    const auto gone = std::stable_partition(
        from.begin(), from.end(), [&](const Row& row) { return !std::ranges::count(keys, row.key); });
    to.insert(to.end(), gone, from.end());
    from.erase(gone, from.end());
  };
  moveBack(page.apps, page.remembered, remembered);
  moveBack(page.remembered, page.apps, apps);
  keepOrder(page.apps, apps);
  keepOrder(page.remembered, remembered);
  return page;
}

} // namespace korvell
