#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Manifest/ManifestObjects/TNLMonitoring.h"

// Reports lifecycle events to the monitoring endpoint of the first manifest the process obtains.
// An event that cannot be sent when it happens (no manifest yet, no monitoring URL) is lost.
class TNLTrackerHandler : public std::enable_shared_from_this<TNLTrackerHandler> {
 public:
  // Made on first use, which asks for the manifest and takes its monitoring section: at once when
  // a valid manifest is held, else when the fetch this starts completes. Later manifests do not
  // change it.
  static std::shared_ptr<TNLTrackerHandler> sharedHandler();

  // Fills "%EVENT_NAME%" (and any other macro) in the monitoring URL and sends it with the
  // monitoring method. Never blocks.
  static void sendTrackerForEvent(const std::string& event);

  std::shared_ptr<TNLMonitoring> monitoring() const;
  void setMonitoring(std::shared_ptr<TNLMonitoring> monitoring);

 private:
  void init();

  mutable std::mutex mutex_;
  std::shared_ptr<TNLMonitoring> monitoring_;
};
