#include "Platform/Foundation/TNLMainQueue.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>

#include <glib.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Foundation/TNLNoDestructor.h"

namespace {

// Tasks wait here, in order, and each idle source runs the oldest one. Handing them over under a
// mutex of our own (rather than as the source's data) keeps the hand-off between threads visible
// to thread checkers, which cannot see GLib's internal locking.
struct PendingTasks {
  std::mutex mutex;
  std::deque<std::function<void()>> tasks;
};

PendingTasks& pending() {
  static TNLNoDestructor<PendingTasks> instance;
  return *instance;
}

gboolean runOldestTask(gpointer) {
  std::function<void()> task;
  {
    std::lock_guard lock(pending().mutex);
    if (pending().tasks.empty()) {
      return G_SOURCE_REMOVE;
    }
    task = std::move(pending().tasks.front());
    pending().tasks.pop_front();
  }
  task();
  return G_SOURCE_REMOVE;
}

}  // namespace

void TNLMainQueue::async(std::function<void()> task) {
  {
    std::lock_guard lock(pending().mutex);
    pending().tasks.push_back(std::move(task));
  }
  // One source per task; default priority keeps main-queue tasks ahead of redraws.
  GSource* source = g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(source, runOldestTask, nullptr, nullptr);
  g_source_attach(source, g_main_context_default());
  g_source_unref(source);
  g_main_context_wakeup(g_main_context_default());
}

void TNLMainQueue::sync(const std::function<void()>& task) {
  if (isMainThread()) {
    task();
    return;
  }
  struct State {
    std::mutex mutex;
    std::condition_variable done;
    bool finished = false;
  };
  auto state = std::make_shared<State>();
  async([state, &task] {
    task();
    std::lock_guard lock(state->mutex);
    state->finished = true;
    state->done.notify_all();
  });
  std::unique_lock lock(state->mutex);
  state->done.wait(lock, [&] { return state->finished; });
}

bool TNLMainQueue::isMainThread() {
  return syscall(SYS_gettid) == getpid();
}

bool TNLMainQueue::runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
  GMainContext* context = g_main_context_default();
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  // A short ticking source bounds each blocking iteration so the deadline is honoured.
  const guint tick = g_timeout_add(
      5, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  bool result = done();
  while (!result && std::chrono::steady_clock::now() < deadline) {
    g_main_context_iteration(context, TRUE);
    result = done();
  }
  g_source_remove(tick);
  return result;
}

void TNLMainQueue::runFor(std::chrono::milliseconds duration) {
  runUntil([] { return false; }, duration);
}
