#include "AppVerificationLibrary/OMIDJSTimer.h"

#include <chrono>
#include <cmath>

#include "AppVerificationLibrary/OMIDLightJSExecutor.h"
#include "Platform/Foundation/TNLSerialQueue.h"
#include "Platform/Script/TNLJSContext.h"

namespace {

// Scripts may not make the service spin faster than this.
constexpr double kMinimumTimeout = 10.0;

TNLJSValue argumentAt(const std::vector<TNLJSValue>& arguments, size_t index) {
  return index < arguments.size() ? arguments[index] : TNLJSValue();
}

// A timer identifier as a script passes it back; nothing for values that cannot be one.
std::optional<OMIDTarnelJSTimer::TimerId> timerIdFrom(const TNLJSValue& value) {
  const double number = value.toNumber();
  if (!std::isfinite(number) || number < 0) {
    return std::nullopt;
  }
  return static_cast<OMIDTarnelJSTimer::TimerId>(number);
}

}  // namespace

void OMIDTarnelJSTimer::setJsInvoker(std::weak_ptr<OMIDTarnelLightJSExecutor> jsInvoker) {
  std::lock_guard lock(mutex_);
  jsInvoker_ = std::move(jsInvoker);
}

void OMIDTarnelJSTimer::setupMethodsForJSObject(TNLJSContext& context, const TNLJSValue& object) {
  const std::weak_ptr<OMIDTarnelJSTimer> weakSelf = weak_from_this();
  const auto scheduler = [weakSelf](bool repeatable) {
    return [weakSelf, repeatable](TNLJSContext& ctx, const std::vector<TNLJSValue>& arguments) {
      const auto self = weakSelf.lock();
      if (self == nullptr) {
        return ctx.undefinedValue();
      }
      const TimerId timerId = self->scheduleTimerWithTimeout(argumentAt(arguments, 1).toNumber(),
                                                             argumentAt(arguments, 0), repeatable);
      return ctx.numberValue(static_cast<double>(timerId));
    };
  };
  const auto clearer = [weakSelf](TNLJSContext& ctx, const std::vector<TNLJSValue>& arguments) {
    const auto self = weakSelf.lock();
    const auto timerId = timerIdFrom(argumentAt(arguments, 0));
    if (self != nullptr && timerId) {
      self->clearTimer(*timerId);
    }
    return ctx.undefinedValue();
  };
  context.setFunction(object, "setTimeout", scheduler(false));
  context.setFunction(object, "setInterval", scheduler(true));
  context.setFunction(object, "clearTimeout", clearer);
  context.setFunction(object, "clearInterval", clearer);
}

OMIDTarnelJSTimer::TimerId OMIDTarnelJSTimer::scheduleTimerWithTimeout(double timeout,
                                                                       const TNLJSValue& callback,
                                                                       bool repeatable) {
  TimerId timerId = 0;
  {
    std::lock_guard lock(mutex_);
    timerId = ++timerIdCounter_;
    timerIds_.insert(timerId);
  }
  // A missing or non-numeric delay counts as no delay.
  const double delay = std::isnan(timeout) ? kMinimumTimeout : std::max(kMinimumTimeout, timeout);
  schedule(timerId, delay, callback, repeatable);
  return timerId;
}

void OMIDTarnelJSTimer::schedule(TimerId timerId, double delay, const TNLJSValue& callback,
                                 bool repeatable) {
  std::shared_ptr<OMIDTarnelLightJSExecutor> invoker;
  {
    std::lock_guard lock(mutex_);
    invoker = jsInvoker_.lock();
  }
  if (invoker == nullptr) {
    return;
  }
  // Far-future delays are capped rather than overflowing the clock; such a timer never fires in
  // the life of an ad anyway.
  const double nanoseconds = std::min(delay * 1e6, 1e18);
  invoker->dispatchQueue()->asyncAfter(
      std::chrono::nanoseconds(static_cast<long long>(nanoseconds)),
      [weakSelf = weak_from_this(), timerId, delay, callback, repeatable] {
        if (const auto self = weakSelf.lock()) {
          self->handleTimerWithId(timerId, delay, callback, repeatable);
        }
      });
}

void OMIDTarnelJSTimer::handleTimerWithId(TimerId timerId, double timeout,
                                          const TNLJSValue& callback, bool repeatable) {
  std::shared_ptr<OMIDTarnelLightJSExecutor> invoker;
  {
    std::lock_guard lock(mutex_);
    if (timerIds_.count(timerId) == 0) {
      return;
    }
    if (!repeatable) {
      timerIds_.erase(timerId);
    }
    invoker = jsInvoker_.lock();
  }
  if (repeatable) {
    schedule(timerId, timeout, callback, repeatable);
  }
  if (invoker != nullptr) {
    invoker->invokeCallback(callback);
  }
}

void OMIDTarnelJSTimer::clearTimer(TimerId timerId) {
  std::lock_guard lock(mutex_);
  timerIds_.erase(timerId);
}

void OMIDTarnelJSTimer::cancelAllTimers() {
  std::lock_guard lock(mutex_);
  timerIds_.clear();
}

bool OMIDTarnelJSTimer::isTimerActive(TimerId timerId) const {
  std::lock_guard lock(mutex_);
  return timerIds_.count(timerId) != 0;
}
