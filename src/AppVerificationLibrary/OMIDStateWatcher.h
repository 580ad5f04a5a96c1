#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "TarnelAd/Toolkit/TNLApplication.h"

class OMIDTarnelAdSession;
class OMIDTarnelAdSessionRegistry;
class OMIDTarnelStateWatcherDelegate;

// Watches the application's state and the output volume while measurement runs, and tells every
// active session: "setState" with 'foregrounded' or 'backgrounded' when the state changes, and
// "setDeviceVolume" when the volume does. Started and stopped on the main thread; notifications
// from other threads are handled there.
class OMIDTarnelStateWatcher : public std::enable_shared_from_this<OMIDTarnelStateWatcher> {
 public:
  // What the sessions are told.
  enum class AppState { foregrounded = 0, backgrounded = 1 };

  static std::shared_ptr<OMIDTarnelStateWatcher> getInstance();

  explicit OMIDTarnelStateWatcher(std::shared_ptr<OMIDTarnelAdSessionRegistry> registry);
  ~OMIDTarnelStateWatcher();
  OMIDTarnelStateWatcher(const OMIDTarnelStateWatcher&) = delete;
  OMIDTarnelStateWatcher& operator=(const OMIDTarnelStateWatcher&) = delete;

  // Reads the current application state and observes its changes and the volume's.
  void start();
  // Stops observing.
  void stop();

  AppState appState() const;
  // "foregrounded" or "backgrounded".
  static std::string stringFromAppState(AppState state);
  // Active is foregrounded; inactive and background are backgrounded.
  static AppState appStateFromApplicationState(TNLApplicationState state);

  // Tells the session the current state word.
  void publishAppStateToSession(const std::shared_ptr<OMIDTarnelAdSession>& session) const;

  std::shared_ptr<OMIDTarnelStateWatcherDelegate> delegate() const;
  void setDelegate(std::weak_ptr<OMIDTarnelStateWatcherDelegate> delegate);

 private:
  void applicationStateDidChange(TNLApplicationState state);
  void outputVolumeDidChange();

  const std::shared_ptr<OMIDTarnelAdSessionRegistry> registry_;
  mutable std::mutex mutex_;
  AppState appState_ = AppState::foregrounded;
  std::weak_ptr<OMIDTarnelStateWatcherDelegate> delegate_;
};
