// korvell sound: who makes sound and how loud, and a volume for each application.

#include "Audio/SoundMemory.h"
#include "Base/Format.h"
#include "Base/Text.h"
#include "Tool/Commands.h"
#include "Tool/SoundReading.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr int barWidth = 20;
constexpr std::int64_t loudest = 150; ///< percent

std::string volumeText(double volume) { return Format::percent(volume * 100); }

std::string joined(std::initializer_list<std::string> words) {
  std::string all;
  for (const auto& word : words)
    if (!word.empty()) all += (all.empty() ? "" : " · ") + word;
  return all;
}

std::string stateText(const AudioApp& app) {
  return joined({app.playing ? localized("plays") : std::string(),
                 app.muted ? localized("muted") : std::string(),
                 app.isRemembered ? localized("remembered") : std::string(),
                 app.isAdjustable ? std::string() : localized("can't be changed")});
}

void printApps(Terminal& out, const std::vector<AudioApp>& apps) {
  Table table({{localized("Application"), Column::Align::left, true},
               {""},
               {localized("Volume"), Column::Align::right},
               {localized("State"), Column::Align::left, true}});
  for (const auto& app : apps)
    table.row({{app.name, Ink::bold},
               {bar(std::min(app.volume / loudestApp, 1.0), barWidth), app.muted ? Ink::dim : Ink::accent},
               volumeText(app.volume),
               {stateText(app), Ink::dim}});
  table.print(out);
}

void printSound(Terminal& out, const SoundState& sound) {
  const auto say = [&out](Ink ink, const std::string& text) {
    for (const auto& line : wrapped(text, out.columns())) out.line(out.ink(ink, line));
  };
  if (sound.output) {
    say(Ink::plain, joined({escapedControls(sound.output->name), volumeText(sound.output->volume),
                            sound.output->muted ? localized("muted") : std::string()}));
    out.line();
  }
  if (sound.apps.empty())
    say(Ink::plain, title(sound.connection));
  else
    printApps(out, sound.apps);
  std::vector<AudioApp> silent;
  for (const auto& app : sound.remembered)
    if (!std::ranges::count(sound.apps, app.key, &AudioApp::key)) silent.push_back(*shownApp(sound, app.key));
  if (silent.empty()) return;
  out.line();
  printApps(out, silent);
}

std::string changedText(const SoundRequest& request, const SoundChanged& changed) {
  const auto& app = changed.app;
  const LocalizedValue words[] = {{"name", app.name}, {"volume", volumeText(app.volume)}};
  auto text = request.reset ? localized("{name} is back at 100%, and nothing is remembered for it.", words)
              : app.muted   ? localized("{name} is muted, at {volume}.", words)
                            : localized("{name} is at {volume}.", words);
  if (changed.isOnlyRemembered) text += " " + localized("It is heard so once the application runs.");
  return text;
}

Result<SoundRequest> requestOf(const Arguments& arguments) {
  const bool mute = arguments.flag("--mute"), unmute = arguments.flag("--unmute");
  const auto volume = arguments.number("--volume");
  SoundRequest request{.app = arguments.text("APP").value_or(""), .reset = arguments.flag("--reset")};
  if (volume && *volume > loudest) return Failure{localized("--volume takes 0 to 150 percent.")};
  if ((mute && unmute) || (request.reset && (mute || unmute || volume)))
    return Failure{localized("--mute, --unmute and --reset exclude each other, and --reset a volume.")};
  if (volume) request.volume = double(*volume) / 100;
  if (mute || unmute) request.muted = mute;
  return request;
}

int printChange(Context& context, const Arguments& arguments, const SoundRequest& request) {
  const auto changed = changeSound(context, request);
  if (!changed) return failLines(context, changed.reason());
  if (arguments.flag("--json"))
    printJSON(context.out, Value::object({{"app", toValue(changed->app)}}));
  else
    context.out.line(escapedControls(changedText(request, *changed)));
  return exitOK;
}

int runSound(Context& context, const Arguments& arguments) {
  const auto request = requestOf(arguments);
  if (!request) return fail(context, request.reason(), exitUsage);
  if (request->volume || request->muted || request->reset) {
    if (request->app.empty()) return fail(context, localized("Name the application."), exitUsage);
    return printChange(context, arguments, *request);
  }
  auto sound = readSound(context);
  if (!request->app.empty()) {
    const auto chosen = chooseSoundApp(sound, request->app);
    if (!chosen) return failLines(context, chosen.reason());
    std::erase_if(sound.apps, [&](const AudioApp& app) { return app.key != chosen->key; });
    std::erase_if(sound.remembered, [&](const RememberedApp& app) { return app.key != chosen->key; });
  }
  if (arguments.flag("--json"))
    printJSON(context.out, toValue(sound));
  else
    printSound(context.out, sound);
  return exitOK;
}

std::vector<Suggestion> suggestedSounds(Context& context) {
  std::vector<Suggestion> names;
  for (const auto& app : SoundMemory(*context.host.defaults).all())
    names.push_back({app.name, volumeText(app.volume)});
  return names;
}

} // namespace

Command soundCommand() {
  return {"sound",
          "Show who makes sound, and give an application a volume of its own",
          {{"APP",
            Option::Kind::positional,
            "An application that plays or is remembered, by its name or key",
            {},
            false,
            suggestedSounds},
           {"--volume", Option::Kind::number, "Set its volume, 0 to 150 percent, and remember it"},
           {"--mute", Option::Kind::flag, "Mute it, and remember that"},
           {"--unmute", Option::Kind::flag, "Let it be heard again"},
           {"--reset", Option::Kind::flag, "Back to 100%, and forget what was remembered"},
           jsonOption()},
          runSound};
}

} // namespace korvell
