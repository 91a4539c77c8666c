#include "App/SoundServices.h"

#include "App/Assembly.h"
#include "Audio/SystemSound.h"

#include <algorithm>
#include <utility>

namespace korvell {

std::optional<SoundMixer::Services> soundServices(Host& host, const Environment& environment,
                                                  const QueueFactory& makeQueue, SoundRole role) {
  auto makeSystem = systemSound(environment);
  if (!makeSystem) return std::nullopt;
  const auto makeOwners = [&host] {
    return std::make_unique<StreamOwners>(makeOwnerRules(host), systemStreamProcesses());
  };
  return SoundMixer::Services{std::move(makeSystem), makeOwners, *host.defaults, makeQueue, role};
}

SoundRole visitingRole() { return volumesOutliveProcess() ? SoundRole::visitor : SoundRole::rememberer; }

/// Keeps the mixer connected until it was answered.
struct SoundAnswers::Call {
  std::function<void()> then;
  Subscription watch, states;
  std::unique_ptr<Timer> timer;
};

void SoundAnswers::whenListed(std::function<void()> then) {
  auto call = std::make_shared<Call>();
  calls_.push_back(call);
  call->then = std::move(then);
  const auto finish = [this, weak = std::weak_ptr(call)] {
    const auto waiting = weak.lock();
    if (!waiting || std::erase(calls_, waiting) == 0) return;
    waiting->then();
  };
  call->watch = mixer_.watch(SoundMixer::Interest::list);
  call->states = mixer_.state.observe([finish](const SoundState& state) {
    if (isSettled(state.connection)) finish();
  });
  call->timer = main_.timer(finish);
  call->timer->schedule(patience, Seconds(0), patience / 10);
  // A mixer that is connected already has nothing to tell.
  mixer_.settle([this, finish] {
    if (isSettled(mixer_.state->connection)) finish();
  });
}

void SoundAnswers::teach(Keeper& keeper) {
  keeper.addAction(listSoundAction, [this](const Value&, const Keeper::Answer& answer) {
    whenListed([this, answer] { answer(Value::object({{"ok", true}, {"sound", toValue(*mixer_.state)}})); });
  });
  keeper.addAction(changeSoundAction, [this](const Value& value, const Keeper::Answer& answer) {
    SoundRequest request;
    if (!fromValue(value, request) || request.app.empty()) return answer(refusal("no application is named"));
    whenListed([this, request, answer] { change(request, answer); });
  });
}

void SoundAnswers::change(const SoundRequest& request, const Keeper::Answer& answer) {
  auto chosen = chooseSoundApp(*mixer_.state, request.app);
  if (!chosen) return answer(refusal(chosen.reason()));
  const auto before = shownApp(*mixer_.state, chosen->key);
  if (before && !before->isAdjustable) return answer(refusal(unadjustable(chosen->name)));
  if (request.reset) mixer_.reset(chosen->key);
  if (!request.reset && request.volume) mixer_.setVolume(chosen->key, *request.volume);
  if (!request.reset && request.muted) mixer_.setMuted(chosen->key, *request.muted);
  mixer_.settle([this, before, answer, watch = mixer_.watch(SoundMixer::Interest::list), key = chosen->key] {
    auto after = shownApp(*mixer_.state, key);
    if (!after) after = forgotten(*before);
    answer(Value::object({{"ok", true}, {"app", toValue(*after)}}));
  });
}

} // namespace korvell
