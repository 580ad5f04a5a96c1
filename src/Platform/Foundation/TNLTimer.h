#pragma once

#include <chrono>
#include <functional>
#include <memory>

// A one-shot or repeating timer on the main loop. Like a run-loop timer, a scheduled timer stays
// alive on the loop until it has fired (one-shot) or is invalidated, whether or not the caller
// keeps the returned handle. Fires on the main thread.
class TNLTimer {
 public:
  static std::shared_ptr<TNLTimer> scheduledTimer(std::chrono::milliseconds interval, bool repeats,
                                                  std::function<void()> fire);

  ~TNLTimer();
  TNLTimer(const TNLTimer&) = delete;
  TNLTimer& operator=(const TNLTimer&) = delete;

  // Stops the timer; a pending firing does not happen. Safe from any thread, and more than once.
  void invalidate();
  bool isValid() const;
  std::chrono::milliseconds interval() const { return interval_; }

  struct State;

 private:
  TNLTimer(std::chrono::milliseconds interval, std::shared_ptr<State> state);

  std::chrono::milliseconds interval_;
  std::shared_ptr<State> state_;
};
