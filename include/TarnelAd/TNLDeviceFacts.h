#pragma once

/// @file
/// @brief TNLDeviceFacts: what the library knows of the device and the host application.

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/TNLLocationSource.h"

/// Values that Linux has no service for: the host application's identity and the advertising
/// identity. Unset values fall back as documented in docs/device-facts.md.
struct TNLHostApplicationInfo {
  std::optional<std::string> bundleIdentifier;  ///< e.g. "com.example.game"; "" when unset
  std::optional<std::string> displayName;       ///< preferred as the application's name
  std::optional<std::string> bundleName;        ///< used when there is no display name
  std::optional<std::string> shortVersion;      ///< e.g. "2.1"; "" when unset
  /// An upper-case UUID string; the all-zero identifier when unset.
  std::optional<std::string> advertisingIdentifier;
  /// Whether the user allows advertising tracking. Off unless the host says otherwise.
  bool advertisingTrackingEnabled = false;
  /// The cellular provider's name; "no-carrier" is reported when unset.
  std::optional<std::string> carrierName;
  /// Null: location services are reported as disabled.
  std::shared_ptr<TNLLocationSource> locationSource;
};

/// Everything the library reads about the device, the host application and the advertising
/// identity. A host may install its own implementation with TNLSetup::setDeviceFacts; without one
/// the library uses TNLDeviceFacts::linuxFacts(), which reads this machine.
///
/// The library captures most facts once, when its device snapshot is first needed; the reachability
/// flags, the device orientation, location and the output volume are read each time they are used,
/// from any thread, so implementations must be thread-safe.
class TNL_EXPORT TNLDeviceFacts {
 public:
  /// The platform's numeric device orientations.
  enum class Orientation : int {
    Unknown = 0,
    Portrait = 1,
    PortraitUpsideDown = 2,
    LandscapeLeft = 3,
    LandscapeRight = 4,
    FaceUp = 5,
    FaceDown = 6,
  };

  /// The main screen's bounds in points and its scale (pixels per point).
  struct ScreenMetrics {
    double width = 0;   ///< Points.
    double height = 0;  ///< Points.
    double scale = 1;   ///< Pixels per point.
  };

  /// One entry of the interface address list; `address` is the dotted quad for IPv4 (family 2).
  struct InterfaceAddress {
    std::string name;     ///< The interface, e.g. "eth0".
    int family = 0;       ///< The address family (AF_INET is 2).
    std::string address;  ///< The address as text.
  };

  /// Reachability flag bits, with the platform's values.
  ///@{
  static constexpr uint32_t kFlagTransientConnection = 0x1;
  static constexpr uint32_t kFlagReachable = 0x2;
  static constexpr uint32_t kFlagConnectionRequired = 0x4;
  static constexpr uint32_t kFlagConnectionOnTraffic = 0x8;
  static constexpr uint32_t kFlagInterventionRequired = 0x10;
  static constexpr uint32_t kFlagConnectionOnDemand = 0x20;
  static constexpr uint32_t kFlagIsLocalAddress = 0x10000;
  static constexpr uint32_t kFlagIsDirect = 0x20000;
  static constexpr uint32_t kFlagIsWWAN = 0x40000;
  ///@}

  /// The notification that setOutputVolume posts to the library's ad views, with the new volume
  /// (a number from 0 to 1) in its user information under kOutputVolumeKey.
  static constexpr char kOutputVolumeDidChangeNotification[] =
      "AVSystemController_SystemVolumeDidChangeNotification";
  /// The key of the volume in kOutputVolumeDidChangeNotification's user information.
  static constexpr char kOutputVolumeKey[] = "AVSystemController_AudioVolumeNotificationParameter";

  virtual ~TNLDeviceFacts() = default;

  /// The Linux implementation: reads this machine and takes what Linux lacks from `info`.
  static std::shared_ptr<TNLDeviceFacts> linuxFacts(TNLHostApplicationInfo info = {});

  /// The host application's identifier, e.g. "com.example.game".
  virtual std::string bundleIdentifier() const = 0;
  /// The application's name as shown to users; null when it has none.
  virtual std::optional<std::string> bundleDisplayName() const = 0;
  /// The application's bundle name; null when it has none.
  virtual std::optional<std::string> bundleName() const = 0;
  /// The application's version, e.g. "2.1".
  virtual std::string bundleShortVersion() const = 0;

  /// The machine's name.
  virtual std::string deviceName() const = 0;
  /// The operating system's name.
  virtual std::string systemName() const = 0;
  /// The operating system's version.
  virtual std::string systemVersion() const = 0;
  /// The hardware machine identifier; null when it cannot be decoded as UTF-8.
  virtual std::optional<std::string> hardwareMachine() const = 0;
  /// The kernel's release.
  virtual std::string kernelRelease() const = 0;
  /// The HTTP stack's version, reported in the user agent.
  virtual std::string httpStackVersion() const = 0;
  /// Most preferred first, as language tags ("en-US").
  virtual std::vector<std::string> preferredLanguages() const = 0;

  /// The advertising identifier, an upper-case UUID string.
  virtual std::string advertisingIdentifier() const = 0;
  /// Whether the user allows advertising tracking.
  virtual bool isAdvertisingTrackingEnabled() const = 0;
  /// Null when there is no cellular provider or it has no name.
  virtual std::optional<std::string> carrierName() const = 0;

  /// Null when the list cannot be read.
  virtual std::optional<std::vector<InterfaceAddress>> interfaceAddresses() const = 0;
  /// The interface whose IPv4 address the library reports; null when there is none.
  virtual std::optional<std::string> primaryInterfaceName() const = 0;
  /// The reachability flags of the internet connection; null when they cannot be read.
  virtual std::optional<uint32_t> reachabilityFlags() const = 0;

  /// Null when there is no main screen.
  virtual std::optional<ScreenMetrics> mainScreen() const = 0;
  /// How the device is held.
  virtual Orientation deviceOrientation() const = 0;

  /// The source of location fixes; null when there is none (location services disabled).
  virtual std::shared_ptr<TNLLocationSource> locationSource() const = 0;

  /// The output volume, 0 to 1. Linux has no single system volume to read, so the level is kept
  /// here (1.0 at first) and changed by setOutputVolume.
  virtual float outputVolume() const;
  /// Stores the level and posts kOutputVolumeDidChangeNotification, on the calling thread (ad
  /// views take it to the main thread). For hosts and audio backends; any thread.
  void setOutputVolume(float volume);

 private:
  std::atomic<float> volume_{1.0f};
};
