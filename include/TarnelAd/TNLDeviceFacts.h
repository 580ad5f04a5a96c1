#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/TNLLocationSource.h"

// Values that Linux has no service for: the host application's identity and the advertising
// identity. Unset values fall back as documented in docs/device-facts.md.
struct TNLHostApplicationInfo {
  std::optional<std::string> bundleIdentifier;  // e.g. "com.example.game"; "" when unset
  std::optional<std::string> displayName;       // preferred as the application's name
  std::optional<std::string> bundleName;        // used when there is no display name
  std::optional<std::string> shortVersion;      // e.g. "2.1"; "" when unset
  // An upper-case UUID string; the all-zero identifier when unset.
  std::optional<std::string> advertisingIdentifier;
  // Whether the user allows advertising tracking. Off unless the host says otherwise.
  bool advertisingTrackingEnabled = false;
  // The cellular provider's name; "no-carrier" is reported when unset.
  std::optional<std::string> carrierName;
  // Null: location services are reported as disabled.
  std::shared_ptr<TNLLocationSource> locationSource;
};

// Everything the library reads about the device, the host application and the advertising
// identity. A host may install its own implementation with TNLSetup::setDeviceFacts; without one
// the library uses TNLDeviceFacts::linuxFacts(), which reads this machine.
//
// The library captures most facts once, when its device snapshot is first needed; the reachability
// flags, the device orientation, location and the output volume are read each time they are used,
// from any thread, so implementations must be thread-safe.
class TNL_EXPORT TNLDeviceFacts {
 public:
  // The platform's numeric device orientations.
  enum class Orientation : int {
    Unknown = 0,
    Portrait = 1,
    PortraitUpsideDown = 2,
    LandscapeLeft = 3,
    LandscapeRight = 4,
    FaceUp = 5,
    FaceDown = 6,
  };

  // The main screen's bounds in points and its scale (pixels per point).
  struct ScreenMetrics {
    double width = 0;
    double height = 0;
    double scale = 1;
  };

  // One entry of the interface address list; `address` is the dotted quad for IPv4 (family 2).
  struct InterfaceAddress {
    std::string name;
    int family = 0;
    std::string address;
  };

  // Reachability flag bits, with the platform's values.
  static constexpr uint32_t kFlagTransientConnection = 0x1;
  static constexpr uint32_t kFlagReachable = 0x2;
  static constexpr uint32_t kFlagConnectionRequired = 0x4;
  static constexpr uint32_t kFlagConnectionOnTraffic = 0x8;
  static constexpr uint32_t kFlagInterventionRequired = 0x10;
  static constexpr uint32_t kFlagConnectionOnDemand = 0x20;
  static constexpr uint32_t kFlagIsLocalAddress = 0x10000;
  static constexpr uint32_t kFlagIsDirect = 0x20000;
  static constexpr uint32_t kFlagIsWWAN = 0x40000;

  // Posted on TNLNotificationCenter's default centre by setOutputVolume, with the new volume (a
  // number from 0 to 1) in the user information under kOutputVolumeKey.
  static constexpr char kOutputVolumeDidChangeNotification[] =
      "AVSystemController_SystemVolumeDidChangeNotification";
  static constexpr char kOutputVolumeKey[] = "AVSystemController_AudioVolumeNotificationParameter";

  virtual ~TNLDeviceFacts() = default;

  // The Linux implementation: reads this machine and takes what Linux lacks from `info`.
  static std::shared_ptr<TNLDeviceFacts> linuxFacts(TNLHostApplicationInfo info = {});

  // ---- host application ----
  virtual std::string bundleIdentifier() const = 0;
  virtual std::optional<std::string> bundleDisplayName() const = 0;
  virtual std::optional<std::string> bundleName() const = 0;
  virtual std::string bundleShortVersion() const = 0;

  // ---- device and system ----
  virtual std::string deviceName() const = 0;
  virtual std::string systemName() const = 0;
  virtual std::string systemVersion() const = 0;
  // The hardware machine identifier; null when it cannot be decoded as UTF-8.
  virtual std::optional<std::string> hardwareMachine() const = 0;
  virtual std::string kernelRelease() const = 0;
  // The HTTP stack's version, reported in the user agent.
  virtual std::string httpStackVersion() const = 0;
  // Most preferred first, as language tags ("en-US").
  virtual std::vector<std::string> preferredLanguages() const = 0;

  // ---- advertising identity ----
  virtual std::string advertisingIdentifier() const = 0;
  virtual bool isAdvertisingTrackingEnabled() const = 0;
  // Null when there is no cellular provider or it has no name.
  virtual std::optional<std::string> carrierName() const = 0;

  // ---- network ----
  // Null when the list cannot be read.
  virtual std::optional<std::vector<InterfaceAddress>> interfaceAddresses() const = 0;
  // The interface whose IPv4 address the library reports; null when there is none.
  virtual std::optional<std::string> primaryInterfaceName() const = 0;
  // The reachability flags of the internet connection; null when they cannot be read.
  virtual std::optional<uint32_t> reachabilityFlags() const = 0;

  // ---- screen ----
  // Null when there is no main screen.
  virtual std::optional<ScreenMetrics> mainScreen() const = 0;
  virtual Orientation deviceOrientation() const = 0;

  // ---- location ----
  virtual std::shared_ptr<TNLLocationSource> locationSource() const = 0;

  // ---- audio ----
  // The output volume, 0 to 1. Linux has no single system volume to read, so the level is kept
  // here (1.0 at first) and changed by setOutputVolume.
  virtual float outputVolume() const;
  // Stores the level and posts kOutputVolumeDidChangeNotification. For hosts and audio backends.
  void setOutputVolume(float volume);

 private:
  std::atomic<float> volume_{1.0f};
};
