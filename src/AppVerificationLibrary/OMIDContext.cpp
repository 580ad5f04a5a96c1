#include "AppVerificationLibrary/OMIDContext.h"

#include "AppVerificationLibrary/OMIDHostFacts.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "Platform/Foundation/TNLNoDestructor.h"

std::shared_ptr<OMIDTarnelContext> OMIDTarnelContext::sharedContext() {
  static const TNLNoDestructor<std::shared_ptr<OMIDTarnelContext>> context(
      std::make_shared<OMIDTarnelContext>());
  return *context;
}

TNLJson OMIDTarnelContext::toJSON() const {
  return {{"appId", OMIDTarnelHostFacts::bundleIdentifier()},
          {"libraryVersion", OMIDTarnelSDK::versionString()}};
}
