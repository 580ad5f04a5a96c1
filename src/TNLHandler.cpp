#include "TarnelAd/TNLHandler.h"

#include <chrono>

#include "Ads/Macros/TNLMacros.h"
#include "Manifest/TNLManifestFactory.h"
#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "TarnelAd/TNLConstants.h"

std::shared_ptr<TNLHandler> TNLHandler::sharedHandler() {
  static const TNLNoDestructor<std::shared_ptr<TNLHandler>> instance(
      std::make_shared<TNLHandler>());
  return *instance;
}

void TNLHandler::initializeWithTarnelContext(std::shared_ptr<TNLTarnelContext> context) {
  sharedHandler()->setContext(std::move(context));
}

void TNLHandler::onDidFetchConfiguration() {
  const auto context = sharedHandler()->context();
  const std::optional<std::string> applicationID =
      context ? std::optional(context->applicationID()) : std::nullopt;
  // A named-attribute assignment on the table object, not a table entry: it raises for this key
  // and the exception goes to the caller, so what follows is not reached.
  TNLMacros::sharedMacros()->setValue(applicationID, TNL_APPID_MACRO);

  const auto configuration = context ? context->adConfiguration() : nullptr;
  const auto manifest = TNLManifestFactory::createManifestFromDictionary(
      configuration ? &configuration->jsonData() : nullptr);
  const auto holder = TNLManifestHandler::sharedHandler();
  holder->setManifest(manifest);
  holder->setExpiryDate(TNLManifestHandler::Clock::now() +
                        std::chrono::seconds(manifest ? manifest->ttl() : 0));
}

std::shared_ptr<TNLTarnelContext> TNLHandler::context() const {
  std::lock_guard lock(mutex_);
  return context_;
}

void TNLHandler::setContext(std::shared_ptr<TNLTarnelContext> context) {
  std::lock_guard lock(mutex_);
  context_ = std::move(context);
}
