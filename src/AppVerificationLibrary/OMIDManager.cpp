#include "AppVerificationLibrary/OMIDManager.h"

#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDStateWatcher.h"
#include "AppVerificationLibrary/OMIDTreeWalker.h"
#include "Platform/Foundation/TNLNoDestructor.h"

std::shared_ptr<OMIDTarnelManager> OMIDTarnelManager::getInstance() {
  static const TNLNoDestructor<std::shared_ptr<OMIDTarnelManager>> manager(
      std::make_shared<OMIDTarnelManager>(OMIDTarnelAdSessionRegistry::getInstance(),
                                          OMIDTarnelStateWatcher::getInstance(),
                                          OMIDTarnelTreeWalker::getInstance()));
  return *manager;
}

OMIDTarnelManager::OMIDTarnelManager(std::shared_ptr<OMIDTarnelAdSessionRegistry> registry,
                                     std::shared_ptr<OMIDTarnelStateWatcher> stateWatcher,
                                     std::shared_ptr<OMIDTarnelTreeWalker> treeWalker)
    : registry_(std::move(registry)),
      stateWatcher_(std::move(stateWatcher)),
      treeWalker_(std::move(treeWalker)) {}

void OMIDTarnelManager::setup() {
  if (setUp_.exchange(true)) {
    return;
  }
  registry_->addStateObserver(shared_from_this());
}

void OMIDTarnelManager::adSessionRegistryDidBecomeActive() {
  start();
}

void OMIDTarnelManager::adSessionRegistryDidResignActive() {
  stop();
}

void OMIDTarnelManager::adSessionDidBecomeActive(
    const std::shared_ptr<OMIDTarnelAdSession>& adSession) {
  stateWatcher_->publishAppStateToSession(adSession);
}

void OMIDTarnelManager::appDidBecomeActive() {
  treeWalker_->start();
}

void OMIDTarnelManager::appDidResignActive() {
  treeWalker_->pause();
}

void OMIDTarnelManager::start() {
  stateWatcher_->setDelegate(weak_from_this());
  stateWatcher_->start();
  if (stateWatcher_->appState() == OMIDTarnelStateWatcher::AppState::foregrounded) {
    treeWalker_->start();
  }
}

void OMIDTarnelManager::stop() {
  stateWatcher_->setDelegate({});
  stateWatcher_->stop();
  treeWalker_->stop();
}
