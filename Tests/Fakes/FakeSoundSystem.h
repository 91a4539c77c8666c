#pragma once
// A sound server in memory. Streams are told when they are put, and again when they are set, as servers do;
// `calls` records what was asked for.

#include "Audio/SoundSystem.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace korvell {

class FakeSoundSystem final : public SoundSystem {
public:
  /// Outlives the systems that are made for it.
  struct World {
    SoundConnection answer = SoundConnection::connected;
    std::map<StreamID, SoundStream> streams;
    std::optional<OutputDevice> output;
    std::vector<StreamLevel> levels;
    std::vector<std::string> calls;
    bool obeys = true;                  ///< does what it is told to
    std::function<void()> atDisconnect; ///< absent: at once
    SoundListener* listener = nullptr;

    void put(const SoundStream& stream) {
      streams[stream.id] = stream;
      if (listener) listener->streamChanged(stream);
    }
    void end(StreamID id) {
      streams.erase(id);
      if (listener) listener->streamEnded(id);
    }
    void die() {
      streams.clear();
      answer = SoundConnection::noServer;
      if (auto* told = std::exchange(listener, nullptr)) told->connectionChanged(SoundConnection::noServer);
    }
  };

  FakeSoundSystem(World& world, Queue& queue) : world_(world), queue_(queue) {}

  void connect(SoundListener& listener) override {
    world_.calls.emplace_back("connect");
    if (world_.answer == SoundConnection::connected) {
      world_.listener = &listener;
      for (const auto& [id, stream] : world_.streams) listener.streamChanged(stream);
      listener.outputChanged(world_.output);
    }
    listener.connectionChanged(world_.answer);
  }
  void disconnect() override {
    world_.calls.emplace_back("disconnect");
    world_.listener = nullptr;
    if (world_.atDisconnect) world_.atDisconnect();
  }
  void setVolume(const StreamSet& streams, double volume) override {
    world_.calls.push_back(fmt::format("{} {} {:.2f}", streams.app, fmt::join(streams.ids, "+"), volume));
    change(streams, [volume](SoundStream& stream) { stream.volume = volume; });
  }
  void setMuted(const StreamSet& streams, bool muted) override {
    world_.calls.push_back(fmt::format("{} {} {}", streams.app, fmt::join(streams.ids, "+"), muted));
    change(streams, [muted](SoundStream& stream) { stream.muted = muted; });
  }
  void setOutputVolume(double volume) override {
    world_.calls.push_back(fmt::format("output {:.2f}", volume));
  }
  void setOutputMuted(bool muted) override { world_.calls.push_back(fmt::format("output {}", muted)); }
  void forget(const std::set<std::string>& memories) override {
    world_.calls.push_back(fmt::format("forget {}", fmt::join(memories, "+")));
  }
  void measureLevels(bool measured) override { world_.calls.push_back(fmt::format("levels {}", measured)); }
  std::vector<StreamLevel> takeLevels() override { return std::exchange(world_.levels, {}); }

private:
  /// Servers tell it a moment later, as a change of each stream.
  template <class Change>
  void change(const StreamSet& streams, const Change& change) {
    for (const auto id : streams.ids) {
      const auto stream = world_.streams.find(id);
      if (stream == world_.streams.end() || !world_.obeys) continue;
      change(stream->second);
      stream->second.isSettled = true;
      queue_.async([&world = world_, now = stream->second] {
        if (world.listener && world.streams.contains(now.id)) world.listener->streamChanged(now);
      });
    }
  }

  World& world_;
  Queue& queue_;
};

} // namespace korvell
