#pragma once

#include <memory>
#include <vector>

#include "Platform/Foundation/TNLError.h"
#include "TarnelAd/TNLLocationSource.h"

class TNLLocationManager;

// Receives a location manager's answers, on the main thread.
class TNLLocationManagerDelegate {
 public:
  virtual ~TNLLocationManagerDelegate() = default;
  virtual void locationManagerDidUpdateLocations(
      const std::shared_ptr<TNLLocationManager>& /*manager*/,
      const std::vector<TNLLocationSource::Location>& /*locations*/) {}
  virtual void locationManagerDidFailWithError(
      const std::shared_ptr<TNLLocationManager>& /*manager*/, const TNLErrorPtr& /*error*/) {}
};
