#pragma once

#include <condition_variable>
#include <mutex>

// The first outcome of one asynchronous run; shared with the callbacks, which may run after the
// waiter left.
class TNLBenchSignal {
 public:
  void set(bool success) {
    std::lock_guard lock(mutex_);
    if (!done_) {
      done_ = true;
      succeeded_ = success;
    }
    changed_.notify_all();
  }
  bool wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return done_; });
    return succeeded_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool done_ = false;
  bool succeeded_ = false;
};
