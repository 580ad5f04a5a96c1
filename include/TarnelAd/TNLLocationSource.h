#pragma once

/// @file
/// @brief TNLLocationSource: where the library's location fix comes from.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TarnelAd/TNLExport.h"

/// Where the library's one coarse location fix comes from. The library never asks the user for
/// permission: it asks for a fix only when services are enabled and the host already holds
/// permission. The Linux default reports location services as disabled; a host with a location
/// backend (GeoClue, a GPS daemon) supplies its own source through TNLDeviceFacts. The library
/// calls a source from any thread, so it must be thread-safe.
class TNL_EXPORT TNLLocationSource {
 public:
  /// A position in degrees.
  struct Location {
    double latitude = 0;   ///< North positive.
    double longitude = 0;  ///< East positive.
  };

  /// The platform's authorisation values.
  enum class Authorization : int {
    NotDetermined = 0,
    Restricted = 1,
    Denied = 2,
    AuthorizedAlways = 3,
    AuthorizedWhenInUse = 4,
  };

  /// Receives the fixes, most recent last.
  using Success = std::function<void(const std::vector<Location>& locations)>;
  /// Receives a description of what went wrong.
  using Failure = std::function<void(const std::string& errorDescription)>;

  virtual ~TNLLocationSource() = default;

  /// Whether the machine offers location services at all.
  virtual bool locationServicesEnabled() const = 0;
  /// What the user allowed the host.
  virtual Authorization authorizationStatus() const = 0;
  /// The most recent fix the source already has, if any.
  virtual std::optional<Location> lastKnownLocation() const = 0;
  /// Asks for one fix and returns. Exactly one of the callbacks is called, once, later or at
  /// once, on any thread; the library moves the answer to its main thread itself. The source
  /// owns the callbacks until it has called one.
  virtual void requestLocation(Success success, Failure failure) = 0;
};
