#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "Platform/Device/TNLLocationManagerDelegate.h"
#include "Platform/Foundation/TNLFormat.h"
#include "TarnelAd/TNLLocationSource.h"

// A location manager over the device facts' location source: one per request, with a weak
// delegate that hears the answer on the main thread, as the platform's manager behaves.
class TNLLocationManager : public std::enable_shared_from_this<TNLLocationManager>,
                           public TNLDescribable {
 public:
  // The error domain and code of a failed request.
  static constexpr char kErrorDomain[] = "kCLErrorDomain";
  static constexpr long kErrorLocationUnknown = 0;
  // The hundred-metres accuracy class.
  static constexpr double kAccuracyHundredMeters = 100.0;

  // A manager over the location source of the device facts in force.
  static std::shared_ptr<TNLLocationManager> create();
  explicit TNLLocationManager(std::shared_ptr<TNLLocationSource> source);

  static bool locationServicesEnabled();
  static TNLLocationSource::Authorization authorizationStatus();

  void setDelegate(const std::shared_ptr<TNLLocationManagerDelegate>& delegate);
  void setDesiredAccuracy(double meters);
  double desiredAccuracy() const;

  // The last known location.
  std::optional<TNLLocationSource::Location> location() const;
  // Asks for one fix; the delegate hears it (or the failure) on the main thread.
  void requestLocation();

  std::string description() const override;

 private:
  std::shared_ptr<TNLLocationManagerDelegate> delegate() const;

  const std::shared_ptr<TNLLocationSource> source_;
  mutable std::mutex mutex_;
  std::weak_ptr<TNLLocationManagerDelegate> delegate_;
  double desiredAccuracy_ = 0;
};
