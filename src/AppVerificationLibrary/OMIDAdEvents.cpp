#include "AppVerificationLibrary/OMIDAdEvents.h"

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDBridge.h"
#include "AppVerificationLibrary/OMIDError.h"
#include "AppVerificationLibrary/OMIDEventFilter.h"

std::shared_ptr<OMIDTarnelAdEvents> OMIDTarnelAdEvents::create(
    const std::shared_ptr<OMIDTarnelAdSession>& adSession, TNLErrorPtr* error) {
  if (adSession == nullptr) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorMissingAdSession,
                                     OMIDTarnelMissingAdSessionMessage);
    return nullptr;
  }
  if (!adSession->eventFilter()->acceptEventWithCode(OMIDTarnelAdEventsCreatedEvent)) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorEventFilterRejected,
                                     OMIDTarnelEventFilterRejectedMessage);
    return nullptr;
  }
  return std::shared_ptr<OMIDTarnelAdEvents>(new OMIDTarnelAdEvents(adSession));
}

bool OMIDTarnelAdEvents::impressionOccurredWithError(TNLErrorPtr* error) {
  if (adSession_->configuration()->impressionOwner() != OMIDTarnelNativeOwner) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorImpressionOwnerNotNative,
                                     OMIDTarnelImpressionOwnerNotNativeMessage);
    return false;
  }
  const auto& filter = adSession_->eventFilter();
  if (!filter->acceptEventWithCode(OMIDTarnelImpressionEvent)) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorEventFilterRejected,
                                     OMIDTarnelEventFilterRejectedMessage);
    return false;
  }
  if (!filter->acceptAnyEventWithRequiredEventCodes(OMIDTarnelSessionStartEvent)) {
    adSession_->start();
  }
  adSession_->adEventsPublisher()->publishImpressionEvent();
  return true;
}
