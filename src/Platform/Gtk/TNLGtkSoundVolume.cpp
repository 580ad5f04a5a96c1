#include "Platform/Gtk/TNLGtkSoundVolume.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <thread>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNoDestructor.h"

namespace {

// The part of libpulse's stable C interface (libpulse.so.0) that is used here, declared by hand
// because its development headers are not a build dependency.
struct pa_mainloop;
struct pa_mainloop_api;
struct pa_context;
struct pa_operation;

constexpr int kContextNoAutospawn = 1;
constexpr int kContextReady = 4;
constexpr int kContextFailed = 5;
constexpr int kContextTerminated = 6;
constexpr int kOperationRunning = 0;
constexpr uint32_t kVolumeNorm = 0x10000U;
constexpr int kChannelsMax = 32;

struct PulseSampleSpec {
  int format;
  uint32_t rate;
  uint8_t channels;
};
struct PulseChannelMap {
  uint8_t channels;
  int map[kChannelsMax];
};
struct PulseVolume {
  uint8_t channels;
  uint32_t values[kChannelsMax];
};
// The leading fields of pa_sink_info, in its order.
struct PulseSinkInfo {
  const char* name;
  uint32_t index;
  const char* description;
  PulseSampleSpec sampleSpec;
  PulseChannelMap channelMap;
  uint32_t ownerModule;
  PulseVolume volume;
  int mute;
};

using SinkInfoCallback = void (*)(pa_context*, const PulseSinkInfo*, int eol, void* data);

struct Pulse {
  pa_mainloop* (*mainloopNew)();
  void (*mainloopFree)(pa_mainloop*);
  pa_mainloop_api* (*mainloopGetApi)(pa_mainloop*);
  int (*mainloopPrepare)(pa_mainloop*, int timeoutMicroseconds);
  int (*mainloopPoll)(pa_mainloop*);
  int (*mainloopDispatch)(pa_mainloop*);
  pa_context* (*contextNew)(pa_mainloop_api*, const char* name);
  int (*contextConnect)(pa_context*, const char* server, int flags, const void* spawnApi);
  int (*contextGetState)(const pa_context*);
  void (*contextDisconnect)(pa_context*);
  void (*contextUnref)(pa_context*);
  pa_operation* (*getSinkInfoByName)(pa_context*, const char* name, SinkInfoCallback, void*);
  int (*operationGetState)(const pa_operation*);
  void (*operationUnref)(pa_operation*);
};

template <class Function>
bool bind(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
  return function != nullptr;
}

const Pulse* pulse() {
  static const TNLNoDestructor<std::optional<Pulse>> loaded([]() -> std::optional<Pulse> {
    void* library = dlopen("libpulse.so.0", RTLD_NOW | RTLD_LOCAL);
    if (!library) {
      return std::nullopt;
    }
    Pulse api{};
    const bool complete =
        bind(library, "pa_mainloop_new", api.mainloopNew) &&
        bind(library, "pa_mainloop_free", api.mainloopFree) &&
        bind(library, "pa_mainloop_get_api", api.mainloopGetApi) &&
        bind(library, "pa_mainloop_prepare", api.mainloopPrepare) &&
        bind(library, "pa_mainloop_poll", api.mainloopPoll) &&
        bind(library, "pa_mainloop_dispatch", api.mainloopDispatch) &&
        bind(library, "pa_context_new", api.contextNew) &&
        bind(library, "pa_context_connect", api.contextConnect) &&
        bind(library, "pa_context_get_state", api.contextGetState) &&
        bind(library, "pa_context_disconnect", api.contextDisconnect) &&
        bind(library, "pa_context_unref", api.contextUnref) &&
        bind(library, "pa_context_get_sink_info_by_name", api.getSinkInfoByName) &&
        bind(library, "pa_operation_get_state", api.operationGetState) &&
        bind(library, "pa_operation_unref", api.operationUnref);
    if (!complete) {
      dlclose(library);
      return std::nullopt;
    }
    return api;  // the library stays loaded for the process's lifetime
  }());
  return loaded->has_value() ? &**loaded : nullptr;
}

// Runs the loop once, waiting at most until the deadline; false once it has passed or failed.
bool iterate(const Pulse& api, pa_mainloop* loop, std::chrono::steady_clock::time_point deadline) {
  const auto left = std::chrono::duration_cast<std::chrono::microseconds>(
      deadline - std::chrono::steady_clock::now());
  if (left.count() <= 0) {
    return false;
  }
  return api.mainloopPrepare(loop, static_cast<int>(left.count())) >= 0 &&
         api.mainloopPoll(loop) >= 0 && api.mainloopDispatch(loop) >= 0;
}

void sinkInfo(pa_context* /*context*/, const PulseSinkInfo* info, int eol, void* data) {
  auto* volume = static_cast<std::optional<float>*>(data);
  if (eol != 0 || !info) {
    return;
  }
  const int channels = std::min<int>(info->volume.channels, kChannelsMax);
  if (channels <= 0) {
    return;
  }
  uint64_t sum = 0;
  for (int i = 0; i < channels; ++i) {
    sum += info->volume.values[i];
  }
  const float mean = static_cast<float>(sum) / static_cast<float>(channels) / kVolumeNorm;
  *volume = info->mute ? 0.0f : std::clamp(mean, 0.0f, 1.0f);
}

struct Monitor {
  std::mutex mutex;
  std::function<void(float)> observer;
  unsigned generation = 0;
};

Monitor& monitor() {
  static TNLNoDestructor<Monitor> instance;
  return *instance;
}

}  // namespace

