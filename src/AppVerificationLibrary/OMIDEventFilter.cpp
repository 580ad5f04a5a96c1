#include "AppVerificationLibrary/OMIDEventFilter.h"

#include <mutex>

bool OMIDTarnelEventFilter::acceptEventWithCode(unsigned code, unsigned blockingEventCodes) {
  std::unique_lock lock(mutex_);
  if ((codes_ & (blockingEventCodes | finalEventCode_ | code)) != 0) {
    return false;
  }
  codes_ |= code;
  return true;
}

bool OMIDTarnelEventFilter::acceptAnyEventWithRequiredEventCodes(
    unsigned requiredEventCodes) const {
  std::shared_lock lock(mutex_);
  return (codes_ & finalEventCode_) == 0 && (codes_ & requiredEventCodes) == requiredEventCodes;
}

bool OMIDTarnelEventFilter::isFinalEventAccepted() const {
  std::shared_lock lock(mutex_);
  return (codes_ & finalEventCode_) != 0;
}
