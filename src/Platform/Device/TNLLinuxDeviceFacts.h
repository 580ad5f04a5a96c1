#pragma once

#include <functional>

#include "TarnelAd/TNLDeviceFacts.h"

// The device facts of a Linux machine. What Linux has is read when asked (uname, the host name,
// os-release, the locale); the interface list, the default route and sysfs are read again only
// after the kernel tells of a network change. What Linux lacks comes from the host's
// TNLHostApplicationInfo. The screen and the device orientation come from the
// toolkit (TNLScreen::mainScreen(), TNLApplication's device orientation) unless a process-wide
// provider replaces them. docs/device-facts.md lists every fact and its source.
class TNLLinuxDeviceFacts : public TNLDeviceFacts {
 public:
  using ScreenProvider = std::function<std::optional<ScreenMetrics>()>;
  using OrientationProvider = std::function<Orientation()>;

  explicit TNLLinuxDeviceFacts(TNLHostApplicationInfo info);

  // Replaces the source of the main screen's bounds and scale (null restores the toolkit's screen).
  // The provider answers null when there is no main screen. It may be called from any thread.
  static void setScreenProvider(ScreenProvider provider);
  // Replaces the source of the device orientation (null restores the toolkit's). It is called on
  // every URL that the library fills, from any thread.
  static void setOrientationProvider(OrientationProvider provider);

  std::string bundleIdentifier() const override;
  std::optional<std::string> bundleDisplayName() const override;
  std::optional<std::string> bundleName() const override;
  std::string bundleShortVersion() const override;

  std::string deviceName() const override;
  std::string systemName() const override;
  std::string systemVersion() const override;
  std::optional<std::string> hardwareMachine() const override;
  std::string kernelRelease() const override;
  std::string httpStackVersion() const override;
  std::vector<std::string> preferredLanguages() const override;

  std::string advertisingIdentifier() const override;
  bool isAdvertisingTrackingEnabled() const override;
  std::optional<std::string> carrierName() const override;

  std::optional<std::vector<InterfaceAddress>> interfaceAddresses() const override;
  std::optional<std::string> primaryInterfaceName() const override;
  std::optional<uint32_t> reachabilityFlags() const override;

  std::optional<ScreenMetrics> mainScreen() const override;
  Orientation deviceOrientation() const override;

  std::shared_ptr<TNLLocationSource> locationSource() const override;

 private:
  const TNLHostApplicationInfo info_;
  const std::shared_ptr<TNLLocationSource> locationSource_;
};
