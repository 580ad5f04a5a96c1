#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

// A private serial queue: one worker thread runs the tasks one after another in the order they
// become due. Destroying the queue drops tasks that have not started and joins the worker; when the
// last owner lets go from a task of the queue itself, the worker finishes that task and exits on
// its own.
class TNLSerialQueue {
 public:
  explicit TNLSerialQueue(std::string label);
  ~TNLSerialQueue();
  TNLSerialQueue(const TNLSerialQueue&) = delete;
  TNLSerialQueue& operator=(const TNLSerialQueue&) = delete;

  void async(std::function<void()> task);
  // Runs the task after `delay` (tasks due at the same time keep their order).
  void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> task);
  // Runs the task on the queue and waits for it; inline when already on this queue.
  void sync(const std::function<void()>& task);

  bool isCurrent() const;
  const std::string& label() const { return label_; }

 private:
  using Clock = std::chrono::steady_clock;
  // What the worker uses; shared with the worker thread so that it outlives the queue object when
  // the queue is destroyed from one of its own tasks.
  struct State {
    std::mutex mutex;
    std::condition_variable wake;
    // Keyed by due time, then by submission order.
    std::multimap<Clock::time_point, std::function<void()>> tasks;
    bool stopping = false;
  };
  static void run(const std::shared_ptr<State>& state);

  std::string label_;
  std::shared_ptr<State> state_;
  std::thread worker_;
};
