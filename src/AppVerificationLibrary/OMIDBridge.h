#pragma once

#include <memory>
#include <optional>
#include <string>

#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDCommand.h"
#include "AppVerificationLibrary/OMIDJSExecutor.h"
#include "Platform/Foundation/TNLJSON.h"

// A session's command publisher: turns events into commands and hands them to the executor chosen
// for the session's context. Executors that must be used on the main thread get every injection
// queued there, in publishing order.
class OMIDTarnelBridge {
 public:
  explicit OMIDTarnelBridge(std::shared_ptr<OMIDTarnelJSExecutor> jsExecutor)
      : jsExecutor_(std::move(jsExecutor)) {}

  // Null when no executor could be made for the context; publishing then does nothing.
  const std::shared_ptr<OMIDTarnelJSExecutor>& jsExecutor() const { return jsExecutor_; }

  void publishCommand(const std::string& command) const;

  void publishInitWithConfiguration(const OMIDTarnelAdSessionConfiguration& configuration) const;
  void publishStartSessionWithIdentifier(
      const std::string& identifier, const TNLJson& context,
      const std::optional<TNLJson>& verificationParameters) const;
  void publishFinishSession() const;
  void publishImpressionEvent() const;
  void publishVideoEventWithName(const std::string& name,
                                 const std::optional<TNLJson>& parameters) const;
  void publishErrorWithType(OMIDTarnelErrorType type, const std::string& message) const;
  void publishAppState(const std::string& state) const;
  void publishDeviceVolume(double volume) const;

 private:
  const std::shared_ptr<OMIDTarnelJSExecutor> jsExecutor_;
};
