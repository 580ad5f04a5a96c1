#include "AppVerificationLibrary/OMIDBridge.h"

#include "Platform/Foundation/TNLMainQueue.h"

void OMIDTarnelBridge::publishCommand(const std::string& command) const {
  if (jsExecutor_ == nullptr) {
    return;
  }
  if (jsExecutor_->supportBackgroundThread()) {
    jsExecutor_->injectJavaScriptFromString(command);
    return;
  }
  TNLMainQueue::async(
      [executor = jsExecutor_, command] { executor->injectJavaScriptFromString(command); });
}

void OMIDTarnelBridge::publishInitWithConfiguration(
    const OMIDTarnelAdSessionConfiguration& configuration) const {
  publishCommand(OMIDTarnelCommand::initCommand(configuration));
}

void OMIDTarnelBridge::publishStartSessionWithIdentifier(
    const std::string& identifier, const TNLJson& context,
    const std::optional<TNLJson>& verificationParameters) const {
  publishCommand(
      OMIDTarnelCommand::startSessionCommand(identifier, context, verificationParameters));
}

void OMIDTarnelBridge::publishFinishSession() const {
  publishCommand(OMIDTarnelCommand::finishSessionCommand());
}

void OMIDTarnelBridge::publishImpressionEvent() const {
  publishCommand(OMIDTarnelCommand::impressionEventCommand());
}

void OMIDTarnelBridge::publishVideoEventWithName(const std::string& name,
                                                 const std::optional<TNLJson>& parameters) const {
  publishCommand(OMIDTarnelCommand::videoEventCommand(name, parameters));
}

void OMIDTarnelBridge::publishErrorWithType(OMIDTarnelErrorType type,
                                            const std::string& message) const {
  publishCommand(OMIDTarnelCommand::errorCommand(type, message));
}

void OMIDTarnelBridge::publishAppState(const std::string& state) const {
  publishCommand(OMIDTarnelCommand::appStateCommand(state));
}

void OMIDTarnelBridge::publishDeviceVolume(double volume) const {
  publishCommand(OMIDTarnelCommand::deviceVolumeCommand(volume));
}
