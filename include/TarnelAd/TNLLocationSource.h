#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TarnelAd/TNLExport.h"

// Where the library's one coarse location fix comes from. The library never asks the user for
// permission: it asks for a fix only when services are enabled and the host already holds
// permission. The Linux default reports location services as disabled; a host with a location
// backend (GeoClue, a GPS daemon) supplies its own source through TNLDeviceFacts.
class TNL_EXPORT TNLLocationSource {
 public:
  struct Location {
    double latitude = 0;
    double longitude = 0;
  };

  // The platform's authorisation values.
  enum class Authorization : int {
    NotDetermined = 0,
    Restricted = 1,
    Denied = 2,
    AuthorizedAlways = 3,
    AuthorizedWhenInUse = 4,
  };

  using Success = std::function<void(const std::vector<Location>& locations)>;
  using Failure = std::function<void(const std::string& errorDescription)>;

  virtual ~TNLLocationSource() = default;

  virtual bool locationServicesEnabled() const = 0;
  virtual Authorization authorizationStatus() const = 0;
  // The most recent fix the source already has, if any.
  virtual std::optional<Location> lastKnownLocation() const = 0;
  // Asks for one fix. Exactly one of the callbacks is called once, on any thread; the library
  // moves the answer to its main thread itself.
  virtual void requestLocation(Success success, Failure failure) = 0;
};
