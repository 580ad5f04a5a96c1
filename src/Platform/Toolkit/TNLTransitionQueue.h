#pragma once

#include <deque>
#include <functional>

// Runs presentations and dismissals one at a time, in the order asked, on the main thread. A
// transition gets a `done` callback to call once when it has finished (at once when it was
// refused); the next one starts then.
class TNLTransitionQueue {
 public:
  using Transition = std::function<void(std::function<void()> done)>;

  static TNLTransitionQueue& shared();

  void enqueue(Transition transition);

 private:
  void startPending();

  std::deque<Transition> pending_;
  bool running_ = false;
  bool starting_ = false;
};
