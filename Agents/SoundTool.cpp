// The tool "sound".

#include "Agents/ReadingTools.h"
#include "Base/Localization.h"

namespace korvell {

namespace {

constexpr std::int64_t usualApps = 40, mostApps = 200;

struct SoundToolAnswer {
  SoundConnection connection = SoundConnection::noServer;
  std::optional<OutputDevice> output;
  std::vector<AudioApp> apps; ///< those that play first
  std::optional<std::string> nextCursor;
  std::vector<RememberedApp> remembered;

  static constexpr auto fields() {
    return std::tuple{Field{"connection", &SoundToolAnswer::connection},
                      Field{"output", &SoundToolAnswer::output}, Field{"apps", &SoundToolAnswer::apps},
                      Field{"nextCursor", &SoundToolAnswer::nextCursor},
                      Field{"remembered", &SoundToolAnswer::remembered}};
  }
};

Result<Value> readSound(Readings& readings, const Value& arguments, const Cancellation&) {
  const auto page = ResultPage::of(arguments, usualApps);
  if (!page) return Failure{page.reason()};
  const auto& read = readings.services().readSound;
  if (!read) return Failure{localized("This system lets nobody see the volumes of applications.")};
  const auto sound = read();
  return toValue(SoundToolAnswer{sound.connection, sound.output, page->cut(sound.apps),
                                 page->next(sound.apps.size()), sound.remembered});
}

} // namespace

ReadingTool soundTool() {
  return {"sound",
          "Sound",
          "Which applications make sound now, how loud each is set (1 is 100 %, up to 1.5) and whether it is "
          "muted; what is remembered for applications that are silent; the output's volume. Only reads.",
          schema::object({ResultPage::limit(mostApps, usualApps), ResultPage::cursor()}),
          schema::of<SoundToolAnswer>(),
          readSound};
}

} // namespace korvell
