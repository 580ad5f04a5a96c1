#pragma once

#include <atomic>
#include <memory>

#include "AppVerificationLibrary/OMIDAdSessionRegistryStateObserver.h"
#include "AppVerificationLibrary/OMIDStateWatcherDelegate.h"

class OMIDTarnelAdSessionRegistry;
class OMIDTarnelStateWatcher;
class OMIDTarnelTreeWalker;

// Runs the view-state machinery while measurement runs: from the first session start to the last
// session finish it watches the application state and the volume, and walks the view tree while
// the application is in the foreground. Set up once, at the SDK's first activation.
class OMIDTarnelManager : public OMIDTarnelAdSessionRegistryStateObserver,
                          public OMIDTarnelStateWatcherDelegate,
                          public std::enable_shared_from_this<OMIDTarnelManager> {
 public:
  static std::shared_ptr<OMIDTarnelManager> getInstance();

  OMIDTarnelManager(std::shared_ptr<OMIDTarnelAdSessionRegistry> registry,
                    std::shared_ptr<OMIDTarnelStateWatcher> stateWatcher,
                    std::shared_ptr<OMIDTarnelTreeWalker> treeWalker);

  // Observes the session registry. Once per manager; later calls do nothing.
  void setup();

  // OMIDTarnelAdSessionRegistryStateObserver
  void adSessionRegistryDidBecomeActive() override;
  void adSessionRegistryDidResignActive() override;
  void adSessionDidBecomeActive(const std::shared_ptr<OMIDTarnelAdSession>& adSession) override;

  // OMIDTarnelStateWatcherDelegate
  void appDidBecomeActive() override;
  void appDidResignActive() override;

  const std::shared_ptr<OMIDTarnelStateWatcher>& stateWatcher() const { return stateWatcher_; }
  const std::shared_ptr<OMIDTarnelTreeWalker>& treeWalker() const { return treeWalker_; }

 private:
  void start();
  void stop();

  const std::shared_ptr<OMIDTarnelAdSessionRegistry> registry_;
  const std::shared_ptr<OMIDTarnelStateWatcher> stateWatcher_;
  const std::shared_ptr<OMIDTarnelTreeWalker> treeWalker_;
  std::atomic<bool> setUp_{false};
};