std::optional<float> TNLGtkSoundVolume::readSoundServerVolume(std::chrono::milliseconds timeout) {
  const Pulse* api = pulse();
  if (!api) {
    return std::nullopt;
  }
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  pa_mainloop* loop = api->mainloopNew();
  if (!loop) {
    return std::nullopt;
  }
  std::optional<float> volume;
  pa_context* context = api->contextNew(api->mainloopGetApi(loop), "TarnelAd");
  if (context && api->contextConnect(context, nullptr, kContextNoAutospawn, nullptr) >= 0) {
    int state = api->contextGetState(context);
    while (state != kContextReady && state != kContextFailed && state != kContextTerminated &&
           iterate(*api, loop, deadline)) {
      state = api->contextGetState(context);
    }
    if (state == kContextReady) {
      if (pa_operation* operation =
              api->getSinkInfoByName(context, "@DEFAULT_SINK@", sinkInfo, &volume)) {
        while (api->operationGetState(operation) == kOperationRunning &&
               iterate(*api, loop, deadline)) {
        }
        api->operationUnref(operation);
      }
    }
    api->contextDisconnect(context);
  }
  if (context) {
    api->contextUnref(context);
  }
  api->mainloopFree(loop);
  return volume;
}

float TNLGtkSoundVolume::current() {
  return readSoundServerVolume().value_or(kFixedLevel);
}

void TNLGtkSoundVolume::setObserver(std::function<void(float volume)> observer) {
  unsigned generation = 0;
  {
    std::lock_guard lock(monitor().mutex);
    monitor().observer = std::move(observer);
    generation = ++monitor().generation;
    if (!monitor().observer) {
      return;  // the running thread sees the new generation and ends
    }
  }
  // One thread per observer; it ends when the observer is replaced or removed. Detached: it
  // only touches the process-wide monitor, which is never destroyed.
  std::thread([generation] {
    std::optional<float> reported;
    for (;;) {
      const float volume = current();
      std::function<void(float)> observer;
      {
        std::lock_guard lock(monitor().mutex);
        if (monitor().generation != generation) {
          return;
        }
        observer = monitor().observer;
      }
      if (!reported || *reported != volume) {
        reported = volume;
        TNLMainQueue::async([observer, volume, generation] {
          bool stillWanted = false;
          {
            std::lock_guard lock(monitor().mutex);
            stillWanted = monitor().generation == generation;
          }
          if (stillWanted && observer) {
            observer(volume);
          }
        });
      }
      std::this_thread::sleep_for(std::chrono::seconds(1));
    }
  }).detach();
}
