#include "Ads/Macros/TNLDeviceInfo.h"

#include "Macros/TNLReachability.h"
#include "Platform/Device/TNLCurrentDeviceFacts.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLIdentifiers.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "TNLLog.h"

namespace {

constexpr int kIPv4Family = 2;
constexpr float kPointsPerInchAtScaleOne = 163.0f;

}  // namespace

std::shared_ptr<TNLDeviceInfo> TNLDeviceInfo::sharedInstance() {
  static const TNLNoDestructor<std::shared_ptr<TNLDeviceInfo>> instance(
      std::make_shared<TNLDeviceInfo>(TNLCurrentDeviceFacts()));
  return *instance;
}

TNLDeviceInfo::TNLDeviceInfo(std::shared_ptr<TNLDeviceFacts> facts) : facts_(std::move(facts)) {
  restricted_.store(true);
  try {
    setAppSessionId(createUUID());
    setCarrier(getCarrierName());
    setIpAddress(getIPAddress());
    setModel(getDeviceModel());
    setAppName(getAppName());
    setWidth(getScreenWidth());
    setHeight(getScreenHeight());
    setVersion(getVersion());
    setConstructedUserAgent(constructUserAgent());
    setAdId(getAdvertiserId());
    setAdTrackingIsBlocked(getAdTracking());
    setLanguage(getDeviceLanguage());
    setDpi(getScreenDPI());
    setName(getName());
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to initialize device info due to exception: %@", error);
  }
}

std::optional<std::string> TNLDeviceInfo::connectionType() const {
  const auto reachability = TNLReachability::reachabilityForInternetConnection();
  // Without a reachability object there are no flags to read: not reachable.
  const long status =
      reachability ? reachability->currentReachabilityStatus() : TNLReachability::NotReachable;
  switch (status) {
    case TNLReachability::NotReachable:
      return "No Connection";
    case TNLReachability::ReachableViaWiFi:
      return "Wifi";
    case TNLReachability::ReachableViaWWAN:
      return "Cellular";
    default:
      return std::nullopt;
  }
}

std::string TNLDeviceInfo::createUUID() const {
  return TNLIdentifiers::md5Hex(TNLIdentifiers::createUUIDString());
}

std::string TNLDeviceInfo::getCarrierName() const {
  return facts_->carrierName().value_or("no-carrier");
}

std::string TNLDeviceInfo::getIPAddress() const {
  std::string address = "error";
  const auto addresses = facts_->interfaceAddresses();
  if (!addresses) {
    return address;
  }
  // The primary interface stands where the platform names its Wi-Fi interface.
  const auto primary = facts_->primaryInterfaceName();
  for (const auto& entry : *addresses) {
    if (entry.family == kIPv4Family && primary && entry.name == *primary) {
      address = entry.address;
    }
  }
  return address;
}

std::string TNLDeviceInfo::getDeviceModel() const {
  return facts_->hardwareMachine().value_or("");
}

std::string TNLDeviceInfo::getAppName() const {
  const auto bundleName = facts_->bundleName();
  const auto displayName = facts_->bundleDisplayName();
  if (displayName) {
    return *displayName;
  }
  return bundleName.value_or("");
}

std::string TNLDeviceInfo::getScreenWidth() const {
  const auto screen = facts_->mainScreen();
  return TNLFormat("%d", screen ? static_cast<int>(static_cast<float>(screen->width)) : 0);
}

std::string TNLDeviceInfo::getScreenHeight() const {
  const auto screen = facts_->mainScreen();
  return TNLFormat("%d", screen ? static_cast<int>(static_cast<float>(screen->height)) : 0);
}

std::string TNLDeviceInfo::getVersion() const {
  return facts_->systemVersion();
}

