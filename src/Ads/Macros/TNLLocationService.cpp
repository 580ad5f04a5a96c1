#include "Ads/Macros/TNLLocationService.h"

#include "Ads/Macros/TNLMacros.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"

namespace {

void logRequestFailure(const std::exception& error) {
  TNLLog::sharedLogger()->log("Failed to make location request due to exception: %@", error);
}

}  // namespace

std::shared_ptr<TNLLocationService> TNLLocationService::sharedService() {
  static const TNLNoDestructor<std::shared_ptr<TNLLocationService>> instance(
      std::make_shared<TNLLocationService>());
  return *instance;
}

bool TNLLocationService::locationServiceAvailable() {
  using Authorization = TNLLocationSource::Authorization;
  const Authorization status = TNLLocationManager::authorizationStatus();
  return TNLLocationManager::locationServicesEnabled() &&
         (status == Authorization::AuthorizedAlways ||
          status == Authorization::AuthorizedWhenInUse);
}

void TNLLocationService::makeLocationRequest() {
  try {
    if (!locationServiceAvailable()) {
      return;
    }
    TNLMainQueue::async([] {
      try {
        const auto service = sharedService();
        const auto manager = TNLLocationManager::create();
        manager->setDelegate(service);
        manager->setDesiredAccuracy(TNLLocationManager::kAccuracyHundredMeters);
        service->setManager(manager);
        if (const auto known = manager->location()) {
          setMacrosFromLocation(*known);
        } else {
          manager->requestLocation();
        }
      } catch (const std::exception& error) {
        logRequestFailure(error);
      }
    });
  } catch (const std::exception& error) {
    logRequestFailure(error);
  }
}

void TNLLocationService::setMacrosFromLocation(const TNLLocationSource::Location& location) {
  try {
    const std::string latitude = TNLFormat("%f", location.latitude);
    const std::string longitude = TNLFormat("%f", location.longitude);
    TNLMacros::setValueInMacroDictionary(latitude, TNL_LATITUDE_MACRO);
    TNLMacros::setValueInMacroDictionary(longitude, TNL_LONGITUDE_MACRO);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to save location due to exception: %@", error);
  }
}

std::shared_ptr<TNLLocationManager> TNLLocationService::manager() const {
  std::lock_guard lock(mutex_);
  return manager_;
}

void TNLLocationService::setManager(std::shared_ptr<TNLLocationManager> manager) {
  std::lock_guard lock(mutex_);
  manager_ = std::move(manager);
}

void TNLLocationService::locationManagerDidUpdateLocations(
    const std::shared_ptr<TNLLocationManager>& manager,
    const std::vector<TNLLocationSource::Location>& locations) {
  // Answers of a manager that a later request replaced are stale.
  if (manager != this->manager() || locations.empty()) {
    return;
  }
  setMacrosFromLocation(locations.back());
}

void TNLLocationService::locationManagerDidFailWithError(
    const std::shared_ptr<TNLLocationManager>& manager, const TNLErrorPtr& error) {
  TNLLog::sharedLogger()->log("Location manager: %@ failed due to error: %@", manager, error);
}
