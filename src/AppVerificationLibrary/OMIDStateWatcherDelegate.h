#pragma once

// Told by the state watcher, on the main thread, when the application comes to the foreground or
// leaves it.
class OMIDTarnelStateWatcherDelegate {
 public:
  virtual ~OMIDTarnelStateWatcherDelegate() = default;

  virtual void appDidBecomeActive() {}
  virtual void appDidResignActive() {}
};
