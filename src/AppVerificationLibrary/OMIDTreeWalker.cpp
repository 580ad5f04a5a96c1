#include "AppVerificationLibrary/OMIDTreeWalker.h"

#include <chrono>

#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDDictionaryUtil.h"
#include "AppVerificationLibrary/OMIDStatePublisher.h"
#include "AppVerificationLibrary/OMIDTreeWalkerTimeLogger.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLTimer.h"
#include "TarnelAd/Toolkit/TNLView.h"

namespace {

constexpr std::chrono::milliseconds kWalkInterval{200};

double secondsSince1970() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace

std::shared_ptr<OMIDTarnelTreeWalker> OMIDTarnelTreeWalker::getInstance() {
  static const TNLNoDestructor<std::shared_ptr<OMIDTarnelTreeWalker>> walker(
      std::make_shared<OMIDTarnelTreeWalker>(OMIDTarnelAdSessionRegistry::getInstance()));
  return *walker;
}

OMIDTarnelTreeWalker::OMIDTarnelTreeWalker(std::shared_ptr<OMIDTarnelAdSessionRegistry> registry)
    : adViewCache_(registry),
      statePublisher_(std::make_shared<OMIDTarnelStatePublisher>(std::move(registry))) {}

OMIDTarnelTreeWalker::~OMIDTarnelTreeWalker() {
  pause();
}

void OMIDTarnelTreeWalker::start() {
  onTick();
  if (timer_) {
    return;
  }
  timer_ = TNLTimer::scheduledTimer(kWalkInterval, true, [weakSelf = weak_from_this()] {
    if (const auto self = weakSelf.lock()) {
      self->onTick();
    }
  });
}

void OMIDTarnelTreeWalker::pause() {
  if (timer_) {
    timer_->invalidate();
    timer_.reset();
  }
}

void OMIDTarnelTreeWalker::stop() {
  pause();
  statePublisher_->cleanupCache();
}

void OMIDTarnelTreeWalker::onTick() {
  const auto began = std::chrono::steady_clock::now();
  updateTreeState();
  if (const auto logger = timeLogger_.lock()) {
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
    logger->didProcessObjectsCount(objectsCount_, took.count());
  }
}

void OMIDTarnelTreeWalker::updateTreeState() {
  objectsCount_ = 0;
  adViewCache_.prepare();
  const double timestamp = secondsSince1970();
  if (!adViewCache_.hiddenSessionIds().empty()) {
    statePublisher_->publishEmptyStateToSessions(adViewCache_.hiddenSessionIds(), timestamp);
  }
  if (!adViewCache_.visibleSessionIds().empty()) {
    const auto& root = processorFactory_.rootProcessor();
    TNLJson state = root.stateForView(nullptr);
    for (const auto& window : root.orderedChildrenForView(nullptr)) {
      walkView(window, state);
    }
    statePublisher_->publishState(std::move(state), adViewCache_.visibleSessionIds(), timestamp);
  } else {
    statePublisher_->cleanupCache();
  }
  adViewCache_.cleanup();
}

void OMIDTarnelTreeWalker::walkView(const std::shared_ptr<TNLView>& view, TNLJson& parentState) {
  if (view->isHidden() || view->alpha() == 0.0) {
    return;
  }
  const OMIDTarnelViewType type = adViewCache_.typeOfView(view);
  if (type == OMIDTarnelViewType::skip) {
    return;
  }
  ++objectsCount_;
  const auto& processor = processorFactory_.processorForView(*view);
  TNLJson state = processor.stateForView(view.get());
  if (const std::string* sessionId = adViewCache_.sessionIdForView(view)) {
    // What the ad view contains is the ad itself.
    OMIDTarnelDictionaryUtil::setSessionId(state, *sessionId);
    adViewCache_.setAdViewProcessed(true);
  } else {
    if (const auto* sessionIds = adViewCache_.friendlyObstructionSessionIdsForView(view)) {
      OMIDTarnelDictionaryUtil::setFriendlyObstructionSessionIds(state, *sessionIds);
    }
    if (type == OMIDTarnelViewType::root) {
      for (const auto& child : processor.orderedChildrenForView(view.get())) {
        walkView(child, state);
      }
    } else {
      for (const auto& child : view->subviews()) {
        walkView(child, state);
      }
    }
  }
  OMIDTarnelDictionaryUtil::addChildState(parentState, std::move(state));
}
