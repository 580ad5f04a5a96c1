#pragma once

#include <memory>
#include <mutex>
#include <vector>

class OMIDTarnelAdSession;
class OMIDTarnelAdSessionRegistryStateObserver;
class TNLView;

// The process's live ad sessions: every session registers itself (held weakly) and makes the
// registry its delegate; started sessions are held as active until they finish. Observers learn
// when measurement starts and stops. Used on the main thread; the collections are also guarded
// so that they can be read from anywhere, and no observer or session is called under the lock.
class OMIDTarnelAdSessionRegistry
    : public std::enable_shared_from_this<OMIDTarnelAdSessionRegistry> {
 public:
  static std::shared_ptr<OMIDTarnelAdSessionRegistry> getInstance();

  // Keeps a weak reference and becomes the session's delegate.
  void addAdSession(const std::shared_ptr<OMIDTarnelAdSession>& adSession);
  void removeAdSession(const std::shared_ptr<OMIDTarnelAdSession>& adSession);
  void addStateObserver(const std::shared_ptr<OMIDTarnelAdSessionRegistryStateObserver>& observer);

  void adSessionDidStart(const std::shared_ptr<OMIDTarnelAdSession>& adSession);
  void adSessionDidFinish(const std::shared_ptr<OMIDTarnelAdSession>& adSession);
  // A view is measured by one session at a time: every other session that had `view` as its
  // main ad view loses it.
  void adSessionDidRegisterAdView(const std::shared_ptr<OMIDTarnelAdSession>& adSession,
                                  const std::shared_ptr<TNLView>& view);

  // The registered sessions still alive, in registration order.
  std::vector<std::shared_ptr<OMIDTarnelAdSession>> adSessions() const;
  // The started, unfinished sessions, in the order they started.
  std::vector<std::shared_ptr<OMIDTarnelAdSession>> activeAdSessions() const;
  bool isActive() const;

 private:
  std::vector<std::shared_ptr<OMIDTarnelAdSessionRegistryStateObserver>> observers() const;
  // Drops the session and dead references; the lock is held.
  void forget(const std::shared_ptr<OMIDTarnelAdSession>& adSession);

  mutable std::mutex mutex_;
  mutable std::vector<std::weak_ptr<OMIDTarnelAdSession>> adSessions_;
  std::vector<std::shared_ptr<OMIDTarnelAdSession>> activeAdSessions_;
  std::vector<std::shared_ptr<OMIDTarnelAdSessionRegistryStateObserver>> observers_;
};
