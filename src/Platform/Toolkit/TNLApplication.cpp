#include "TarnelAd/Toolkit/TNLApplication.h"

#include <algorithm>

#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

std::shared_ptr<TNLApplication> TNLApplication::sharedApplication() {
  static const TNLNoDestructor<std::shared_ptr<TNLApplication>> application(
      std::shared_ptr<TNLApplication>(new TNLApplication()));
  return *application;
}

TNLApplicationState TNLApplication::applicationState() const {
  std::lock_guard lock(mutex_);
  return state_;
}

void TNLApplication::setApplicationState(TNLApplicationState target) {
  // One step at a time, so that a jump between active and background posts both notifications.
  for (;;) {
    TNLApplicationState current;
    {
      std::lock_guard lock(mutex_);
      current = state_;
    }
    if (current == target) {
      return;
    }
    switch (current) {
      case TNLApplicationState::active:
        post(TNLApplicationWillResignActiveNotification);
        setState(TNLApplicationState::inactive);
        break;
      case TNLApplicationState::inactive:
        if (target == TNLApplicationState::active) {
          setState(TNLApplicationState::active);
          post(TNLApplicationDidBecomeActiveNotification);
        } else {
          setState(TNLApplicationState::background);
          post(TNLApplicationDidEnterBackgroundNotification);
        }
        break;
      case TNLApplicationState::background:
        post(TNLApplicationWillEnterForegroundNotification);
        setState(TNLApplicationState::inactive);
        break;
    }
  }
}

void TNLApplication::setState(TNLApplicationState state) {
  std::lock_guard lock(mutex_);
  state_ = state;
}

void TNLApplication::post(const char* name) {
  TNLNotificationCenter::defaultCenter()->post(name, this);
}

std::vector<std::shared_ptr<TNLWindow>> TNLApplication::windows() const {
  std::vector<std::shared_ptr<TNLWindow>> live;
  {
    std::lock_guard lock(mutex_);
    for (const auto& window : windows_) {
      if (auto strong = window.lock()) {
        live.push_back(std::move(strong));
      }
    }
  }
  std::stable_sort(live.begin(), live.end(),
                   [](const std::shared_ptr<TNLWindow>& a, const std::shared_ptr<TNLWindow>& b) {
                     return a->windowLevel() < b->windowLevel();
                   });
  return live;
}

void TNLApplication::registerWindow(const std::shared_ptr<TNLWindow>& window) {
  std::lock_guard lock(mutex_);
  std::erase_if(windows_, [](const std::weak_ptr<TNLWindow>& w) { return w.expired(); });
  const bool known =
      std::any_of(windows_.begin(), windows_.end(),
                  [&](const std::weak_ptr<TNLWindow>& w) { return w.lock() == window; });
  if (!known) {
    windows_.push_back(window);
  }
}

std::shared_ptr<TNLWindow> TNLApplication::keyWindow() const {
  std::lock_guard lock(mutex_);
  return keyWindow_.lock();
}

void TNLApplication::setKeyWindow(const std::shared_ptr<TNLWindow>& window) {
  std::shared_ptr<TNLWindow> former;
  {
    std::lock_guard lock(mutex_);
    former = keyWindow_.lock();
    keyWindow_ = window;
  }
  if (former == window) {
    return;
  }
  if (former) {
    former->keyWindowDidChange(false);
  }
  if (window) {
    window->keyWindowDidChange(true);
  }
}

TNLInterfaceOrientation TNLApplication::statusBarOrientation() const {
  std::lock_guard lock(mutex_);
  return statusBarOrientation_;
}

void TNLApplication::setStatusBarOrientation(TNLInterfaceOrientation orientation) {
  std::lock_guard lock(mutex_);
  statusBarOrientation_ = orientation;
}

TNLDeviceOrientation TNLApplication::deviceOrientation() const {
  std::lock_guard lock(mutex_);
  return deviceOrientation_;
}

void TNLApplication::setDeviceOrientation(TNLDeviceOrientation orientation) {
  std::lock_guard lock(mutex_);
  deviceOrientation_ = orientation;
}
