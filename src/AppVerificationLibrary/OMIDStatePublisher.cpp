#include "AppVerificationLibrary/OMIDStatePublisher.h"

#include <algorithm>

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDAdSessionStatePublisher.h"
#include "AppVerificationLibrary/OMIDCommand.h"
#include "AppVerificationLibrary/OMIDDictionaryUtil.h"
#include "AppVerificationLibrary/OMIDEventFilter.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLSerialQueue.h"

namespace {

// A session the walk was for that has not finished since: a state walked before the finish
// reaches the main loop after it, and nothing may follow "finishSession".
bool isStillMeasured(const OMIDTarnelAdSession& session, const std::vector<std::string>& ids) {
  return std::find(ids.begin(), ids.end(), session.identifier()) != ids.end() &&
         !session.eventFilter()->isFinalEventAccepted();
}

}  // namespace

OMIDTarnelStatePublisher::OMIDTarnelStatePublisher(
    std::shared_ptr<OMIDTarnelAdSessionRegistry> registry)
    : registry_(std::move(registry)),
      queue_(std::make_shared<TNLSerialQueue>("omid.state-publisher")) {}

OMIDTarnelStatePublisher::~OMIDTarnelStatePublisher() = default;

void OMIDTarnelStatePublisher::publishState(TNLJson state, std::vector<std::string> sessionIds,
                                            double timestamp) {
  queue_->async([weakSelf = weak_from_this(), state = std::move(state),
                 sessionIds = std::move(sessionIds), timestamp]() mutable {
    const auto self = weakSelf.lock();
    if (!self || state == self->previousState_) {
      return;
    }
    self->previousState_ = std::move(state);
    std::string command = OMIDTarnelCommand::nativeViewHierarchyCommand(self->previousState_);
    TNLMainQueue::async(
        [self, command = std::move(command), sessionIds = std::move(sessionIds), timestamp] {
          for (const auto& session : self->registry_->activeAdSessions()) {
            if (isStillMeasured(*session, sessionIds)) {
              session->setLastPublishedViewStateWasPopulated(true);
              session->statePublisher()->publishNativeViewStateWithCommand(command, timestamp);
            }
          }
        });
  });
}

void OMIDTarnelStatePublisher::publishEmptyStateToSessions(std::vector<std::string> sessionIds,
                                                           double timestamp) {
  TNLMainQueue::async([registry = registry_, sessionIds = std::move(sessionIds), timestamp] {
    const std::string command =
        OMIDTarnelCommand::nativeViewHierarchyCommand(OMIDTarnelDictionaryUtil::emptyState());
    for (const auto& session : registry->activeAdSessions()) {
      if (isStillMeasured(*session, sessionIds) && session->lastPublishedViewStateWasPopulated()) {
        session->setLastPublishedViewStateWasPopulated(false);
        session->statePublisher()->publishEmptyNativeViewStateWithCommand(command, timestamp);
      }
    }
  });
}

void OMIDTarnelStatePublisher::cleanupCache() {
  queue_->async([weakSelf = weak_from_this()] {
    if (const auto self = weakSelf.lock()) {
      self->previousState_ = TNLJson();
    }
  });
}
