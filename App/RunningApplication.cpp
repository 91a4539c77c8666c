#include "App/RunningApplication.h"

#include "App/HandOver.h"
#include "App/KeeperClient.h"
#include "Base/Localization.h"

#include <algorithm>
#include <thread>

namespace korvell {

namespace {

constexpr const char* openAction = "open";
constexpr Seconds answerPatience{2};
constexpr std::size_t mostURLs = 16;
/// Of an address or token: what anybody may hand to a start must not make the request longer than a keeper
/// reads.
constexpr std::size_t longestText = 512;

enum class Reached { application, headlessKeeper, nobody };

Reached reach(const UserFolders& folders, const OpenRequest& request) {
  auto client = KeeperClient::connect(folders);
  if (!client) return Reached::nobody;
  Value urls = Value::array();
  for (std::size_t i = 0; i < std::min(mostURLs, request.urls.size()); ++i)
    urls.append(request.urls[i].substr(0, longestText));
  const auto answer = client->ask(Value::object({{"do", openAction},
                                                 {"urls", std::move(urls)},
                                                 {"activation", request.activation.substr(0, longestText)}}),
                                  answerPatience);
  if (!answer) return Reached::nobody;
  const auto* shown = answer->find("ok");
  return shown && shown->asBool() == true ? Reached::application : Reached::headlessKeeper;
}

OpenRequest requestOf(const Value& value) {
  OpenRequest request;
  const auto* activation = value.find("activation");
  if (activation && activation->asString()) request.activation = *activation->asString();
  const auto* urls = value.find("urls");
  if (const auto* list = urls ? urls->asArray() : nullptr)
    for (const auto& url : *list)
      if (url.asString() && request.urls.size() < mostURLs) request.urls.push_back(*url.asString());
  return request;
}

} // namespace

Launch launch(const UserFolders& folders, const OpenRequest& request, Seconds patience) {
  const SystemClock clock;
  const Seconds limit = clock.monotonic() + patience;
  constexpr std::chrono::milliseconds pause{50};
  for (;;) {
    const auto reached = reach(folders, request);
    if (reached == Reached::application) return {};
    const bool takesOver = reached == Reached::headlessKeeper;
    auto lock = takesOver ? takeOver(folders) : KeeperLock::acquire(folders);
    if (lock) return {.lock = std::move(*lock), .trouble = {}, .tookOver = takesOver};
    // Somebody has the lock and does not answer yet: another start of the same moment, most likely.
    if (!isKeeperRunning(folders) || clock.monotonic() >= limit)
      return {.lock = {}, .trouble = lock.reason()};
    std::this_thread::sleep_for(pause);
  }
}

void answerOpening(Keeper& keeper, const AppDelegate& delegate,
                   std::function<void(const std::string&)> activate) {
  keeper.addAction(openAction, [&delegate, activate = std::move(activate)](const Value& value,
                                                                           const Keeper::Answer& answer) {
    const auto request = requestOf(value);
    answer(Value::object({{"ok", true}}));
    activate(request.activation);
    if (request.urls.empty())
      delegate.applicationShouldHandleReopen(false);
    else
      delegate.applicationOpen(request.urls);
  });
  keeper.addAction(yieldAction, [](const Value&, const Keeper::Answer& answer) {
    answer(refusal(localized("Korvell's application keeps as long as it is open.")));
  });
}

} // namespace korvell
