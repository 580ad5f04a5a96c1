// Full-screen ads in real windows: the public API loads an ad from the loopback ad service, shows
// it in a WebKit view that covers the host's window, and the creative's page talks with the
// library over the bridge until it closes itself.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <vector>

#include "Ads/FullScreenAds/TNLFSAdHandler.h"
#include "Ads/FullScreenAds/TNLFSAdViewController.h"
#include "Ads/Macros/TNLUrlParser.h"
#include "Ads/TNLAd.h"
#include "Ads/TNLAdWebView.h"
#include "Ads/TNLClickOutViewController.h"
#include "Platform/Foundation/TNLJSON.h"
#include "TarnelAd/TNLDeviceFacts.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/TarnelAd.h"
#include "e2e/TNLCreativeTestSupport.h"
#include "e2e/TNLGtkTestSupport.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestAdService.h"
#include "support/TNLTestHosts.h"

namespace {

using namespace tnl_e2e;
using Response = TNLTestServer::Response;
using Names = std::vector<std::string>;

constexpr auto kContentDelay = TNLTestAdService::kContentDelay;

class FullScreenAdTest : public GtkTest {
 protected:
  void SetUp() override {
    GtkTest::SetUp();
    service.install();
    window = TNLWindow::create({0.0, 0.0, 480.0, 640.0});
    window->setRootViewController(screen);
    window->makeKeyAndVisible();
    hostWindow = gtk_widget_get_toplevel(widgetOf(screen->view()));
    ASSERT_TRUE(waitUntilMapped(hostWindow));
    service.publishManifest({{0, "/ads"}});
    server.on("GET", "/ads", Response::json(adJSON()).after(kContentDelay));
    ASSERT_TRUE(service.preloadManifest());
  }

  std::string adJSON() const {
    return TNLJSON::serialize({{"sdkType", "html"},
                               {"creative_tag", server.url("/creative.html")},
                               {"copy", {{"brandName", "Acme"}}},
                               {"payload", {{"level", 3}, {"reward", "coins"}}}});
  }

  void serveCreative(const std::string& body, const std::string& script) {
    server.on("GET", "/creative.html",
              Response(200, creativePage(body, script), "text/html").after(kContentDelay));
  }

  // The controller of the shown ad, once it covers the host's window and its page is loading.
  std::shared_ptr<TNLFSAdViewController> shownAd() {
    std::shared_ptr<TNLFSAdViewController> controller;
    EXPECT_TRUE(waitFor([&] {
      controller =
          std::dynamic_pointer_cast<TNLFSAdViewController>(screen->presentedViewController());
      GtkWidget* widget = controller ? widgetOf(controller->view()) : nullptr;
      return widget && gtk_widget_get_mapped(gtk_widget_get_toplevel(widget)) &&
             controller->loadedWebView()->loadedAd();
    }));
    return controller;
  }

  bool waitUntilDismissed() {
    return waitFor([&] { return screen->presentedViewController() == nullptr; });
  }

