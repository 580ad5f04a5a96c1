#include "Platform/Foundation/TNLSerialQueue.h"

#include <memory>

TNLSerialQueue::TNLSerialQueue(std::string label) : label_(std::move(label)) {
  worker_ = std::thread([this] { run(); });
}

TNLSerialQueue::~TNLSerialQueue() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  if (worker_.joinable()) {
    if (worker_.get_id() == std::this_thread::get_id()) {
      worker_.detach();  // the last owner let go from a task of this queue
    } else {
      worker_.join();
    }
  }
}

void TNLSerialQueue::async(std::function<void()> task) { asyncAfter(std::chrono::nanoseconds(0), std::move(task)); }

void TNLSerialQueue::asyncAfter(std::chrono::nanoseconds delay, std::function<void()> task) {
  {
    std::lock_guard lock(mutex_);
    if (stopping_) {
      return;
    }
    tasks_.emplace(Clock::now() + delay, std::move(task));
  }
  wake_.notify_all();
}

void TNLSerialQueue::sync(const std::function<void()>& task) {
  if (isCurrent()) {
    task();
    return;
  }
  auto done = std::make_shared<std::pair<std::mutex, std::condition_variable>>();
  bool finished = false;
  async([&] {
    task();
    std::lock_guard lock(done->first);
    finished = true;
    done->second.notify_all();
  });
  std::unique_lock lock(done->first);
  done->second.wait(lock, [&] { return finished; });
}

bool TNLSerialQueue::isCurrent() const { return std::this_thread::get_id() == worker_.get_id(); }

void TNLSerialQueue::run() {
  std::unique_lock lock(mutex_);
  while (true) {
    if (stopping_) {
      return;
    }
    if (tasks_.empty()) {
      wake_.wait(lock);
      continue;
    }
    const auto due = tasks_.begin()->first;
    if (due > Clock::now()) {
      wake_.wait_until(lock, due);
      continue;
    }
    auto task = std::move(tasks_.begin()->second);
    tasks_.erase(tasks_.begin());
    lock.unlock();
    task();
    lock.lock();
  }
}
