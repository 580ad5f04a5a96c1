#pragma once

#include <string>

#include "Platform/Foundation/TNLError.h"

// The measurement SDK's errors: one domain, fixed codes and messages. Failures are reported only
// through the caller's error out-value and a missing result; nothing is logged.
inline constexpr char OMIDTarnelErrorDomain[] = "com.omid.library";

enum OMIDTarnelErrorCode : long {
  OMIDTarnelErrorIncompatibleAPIVersion = 1,
  OMIDTarnelErrorNotActivated = 2,
  OMIDTarnelErrorCustomReferenceIdentifierTooLong = 1500,
  OMIDTarnelErrorEmptyScript = 1501,
  OMIDTarnelErrorImpressionOwnerNone = 1502,
  OMIDTarnelErrorImpressionOwnerNotNative = 1503,
  OMIDTarnelErrorEventFilterRejected = 1505,
  OMIDTarnelErrorMissingContext = 1506,
  OMIDTarnelErrorMissingAdSession = 1507,
  OMIDTarnelErrorInvalidWebView = 1508,
  OMIDTarnelErrorMissingPartner = 1509,
  OMIDTarnelErrorEmptyResources = 1510,
};

// Messages of the codes above; the two with "%@" / "%ld" are format strings.
inline constexpr char OMIDTarnelIncompatibleAPIVersionMessage[] =
    "OM SDK is not compatible with API version %@. OM SDK version is %@.";
inline constexpr char OMIDTarnelNotActivatedMessage[] = "OM SDK has not been activated.";
inline constexpr char OMIDTarnelCustomReferenceIdentifierTooLongMessage[] =
    "The supplied customReferenceIdentifier is %ld characters which exceeds the 256 limit.";
inline constexpr char OMIDTarnelEmptyScriptMessage[] = "Script can not be empty.";
inline constexpr char OMIDTarnelImpressionOwnerNoneMessage[] = "Impression owner can not be none.";
inline constexpr char OMIDTarnelImpressionOwnerNotNativeMessage[] =
    "Impression owner should be NATIVE.";
inline constexpr char OMIDTarnelEventFilterRejectedMessage[] = "Event filter does not accept.";
inline constexpr char OMIDTarnelMissingContextMessage[] = "Context can not be nil.";
inline constexpr char OMIDTarnelMissingAdSessionMessage[] = "Ad session can not be nil.";
inline constexpr char OMIDTarnelInvalidWebViewMessage[] =
    "Web view should be UIWebView or WKWebView or not null.";
inline constexpr char OMIDTarnelMissingPartnerMessage[] = "Partner can not be nil.";
inline constexpr char OMIDTarnelEmptyResourcesMessage[] = "Resources can not be empty.";

class OMIDTarnelError {
 public:
  // When the caller passed an out-value, stores a new error of the SDK's domain with the code and
  // the message as its localized description, and returns true; without one does nothing and
  // returns false.
  static bool setOMIDErrorFor(TNLErrorPtr* error, long code, const std::string& message);
};
