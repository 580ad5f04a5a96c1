#pragma once

#include <memory>

#include "Platform/Foundation/TNLError.h"

// Who reports a kind of event: the measurement scripts, the native integration, or nobody. Other
// values pass through as given.
using OMIDTarnelOwner = unsigned;
inline constexpr OMIDTarnelOwner OMIDTarnelJavaScriptOwner = 1;
inline constexpr OMIDTarnelOwner OMIDTarnelNativeOwner = 2;
inline constexpr OMIDTarnelOwner OMIDTarnelNoneOwner = 3;

// Per-session configuration: the owners of impression and video events, and whether verification
// scripts run isolated.
class OMIDTarnelAdSessionConfiguration {
 public:
  // Fails with 1502 when the impression owner is none or 0. A video events owner of 0 is stored as
  // none.
  static std::shared_ptr<OMIDTarnelAdSessionConfiguration> create(OMIDTarnelOwner impressionOwner,
                                                                  OMIDTarnelOwner videoEventsOwner,
                                                                  bool isolateVerificationScripts,
                                                                  TNLErrorPtr* error);
  // The same with isolated verification scripts.
  static std::shared_ptr<OMIDTarnelAdSessionConfiguration> create(OMIDTarnelOwner impressionOwner,
                                                                  OMIDTarnelOwner videoEventsOwner,
                                                                  TNLErrorPtr* error);

  OMIDTarnelOwner impressionOwner() const { return impressionOwner_; }
  OMIDTarnelOwner videoEventsOwner() const { return videoEventsOwner_; }
  bool isolateVerificationScripts() const { return isolateVerificationScripts_; }

 private:
  OMIDTarnelAdSessionConfiguration(OMIDTarnelOwner impressionOwner,
                                   OMIDTarnelOwner videoEventsOwner,
                                   bool isolateVerificationScripts)
      : impressionOwner_(impressionOwner),
        videoEventsOwner_(videoEventsOwner),
        isolateVerificationScripts_(isolateVerificationScripts) {}

  const OMIDTarnelOwner impressionOwner_;
  const OMIDTarnelOwner videoEventsOwner_;
  const bool isolateVerificationScripts_;
};
