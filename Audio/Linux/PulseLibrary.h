#pragma once
// PulseAudio's client library, opened when sound is first needed: a process that shows no sound, and a
// machine without it, pays nothing. It stays once it is loaded; the library itself forbids its unloading. The
// header of the library is needed to build only.

#include <memory>
#include <pulse/context.h>
#include <pulse/error.h>
#include <pulse/ext-stream-restore.h>
#include <pulse/introspect.h>
#include <pulse/operation.h>
#include <pulse/proplist.h>
#include <pulse/stream.h>
#include <pulse/subscribe.h>
#include <pulse/thread-mainloop.h>
#include <pulse/volume.h>

namespace korvell {

// Each name once, with the type that the header gives it.
// clang-format off
#define KORVELL_PULSE_FUNCTIONS(each) \
  each(threaded_mainloop_new) each(threaded_mainloop_free) each(threaded_mainloop_start) \
  each(threaded_mainloop_stop) each(threaded_mainloop_lock) each(threaded_mainloop_unlock) \
  each(threaded_mainloop_get_api) each(context_new) each(context_unref) each(context_connect) \
  each(context_disconnect) each(context_set_state_callback) each(context_get_state) \
  each(context_is_local) each(context_set_subscribe_callback) each(context_subscribe) \
  each(context_get_server_info) each(context_get_sink_info_by_name) \
  each(context_get_sink_info_by_index) each(context_get_sink_input_info) \
  each(context_get_sink_input_info_list) each(context_get_client_info) \
  each(context_set_sink_input_volume) each(context_set_sink_input_mute) \
  each(context_set_sink_volume_by_name) \
  each(context_set_sink_mute_by_name) each(operation_unref) each(proplist_gets) each(cvolume_max) \
  each(cvolume_scale) each(stream_new) each(stream_unref) each(stream_set_monitor_stream) \
  each(stream_set_read_callback) each(stream_connect_record) each(stream_disconnect) \
  each(stream_peek) each(stream_drop) each(ext_stream_restore_read) each(ext_stream_restore_write)
// clang-format on

struct PulseLibrary {
#define KORVELL_DECLARE(name) decltype(&::pa_##name) name = nullptr;
  KORVELL_PULSE_FUNCTIONS(KORVELL_DECLARE)
#undef KORVELL_DECLARE

  /// `file` as for the dynamic linker. Null when it is not there or lacks a function.
  static std::unique_ptr<PulseLibrary> open(const char* file = "libpulse.so.0");
};

} // namespace korvell
