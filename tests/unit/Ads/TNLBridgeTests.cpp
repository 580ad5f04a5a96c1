#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "Ads/TNLBridge.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestBridgeJournal.h"

namespace {

struct Bridged {
  std::shared_ptr<TNLTestBridgeJournal> delegate = std::make_shared<TNLTestBridgeJournal>();
  TNLBridge bridge;
  Bridged() { bridge.setDelegate(delegate); }

  // The calls one action makes.
  std::vector<std::string> dispatch(const std::optional<std::string>& action) {
    delegate->calls.clear();
    bridge.respondToBridgeAction(action);
    return delegate->calls;
  }
};

using Calls = std::vector<std::string>;

TEST(TNLBridge, TheFirstKeyFoundInTheTableOrderDecides) {
  Bridged b;
  EXPECT_EQ(b.dispatch("close"), Calls{"close"});
  // An address that contains an earlier key is taken as that action.
  EXPECT_EQ(b.dispatch("open?url=https://x.test/close-up.html"), Calls{"close"});
  // ... and an address with "optin?" is an opt-in that nobody recognises.
  EXPECT_EQ(b.dispatch("open?url=https://x.test/?optin?video"), Calls{});
  EXPECT_EQ(b.dispatch("open?url=https://x.test/path"), Calls{"open https://x.test/path"});
  // The creative's marker and what follows it are not part of the address.
  EXPECT_EQ(b.dispatch("open?url=https://x.test/a?b=1&local=yes&c=2"),
            Calls{"open https://x.test/a?b=1"});
  // "expandPercent=" contains no "expand=", so the percent form is reachable; the reverse is not.
  EXPECT_EQ(b.dispatch("expandPercent=50&touch=false"), Calls{"expandPercent 50"});
  EXPECT_EQ(b.dispatch("expandPercent=50&expand=10"), Calls{"expandPixels 0"});
  EXPECT_EQ(b.dispatch("collapse"), Calls{"collapse"});
  EXPECT_EQ(b.dispatch("enableRedirect"), Calls{"enableRedirect"});
  EXPECT_EQ(b.dispatch("rewarded"), Calls{"reward"});
  EXPECT_EQ(b.dispatch("deviceDataX"), Calls{"deviceData"});
  // Keys are case-sensitive, and unknown actions are dropped.
  EXPECT_EQ(b.dispatch("CLOSE"), Calls{});
  EXPECT_EQ(b.dispatch(std::nullopt), Calls{});

  // The page's load is the web view's to report, never the creative's.
  EXPECT_EQ(b.dispatch("opened"), Calls{});
  b.bridge.open();
  EXPECT_EQ(b.delegate->calls, Calls{"opened"});
}

TEST(TNLBridge, ExpandReadsADecimalPrefixAndAnExactTouchFlag) {
  Bridged b;
  EXPECT_EQ(b.dispatch("expand=300&touch=true"), Calls{"expandPixels 300 touch"});
  EXPECT_EQ(b.dispatch("expand=300"), Calls{"expandPixels 300"});
  EXPECT_EQ(b.dispatch("expand=&touch=true"), Calls{"expandPixels 0 touch"});
  EXPECT_EQ(b.dispatch("expand=300&touch=TRUE"), Calls{"expandPixels 300"});
  EXPECT_EQ(b.dispatch("expand=250px&touch=true&more"), Calls{"expandPixels 250 touch"});

  // A C-style decimal prefix: blanks, sign, exponent; overflow is infinite.
  EXPECT_FLOAT_EQ(TNLBridge::getValueFromExpandAction("  -12.5e1xyz"), -125.0f);
  EXPECT_EQ(TNLBridge::getValueFromExpandAction("1e60"), std::numeric_limits<float>::infinity());
  EXPECT_FALSE(TNLBridge::getTouchFromExpandAction("300"));
  EXPECT_TRUE(TNLBridge::getTouchFromExpandAction("300&touch=touch=true"));
  EXPECT_TRUE(TNLBridge::getTouchFromExpandAction("&true"));
}

TEST(TNLBridge, OptinAndAllowScrollingCompareTheirArgumentExactlyAndVibrateNeedsNoDelegate) {
  TNLLogCapture capture;
  Bridged b;
  EXPECT_EQ(b.dispatch("optin?display"), Calls{"optin display"});
  EXPECT_EQ(b.dispatch("optin?video"), Calls{"optin video"});
  EXPECT_EQ(b.dispatch("optin?Display"), Calls{});
  // Printed whatever the library log switch says.
  EXPECT_FALSE(TNLLog::sharedLogger()->showLogs());
  EXPECT_EQ(capture.count("UNRECOGNIZED OPTIN: Display"), 1u);

  EXPECT_EQ(b.dispatch("allowScrolling=true"), Calls{"allowScroll yes"});
  EXPECT_EQ(b.dispatch("allowScrolling=1"), Calls{"allowScroll no"});
  EXPECT_EQ(b.dispatch("allowScrolling=true&x"), Calls{"allowScroll no"});
  EXPECT_EQ(b.dispatch("allowScrolling=allowScrolling=true"), Calls{"allowScroll yes"});

  // Vibrate needs no delegate; the delegate is not owned.
  TNLBridge bridge;
  bridge.respondToBridgeAction("vibrate");
  EXPECT_EQ(capture.count("System sound 4095 (vibrate) not played"), 1u);
  bridge.setDelegate(std::make_shared<TNLTestBridgeJournal>());
  EXPECT_EQ(bridge.delegate(), nullptr);
}

}  // namespace
