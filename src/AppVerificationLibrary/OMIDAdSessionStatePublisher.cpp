#include "AppVerificationLibrary/OMIDAdSessionStatePublisher.h"

#include <chrono>

#include "AppVerificationLibrary/OMIDBridge.h"

namespace {

double secondsSince1970() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

}  // namespace

OMIDTarnelAdSessionStatePublisher::OMIDTarnelAdSessionStatePublisher(
    std::shared_ptr<const OMIDTarnelBridge> commandPublisher)
    : commandPublisher_(std::move(commandPublisher)), timestamp_(secondsSince1970()) {}

void OMIDTarnelAdSessionStatePublisher::publishNativeViewStateWithCommand(
    const std::string& command, double timestamp) {
  {
    std::lock_guard lock(mutex_);
    if (timestamp <= timestamp_) {
      return;
    }
    adState_ = AdState::populated;
  }
  commandPublisher_->publishCommand(command);
}

void OMIDTarnelAdSessionStatePublisher::publishEmptyNativeViewStateWithCommand(
    const std::string& command, double timestamp) {
  {
    std::lock_guard lock(mutex_);
    if (timestamp <= timestamp_ || adState_ == AdState::empty) {
      return;
    }
    adState_ = AdState::empty;
  }
  commandPublisher_->publishCommand(command);
}

void OMIDTarnelAdSessionStatePublisher::publishAppState(const std::string& state) {
  commandPublisher_->publishAppState(state);
}

void OMIDTarnelAdSessionStatePublisher::publishDeviceVolume(double volume) {
  commandPublisher_->publishDeviceVolume(volume);
}

void OMIDTarnelAdSessionStatePublisher::cleanupAdState() {
  std::lock_guard lock(mutex_);
  timestamp_ = secondsSince1970();
  adState_ = AdState::none;
}

double OMIDTarnelAdSessionStatePublisher::timestamp() const {
  std::lock_guard lock(mutex_);
  return timestamp_;
}

OMIDTarnelAdSessionStatePublisher::AdState OMIDTarnelAdSessionStatePublisher::adState() const {
  std::lock_guard lock(mutex_);
  return adState_;
}
