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
  EXPECT_EQ((std::vector<std::string>{bare.hostAppName(), bare.deviceModel(), bare.userAgent(),
                                      bare.carrierName(), bare.deviceIpAddress(),
                                      bare.screenWidth(), bare.screenHeight()}),
            (std::vector<std::string>{"", "", "/2.1  TestOS/12.4 CFNetwork/8.5.0 Darwin/6.1.0", "",
                                      "error", "0", "0"}));
  EXPECT_TRUE(bare.adTrackingBlocked());
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
  const TNLDeviceInfo retina(facts([](auto& v) {
    v.screen = Facts::ScreenMetrics{414.9, 896.2, 3.0};
    v.carrier = "Carrier One";
  }));
  EXPECT_EQ((std::vector<std::string>{retina.screenWidth(), retina.screenHeight(),
                                      retina.screenDPI(), retina.carrierName()}),
            (std::vector<std::string>{"414", "896", "489.000000", "Carrier One"}));
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
  EXPECT_EQ(info.deviceModel() + info.hostAppName() + info.screenWidth() + info.screenHeight() +
                info.systemVersion() + info.userAgent() + info.advertisingId() + info.deviceLang() +
                info.screenDPI() + info.deviceName(),
            "");
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
  const std::pair<std::optional<uint32_t>, const char*> cases[] = {
      {Facts::kFlagReachable, "Wifi"},
      {Facts::kFlagReachable | Facts::kFlagIsWWAN, "Cellular"},
      {0, "No Connection"},
      {std::nullopt, "No Connection"},  // unreadable flags
  };
  for (const auto& [flags, type] : cases) {
    installed->update([&](auto& v) { v.flags = flags; });
    EXPECT_EQ(info->connectionType(), type);
  }
}

}  // namespace
