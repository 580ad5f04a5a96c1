#include "Platform/Device/TNLLocationManager.h"

#include "Platform/Device/TNLCurrentDeviceFacts.h"
#include "Platform/Foundation/TNLMainQueue.h"

std::shared_ptr<TNLLocationManager> TNLLocationManager::create() {
  return std::make_shared<TNLLocationManager>(TNLCurrentDeviceFacts()->locationSource());
}

TNLLocationManager::TNLLocationManager(std::shared_ptr<TNLLocationSource> source)
    : source_(std::move(source)) {}

bool TNLLocationManager::locationServicesEnabled() {
  const auto source = TNLCurrentDeviceFacts()->locationSource();
  return source && source->locationServicesEnabled();
}

TNLLocationSource::Authorization TNLLocationManager::authorizationStatus() {
  const auto source = TNLCurrentDeviceFacts()->locationSource();
  return source ? source->authorizationStatus() : TNLLocationSource::Authorization::NotDetermined;
}

void TNLLocationManager::setDelegate(const std::shared_ptr<TNLLocationManagerDelegate>& delegate) {
  std::lock_guard lock(mutex_);
  delegate_ = delegate;
}

std::shared_ptr<TNLLocationManagerDelegate> TNLLocationManager::delegate() const {
  std::lock_guard lock(mutex_);
  return delegate_.lock();
}

void TNLLocationManager::setDesiredAccuracy(double meters) {
  std::lock_guard lock(mutex_);
  desiredAccuracy_ = meters;
}

double TNLLocationManager::desiredAccuracy() const {
  std::lock_guard lock(mutex_);
  return desiredAccuracy_;
}

std::optional<TNLLocationSource::Location> TNLLocationManager::location() const {
  return source_ ? source_->lastKnownLocation() : std::nullopt;
}

void TNLLocationManager::requestLocation() {
  const std::weak_ptr<TNLLocationManager> weakSelf = weak_from_this();
  const auto fail = [weakSelf](const std::string& description) {
    TNLMainQueue::async([weakSelf, description] {
      if (const auto self = weakSelf.lock()) {
        if (const auto delegate = self->delegate()) {
          delegate->locationManagerDidFailWithError(
              self, TNLError::make(kErrorDomain, kErrorLocationUnknown,
                                   {{kTNLLocalizedDescriptionKey, description}}));
        }
      }
    });
  };
  if (!source_) {
    fail("No location source");
    return;
  }
  source_->requestLocation(
      [weakSelf](const std::vector<TNLLocationSource::Location>& locations) {
        TNLMainQueue::async([weakSelf, locations] {
          if (const auto self = weakSelf.lock()) {
            if (const auto delegate = self->delegate()) {
              delegate->locationManagerDidUpdateLocations(self, locations);
            }
          }
        });
      },
      fail);
}

std::string TNLLocationManager::description() const {
  return TNLFormat("<TNLLocationManager: %p>", TNLPointer(this));
}