  TNLTestAdService service;
  TNLTestServer& server = service.server;
  CreativeReports reports{server};
  std::shared_ptr<TNLTestFullScreenHost> screen = std::make_shared<TNLTestFullScreenHost>();
  std::shared_ptr<TNLWindow> window;
  GtkWidget* hostWindow = nullptr;
};

TEST_F(FullScreenAdTest, ARewardedAdRunsFromLoadToCloseAndItsPageHearsTheLibraryInOrder) {
  server.on("GET", "/landing", Response(200, "<h1>Landing</h1>", "text/html"));
  // The creative asks for the device data, then opens the advertiser's page; it grants the
  // reward once it is visible again and closes when the screen turns.
  serveCreative("<h1>Rewarded</h1>", R"JS(
    on('receivePayload', () => bridge('deviceData'));
    on('ZENKO.onDeviceData', () => {
      const landing = location.origin + '/landing?from=ad&level=3';
      bridge('open?url=' + encodeURIComponent(landing));
    });
    let browserShown = false;
    on('ZENKO.isAdVisible', (visible) => {
      if (!visible) browserShown = true;
      else if (browserShown) bridge('reward');
    });
    let closing = false;
    on('ZENKO.orientationDidChange', () => { if (!closing) { closing = true; bridge('close'); } });
  )JS");
  service.facts->setOutputVolume(0.25f);

  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLRewardedAd::loadRewardedAdForZone("Z");
  ASSERT_TRUE(screen->waitForCall("rewarded ready Z @http"));
  ASSERT_TRUE(service.waitForEvents(4));
  TNLRewardedAd::showRewardedAdForZone("Z");
  const auto controller = shownAd();
  ASSERT_NE(controller, nullptr);
  const auto ad = controller->loadedWebView()->loadedAd();
  ASSERT_NE(ad, nullptr);

  // "Open" presents the click-out browser over the ad, with the advertiser's page at the
  // decoded address; the creative is told that it is covered.
  ASSERT_TRUE(reports.waitFor("ZENKO.isAdVisible"));
  const auto browser =
      std::dynamic_pointer_cast<TNLClickOutViewController>(controller->presentedViewController());
  ASSERT_NE(browser, nullptr);
  EXPECT_EQ(browser->url(), server.url("/landing?from=ad&level=3"));
  EXPECT_EQ(browser->brandNameLabel()->text(), "Acme");
  ASSERT_TRUE(waitFor([&] { return !server.requestsTo("/landing").empty(); }));
  EXPECT_EQ(server.requestsTo("/landing").front().query, "from=ad&level=3");

  // The user taps "Done": the ad is visible again and the creative grants the reward.
  GtkWidget* done = widgetOf(browser->doneButton());
  ASSERT_NE(done, nullptr);
  click(done, gtk_widget_get_allocated_width(done) / 2, gtk_widget_get_allocated_height(done) / 2);
  ASSERT_TRUE(screen->waitForCall("rewarded reward Z @main"));
  EXPECT_TRUE(waitFor([&] { return controller->presentedViewController() == nullptr; }));
  EXPECT_EQ(screen->presentedViewController(), controller) << "a reward does not end the ad";

  // The volume changes, and the host's window turns to landscape: the creative closes.
  service.facts->setOutputVolume(0.5f);
  gtk_window_resize(GTK_WINDOW(hostWindow), 640, 480);
  ASSERT_TRUE(screen->waitForCall("rewarded closed Z @main"));
  EXPECT_TRUE(waitUntilDismissed());
  EXPECT_TRUE(TNLFSAdHandler::sharedHandler()->loadedAds().empty());
  EXPECT_EQ(screen->calls(), (Names{"rewarded ready Z @http", "rewarded reward Z @main",
                                    "rewarded closed Z @main"}));

  // Everything the page heard, in order. The presentation's own "visible" statement is sent
  // before the page is loaded, so it never reaches the creative.
  ASSERT_TRUE(reports.waitFor("ZENKO.orientationDidChange"));
  ASSERT_EQ(reports.names(),
            (Names{"receivePayload", "ZENKO.setVolume", "ZENKO.onDeviceData", "ZENKO.isAdVisible",
                   "ZENKO.isAdVisible", "ZENKO.setVolume", "ZENKO.orientationDidChange"}));
  const auto calls = reports.calls();
  // The payload is the ad's whole record, as an object; the device data the real view's size.
  EXPECT_EQ(calls[0].args[0], nlohmann::json::parse(TNLJSON::serialize(ad->fullAd())));
  EXPECT_EQ(calls[1].args, nlohmann::json::array({0.25}));
  EXPECT_EQ(calls[2].args[0]["webviewWidth"], 480);
  EXPECT_EQ(calls[2].args[0]["webviewHeight"], 640);
  EXPECT_EQ(calls[3].args, nlohmann::json::array({false}));
  EXPECT_EQ(calls[6].args, nlohmann::json::array({"landscape"}));

  ASSERT_TRUE(service.waitForEvents(7));
  EXPECT_EQ(service.events(),
            (Names{TNL_MANIFESTLOADED_TRACKER, TNL_ADREQUESTED_TRACKER, TNL_ADRETURNED_TRACKER,
                   TNL_ADREADY_TRACKER, TNL_ADSHOWING_TRACKER, TNL_ADREWARDED_TRACKER,
                   TNL_ADCLOSED_TRACKER}));
}

TEST_F(FullScreenAdTest, ACreativeInALandscapeWindowOnALandscapeScreenIsToldLandscape) {
  // The tests' display is 1280 x 1024; the host's window turns to 640 x 480.
  gtk_window_resize(GTK_WINDOW(hostWindow), 640, 480);
  ASSERT_TRUE(waitFor([&] { return window->frame().size == TNLSize{640.0, 480.0}; }));
  serveCreative("<h1>Ad</h1>", "on('receivePayload', () => bridge('deviceData'));");

  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("L");
  ASSERT_TRUE(screen->waitForCall("interstitial ready L @http"));
  TNLInterstitialAd::showInterstitialAdForZone("L");
  ASSERT_NE(shownAd(), nullptr);
  ASSERT_TRUE(reports.waitFor("ZENKO.onDeviceData"));
  EXPECT_EQ(reports.named("ZENKO.onDeviceData")[0].args[0]["orientation"], 2);
  // The device-orientation macro, on the device facts of the Linux machine.
  TNLSetup::setDeviceFacts(TNLDeviceFacts::linuxFacts());
  EXPECT_EQ(TNLUrlParser().createOrientationString(), "landscape");
}

TEST_F(FullScreenAdTest, ACreativeThatOptsInToDisplayMeasurementHearsItsSessionFromTheSDK) {
  // The creative opts in once it has its payload and closes once its session has started.
  serveCreative("<h1>Measured</h1>", R"JS(
    on('receivePayload', () => bridge('optin?display'));
    on('omidBridge.startSession', () => bridge('close'));
  )JS");

  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("OM", adJSON());
  ASSERT_TRUE(screen->waitForCall("interstitial ready OM @http"));
  TNLInterstitialAd::showInterstitialAdForZone("OM");
  ASSERT_NE(shownAd(), nullptr);
  ASSERT_TRUE(reports.waitFor("omidBridge.startSession"));
  const auto start = reports.named("omidBridge.startSession");
  // The session's identifier, then its context.
  ASSERT_GE(start[0].types.size(), 2u);
  EXPECT_EQ(Names(start[0].types.begin(), start[0].types.begin() + 2), (Names{"string", "object"}));
  EXPECT_EQ(start[0].args[1]["adSessionType"], "html");

  // Closing finishes the session while its page is still there to hear it.
  ASSERT_TRUE(screen->waitForCall("interstitial closed OM @main"));
  ASSERT_TRUE(reports.waitFor("omidBridge.finishSession"));
  EXPECT_TRUE(waitUntilDismissed());
  const Names names = reports.names();
  const auto position = [&](const std::string& name) {
    return std::find(names.begin(), names.end(), name) - names.begin();
  };
  EXPECT_LT(position("receivePayload"), position("omidBridge.init"));
  EXPECT_LT(position("omidBridge.init"), position("omidBridge.startSession"));
  EXPECT_LT(position("omidBridge.startSession"), position("omidBridge.finishSession"));
  EXPECT_EQ(reports.named("omidBridge.startSession").size(), 1u);
}

}  // namespace
