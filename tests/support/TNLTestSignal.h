#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// Lets a test wait for callbacks that arrive on other threads. Each callback records what it got
// through record(), under the signal's lock, and counts once.
class TNLTestSignal {
 public:
  template <class Change>
  void record(Change&& change) {
    // Notified under the lock: a waiter that wakes and destroys the signal cannot do so while
    // this thread is still inside notify_all.
    std::lock_guard lock(mutex_);
    change();
    ++count_;
    changed_.notify_all();
  }
  void record() {
    record([] {});
  }

  // Waits until `count` callbacks have been recorded.
  bool waitFor(size_t count = 1,
               std::chrono::milliseconds timeout = std::chrono::seconds(10)) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return count_ >= count; });
  }
  size_t count() const {
    std::lock_guard lock(mutex_);
    return count_;
  }
  // Reads what the callbacks recorded, under the lock.
  template <class Read>
  auto read(Read&& reader) const {
    std::lock_guard lock(mutex_);
    return reader();
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  size_t count_ = 0;
};
