// A full-screen ad in real windows: the creative's page in WebKit covers the host's window and
// talks with the library and the measurement SDK until it closes itself.

#include <gtest/gtest.h>

#include <algorithm>

#include "Ads/FullScreenAds/TNLFSAdViewController.h"
#include "Ads/Macros/TNLUrlParser.h"
#include "Ads/TNLAd.h"
#include "Ads/TNLAdWebView.h"
#include "Ads/TNLClickOutViewController.h"
#include "TarnelAd/TNLDeviceFacts.h"
#include "TarnelAd/TNLSetup.h"
#include "e2e/TNLCreativeTestSupport.h"
#include "support/TNLTestHosts.h"

namespace {

using namespace tnl_e2e;

class FullScreenAdTest : public AdFlowTest<TNLTestFullScreenHost> {
 protected:
  TNLRect windowFrame() const override { return {0.0, 0.0, 480.0, 640.0}; }
};

TEST_F(FullScreenAdTest, AMeasuredRewardedAdRunsFromLoadToCloseAndItsPageHearsTheLibraryInOrder) {
  server.on("GET", "/landing", Response(200, "<h1>Landing</h1>", "text/html"));
  // The creative opts in to measurement, asks for the device data, then opens the advertiser's
  // page; it grants the reward once it is visible again, asks for the device data again when the
  // window turns, and then closes.
  serveCreative("<h1>Rewarded</h1>", R"JS(
    on('receivePayload', () => bridge('optin?display'));
    on('omidBridge.startSession', () => bridge('deviceData'));
    let opened = false;
    on('ZENKO.onDeviceData', () => {
      if (opened) return bridge('close');
      opened = true;
      bridge('open?url=' + encodeURIComponent(location.origin + '/landing?from=ad&level=3'));
    });
    let browserShown = false;
    on('ZENKO.isAdVisible', (visible) => {
      if (!visible) browserShown = true;
      else if (browserShown) bridge('reward');
    });
    on('ZENKO.orientationDidChange', () => bridge('deviceData'));
  )JS");
  service.facts->setOutputVolume(0.25f);

  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLRewardedAd::loadRewardedAdForZone("Z");
  ASSERT_TRUE(screen->waitForCall("rewarded ready Z @http"));
  TNLRewardedAd::showRewardedAdForZone("Z");
  std::shared_ptr<TNLFSAdViewController> controller;
  ASSERT_TRUE(waitFor([&] {
    controller =
        std::dynamic_pointer_cast<TNLFSAdViewController>(screen->presentedViewController());
    GtkWidget* widget = controller ? widgetOf(controller->view()) : nullptr;
    return widget && gtk_widget_get_mapped(gtk_widget_get_toplevel(widget)) &&
           controller->loadedWebView()->loadedAd();
  }));
  const auto ad = controller->loadedWebView()->loadedAd();
  ASSERT_NE(ad, nullptr);

  // "Open" covers the ad with the click-out browser at the decoded address.
  ASSERT_TRUE(reports.waitFor("ZENKO.isAdVisible"));
  const auto browser =
      std::dynamic_pointer_cast<TNLClickOutViewController>(controller->presentedViewController());
  ASSERT_NE(browser, nullptr);
  ASSERT_TRUE(waitFor([&] { return !server.requestsTo("/landing").empty(); }));
  EXPECT_EQ(server.requestsTo("/landing").front().query, "from=ad&level=3");

  // The user clicks "Done": the ad is visible again and the creative grants the reward.
  GtkWidget* done = widgetOf(browser->doneButton());
  ASSERT_NE(done, nullptr);
  click(done, gtk_widget_get_allocated_width(done) / 2, gtk_widget_get_allocated_height(done) / 2);
  ASSERT_TRUE(screen->waitForCall("rewarded reward Z @main"));
  EXPECT_TRUE(waitFor([&] { return controller->presentedViewController() == nullptr; }));

  // The volume changes, and the host's window turns to landscape.
  service.facts->setOutputVolume(0.5f);
  gtk_window_resize(GTK_WINDOW(hostWindow), 640, 480);
  ASSERT_TRUE(screen->waitForCall("rewarded closed Z @main"));
  EXPECT_TRUE(waitFor([&] { return screen->presentedViewController() == nullptr; }));
  EXPECT_EQ(screen->calls(), (Names{"rewarded ready Z @http", "rewarded reward Z @main",
                                    "rewarded closed Z @main"}));

  // Closing finishes the measurement session while the page is still there to hear it.
  ASSERT_TRUE(reports.waitFor("omidBridge.finishSession"));
  Names measured;
  Names heard;
  for (const auto& name : reports.names()) {
    (name.starts_with("omidBridge.") ? measured : heard).push_back(name);
  }
  std::erase(measured, "omidBridge.setNativeViewHierarchy");
  EXPECT_EQ(measured,
            (Names{"omidBridge.init", "omidBridge.startSession", "omidBridge.finishSession"}));
  // The presentation's own "visible" statement goes before the page is loaded, so it is not here.
  ASSERT_EQ(heard, (Names{"receivePayload", "ZENKO.setVolume", "ZENKO.onDeviceData",
                          "ZENKO.isAdVisible", "ZENKO.isAdVisible", "ZENKO.setVolume",
                          "ZENKO.orientationDidChange", "ZENKO.onDeviceData"}));
  // The payload is the ad's whole record, as an object; the device data the real view's size and
  // the window's orientation.
  EXPECT_EQ(reports.named("receivePayload")[0].args[0],
            nlohmann::json::parse(TNLJSON::serialize(ad->fullAd())));
  EXPECT_EQ(reports.named("ZENKO.setVolume")[0].args, nlohmann::json::array({0.25}));
  const auto device = reports.named("ZENKO.onDeviceData");
  EXPECT_EQ(device[0].args[0]["webviewWidth"], 480);
  EXPECT_EQ(device[0].args[0]["webviewHeight"], 640);
  EXPECT_EQ(device[0].args[0]["orientation"], 1);
  EXPECT_EQ(device[1].args[0]["webviewWidth"], 640);  // the cover follows the host's window
  EXPECT_EQ(device[1].args[0]["orientation"], 2);
  EXPECT_EQ(reports.named("ZENKO.isAdVisible")[0].args, nlohmann::json::array({false}));
  EXPECT_EQ(reports.named("ZENKO.orientationDidChange")[0].args,
            nlohmann::json::array({"landscape"}));
  const auto start = reports.named("omidBridge.startSession")[0];
  // The session's identifier, then its context.
  ASSERT_GE(start.types.size(), 2u);
  EXPECT_EQ(Names(start.types.begin(), start.types.begin() + 2), (Names{"string", "object"}));
  EXPECT_EQ(start.args[1]["adSessionType"], "html");
  // The device-orientation macro, on the Linux machine's facts: its screen is landscape.
  TNLSetup::setDeviceFacts(TNLDeviceFacts::linuxFacts());
  EXPECT_EQ(TNLUrlParser().createOrientationString(), "landscape");
}

}  // namespace
