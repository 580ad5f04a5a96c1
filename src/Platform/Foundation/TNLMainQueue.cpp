#include "Platform/Foundation/TNLMainQueue.h"

#include <condition_variable>
#include <memory>
#include <mutex>

#include <glib.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

gboolean runTask(gpointer data) {
  auto* task = static_cast<std::function<void()>*>(data);
  (*task)();
  return G_SOURCE_REMOVE;
}

void deleteTask(gpointer data) {
  delete static_cast<std::function<void()>*>(data);
}

}  // namespace

void TNLMainQueue::async(std::function<void()> task) {
  // Default priority keeps main-queue tasks in FIFO order among themselves and ahead of redraws.
  GSource* source = g_idle_source_new();
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(source, runTask, new std::function<void()>(std::move(task)), deleteTask);
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