std::string TNLDeviceInfo::constructUserAgent() const {
  // The name, model and version captured by the earlier steps.
  return TNLFormat("%@/%@ %@ %@/%@ %@ %@", appName(), facts_->bundleShortVersion(), model(),
                   facts_->systemName(), version(),
                   TNLFormat("CFNetwork/%@", facts_->httpStackVersion()),
                   TNLFormat("Darwin/%@", facts_->kernelRelease()));
}

std::string TNLDeviceInfo::getAdvertiserId() const {
  return facts_->advertisingIdentifier();
}

bool TNLDeviceInfo::getAdTracking() const {
  return !facts_->isAdvertisingTrackingEnabled();
}

std::string TNLDeviceInfo::getDeviceLanguage() const {
  // An empty list fails the capture, as reading past the end of the platform's list does.
  return facts_->preferredLanguages().at(0);
}

std::string TNLDeviceInfo::getScreenDPI() const {
  const auto screen = facts_->mainScreen();
  const float scale = screen ? static_cast<float>(screen->scale) : 0.0f;
  return TNLFormat("%f", static_cast<double>(scale * kPointsPerInchAtScaleOne));
}

std::string TNLDeviceInfo::getName() const {
  return facts_->deviceName();
}

// ---- properties ----

std::string TNLDeviceInfo::appSessionId() const {
  return read(&Values::appSessionId);
}
void TNLDeviceInfo::setAppSessionId(std::string value) {
  write(&Values::appSessionId, std::move(value));
}
std::string TNLDeviceInfo::carrier() const {
  return read(&Values::carrier);
}
void TNLDeviceInfo::setCarrier(std::string value) {
  write(&Values::carrier, std::move(value));
}
std::string TNLDeviceInfo::ipAddress() const {
  return read(&Values::ipAddress);
}
void TNLDeviceInfo::setIpAddress(std::string value) {
  write(&Values::ipAddress, std::move(value));
}
std::string TNLDeviceInfo::model() const {
  return read(&Values::model);
}
void TNLDeviceInfo::setModel(std::string value) {
  write(&Values::model, std::move(value));
}
std::string TNLDeviceInfo::appName() const {
  return read(&Values::appName);
}
void TNLDeviceInfo::setAppName(std::string value) {
  write(&Values::appName, std::move(value));
}
std::string TNLDeviceInfo::width() const {
  return read(&Values::width);
}
void TNLDeviceInfo::setWidth(std::string value) {
  write(&Values::width, std::move(value));
}
std::string TNLDeviceInfo::height() const {
  return read(&Values::height);
}
void TNLDeviceInfo::setHeight(std::string value) {
  write(&Values::height, std::move(value));
}
std::string TNLDeviceInfo::version() const {
  return read(&Values::version);
}
void TNLDeviceInfo::setVersion(std::string value) {
  write(&Values::version, std::move(value));
}
std::string TNLDeviceInfo::constructedUserAgent() const {
  return read(&Values::constructedUserAgent);
}
void TNLDeviceInfo::setConstructedUserAgent(std::string value) {
  write(&Values::constructedUserAgent, std::move(value));
}
std::string TNLDeviceInfo::adId() const {
  return read(&Values::adId);
}
void TNLDeviceInfo::setAdId(std::string value) {
  write(&Values::adId, std::move(value));
}
bool TNLDeviceInfo::adTrackingIsBlocked() const {
  return read(&Values::adTrackingIsBlocked);
}
void TNLDeviceInfo::setAdTrackingIsBlocked(bool value) {
  write(&Values::adTrackingIsBlocked, value);
}
std::string TNLDeviceInfo::language() const {
  return read(&Values::language);
}
void TNLDeviceInfo::setLanguage(std::string value) {
  write(&Values::language, std::move(value));
}
std::string TNLDeviceInfo::dpi() const {
  return read(&Values::dpi);
}
void TNLDeviceInfo::setDpi(std::string value) {
  write(&Values::dpi, std::move(value));
}
std::string TNLDeviceInfo::name() const {
  return read(&Values::name);
}
void TNLDeviceInfo::setName(std::string value) {
  write(&Values::name, std::move(value));
}
