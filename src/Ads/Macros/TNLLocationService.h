#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "Platform/Device/TNLLocationManager.h"
#include "Platform/Device/TNLLocationManagerDelegate.h"

// Obtains one coarse location fix, only when location services are on and the host already
// holds permission, and writes it into the macro table as "%LAT%" and "%LONG%". It never asks
// the user for permission and never keeps updating.
class TNLLocationService : public TNLLocationManagerDelegate {
 public:
  static std::shared_ptr<TNLLocationService> sharedService();

  // Services enabled and permission "always" or "when in use".
  static bool locationServiceAvailable();
  // When available: on the main queue, a new manager (replacing any earlier one) either reports
  // its last known location at once or asks for one fix.
  static void makeLocationRequest();
  static void setMacrosFromLocation(const TNLLocationSource::Location& location);

  // The manager of the most recent request.
  std::shared_ptr<TNLLocationManager> manager() const;
  void setManager(std::shared_ptr<TNLLocationManager> manager);

  void locationManagerDidUpdateLocations(
      const std::shared_ptr<TNLLocationManager>& manager,
      const std::vector<TNLLocationSource::Location>& locations) override;
  void locationManagerDidFailWithError(const std::shared_ptr<TNLLocationManager>& manager,
                                       const TNLErrorPtr& error) override;

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<TNLLocationManager> manager_;
};
