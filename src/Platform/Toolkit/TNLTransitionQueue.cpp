#include "Platform/Toolkit/TNLTransitionQueue.h"

#include <memory>

#include "Platform/Foundation/TNLNoDestructor.h"

TNLTransitionQueue& TNLTransitionQueue::shared() {
  static TNLNoDestructor<TNLTransitionQueue> queue;
  return *queue;
}

void TNLTransitionQueue::enqueue(Transition transition) {
  pending_.push_back(std::move(transition));
  startPending();
}

void TNLTransitionQueue::startPending() {
  // A transition that finishes at once (a refused one) calls `done` from inside this loop; the
  // loop then starts the next rather than recursing.
  if (starting_) {
    return;
  }
  starting_ = true;
  while (!running_ && !pending_.empty()) {
    Transition transition = std::move(pending_.front());
    pending_.pop_front();
    running_ = true;
    auto called = std::make_shared<bool>(false);
    transition([this, called] {
      if (*called) {
        return;
      }
      *called = true;
      running_ = false;
      startPending();
    });
  }
  starting_ = false;
}
