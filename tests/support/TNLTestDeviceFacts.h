#pragma once

#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "TarnelAd/TNLDeviceFacts.h"
#include "TarnelAd/TNLLocationSource.h"
#include "TarnelAd/TNLSetup.h"

// A location source that counts requests and holds them until the test answers.
class TNLTestLocationSource : public TNLLocationSource {
 public:
  struct State {
    bool enabled = true;
    Authorization authorization = Authorization::AuthorizedWhenInUse;
    std::optional<Location> lastKnown;
  };

  void update(const std::function<void(State&)>& change) {
    std::lock_guard lock(mutex_);
    change(state_);
  }
  int requestCount() const {
    std::lock_guard lock(mutex_);
    return requests_;
  }
  // Answers the oldest pending request.
  void succeed(const std::vector<Location>& locations) {
    Success success;
    {
      std::lock_guard lock(mutex_);
      success = std::move(pending_.at(0));
      pending_.erase(pending_.begin());
    }
    success(locations);
  }

  bool locationServicesEnabled() const override {
    std::lock_guard lock(mutex_);
    return state_.enabled;
  }
  Authorization authorizationStatus() const override {
    std::lock_guard lock(mutex_);
    return state_.authorization;
  }
  std::optional<Location> lastKnownLocation() const override {
    std::lock_guard lock(mutex_);
    return state_.lastKnown;
  }
  void requestLocation(Success success, Failure) override {
    std::lock_guard lock(mutex_);
    ++requests_;
    pending_.push_back(std::move(success));
  }

 private:
  mutable std::mutex mutex_;
  State state_;
  int requests_ = 0;
  std::vector<Success> pending_;
};

// Device facts that the test sets. Defaults describe a phone-like device on Wi-Fi.
class TNLTestDeviceFacts : public TNLDeviceFacts {
 public:
  struct Values {
    std::string bundleIdentifier = "com.example.game";
    std::optional<std::string> displayName = "Game";
    std::optional<std::string> bundleName = "GameBundle";
    std::string shortVersion = "2.1";
    std::string deviceName = "Test Device";
    std::string systemName = "TestOS";
    std::string systemVersion = "12.4";
    std::optional<std::string> machine = "x86_64";
    std::string kernelRelease = "6.1.0";
    std::string httpStackVersion = "8.5.0";
    std::vector<std::string> languages = {"de-CH", "en-US"};
    std::string advertisingIdentifier = "6D92078A-8246-4BA4-AE5B-76104861E7DC";
    bool trackingEnabled = true;
    std::optional<std::string> carrier;
    std::optional<std::vector<InterfaceAddress>> addresses = std::vector<InterfaceAddress>{
        {"lo", 2, "127.0.0.1"}, {"wlan0", 10, ""}, {"wlan0", 2, "192.168.1.20"}};
    std::optional<std::string> primaryInterface = "wlan0";
    std::optional<uint32_t> flags = kFlagReachable;
    std::optional<ScreenMetrics> screen = ScreenMetrics{375, 667, 2.0};
    Orientation orientation = Orientation::Portrait;
    // The name of a fact whose reading raises, to test what a failing read does.
    std::string failingFact;
  };

  TNLTestDeviceFacts() : location_(std::make_shared<TNLTestLocationSource>()) {}
  // New test facts, installed as the library's.
  static std::shared_ptr<TNLTestDeviceFacts> install() {
    auto facts = std::make_shared<TNLTestDeviceFacts>();
    TNLSetup::setDeviceFacts(facts);
    return facts;
  }

  void update(const std::function<void(Values&)>& change) {
    std::lock_guard lock(mutex_);
    change(values_);
  }
  const std::shared_ptr<TNLTestLocationSource>& testLocationSource() const { return location_; }
  std::shared_ptr<TNLLocationSource> locationSource() const override { return location_; }

// Each fact reads its member of Values, or raises when the test names it as failing.
#define TNL_TEST_FACT(Type, fact, member) \
  Type fact() const override {            \
    return get(#fact, &Values::member);   \
  }
  TNL_TEST_FACT(std::string, bundleIdentifier, bundleIdentifier)
  TNL_TEST_FACT(std::optional<std::string>, bundleDisplayName, displayName)
  TNL_TEST_FACT(std::optional<std::string>, bundleName, bundleName)
  TNL_TEST_FACT(std::string, bundleShortVersion, shortVersion)
  TNL_TEST_FACT(std::string, deviceName, deviceName)
  TNL_TEST_FACT(std::string, systemName, systemName)
  TNL_TEST_FACT(std::string, systemVersion, systemVersion)
  TNL_TEST_FACT(std::optional<std::string>, hardwareMachine, machine)
  TNL_TEST_FACT(std::string, kernelRelease, kernelRelease)
  TNL_TEST_FACT(std::string, httpStackVersion, httpStackVersion)
  TNL_TEST_FACT(std::vector<std::string>, preferredLanguages, languages)
  TNL_TEST_FACT(std::string, advertisingIdentifier, advertisingIdentifier)
  TNL_TEST_FACT(bool, isAdvertisingTrackingEnabled, trackingEnabled)
  TNL_TEST_FACT(std::optional<std::string>, carrierName, carrier)
  TNL_TEST_FACT(std::optional<std::vector<InterfaceAddress>>, interfaceAddresses, addresses)
  TNL_TEST_FACT(std::optional<std::string>, primaryInterfaceName, primaryInterface)
  TNL_TEST_FACT(std::optional<uint32_t>, reachabilityFlags, flags)
  TNL_TEST_FACT(std::optional<ScreenMetrics>, mainScreen, screen)
  TNL_TEST_FACT(Orientation, deviceOrientation, orientation)
#undef TNL_TEST_FACT

 private:
  template <class T>
  T get(const char* fact, T Values::*member) const {
    std::lock_guard lock(mutex_);
    if (values_.failingFact == fact) {
      throw std::runtime_error(std::string("cannot read ") + fact);
    }
    return values_.*member;
  }

  mutable std::mutex mutex_;
  Values values_;
  const std::shared_ptr<TNLTestLocationSource> location_;
};
