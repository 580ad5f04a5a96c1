#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TarnelAd/TNLDeviceFacts.h"

// The process-wide snapshot of the device, the host application and the advertising identity,
// taken once from the device facts when the instance is first needed. Only the connection type
// is measured anew on every call, and `restricted` is set later by the macro table.
class TNLDeviceInfo {
 public:
  static std::shared_ptr<TNLDeviceInfo> sharedInstance();

  // Captures everything from `facts`, in a fixed order; a failing step ends the capture there and
  // leaves the remaining values empty.
  explicit TNLDeviceInfo(std::shared_ptr<TNLDeviceFacts> facts);

  // The facts this snapshot was taken from.
  const std::shared_ptr<TNLDeviceFacts>& facts() const { return facts_; }

  // ---- reading operations ----
  std::string sessionId() const { return appSessionId(); }
  std::string carrierName() const { return carrier(); }
  std::string deviceIpAddress() const { return ipAddress(); }
  std::string deviceModel() const { return model(); }
  std::string deviceLang() const { return language(); }
  std::string deviceName() const { return name(); }
  std::string hostAppName() const { return appName(); }
  std::string screenWidth() const { return width(); }
  std::string screenHeight() const { return height(); }
  std::string screenDPI() const { return dpi(); }
  std::string systemVersion() const { return version(); }
  std::string userAgent() const { return constructedUserAgent(); }
  std::string advertisingId() const { return adId(); }
  bool adTrackingBlocked() const { return adTrackingIsBlocked(); }
  // "No Connection", "Wifi" or "Cellular", measured now; null for a status that has no name.
  std::optional<std::string> connectionType() const;

  // ---- properties ----
  std::string appSessionId() const;
  void setAppSessionId(std::string value);
  std::string carrier() const;
  void setCarrier(std::string value);
  std::string ipAddress() const;
  void setIpAddress(std::string value);
  std::string model() const;
  void setModel(std::string value);
  std::string appName() const;
  void setAppName(std::string value);
  std::string width() const;
  void setWidth(std::string value);
  std::string height() const;
  void setHeight(std::string value);
  std::string version() const;
  void setVersion(std::string value);
  std::string constructedUserAgent() const;
  void setConstructedUserAgent(std::string value);
  std::string adId() const;
  void setAdId(std::string value);
  bool adTrackingIsBlocked() const;
  void setAdTrackingIsBlocked(bool value);
  std::string language() const;
  void setLanguage(std::string value);
  std::string dpi() const;
  void setDpi(std::string value);
  std::string name() const;
  void setName(std::string value);
  // True until the macro table decides from the manifest's privacy flags.
  bool restricted() const { return restricted_.load(); }
  void setRestricted(bool value) { restricted_.store(value); }

  // ---- capture steps ----
  // MD5 of a new UUID's text, as 32 lower-case hexadecimal digits.
  std::string createUUID() const;
  std::string getCarrierName() const;
  // The last IPv4 address of the primary interface, or "error".
  std::string getIPAddress() const;
  std::string getDeviceModel() const;
  // The display name, else the bundle name, else "".
  std::string getAppName() const;
  std::string getScreenWidth() const;
  std::string getScreenHeight() const;
  std::string getVersion() const;
  // "<app>/<version> <model> <system>/<system version> CFNetwork/<http stack> Darwin/<kernel>"
  std::string constructUserAgent() const;
  std::string getAdvertiserId() const;
  bool getAdTracking() const;
  std::string getDeviceLanguage() const;
  // Screen scale x 163, six decimals.
  std::string getScreenDPI() const;
  std::string getName() const;

 private:
  struct Values {
    std::string appSessionId, carrier, ipAddress, model, appName, width, height, version,
        constructedUserAgent, adId, language, dpi, name;
    bool adTrackingIsBlocked = false;
  };

  template <class Member>
  auto read(Member member) const {
    std::lock_guard lock(mutex_);
    return values_.*member;
  }
  template <class Member, class Value>
  void write(Member member, Value value) {
    std::lock_guard lock(mutex_);
    values_.*member = std::move(value);
  }

  const std::shared_ptr<TNLDeviceFacts> facts_;
  mutable std::mutex mutex_;
  Values values_;
  std::atomic<bool> restricted_{true};
};
