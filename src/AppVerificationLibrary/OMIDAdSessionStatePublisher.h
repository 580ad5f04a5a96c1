#pragma once

#include <memory>
#include <mutex>
#include <string>

class OMIDTarnelBridge;

// What one session's measurement scripts are told about their ad view, the application and the
// volume. View states carry the time of the walk that produced them: a state older than the
// session's last change of ad view is stale and dropped, and a run of empty states is sent once.
class OMIDTarnelAdSessionStatePublisher {
 public:
  // What was last published about the ad view.
  enum class AdState { none = 0, populated = 1, empty = 2 };

  explicit OMIDTarnelAdSessionStatePublisher(
      std::shared_ptr<const OMIDTarnelBridge> commandPublisher);

  // Publishes the hierarchy command when `timestamp` (seconds since 1970) is later than the
  // publisher's.
  void publishNativeViewStateWithCommand(const std::string& command, double timestamp);
  // The same for the empty state, unless the last one published was empty too.
  void publishEmptyNativeViewStateWithCommand(const std::string& command, double timestamp);
  // setState('<state>')
  void publishAppState(const std::string& state);
  // setDeviceVolume(<volume with two decimals>)
  void publishDeviceVolume(double volume);

  // Starts afresh for a new ad view: the time stamp becomes now and nothing counts as published.
  void cleanupAdState();

  double timestamp() const;
  AdState adState() const;

 private:
  const std::shared_ptr<const OMIDTarnelBridge> commandPublisher_;
  mutable std::mutex mutex_;
  double timestamp_;
  AdState adState_ = AdState::none;
};
