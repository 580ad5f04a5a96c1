#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Ads/FullScreenAds/TNLFSAd.h"
#include "Ads/FullScreenAds/TNLFSAdHandler.h"
#include "Ads/FullScreenAds/TNLFSAdViewController.h"
#include "Ads/TNLAdWebView.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TarnelAd/TarnelAd.h"
#include "support/OMIDTestStatements.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestAdService.h"
#include "support/TNLTestHosts.h"

using namespace std::chrono_literals;
using Response = TNLTestServer::Response;
using Calls = std::vector<std::string>;
using Target = TNLHeadlessWebEngine::Target;

namespace {

constexpr auto kContentDelay = TNLTestAdService::kContentDelay;
constexpr char kCreativePage[] = "<html><body><script>/* creative */</script></body></html>";

class FullScreenAds : public ::testing::Test {
 protected:
  void SetUp() override {
    service.install();
    window->setRootViewController(screen);
    window->makeKeyAndVisible();
    server.on("GET", "/creative.html",
              Response(200, kCreativePage, "text/html").after(kContentDelay));
    service.publishManifest({{0, "/ads"}});
  }

  std::string adJSON() const {
    return TNLJSON::serialize({{"sdkType", "html"},
                               {"creative_tag", server.url("/creative.html")},
                               {"copy", {{"brandName", "Acme"}}},
                               {"payload", {{"level", 3}}}});
  }

  void serveAds() { server.on("GET", "/ads", Response::json(adJSON()).after(kContentDelay)); }

  std::shared_ptr<TNLFSAd> stored(const std::string& zone) const {
    const auto ads = TNLFSAdHandler::sharedHandler()->loadedAds();
    const auto found = ads.find(zone);
    return found == ads.end() ? nullptr : found->second;
  }

  // Shows the loaded ad of the zone and plays its creative: the page loads, hears the library,
  // opts in to measurement, grants the reward and closes. The zone is then forgotten.
  void showAndPlay(const std::string& zone, const std::function<void()>& show) {
    const auto ad = stored(zone);
    ASSERT_NE(ad, nullptr);
    ASSERT_TRUE(service.waitForEvents(4));
    show();
    ASSERT_TRUE(service.waitForEvents(5));
    std::shared_ptr<TNLAdWebView> webView;
    ASSERT_TRUE(TNLMainQueue::runUntil([&] {
      const auto controller =
          std::dynamic_pointer_cast<TNLFSAdViewController>(screen->presentedViewController());
      webView = controller ? controller->loadedWebView() : nullptr;
      return screen->disappeared == 1 && webView && webView->loadedAd();
    }));
    EXPECT_EQ(webView->loadedAd(), ad);
    const auto engine = TNLHeadlessWebEngine::of(webView);

    ASSERT_EQ(engine->playPageLoad(), TNLNavigationActionPolicy::allow);
    // The payload as the library formats it (pretty-printed), not compact.
    const std::string payload = TNLJSON::serialize(ad->fullAd(), true);
    EXPECT_EQ(engine->evaluatedStatements(),
              (Calls{"ZENKO.isAdVisible(true)", "receivePayload(" + payload + ")",
                     "ZENKO.setVolume(1.000000)"}));
    engine->deliverNavigationAction("bridge://optin?display", Target::mainFrame);
    ASSERT_TRUE(OMIDTestStatements::waitFor(webView, "startSession"));
    EXPECT_EQ(engine->deliverNavigationAction("bridge://reward", Target::mainFrame),
              TNLNavigationActionPolicy::cancel);
    ASSERT_TRUE(service.waitForEvents(6));
    EXPECT_NE(stored(zone), nullptr) << "kept until closed";
    const int appeared = screen->appeared;
    engine->deliverNavigationAction("bridge://close", Target::mainFrame);
    EXPECT_EQ(stored(zone), nullptr);
    EXPECT_TRUE(OMIDTestStatements::waitFor(webView, "finishSession"));
    ASSERT_TRUE(TNLMainQueue::runUntil([&] { return screen->appeared == appeared + 1; }));
    EXPECT_EQ(screen->presentedViewController(), nullptr);
    ASSERT_TRUE(service.waitForEvents(7));
  }

  static Calls lifecycle() {
    return {TNL_MANIFESTLOADED_TRACKER, TNL_ADREQUESTED_TRACKER, TNL_ADRETURNED_TRACKER,
            TNL_ADREADY_TRACKER,        TNL_ADSHOWING_TRACKER,   TNL_ADREWARDED_TRACKER,
            TNL_ADCLOSED_TRACKER};
  }

