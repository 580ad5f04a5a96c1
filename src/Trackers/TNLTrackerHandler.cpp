#include "Trackers/TNLTrackerHandler.h"

#include "Ads/Macros/TNLUrlParser.h"
#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "Trackers/TNLTrackerClient.h"

std::shared_ptr<TNLTrackerHandler> TNLTrackerHandler::sharedHandler() {
  static const TNLNoDestructor<std::shared_ptr<TNLTrackerHandler>> instance([] {
    auto handler = std::make_shared<TNLTrackerHandler>();
    handler->init();
    return handler;
  }());
  return *instance;
}

void TNLTrackerHandler::init() {
  try {
    // The handler is still being made: the answer goes to it directly, not through sharedHandler.
    const auto self = shared_from_this();
    TNLManifestHandler::retrieveManifestWithSuccess(
        [self](const std::shared_ptr<TNLManifest>& manifest) {
          self->setMonitoring(manifest ? manifest->monitoring() : nullptr);
        },
        [](const TNLErrorPtr&) {});
  } catch (const std::exception&) {
    TNLLog::sharedLogger()->log("Trackers not set up");
  }
}

void TNLTrackerHandler::sendTrackerForEvent(const std::string& event) {
  try {
    const TNLUrlParser parser;
    const auto monitoring = sharedHandler()->monitoring();
    if (!monitoring) {
      return;  // not set up yet: the event is dropped
    }
    if (!monitoring->url()) {
      throw TNLException(TNLInvalidArgumentException, "The monitoring section has no URL");
    }
    const TNLMacroDict individualMacros{{TNL_EVENTNAME_MACRO, event}};
    const std::string url = parser.fillMacrosForUrl(*monitoring->url(), individualMacros);
    // A section without a method sends the platform's default one.
    TNLTrackerClient().sendTrackerEventToURL(url, monitoring->method().value_or(GET_METHOD));
  } catch (const std::exception&) {
    TNLLog::sharedLogger()->log("Could not send tracker for event: %@", event);
  }
}

std::shared_ptr<TNLMonitoring> TNLTrackerHandler::monitoring() const {
  std::lock_guard lock(mutex_);
  return monitoring_;
}

void TNLTrackerHandler::setMonitoring(std::shared_ptr<TNLMonitoring> monitoring) {
  std::lock_guard lock(mutex_);
  monitoring_ = std::move(monitoring);
}
