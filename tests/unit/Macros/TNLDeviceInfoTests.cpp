#include <gtest/gtest.h>

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
}

TEST(TNLDeviceInfo, AFailingStepEndsTheCaptureAndIsLoggedOnce) {
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  const TNLDeviceInfo info(facts([](auto& v) { v.failingFact = "hardwareMachine"; }));
  EXPECT_EQ(capture.count(
                "Failed to initialize device info due to exception: cannot read hardwareMachine"),
            1u);
  // Steps before the failing one keep their values; the identity stays hidden until the macro
  // table decides.
  EXPECT_EQ(info.deviceIpAddress() + info.deviceModel() + info.advertisingId(), "192.168.1.20");
  EXPECT_TRUE(info.restricted());
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
