#include "Platform/Foundation/TNLTimer.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include <glib.h>

struct TNLTimer::State {
  std::function<void()> fire;
  bool repeats = false;
  std::mutex mutex;
  GSource* source = nullptr;  // owned reference while the timer is valid
  std::atomic<bool> valid{true};
};

namespace {

gboolean onTimeout(gpointer data) {
  auto state = *static_cast<std::shared_ptr<TNLTimer::State>*>(data);
  if (!state->valid.load()) {
    return G_SOURCE_REMOVE;
  }
  if (!state->repeats) {
    state->valid = false;
  }
  state->fire();
  if (!state->repeats || !state->valid.load()) {
    std::lock_guard lock(state->mutex);
    if (state->source != nullptr) {
      g_source_unref(state->source);
      state->source = nullptr;
    }
    return G_SOURCE_REMOVE;
  }
  return G_SOURCE_CONTINUE;
}

void releaseState(gpointer data) {
  delete static_cast<std::shared_ptr<TNLTimer::State>*>(data);
}

}  // namespace

TNLTimer::TNLTimer(std::chrono::milliseconds interval, std::shared_ptr<State> state)
    : interval_(interval), state_(std::move(state)) {}

std::shared_ptr<TNLTimer> TNLTimer::scheduledTimer(std::chrono::milliseconds interval, bool repeats,
                                                   std::function<void()> fire) {
  auto state = std::make_shared<State>();
  state->fire = std::move(fire);
  state->repeats = repeats;
  GSource* source =
      g_timeout_source_new(static_cast<guint>(std::max<long long>(0, interval.count())));
  g_source_set_callback(source, onTimeout, new std::shared_ptr<State>(state), releaseState);
  {
    std::lock_guard lock(state->mutex);
    state->source = source;  // keeps the creation reference
  }
  g_source_attach(source, g_main_context_default());
  g_main_context_wakeup(g_main_context_default());
  return std::shared_ptr<TNLTimer>(new TNLTimer(interval, std::move(state)));
}

TNLTimer::~TNLTimer() = default;

void TNLTimer::invalidate() {
  state_->valid = false;
  GSource* source = nullptr;
  {
    std::lock_guard lock(state_->mutex);
    source = state_->source;
    state_->source = nullptr;
  }
  if (source != nullptr) {
    g_source_destroy(source);
    g_source_unref(source);
  }
}

bool TNLTimer::isValid() const {
  return state_->valid.load();
}
