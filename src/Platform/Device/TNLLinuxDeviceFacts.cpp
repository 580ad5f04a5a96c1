#include "Platform/Device/TNLLinuxDeviceFacts.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <mutex>

#include <curl/curl.h>

#include "Platform/Device/TNLLinuxNetwork.h"
#include "Platform/Device/TNLLinuxSystem.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLStrings.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLScreen.h"

namespace {

constexpr char kZeroIdentifier[] = "00000000-0000-0000-0000-000000000000";

// Linux has no location service of its own: services are off, so nothing is ever requested.
class UnavailableLocationSource : public TNLLocationSource {
 public:
  bool locationServicesEnabled() const override { return false; }
  Authorization authorizationStatus() const override { return Authorization::NotDetermined; }
  std::optional<Location> lastKnownLocation() const override { return std::nullopt; }
  void requestLocation(Success, Failure failure) override {
    if (failure) {
      failure("Location services are not available on this device");
    }
  }
};

struct Providers {
  std::mutex mutex;
  TNLLinuxDeviceFacts::ScreenProvider screen;
  TNLLinuxDeviceFacts::OrientationProvider orientation;
};

Providers& providers() {
  static TNLNoDestructor<Providers> instance;
  return *instance;
}

struct utsname systemIdentity() {
  struct utsname identity {};
  if (::uname(&identity) != 0) {
    return {};
  }
  return identity;
}

}  // namespace

TNLLinuxDeviceFacts::TNLLinuxDeviceFacts(TNLHostApplicationInfo info)
    : info_(std::move(info)),
      locationSource_(info_.locationSource ? info_.locationSource
                                           : std::make_shared<UnavailableLocationSource>()) {}

void TNLLinuxDeviceFacts::setScreenProvider(ScreenProvider provider) {
  std::lock_guard lock(providers().mutex);
  providers().screen = std::move(provider);
}

void TNLLinuxDeviceFacts::setOrientationProvider(OrientationProvider provider) {
  std::lock_guard lock(providers().mutex);
  providers().orientation = std::move(provider);
}

std::string TNLLinuxDeviceFacts::bundleIdentifier() const {
  return info_.bundleIdentifier.value_or("");
}

std::optional<std::string> TNLLinuxDeviceFacts::bundleDisplayName() const {
  return info_.displayName;
}

std::optional<std::string> TNLLinuxDeviceFacts::bundleName() const {
  return info_.bundleName;
}

std::string TNLLinuxDeviceFacts::bundleShortVersion() const {
  return info_.shortVersion.value_or("");
}

std::string TNLLinuxDeviceFacts::deviceName() const {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) {
    return "";
  }
  return name.data();
}

std::string TNLLinuxDeviceFacts::systemName() const {
  const auto release = TNLLinuxSystem::osRelease();
  const auto name = release.find("NAME");
  return name != release.end() && !name->second.empty() ? name->second : "Linux";
}

std::string TNLLinuxDeviceFacts::systemVersion() const {
  const auto release = TNLLinuxSystem::osRelease();
  const auto version = release.find("VERSION_ID");
  if (version != release.end() && !version->second.empty()) {
    return version->second;
  }
  // Rolling distributions carry no version; the kernel's is the next best thing.
  return kernelRelease();
}

std::optional<std::string> TNLLinuxDeviceFacts::hardwareMachine() const {
  const std::string machine = systemIdentity().machine;
  if (!TNLStrings::isValidUTF8(machine)) {
    return std::nullopt;
  }
  return machine;
}

std::string TNLLinuxDeviceFacts::kernelRelease() const {
  return systemIdentity().release;
}

std::string TNLLinuxDeviceFacts::httpStackVersion() const {
  const curl_version_info_data* version = curl_version_info(CURLVERSION_NOW);
  return version != nullptr && version->version != nullptr ? version->version : "";
}

std::vector<std::string> TNLLinuxDeviceFacts::preferredLanguages() const {
  return TNLLinuxSystem::preferredLanguages();
}

std::string TNLLinuxDeviceFacts::advertisingIdentifier() const {
  return info_.advertisingIdentifier.value_or(kZeroIdentifier);
}

bool TNLLinuxDeviceFacts::isAdvertisingTrackingEnabled() const {
  return info_.advertisingTrackingEnabled;
}

std::optional<std::string> TNLLinuxDeviceFacts::carrierName() const {
  return info_.carrierName;
}

std::optional<std::vector<TNLDeviceFacts::InterfaceAddress>>
TNLLinuxDeviceFacts::interfaceAddresses() const {
  return TNLLinuxNetwork::currentSnapshot()->addresses;
}

std::optional<std::string> TNLLinuxDeviceFacts::primaryInterfaceName() const {
  const auto network = TNLLinuxNetwork::currentSnapshot();
  return network->route ? std::optional<std::string>(network->route->interface) : std::nullopt;
}

std::optional<uint32_t> TNLLinuxDeviceFacts::reachabilityFlags() const {
  const auto network = TNLLinuxNetwork::currentSnapshot();
  return TNLLinuxNetwork::reachabilityFlags(network->route, network->routeInterface);
}

std::optional<TNLDeviceFacts::ScreenMetrics> TNLLinuxDeviceFacts::mainScreen() const {
  ScreenProvider provider;
  {
    std::lock_guard lock(providers().mutex);
    provider = providers().screen;
  }
  if (provider) {
    return provider();
  }
  // The toolkit's main screen: the installed backend's display, or the headless 375 x 667 at 2.
  const auto screen = TNLScreen::mainScreen();
  const TNLRect bounds = screen->bounds();
  return ScreenMetrics{bounds.size.width, bounds.size.height, screen->scale()};
}

TNLDeviceFacts::Orientation TNLLinuxDeviceFacts::deviceOrientation() const {
  OrientationProvider provider;
  {
    std::lock_guard lock(providers().mutex);
    provider = providers().orientation;
  }
  if (provider) {
    return provider();
  }
  // Both enumerations carry the platform's numbers; the application's is safe from any thread.
  return static_cast<Orientation>(
      static_cast<int>(TNLApplication::sharedApplication()->deviceOrientation()));
}

std::shared_ptr<TNLLocationSource> TNLLinuxDeviceFacts::locationSource() const {
  return locationSource_;
}
