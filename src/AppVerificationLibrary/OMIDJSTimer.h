#pragma once

#include <memory>
#include <mutex>
#include <set>

#include "Platform/Script/TNLJSValue.h"

class OMIDTarnelLightJSExecutor;
class TNLJSContext;

// The timer service of `omidNative` (setTimeout, clearTimeout, setInterval, clearInterval) for
// the scripts of a light executor. Callbacks run on the executor's queue.
class OMIDTarnelJSTimer : public std::enable_shared_from_this<OMIDTarnelJSTimer> {
 public:
  using TimerId = unsigned long;

  // The executor whose queue runs the timers; held weakly.
  void setJsInvoker(std::weak_ptr<OMIDTarnelLightJSExecutor> jsInvoker);

  // Installs setTimeout, clearTimeout, setInterval and clearInterval on `object`.
  void setupMethodsForJSObject(TNLJSContext& context, const TNLJSValue& object);

  // Schedules the callback (a function, or a string to evaluate) after the timeout in
  // milliseconds, but never sooner than 10; returns the timer's identifier (1, 2, ... across
  // timeouts and intervals).
  TimerId scheduleTimerWithTimeout(double timeout, const TNLJSValue& callback, bool repeatable);
  // Forgets the timer: a pending run does nothing. Unknown identifiers are ignored.
  void clearTimer(TimerId timerId);
  void cancelAllTimers();
  bool isTimerActive(TimerId timerId) const;

 private:
  void schedule(TimerId timerId, double delay, const TNLJSValue& callback, bool repeatable);
  void handleTimerWithId(TimerId timerId, double timeout, const TNLJSValue& callback,
                         bool repeatable);

  mutable std::mutex mutex_;
  TimerId timerIdCounter_ = 0;
  std::set<TimerId> timerIds_;
  std::weak_ptr<OMIDTarnelLightJSExecutor> jsInvoker_;
};
