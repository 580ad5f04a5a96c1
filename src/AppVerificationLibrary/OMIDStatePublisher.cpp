#include "AppVerificationLibrary/OMIDStatePublisher.h"

#include <algorithm>

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDAdSessionStatePublisher.h"
#include "AppVerificationLibrary/OMIDCommand.h"
#include "AppVerificationLibrary/OMIDDictionaryUtil.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLSerialQueue.h"

namespace {

bool contains(const std::vector<std::string>& ids, const std::string& id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
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
            if (contains(sessionIds, session->identifier())) {
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
      if (contains(sessionIds, session->identifier()) &&
          session->lastPublishedViewStateWasPopulated()) {
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
