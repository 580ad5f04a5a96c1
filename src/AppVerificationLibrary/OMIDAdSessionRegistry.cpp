#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"

#include <algorithm>

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistryStateObserver.h"
#include "Platform/Foundation/TNLNoDestructor.h"

std::shared_ptr<OMIDTarnelAdSessionRegistry> OMIDTarnelAdSessionRegistry::getInstance() {
  static const TNLNoDestructor<std::shared_ptr<OMIDTarnelAdSessionRegistry>> registry(
      std::make_shared<OMIDTarnelAdSessionRegistry>());
  return *registry;
}

void OMIDTarnelAdSessionRegistry::addAdSession(
    const std::shared_ptr<OMIDTarnelAdSession>& adSession) {
  if (!adSession) {
    return;
  }
  {
    std::lock_guard lock(mutex_);
    std::erase_if(adSessions_, [](const auto& session) { return session.expired(); });
    adSessions_.push_back(adSession);
  }
  adSession->setDelegate(weak_from_this());
}

void OMIDTarnelAdSessionRegistry::removeAdSession(
    const std::shared_ptr<OMIDTarnelAdSession>& adSession) {
  std::lock_guard lock(mutex_);
  forget(adSession);
}

void OMIDTarnelAdSessionRegistry::addStateObserver(
    const std::shared_ptr<OMIDTarnelAdSessionRegistryStateObserver>& observer) {
  if (!observer) {
    return;
  }
  std::lock_guard lock(mutex_);
  observers_.push_back(observer);
}

void OMIDTarnelAdSessionRegistry::adSessionDidStart(
    const std::shared_ptr<OMIDTarnelAdSession>& adSession) {
  bool wasActive = false;
  {
    std::lock_guard lock(mutex_);
    wasActive = !activeAdSessions_.empty();
    if (std::find(activeAdSessions_.begin(), activeAdSessions_.end(), adSession) ==
        activeAdSessions_.end()) {
      activeAdSessions_.push_back(adSession);
    }
  }
  const auto observers = this->observers();
  if (!wasActive) {
    for (const auto& observer : observers) {
      observer->adSessionRegistryDidBecomeActive();
    }
  }
  for (const auto& observer : observers) {
    observer->adSessionDidBecomeActive(adSession);
  }
}

void OMIDTarnelAdSessionRegistry::adSessionDidFinish(
    const std::shared_ptr<OMIDTarnelAdSession>& adSession) {
  bool active = false;
  {
    std::lock_guard lock(mutex_);
    std::erase(activeAdSessions_, adSession);
    forget(adSession);
    active = !activeAdSessions_.empty();
  }
  if (!active) {
    for (const auto& observer : observers()) {
      observer->adSessionRegistryDidResignActive();
    }
  }
}

void OMIDTarnelAdSessionRegistry::adSessionDidRegisterAdView(
    const std::shared_ptr<OMIDTarnelAdSession>& adSession, const std::shared_ptr<TNLView>& view) {
  for (const auto& other : adSessions()) {
    if (other != adSession && other->mainAdView() == view) {
      other->internal_setMainAdView(nullptr);
    }
  }
}

std::vector<std::shared_ptr<OMIDTarnelAdSession>> OMIDTarnelAdSessionRegistry::adSessions() const {
  std::vector<std::shared_ptr<OMIDTarnelAdSession>> live;
  std::lock_guard lock(mutex_);
  std::erase_if(adSessions_, [](const auto& session) { return session.expired(); });
  for (const auto& session : adSessions_) {
    if (auto strong = session.lock()) {
      live.push_back(std::move(strong));
    }
  }
  return live;
}

std::vector<std::shared_ptr<OMIDTarnelAdSession>> OMIDTarnelAdSessionRegistry::activeAdSessions()
    const {
  std::lock_guard lock(mutex_);
  return activeAdSessions_;
}

bool OMIDTarnelAdSessionRegistry::isActive() const {
  std::lock_guard lock(mutex_);
  return !activeAdSessions_.empty();
}

void OMIDTarnelAdSessionRegistry::forget(const std::shared_ptr<OMIDTarnelAdSession>& adSession) {
  // Compared by owner rather than through lock(), so that no session is released under the lock.
  std::erase_if(adSessions_, [&](const std::weak_ptr<OMIDTarnelAdSession>& session) {
    return session.expired() ||
           (!session.owner_before(adSession) && !adSession.owner_before(session));
  });
}

std::vector<std::shared_ptr<OMIDTarnelAdSessionRegistryStateObserver>>
OMIDTarnelAdSessionRegistry::observers() const {
  std::lock_guard lock(mutex_);
  return observers_;
}
