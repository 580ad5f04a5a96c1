#include "Platform/Foundation/TNLSerialQueue.h"

#include <memory>

TNLSerialQueue::TNLSerialQueue(std::string label)
    : label_(std::move(label)), state_(std::make_shared<State>()) {
  worker_ = std::thread([state = state_] { run(state); });
}

TNLSerialQueue::~TNLSerialQueue() {
  std::multimap<Clock::time_point, std::function<void()>> dropped;
  {
    std::lock_guard lock(state_->mutex);
    state_->stopping = true;
    dropped.swap(state_->tasks);
  }
  state_->wake.notify_all();
  if (worker_.joinable()) {
    if (worker_.get_id() == std::this_thread::get_id()) {
      worker_.detach();  // the last owner let go from a task of this queue
    } else {
      worker_.join();
    }
  }
  // `dropped` is destroyed here, outside the lock: a dropped task may own things whose
  // destruction posts to other queues.
}

void TNLSerialQueue::async(std::function<void()> task) {
  asyncAfter(std::chrono::nanoseconds(0), std::move(task));
}

void TNLSerialQueue::asyncAfter(std::chrono::nanoseconds delay, std::function<void()> task) {
  // Once the task is in, it may run and release the queue before this call returns.
  const auto state = state_;
  {
    std::lock_guard lock(state->mutex);
    if (state->stopping) {
      return;
    }
    state->tasks.emplace(Clock::now() + delay, std::move(task));
  }
  state->wake.notify_all();
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

bool TNLSerialQueue::isCurrent() const {
  return std::this_thread::get_id() == worker_.get_id();
}

void TNLSerialQueue::run(const std::shared_ptr<State>& state) {
  std::unique_lock lock(state->mutex);
  while (true) {
    if (state->stopping) {
      return;
    }
    if (state->tasks.empty()) {
      state->wake.wait(lock);
      continue;
    }
    const auto due = state->tasks.begin()->first;
    if (due > Clock::now()) {
      state->wake.wait_until(lock, due);
      continue;
    }
    {
      auto task = std::move(state->tasks.begin()->second);
      state->tasks.erase(state->tasks.begin());
      lock.unlock();
      task();
      // The task (and whatever it captured) goes before the lock is taken again: its captures
      // may include the queue's last owner.
    }
    lock.lock();
  }
}
