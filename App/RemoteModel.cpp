#include "App/RemoteModel.h"

#include "App/KeeperClient.h"
#include "App/ModelParts.h"
#include "Base/ThreadControl.h"

#include <algorithm>

namespace korvell {

namespace {

/// Three cycles at the slow pace: at the fast one a keeper that is busy for long is not gone.
constexpr Seconds longestSilence{30};

Value subscription(const RemoteInterest& interest) {
  Value request = Value::object({{"ask", "subscription"}, {"watching", interest.isWatching}});
  if (interest.parts.empty()) return request;
  Value parts = Value::array();
  for (const auto& part : interest.parts) parts.append(part);
  request.set("parts", std::move(parts));
  return request;
}

} // namespace

std::unique_ptr<RemoteModel> RemoteModel::connect(Queue& main, const UserDefaults& defaults,
                                                  const UserFolders& folders, Seconds patience, Task lost,
                                                  const RemoteInterest& interest) {
  auto client = KeeperClient::connect(folders);
  const auto state = client ? client->ask(subscription(interest), patience) : std::nullopt;
  const auto* hasSample = state ? state->find("hasSample") : nullptr;
  if (!hasSample || hasSample->asBool() != true) return nullptr;
  const auto isMissing = [&](const std::string& part) { return !state->find(part); };
  if (std::ranges::any_of(interest.parts, isMissing)) return nullptr;
  return std::unique_ptr<RemoteModel>(
      new RemoteModel(main, defaults, std::move(*client), *state, std::move(lost)));
}

RemoteModel::RemoteModel(Queue& main, const UserDefaults& defaults, KeeperClient client, const Value& state,
                         Task lost)
    : Model(main, defaults), client_(std::make_shared<KeeperClient>(std::move(client))) {
  apply(state);
  thread_ = std::thread([&main, client = client_, watch = life_.watch(), lost = std::move(lost)] {
    nameCurrentThread("Korvell.remote");
    while (auto told = client->next(longestSilence))
      main.async([watch, told = std::move(*told)] {
        if (auto* model = watch.get()) model->apply(told);
      });
    main.async([watch, lost] {
      if (watch.get()) lost();
    });
  });
}

RemoteModel::~RemoteModel() {
  client_->hangUp();
  thread_.join();
}

void RemoteModel::apply(const Value& state) {
  Publication publication;
  readState(state, *this, publication);
  if (!state.find("live")) extendLiveSeries(publication);
  publishMenuBar();
  publication.set(cycle, *cycle + 1);
}

} // namespace korvell
