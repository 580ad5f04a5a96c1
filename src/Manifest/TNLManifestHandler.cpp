#include "Manifest/TNLManifestHandler.h"

#include "Manifest/TNLManifestClient.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "Trackers/TNLTrackerHandler.h"

namespace {

TNLManifestHandler::Clock::time_point expiryAfter(uint64_t ttl) {
  using Clock = TNLManifestHandler::Clock;
  const auto now = Clock::now();
  const auto room =
      std::chrono::duration_cast<std::chrono::seconds>(Clock::time_point::max() - now).count();
  // A ttl beyond what the clock can hold never expires.
  if (ttl >= static_cast<uint64_t>(room)) {
    return Clock::time_point::max();
  }
  return now + std::chrono::seconds(static_cast<std::chrono::seconds::rep>(ttl));
}

}  // namespace

std::shared_ptr<TNLManifestHandler> TNLManifestHandler::sharedHandler() {
  static const TNLNoDestructor<std::shared_ptr<TNLManifestHandler>> instance(
      std::make_shared<TNLManifestHandler>());
  return *instance;
}

TNLManifestHandler::TNLManifestHandler() : expiryDate_(Clock::now()) {}

void TNLManifestHandler::retrieveManifestWithSuccess(Success success, Failure failure) {
  try {
    const auto handler = sharedHandler();
    if (const auto held = handler->manifest(); held && manfiestIsValid()) {
      if (success) {
        success(held);
      }
      return;
    }
    const auto client = std::make_shared<TNLManifestClient>();
    client->getManifestWithSuccess(
        [handler, success = std::move(success)](const std::shared_ptr<TNLManifest>& manifest) {
          handler->setManifest(manifest);
          handler->setExpiryDate(expiryAfter(manifest ? manifest->ttl() : 0));
          TNLTrackerHandler::sendTrackerForEvent(TNL_MANIFESTLOADED_TRACKER);
          if (success) {
            success(manifest);
          }
        },
        [failure = std::move(failure)](const TNLErrorPtr& error) {
          if (failure) {
            failure(error);
          }
        });
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to retrieve manifest due to exception: %@", error);
  }
}

bool TNLManifestHandler::manfiestIsValid() {
  try {
    const auto expiry = sharedHandler()->expiryDate();
    return expiry && Clock::now() < *expiry;
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Manifest validation failed due to exception: %@", error);
    return false;
  }
}

std::shared_ptr<TNLManifest> TNLManifestHandler::manifest() const {
  std::lock_guard lock(mutex_);
  return manifest_;
}

void TNLManifestHandler::setManifest(std::shared_ptr<TNLManifest> manifest) {
  std::lock_guard lock(mutex_);
  manifest_ = std::move(manifest);
}

std::optional<TNLManifestHandler::Clock::time_point> TNLManifestHandler::expiryDate() const {
  std::lock_guard lock(mutex_);
  return expiryDate_;
}

void TNLManifestHandler::setExpiryDate(std::optional<Clock::time_point> expiryDate) {
  std::lock_guard lock(mutex_);
  expiryDate_ = expiryDate;
}