  TNLTestAdService service;
  TNLTestServer& server = service.server;
  std::shared_ptr<TNLWindow> window = TNLWindow::create();
  std::shared_ptr<TNLTestFullScreenHost> screen = std::make_shared<TNLTestFullScreenHost>();
};

TEST_F(FullScreenAds, ARewardedAdFromTheDemandSourcesRunsFromLoadToClose) {
  serveAds();
  ASSERT_TRUE(service.preloadManifest());
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLRewardedAd::loadRewardedAdForZone("Z");
  ASSERT_TRUE(screen->waitForCalls(1));
  EXPECT_EQ(service.queriesTo("/ads"), Calls{"z=Z&p=2"});
  ASSERT_NE(stored("Z"), nullptr);
  EXPECT_TRUE(stored("Z")->rewarded());
  showAndPlay("Z", [] { TNLRewardedAd::showRewardedAdForZone("Z"); });
  EXPECT_EQ(service.events(), lifecycle());

  // Forgotten once closed. A show that finds nothing, and a close for a zone with nothing
  // stored, both count as interstitials; the close is announced.
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLRewardedAd::showRewardedAdForZone("Z");
  TNLFSAdHandler::sharedHandler()->adWillCloseInZone("Z");
  EXPECT_EQ(screen->calls(),
            (Calls{"rewarded ready Z @http", "rewarded reward Z @main", "rewarded closed Z @main",
                   "interstitial failed Z @main", "interstitial closed Z @main"}));
  ASSERT_TRUE(service.waitForEvents(8));
  EXPECT_EQ(service.events().back(), TNL_ADCLOSED_TRACKER);
}

TEST_F(FullScreenAds, HostMarkupTakesThePlaceOfTheDemandSources) {
  ASSERT_TRUE(service.preloadManifest());
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("M", adJSON());
  ASSERT_TRUE(screen->waitForCalls(1));
  EXPECT_TRUE(service.queriesTo("/ads").empty());
  ASSERT_NE(stored("M"), nullptr);
  EXPECT_FALSE(stored("M")->rewarded());

  // An interstitial's creative may still grant a reward: the registered rewarded delegate hears it.
  showAndPlay("M", [] { TNLInterstitialAd::showInterstitialAdForZone("M"); });
  EXPECT_EQ(screen->calls(), (Calls{"interstitial ready M @http", "rewarded reward M @main",
                                    "interstitial closed M @main"}));
  // Markup needs no request, so "OnAdRequested" and "OnAdReturned" leave together.
  Calls events = service.events();
  ASSERT_EQ(events.size(), 7u);
  if (events[1] == TNL_ADRETURNED_TRACKER) {
    std::swap(events[1], events[2]);
  }
  EXPECT_EQ(events, lifecycle());
}

TEST_F(FullScreenAds, AVASTAdIsTheTemplatePageFilledWithItsDocumentAndMediaFile) {
  service.publishManifest({{0, "/vast"}});
  server.on("GET", "/vast",
            Response::xml(R"(<VAST version="3.0"><Ad id="7"><InLine><Creatives><Creative>)"
                          R"(<Linear><MediaFiles><MediaFile type="video/mp4">)"
                          "\n   http://127.0.0.1/v.mp4 \n</MediaFile>"
                          R"(</MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>)")
                .after(kContentDelay));
  server.on("GET", TNLTestAdService::kTemplatePath,
            Response(200,
                     "<html><script>var doc = `^#xml_doc#^`; var where = '^#zone#^/^#site#^';"
                     "</script><video src=\"^#video#^\"></video><!-- ^#zone#^ --></html>",
                     "text/html")
                .after(kContentDelay));
  ASSERT_TRUE(service.preloadManifest());
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLRewardedAd::loadRewardedAdForZone("V");
  ASSERT_TRUE(screen->waitForCalls(1));
  const auto ad = stored("V");
  ASSERT_NE(ad, nullptr);
  ASSERT_NE(ad->xml().find("<VAST"), std::string::npos);
  EXPECT_EQ(ad->creativeTag(), server.url(TNLTestAdService::kTemplatePath));
  // Every placeholder, each time it appears; the media file's address trimmed.
  EXPECT_EQ(ad->html(), "<html><script>var doc = `" + ad->xml() +
                            "`; var where = 'zone/site';</script><video "
                            "src=\"http://127.0.0.1/v.mp4\"></video><!-- zone --></html>");
}

TEST_F(FullScreenAds, WithoutADelegateOfItsTypeAnOperationOnlyPrintsItsLine) {
  TNLLogCapture capture;
  serveAds();
  const auto printed = [&](const std::string& type) {
    return capture.count("Need to set delegate for TNL" + type + "Ad using + (void)set" + type +
                         "AdDelegate:(UIViewController<TNLRewardedAdDelegate> *)delegate "
                         "appID:(NSString *)appID before loading ad!");
  };
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  TNLInterstitialAd::showInterstitialAdForZone("Z");
  TNLRewardedAd::loadRewardedAdForZone("Z", adJSON());
  TNLRewardedAd::showRewardedAdForZone("Z");
  EXPECT_EQ(printed("Interstitial"), 2u);
  EXPECT_EQ(printed("Rewarded"), 2u);
  // Registering one type does not open the other.
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  TNLMainQueue::runFor(100ms);
  EXPECT_EQ(printed("Interstitial"), 3u);
  EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(FullScreenAds, ALoadedZoneAnswersAtOnceForTheTypeItWasLoadedAs) {
  serveAds();
  ASSERT_TRUE(service.preloadManifest());
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");

  TNLRewardedAd::loadRewardedAdForZone("Z");
  ASSERT_TRUE(screen->waitForCalls(1));
  ASSERT_TRUE(service.waitForEvents(4));

  // Loaded: the stored rewarded ad answers, synchronously, to the rewarded delegate, without a
  // request or an event, even for an interstitial load.
  TNLRewardedAd::loadRewardedAdForZone("Z");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  EXPECT_EQ(screen->calls(),
            (Calls{"rewarded ready Z @http", "rewarded ready Z @main", "rewarded ready Z @main"}));

  // No zone is the zone "".
  TNLInterstitialAd::loadInterstitialAdForZone(std::nullopt);
  ASSERT_TRUE(screen->waitForCalls(4));
  EXPECT_EQ(screen->calls().back(), "interstitial ready  @http");
  EXPECT_EQ(service.queriesTo("/ads"), (Calls{"z=Z&p=2", "z=&p=1"}));
  ASSERT_TRUE(service.waitForEvents(7));
  TNLMainQueue::runFor(100ms);
  EXPECT_EQ(service.events().size(), 7u);
}

// Nothing is stored until the first answer, so the second load asks the sources again.
TEST_F(FullScreenAds, ASecondLoadWhileTheFirstIsInFlightAsksAgain) {
  serveAds();
  ASSERT_TRUE(service.preloadManifest());
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  ASSERT_TRUE(screen->waitForCalls(2));
  EXPECT_EQ(screen->calls(), (Calls{"interstitial ready Z @http", "interstitial ready Z @http"}));
  EXPECT_EQ(service.queriesTo("/ads").size(), 2u);
}

TEST_F(FullScreenAds, FailedLoadsComeOnTheHTTPThreadUnlessTheHostAsksForTheMainOne) {
  // Zone A has no ad; zone B's page breaks off; zone C loads.
  server.on("GET", "/ads", [this](const TNLTestServer::Request& request) {
    if (request.query == "z=B&p=1") {
      return Response::json(TNLJSON::serialize({{"creative_tag", server.url("/broken.html")}}))
          .after(kContentDelay);
    }
    return (request.query == "z=C&p=1" ? Response::json(adJSON()) : Response(404))
        .after(kContentDelay);
  });
  server.on("GET", "/broken.html", Response::dropped("<html>").after(kContentDelay));
  ASSERT_TRUE(service.preloadManifest());
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");

  TNLInterstitialAd::loadInterstitialAdForZone("A");
  ASSERT_TRUE(screen->waitForCalls(1));
  ASSERT_TRUE(service.waitForEvents(3));
  TNLInterstitialAd::loadInterstitialAdForZone("B");
  ASSERT_TRUE(screen->waitForCalls(2));
  ASSERT_TRUE(service.waitForEvents(6));
  EXPECT_EQ(service.events(),
            (Calls{TNL_MANIFESTLOADED_TRACKER, TNL_ADREQUESTED_TRACKER, TNL_ADUNAVAILABLE_TRACKER,
                   TNL_ADREQUESTED_TRACKER, TNL_ADRETURNED_TRACKER, TNL_ADUNAVAILABLE_TRACKER}));

  TNLSetup::setCallbacksOnMainThread(true);
  TNLInterstitialAd::loadInterstitialAdForZone("A");
  ASSERT_TRUE(screen->waitForCalls(3));
  TNLInterstitialAd::loadInterstitialAdForZone("C");
  ASSERT_TRUE(screen->waitForCalls(4));
  // A loaded zone answers a load from another thread on the main thread too, later; one from
  // the main thread at once.
  std::thread([] { TNLInterstitialAd::loadInterstitialAdForZone("C"); }).join();
  EXPECT_EQ(screen->calls().size(), 4u);
  ASSERT_TRUE(screen->waitForCalls(5));
  TNLInterstitialAd::loadInterstitialAdForZone("C");
  EXPECT_EQ(screen->calls(), (Calls{"interstitial failed A @http", "interstitial failed B @http",
                                    "interstitial failed A @main", "interstitial ready C @main",
                                    "interstitial ready C @main", "interstitial ready C @main"}));
}

}  // namespace
