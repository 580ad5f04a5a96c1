#include "AppVerificationLibrary/OMIDStateWatcher.h"

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDAdSessionStatePublisher.h"
#include "AppVerificationLibrary/OMIDMethodInvoker.h"
#include "AppVerificationLibrary/OMIDStateWatcherDelegate.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "TarnelAd/TNLDeviceFacts.h"

std::shared_ptr<OMIDTarnelStateWatcher> OMIDTarnelStateWatcher::getInstance() {
  static const TNLNoDestructor<std::shared_ptr<OMIDTarnelStateWatcher>> watcher(
      std::make_shared<OMIDTarnelStateWatcher>(OMIDTarnelAdSessionRegistry::getInstance()));
  return *watcher;
}

OMIDTarnelStateWatcher::OMIDTarnelStateWatcher(
    std::shared_ptr<OMIDTarnelAdSessionRegistry> registry)
    : registry_(std::move(registry)) {}

OMIDTarnelStateWatcher::~OMIDTarnelStateWatcher() {
  TNLNotificationCenter::defaultCenter()->removeObserver(this);
}

void OMIDTarnelStateWatcher::start() {
  const auto application = TNLApplication::sharedApplication();
  {
    std::lock_guard lock(mutex_);
    appState_ = appStateFromApplicationState(application->applicationState());
  }
  const auto center = TNLNotificationCenter::defaultCenter();
  center->removeObserver(this);
  // The notifications are posted on the thread that changed the state; the sessions and the
  // walker are told on the main thread.
  const auto observe = [&](const char* name, TNLApplicationState state) {
    center->addObserver(this, name, application.get(),
                        [weakSelf = weak_from_this(), state](const TNLNotification&) {
                          OMIDTarnelMethodInvoker::performSelectorAsync([weakSelf, state] {
                            if (const auto self = weakSelf.lock()) {
                              self->applicationStateDidChange(state);
                            }
                          });
                        });
  };
  observe(TNLApplicationDidBecomeActiveNotification, TNLApplicationState::active);
  observe(TNLApplicationWillResignActiveNotification, TNLApplicationState::inactive);
  observe(TNLApplicationDidEnterBackgroundNotification, TNLApplicationState::background);
  // Any sender: the device facts may be replaced while the watcher runs.
  center->addObserver(this, TNLDeviceFacts::kOutputVolumeDidChangeNotification, nullptr,
                      [weakSelf = weak_from_this()](const TNLNotification&) {
                        OMIDTarnelMethodInvoker::performSelectorAsync([weakSelf] {
                          if (const auto self = weakSelf.lock()) {
                            self->outputVolumeDidChange();
                          }
                        });
                      });
}

void OMIDTarnelStateWatcher::stop() {
  TNLNotificationCenter::defaultCenter()->removeObserver(this);
}

OMIDTarnelStateWatcher::AppState OMIDTarnelStateWatcher::appState() const {
  std::lock_guard lock(mutex_);
  return appState_;
}

std::string OMIDTarnelStateWatcher::stringFromAppState(AppState state) {
  return state == AppState::foregrounded ? "foregrounded" : "backgrounded";
}

OMIDTarnelStateWatcher::AppState OMIDTarnelStateWatcher::appStateFromApplicationState(
    TNLApplicationState state) {
  return state == TNLApplicationState::active ? AppState::foregrounded : AppState::backgrounded;
}

void OMIDTarnelStateWatcher::publishAppStateToSession(
    const std::shared_ptr<OMIDTarnelAdSession>& session) const {
  if (session) {
    session->statePublisher()->publishAppState(stringFromAppState(appState()));
  }
}

void OMIDTarnelStateWatcher::applicationStateDidChange(TNLApplicationState applicationState) {
  const AppState state = appStateFromApplicationState(applicationState);
  {
    std::lock_guard lock(mutex_);
    if (state == appState_) {
      return;
    }
    appState_ = state;
  }
  const std::string word = stringFromAppState(state);
  for (const auto& session : registry_->activeAdSessions()) {
    session->statePublisher()->publishAppState(word);
  }
  if (const auto delegate = this->delegate()) {
    if (state == AppState::foregrounded) {
      delegate->appDidBecomeActive();
    } else {
      delegate->appDidResignActive();
    }
  }
}

void OMIDTarnelStateWatcher::outputVolumeDidChange() {
  for (const auto& session : registry_->activeAdSessions()) {
    session->setDeviceVolume();
  }
}

std::shared_ptr<OMIDTarnelStateWatcherDelegate> OMIDTarnelStateWatcher::delegate() const {
  std::lock_guard lock(mutex_);
  return delegate_.lock();
}

void OMIDTarnelStateWatcher::setDelegate(std::weak_ptr<OMIDTarnelStateWatcherDelegate> delegate) {
  std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}
