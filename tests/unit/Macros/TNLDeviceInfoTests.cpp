#include <gtest/gtest.h>

#include <regex>

#include "Ads/Macros/TNLDeviceInfo.h"
#include "TNLLog.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestDeviceFacts.h"

namespace {

using Facts = TNLDeviceFacts;

std::shared_ptr<TNLTestDeviceFacts> facts(
    const std::function<void(TNLTestDeviceFacts::Values&)>& change = {}) {
  auto made = std::make_shared<TNLTestDeviceFacts>();
  if (change) {
    made->update(change);
  }
  return made;
}

// The values themselves are checked in the macro table and the manifest request.
TEST(TNLDeviceInfo, EachCaptureHasItsOwnSessionAndIsRestrictedUntilTheTableDecides) {
  const TNLDeviceInfo info(facts());
  EXPECT_TRUE(std::regex_match(info.sessionId(), std::regex("[0-9a-f]{32}"))) << info.sessionId();
  EXPECT_NE(TNLDeviceInfo(facts()).sessionId(), info.sessionId());
  EXPECT_TRUE(info.restricted());
}

TEST(TNLDeviceInfo, FallsBackWhereAFactIsMissing) {
  const TNLDeviceInfo bare(facts([](auto& v) {
    v.displayName.reset();
    v.bundleName.reset();
    v.machine.reset();
    v.carrier = "";
    v.trackingEnabled = false;
    v.primaryInterface.reset();
    v.screen.reset();
  }));
  EXPECT_EQ(bare.hostAppName(), "");
  EXPECT_EQ(bare.deviceModel(), "");
  EXPECT_EQ(bare.userAgent(), "/2.1  TestOS/12.4 CFNetwork/8.5.0 Darwin/6.1.0");
  EXPECT_EQ(bare.carrierName(), "");  // a provider's empty name is kept
  EXPECT_TRUE(bare.adTrackingBlocked());
  EXPECT_EQ(bare.deviceIpAddress(), "error");
  EXPECT_EQ(bare.screenWidth(), "0");
  EXPECT_EQ(bare.screenHeight(), "0");

  EXPECT_EQ(TNLDeviceInfo(facts([](auto& v) { v.displayName.reset(); })).hostAppName(),
            "GameBundle");
  EXPECT_EQ(TNLDeviceInfo(facts([](auto& v) { v.addresses.reset(); })).deviceIpAddress(), "error");
  // Only IPv4 entries of the primary interface count, and the last one wins.
  EXPECT_EQ(TNLDeviceInfo(facts([](auto& v) {
              v.addresses = std::vector<Facts::InterfaceAddress>{{"wlan0", 2, "10.0.0.1"},
                                                                 {"eth0", 2, "10.0.0.9"},
                                                                 {"wlan0", 2, "10.0.0.2"},
                                                                 {"wlan0", 10, "fe80::1"}};
            })).deviceIpAddress(),
            "10.0.0.2");
  EXPECT_EQ(TNLDeviceInfo(facts([](auto& v) { v.carrier = "Carrier One"; })).carrierName(),
            "Carrier One");

  const TNLDeviceInfo retina(facts([](auto& v) {
    v.screen = Facts::ScreenMetrics{414.9, 896.2, 3.0};
  }));
  EXPECT_EQ(retina.screenWidth(), "414");
  EXPECT_EQ(retina.screenHeight(), "896");
  EXPECT_EQ(retina.screenDPI(), "489.000000");
}

TEST(TNLDeviceInfo, AFailingStepEndsTheCaptureAndIsLoggedOnce) {
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  const TNLDeviceInfo info(facts([](auto& v) { v.failingFact = "hardwareMachine"; }));
  EXPECT_EQ(capture.count(
                "Failed to initialize device info due to exception: cannot read hardwareMachine"),
            1u);
  EXPECT_EQ(info.sessionId().size(), 32u);
  EXPECT_EQ(info.carrierName(), "no-carrier");
  EXPECT_EQ(info.deviceIpAddress(), "192.168.1.20");
  for (const std::string& value :
       {info.deviceModel(), info.hostAppName(), info.screenWidth(), info.screenHeight(),
        info.systemVersion(), info.userAgent(), info.advertisingId(), info.deviceLang(),
        info.screenDPI(), info.deviceName()}) {
    EXPECT_EQ(value, "");
  }
  EXPECT_FALSE(info.adTrackingBlocked());

  // No preferred language at all fails the capture at that step.
  const TNLDeviceInfo noLanguage(facts([](auto& v) { v.languages.clear(); }));
  EXPECT_EQ(noLanguage.deviceLang(), "");
  EXPECT_EQ(noLanguage.screenDPI(), "");
  EXPECT_EQ(capture.count("Failed to initialize device info due to exception: "), 2u);
}

TEST(TNLDeviceInfo, SharedInstanceIsMadeOnceFromTheInstalledFacts) {
  TNLSetup::setDeviceFacts(facts([](auto& v) { v.deviceName = "Installed"; }));
  const auto first = TNLDeviceInfo::sharedInstance();
  TNLSetup::setDeviceFacts(facts([](auto& v) { v.deviceName = "Too late"; }));
  EXPECT_EQ(TNLDeviceInfo::sharedInstance(), first);
  EXPECT_EQ(TNLDeviceInfo::sharedInstance()->deviceName(), "Installed");
  EXPECT_EQ(TNLDeviceInfo::sharedInstance()->sessionId(), first->sessionId());
}

TEST(TNLDeviceInfo, ConnectionTypeIsMeasuredOnEveryCall) {
  const auto installed = facts();
  TNLSetup::setDeviceFacts(installed);
  const auto info = TNLDeviceInfo::sharedInstance();
  EXPECT_EQ(info->connectionType(), "Wifi");
  installed->update([](auto& v) { v.flags = Facts::kFlagReachable | Facts::kFlagIsWWAN; });
  EXPECT_EQ(info->connectionType(), "Cellular");
  installed->update([](auto& v) { v.flags = 0; });
  EXPECT_EQ(info->connectionType(), "No Connection");
  installed->update([](auto& v) { v.flags.reset(); });  // unreadable flags
  EXPECT_EQ(info->connectionType(), "No Connection");
}

}  // namespace
