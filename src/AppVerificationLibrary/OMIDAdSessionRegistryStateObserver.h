#pragma once

#include <memory>

class OMIDTarnelAdSession;

// Told by the session registry, on the main thread, when measurement starts and stops: the
// registry is active while at least one session has started and not finished.
class OMIDTarnelAdSessionRegistryStateObserver {
 public:
  virtual ~OMIDTarnelAdSessionRegistryStateObserver() = default;

  // The first active session started.
  virtual void adSessionRegistryDidBecomeActive() {}
  // The last active session finished.
  virtual void adSessionRegistryDidResignActive() {}
  // A session started (after adSessionRegistryDidBecomeActive when it was the first).
  virtual void adSessionDidBecomeActive(const std::shared_ptr<OMIDTarnelAdSession>& adSession) {
    static_cast<void>(adSession);
  }
};
