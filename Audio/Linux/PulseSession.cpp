#include "Audio/Linux/PulseSession.h"

#include "Base/Text.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace korvell {

namespace {

constexpr const char* clientName = "Korvell";

PulseSession& sessionOf(void* self) { return *static_cast<PulseSession*>(self); }

double volumeOf(pa_volume_t volume) { return double(volume) / PA_VOLUME_NORM; }
pa_volume_t volumeOf(double volume) {
  return static_cast<pa_volume_t>(std::lround(std::max(volume, 0.0) * PA_VOLUME_NORM));
}

} // namespace

class PulseSession::Lock {
public:
  explicit Lock(const PulseSession& session) : session_(session) {
    session_.pulse_.threaded_mainloop_lock(session_.loop_);
  }
  ~Lock() { session_.pulse_.threaded_mainloop_unlock(session_.loop_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

private:
  const PulseSession& session_;
};

PulseSession::PulseSession(const PulseLibrary& library, PulseEvents events, std::string machine)
    : pulse_(library), events_(std::move(events)), machine_(std::move(machine)),
      loop_(library.threaded_mainloop_new()) {}

PulseSession::~PulseSession() {
  if (context_) {
    const Lock lock(*this);
    pulse_.context_set_state_callback(context_, nullptr, nullptr);
    pulse_.context_set_subscribe_callback(context_, nullptr, nullptr);
    while (!meters_.empty()) closeMeter(meters_.begin()->first);
    pulse_.context_disconnect(context_);
  }
  if (loop_) pulse_.threaded_mainloop_stop(loop_);
  if (context_) pulse_.context_unref(context_);
  if (loop_) pulse_.threaded_mainloop_free(loop_);
}

void PulseSession::start() {
  if (loop_) context_ = pulse_.context_new(pulse_.threaded_mainloop_get_api(loop_), clientName);
  if (!context_) return lose();
  pulse_.context_set_state_callback(context_, stateChanged, this);
  const bool isBegun = pulse_.context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) >= 0 &&
                       pulse_.threaded_mainloop_start(loop_) >= 0;
  if (!isBegun) lose(); // which it may have told already
}

// What the server tells.

void PulseSession::stateChanged(pa_context* context, void* self) {
  auto& session = sessionOf(self);
  const auto& pulse = session.pulse_;
  const auto state = pulse.context_get_state(context);
  if (state == PA_CONTEXT_FAILED || state == PA_CONTEXT_TERMINATED) return session.lose();
  if (state != PA_CONTEXT_READY) return;
  constexpr auto heard = static_cast<pa_subscription_mask_t>(
      PA_SUBSCRIPTION_MASK_SINK_INPUT | PA_SUBSCRIPTION_MASK_SERVER | PA_SUBSCRIPTION_MASK_SINK);
  pulse.context_set_subscribe_callback(context, eventCame, self);
  session.drop(pulse.context_subscribe(context, heard, nullptr, nullptr));
  session.drop(pulse.context_get_sink_input_info_list(context, listedInputCame, self));
}

void PulseSession::lose() {
  if (std::exchange(isLost_, true)) return;
  {
    const std::lock_guard guard(mutex_);
    unanswered_ = 0;
  }
  answered_.notify_all();
  events_.connection(SoundConnection::noServer);
}

void PulseSession::eventCame(pa_context* context, pa_subscription_event_type_t type, std::uint32_t index,
                             void* self) {
  auto& session = sessionOf(self);
  const auto facility = type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
  const bool isRemoval = (type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE;
  if (facility != PA_SUBSCRIPTION_EVENT_SINK_INPUT) return session.askOutput();
  if (isRemoval) return session.end(index);
  session.drop(session.pulse_.context_get_sink_input_info(context, index, inputCame, self));
}

void PulseSession::inputCame(pa_context*, const pa_sink_input_info* info, int end, void* self) {
  if (end == 0 && info) sessionOf(self).heard(*info);
}

void PulseSession::listedInputCame(pa_context* context, const pa_sink_input_info* info, int end, void* self) {
  if (end == 0) return inputCame(context, info, end, self);
  // The server answers in order: behind this come the clients that were asked about for the list, and then
  // the output, with which everything is told.
  sessionOf(self).askOutput();
}

void PulseSession::heard(const pa_sink_input_info& info) {
  // Those of the server's own modules belong to no application.
  if (info.client == PA_INVALID_INDEX) return;
  auto& input = inputs_[info.index];
  auto& told = input.told;
  keepShape(input.shape, info.volume);
  input.sink = info.sink;
  told = {.id = info.index,
          .sandboxID = std::move(told.sandboxID),
          .pid = told.pid,
          .program = std::move(told.program),
          .applicationID = std::move(told.applicationID),
          .applicationName = std::move(told.applicationName),
          .isLocal = told.isLocal,
          .volume = volumeOf(pulse_.cvolume_max(&info.volume)),
          .muted = info.mute != 0,
          .isPlaying = info.corked == 0,
          .isAdjustable = info.has_volume != 0 && info.volume_writable != 0,
          .isSettled = info.sink != PA_INVALID_INDEX,
          .memory = std::move(told.memory)};
  if (input.isComplete) return tell(input);
  claim(told, info.proplist);
  if (told.pid == 0 || (clientsSayMore_ && told.sandboxID.empty())) {
    if (asked_.contains(info.client) &&
        std::ranges::any_of(asked_, [&](const auto& row) { return row.second == info.index; }))
      return;
    asked_.emplace(info.client, info.index);
    drop(pulse_.context_get_client_info(context_, info.client, clientCame, this));
    return;
  }
  input.isComplete = true;
  tell(input);
}

void PulseSession::clientCame(pa_context*, const pa_client_info* info, int end, void* self) {
  if (end != 0 || !info) return;
  auto& session = sessionOf(self);
  const auto [first, last] = session.asked_.equal_range(info->index);
  for (auto row = first; row != last; ++row) {
    const auto known = session.inputs_.find(row->second);
    if (known == session.inputs_.end()) continue;
    session.claim(known->second.told, info->proplist);
    known->second.isComplete = true;
    session.tell(known->second);
  }
  session.asked_.erase(first, last);
}

/// What is said already stays.
void PulseSession::claim(SoundStream& stream, const pa_proplist* properties) const {
  const auto said = [&](const char* name) {
    const char* value = properties ? pulse_.proplist_gets(properties, name) : nullptr;
    return value ? repairedUTF8(value) : std::string();
  };
  const auto fill = [&](std::string& into, const char* name) {
    if (into.empty()) into = said(name);
  };
  fill(stream.sandboxID, "pipewire.access.portal.app_id");
  fill(stream.memory, "module-stream-restore.id");
  fill(stream.program, PA_PROP_APPLICATION_PROCESS_BINARY);
  // So the system calls the executable of a process whose file is replaced by an update.
  constexpr std::string_view deleted = " (deleted)";
  if (stream.program.ends_with(deleted)) stream.program.resize(stream.program.size() - deleted.size());
  fill(stream.applicationID, PA_PROP_APPLICATION_ID);
  fill(stream.applicationName, PA_PROP_APPLICATION_NAME);
  if (stream.pid == 0) stream.pid = parseInteger<ProcessID>(said(PA_PROP_APPLICATION_PROCESS_ID)).value_or(0);
  const auto machine = said(PA_PROP_APPLICATION_PROCESS_MACHINE_ID);
  const bool isForeign = !machine.empty() && !machine_.empty() && machine != machine_;
  if (isForeign || pulse_.context_is_local(context_) != 1) stream.isLocal = false;
}

void PulseSession::tell(const Input& input) {
  events_.stream(input.told);
  followLevels();
}

void PulseSession::end(std::uint32_t index) {
  std::erase_if(asked_, [index](const auto& row) { return row.second == index; });
  closeMeter(index);
  if (inputs_.erase(index) > 0) events_.ended(index);
}

void PulseSession::askOutput() { drop(pulse_.context_get_server_info(context_, serverCame, this)); }

void PulseSession::serverCame(pa_context* context, const pa_server_info* info, void* self) {
  auto& session = sessionOf(self);
  session.clientsSayMore_ = !info || !info->server_name ||
                            std::string_view(info->server_name).find("PipeWire") != std::string_view::npos;
  const std::string name = info && info->default_sink_name ? info->default_sink_name : "";
  if (std::exchange(session.outputName_, name) != name) session.outputShape_ = {};
  auto* asked = session.outputName_.empty()
                    ? nullptr // there is none, and to ask for it would never be answered
                    : session.pulse_.context_get_sink_info_by_name(context, session.outputName_.c_str(),
                                                                   outputCame, self);
  if (!asked) session.loseOutput();
  session.drop(asked);
}

void PulseSession::outputCame(pa_context*, const pa_sink_info* info, int end, void* self) {
  auto& session = sessionOf(self);
  if (end < 0) return session.loseOutput();
  if (end > 0 || !info) return session.finishList();
  session.keepShape(session.outputShape_, info->volume);
  session.events_.output(
      OutputDevice{.name = repairedUTF8(info->description ? info->description : info->name),
                   .volume = volumeOf(session.pulse_.cvolume_max(&info->volume)),
                   .muted = info->mute != 0});
}

void PulseSession::loseOutput() {
  outputName_.clear();
  outputShape_ = {};
  events_.output(std::nullopt);
  finishList();
}

void PulseSession::finishList() {
  if (!std::exchange(isListed_, true)) events_.connection(SoundConnection::connected);
}

// What is changed.

void PulseSession::drop(pa_operation* operation) const {
  if (operation) pulse_.operation_unref(operation);
}

void PulseSession::sent(pa_operation* operation) {
  if (!operation) return;
  {
    const std::lock_guard guard(mutex_);
    ++unanswered_;
  }
  drop(operation);
}

void PulseSession::changed(pa_context*, int, void* self) {
  auto& session = sessionOf(self);
  {
    const std::lock_guard guard(session.mutex_);
    --session.unanswered_;
  }
  session.answered_.notify_all();
}

void PulseSession::finishChanges(Seconds patience) {
  std::unique_lock guard(mutex_);
  answered_.wait_for(guard, patience, [this] { return unanswered_ <= 0; });
}

void PulseSession::keepShape(pa_cvolume& shape, const pa_cvolume& told) const {
  if (shape.channels != told.channels || pulse_.cvolume_max(&told) > PA_VOLUME_MUTED) shape = told;
}

/// With the balance of the channels.
pa_cvolume PulseSession::scaled(pa_cvolume shape, double volume) const {
  pulse_.cvolume_scale(&shape, volumeOf(volume));
  return shape;
}

void PulseSession::setVolume(std::uint32_t stream, double volume) {
  const Lock lock(*this);
  const auto input = inputs_.find(stream);
  if (isLost_ || input == inputs_.end()) return;
  const auto wanted = scaled(input->second.shape, volume);
  sent(pulse_.context_set_sink_input_volume(context_, stream, &wanted, changed, this));
}

void PulseSession::setMuted(std::uint32_t stream, bool muted) {
  const Lock lock(*this);
  if (!isLost_ && inputs_.contains(stream))
    sent(pulse_.context_set_sink_input_mute(context_, stream, muted, changed, this));
}

void PulseSession::setOutputVolume(double volume) {
  const Lock lock(*this);
  if (isLost_ || outputShape_.channels == 0) return;
  const auto wanted = scaled(outputShape_, volume);
  sent(pulse_.context_set_sink_volume_by_name(context_, outputName_.c_str(), &wanted, changed, this));
}

void PulseSession::setOutputMuted(bool muted) {
  const Lock lock(*this);
  if (!isLost_ && !outputName_.empty())
    sent(pulse_.context_set_sink_mute_by_name(context_, outputName_.c_str(), muted, changed, this));
}

// What the server remembers.

void PulseSession::forget(const std::set<std::string>& memories) {
  const Lock lock(*this);
  if (isLost_) return;
  forgotten_.insert(memories.begin(), memories.end());
  sent(pulse_.ext_stream_restore_read(context_, memoryCame, this));
}

/// Entries are written and not deleted: the newer server does not delete. What else stands in one stays, such
/// as the output that was chosen.
void PulseSession::memoryCame(pa_context* context, const pa_ext_stream_restore_info* info, int end,
                              void* self) {
  auto& session = sessionOf(self);
  if (end == 0) {
    if (info && session.forgotten_.erase(info->name) > 0) session.writeFull(*info);
    return;
  }
  // The newer server keeps entries that it doesn't list.
  for (const auto& name : std::exchange(session.forgotten_, {})) {
    pa_ext_stream_restore_info entry{};
    entry.name = name.c_str();
    session.writeFull(entry);
  }
  changed(context, end > 0, self);
}

void PulseSession::writeFull(pa_ext_stream_restore_info entry) {
  if (entry.volume.channels == 0) {
    entry.channel_map.channels = entry.volume.channels = 1;
    entry.channel_map.map[0] = PA_CHANNEL_POSITION_MONO;
  }
  std::fill_n(entry.volume.values, entry.volume.channels, PA_VOLUME_NORM);
  entry.mute = 0;
  constexpr int appliesAtOnce = 0; // to streams that play: those are set as others are
  sent(pulse_.ext_stream_restore_write(context_, PA_UPDATE_REPLACE, &entry, 1, appliesAtOnce, changed, this));
}

// Levels: of each stream that plays, recorded behind its volume and mute, the peaks only.

void PulseSession::measureLevels(bool measured) {
  const Lock lock(*this);
  measuresLevels_ = measured && !isLost_;
  followLevels();
}

void PulseSession::followLevels() {
  for (const auto& [index, input] : inputs_) {
    const bool isWanted = measuresLevels_ && input.isComplete && input.told.isPlaying && input.told.isSettled;
    const auto meter = meters_.find(index);
    if (meter != meters_.end() && (!isWanted || meter->second.sink != input.sink)) closeMeter(index);
    if (!isWanted || meters_.contains(index)) continue;
    meters_[index] = {.session = this, .sink = input.sink};
    drop(pulse_.context_get_sink_info_by_index(context_, input.sink, monitorCame, this));
  }
}

void PulseSession::monitorCame(pa_context*, const pa_sink_info* info, int end, void* self) {
  if (end != 0 || !info) return;
  auto& session = sessionOf(self);
  for (auto& [index, meter] : session.meters_)
    if (meter.sink == info->index && !meter.stream) session.openMeter(index, meter, info->monitor_source);
}

void PulseSession::openMeter(std::uint32_t index, Meter& meter, std::uint32_t monitor) {
  constexpr pa_sample_spec format{PA_SAMPLE_FLOAT32NE, levelRate, 1};
  constexpr auto whole = static_cast<std::uint32_t>(-1);
  const pa_buffer_attr buffer{whole, whole, whole, whole, sizeof(float)};
  constexpr auto flags =
      static_cast<pa_stream_flags_t>(PA_STREAM_PEAK_DETECT | PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE |
                                     PA_STREAM_DONT_INHIBIT_AUTO_SUSPEND);
  meter.stream = pulse_.stream_new(context_, clientName, &format, nullptr);
  if (!meter.stream) return;
  pulse_.stream_set_monitor_stream(meter.stream, index);
  pulse_.stream_set_read_callback(meter.stream, levelCame, &meter);
  pulse_.stream_connect_record(meter.stream, std::to_string(monitor).c_str(), &buffer, flags);
}

void PulseSession::closeMeter(std::uint32_t index) {
  const auto meter = meters_.find(index);
  if (meter == meters_.end()) return;
  if (auto* stream = meter->second.stream) {
    pulse_.stream_set_read_callback(stream, nullptr, nullptr);
    pulse_.stream_disconnect(stream);
    pulse_.stream_unref(stream);
  }
  meters_.erase(meter);
}

void PulseSession::levelCame(pa_stream* stream, std::size_t, void* self) {
  auto& meter = *static_cast<Meter*>(self);
  const auto& pulse = meter.session->pulse_;
  const void* data = nullptr;
  std::size_t bytes = 0;
  while (pulse.stream_peek(stream, &data, &bytes) >= 0 && bytes > 0) {
    const auto* samples = static_cast<const float*>(data); // null for a hole
    for (std::size_t i = 0; samples && i < bytes / sizeof(float); ++i)
      meter.peak = std::max(meter.peak.value_or(0), std::abs(samples[i]));
    pulse.stream_drop(stream);
  }
}

std::vector<StreamLevel> PulseSession::takeLevels() {
  const Lock lock(*this);
  std::vector<StreamLevel> levels;
  for (auto& [index, meter] : meters_)
    if (const auto peak = std::exchange(meter.peak, std::nullopt)) levels.push_back({index, *peak});
  return levels;
}

} // namespace korvell
