#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"

#include "AppVerificationLibrary/OMIDError.h"

std::shared_ptr<OMIDTarnelAdSessionConfiguration> OMIDTarnelAdSessionConfiguration::create(
    OMIDTarnelOwner impressionOwner, OMIDTarnelOwner videoEventsOwner,
    bool isolateVerificationScripts, TNLErrorPtr* error) {
  if (impressionOwner == OMIDTarnelNoneOwner || impressionOwner == 0) {
    OMIDTarnelError::setOMIDErrorFor(error, OMIDTarnelErrorImpressionOwnerNone,
                                     OMIDTarnelImpressionOwnerNoneMessage);
    return nullptr;
  }
  const OMIDTarnelOwner videoOwner = videoEventsOwner == 0 ? OMIDTarnelNoneOwner : videoEventsOwner;
  return std::shared_ptr<OMIDTarnelAdSessionConfiguration>(new OMIDTarnelAdSessionConfiguration(
      impressionOwner, videoOwner, isolateVerificationScripts));
}

std::shared_ptr<OMIDTarnelAdSessionConfiguration> OMIDTarnelAdSessionConfiguration::create(
    OMIDTarnelOwner impressionOwner, OMIDTarnelOwner videoEventsOwner, TNLErrorPtr* error) {
  return create(impressionOwner, videoEventsOwner, true, error);
}
