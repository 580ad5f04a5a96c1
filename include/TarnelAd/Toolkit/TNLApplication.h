#pragma once

/// @file
/// @brief TNLApplication: the running application, its state and orientations.

#include <memory>
#include <mutex>
#include <vector>

#include "TarnelAd/TNLExport.h"

class TNLWindow;

/// The application's state; the values are the platform's.
enum class TNLApplicationState {
  active = 0,
  inactive = 1,
  background = 2,
};

/// The orientation of the application's interface; the values are the platform's.
enum class TNLInterfaceOrientation {
  unknown = 0,
  portrait = 1,
  portraitUpsideDown = 2,
  landscapeRight = 3,
  landscapeLeft = 4,
};

/// How the device is held; the values are the platform's.
enum class TNLDeviceOrientation {
  unknown = 0,
  portrait = 1,
  portraitUpsideDown = 2,
  landscapeLeft = 3,
  landscapeRight = 4,
  faceUp = 5,
  faceDown = 6,
};

/// Names of the notifications that the application posts to the library's views, on the thread
/// that changes the state (see TNLApplication::setApplicationState).
///@{
inline constexpr char TNLApplicationDidBecomeActiveNotification[] =
    "TNLApplicationDidBecomeActiveNotification";
inline constexpr char TNLApplicationWillResignActiveNotification[] =
    "TNLApplicationWillResignActiveNotification";
inline constexpr char TNLApplicationDidEnterBackgroundNotification[] =
    "TNLApplicationDidEnterBackgroundNotification";
inline constexpr char TNLApplicationWillEnterForegroundNotification[] =
    "TNLApplicationWillEnterForegroundNotification";
///@}

/// The running application: its state, its windows and the orientations. State and orientations
/// are set by the backend (or by tests) and are safe to read from any thread; windows are a
/// main-thread matter. The application starts active, in portrait.
class TNL_EXPORT TNLApplication {
 public:
  /// The process's application object.
  static std::shared_ptr<TNLApplication> sharedApplication();

  /// The current state; any thread.
  TNLApplicationState applicationState() const;
  /// Moves to the new state through the platform's steps, posting on the way:
  ///   inactive -> active:       did-become-active (after the change)
  ///   active -> inactive:       will-resign-active (before the change)
  ///   inactive -> background:   did-enter-background (after the change)
  ///   background -> inactive:   will-enter-foreground (before the change)
  /// active <-> background passes through inactive, so both notifications of the way are posted.
  /// Setting the current state posts nothing.
  void setApplicationState(TNLApplicationState state);

  /// Live windows, by ascending window level, then in registration order. The application holds
  /// them weakly; main thread.
  std::vector<std::shared_ptr<TNLWindow>> windows() const;
  /// The window that was last made key; null when it is gone.
  std::shared_ptr<TNLWindow> keyWindow() const;

  /// The interface's orientation, set by the backend; any thread.
  ///@{
  TNLInterfaceOrientation statusBarOrientation() const;
  void setStatusBarOrientation(TNLInterfaceOrientation orientation);
  ///@}
  /// How the device is held, set by the backend; any thread.
  ///@{
  TNLDeviceOrientation deviceOrientation() const;
  void setDeviceOrientation(TNLDeviceOrientation orientation);
  ///@}

 private:
  friend class TNLWindow;

  TNLApplication() = default;
  void registerWindow(const std::shared_ptr<TNLWindow>& window);
  void setKeyWindow(const std::shared_ptr<TNLWindow>& window);
  void setState(TNLApplicationState state);
  void post(const char* name);

  mutable std::mutex mutex_;
  TNLApplicationState state_ = TNLApplicationState::active;
  TNLInterfaceOrientation statusBarOrientation_ = TNLInterfaceOrientation::portrait;
  TNLDeviceOrientation deviceOrientation_ = TNLDeviceOrientation::portrait;
  std::vector<std::weak_ptr<TNLWindow>> windows_;
  std::weak_ptr<TNLWindow> keyWindow_;
};
