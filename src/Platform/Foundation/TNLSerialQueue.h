#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

// A private serial queue: one worker thread runs the tasks one after another in the order they
// become due. Destroying the queue drops tasks that have not started and joins the worker.
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
  void run();

  using Clock = std::chrono::steady_clock;
  std::string label_;
  mutable std::mutex mutex_;
  std::condition_variable wake_;
  // Keyed by due time, then by submission order.
  std::multimap<Clock::time_point, std::function<void()>> tasks_;
  bool stopping_ = false;
  std::thread worker_;
};
