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
#include "Platform/Foundation/TNLStrings.h"
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
constexpr char kInterstitialLine[] =
    "Need to set delegate for TNLInterstitialAd using + (void)setInterstitialAdDelegate:"
    "(UIViewController<TNLRewardedAdDelegate> *)delegate appID:(NSString *)appID before loading "
    "ad!";
constexpr char kRewardedLine[] =
    "Need to set delegate for TNLRewardedAd using + (void)setRewardedAdDelegate:"
    "(UIViewController<TNLRewardedAdDelegate> *)delegate appID:(NSString *)appID before loading "
    "ad!";

class FullScreenAds : public ::testing::Test {
 protected:
  void SetUp() override {
    service.install();
    window->setRootViewController(screen);
    window->makeKeyAndVisible();
    server.on("GET", "/creative.html",
              Response(200, kCreativePage, "text/html").after(kContentDelay));
  }

  std::string adJSON() const {
    return TNLJSON::serialize({{"sdkType", "html"},
                               {"creative_tag", server.url("/creative.html")},
                               {"copy", {{"brandName", "Acme"}}},
                               {"payload", {{"level", 3}}}});
  }

  void warmUp() { ASSERT_TRUE(service.preloadManifest()); }

  std::shared_ptr<TNLFSAd> stored(const std::string& zone) const {
    const auto ads = TNLFSAdHandler::sharedHandler()->loadedAds();
    const auto found = ads.find(zone);
    return found == ads.end() ? nullptr : found->second;
  }

  // Waits until the shown ad covers the screen and its page is loaded; returns its web view.
  std::shared_ptr<TNLAdWebView> waitForShownAd() {
    std::shared_ptr<TNLAdWebView> webView;
    EXPECT_TRUE(TNLMainQueue::runUntil([&] {
      const auto controller =
          std::dynamic_pointer_cast<TNLFSAdViewController>(screen->presentedViewController());
      webView = controller ? controller->loadedWebView() : nullptr;
      return screen->disappeared == 1 && webView && webView->loadedAd();
    }));
    return webView;
  }

  // Shows the loaded ad of the zone and plays its creative: the page, at the ad's creative tag,
  // loads and hears the library, grants the reward and closes. The zone is then forgotten.
  void showAndPlay(const std::string& zone, const std::function<void()>& show) {
    const auto ad = stored(zone);
    ASSERT_NE(ad, nullptr);
    ASSERT_TRUE(service.waitForEvents(4));
    show();
    ASSERT_TRUE(service.waitForEvents(5));
    const auto webView = waitForShownAd();
    ASSERT_NE(webView, nullptr);
    EXPECT_EQ(webView->loadedAd(), ad);
    const auto engine = TNLHeadlessWebEngine::of(webView);
    EXPECT_EQ(engine->html(), ad->html());
    EXPECT_EQ(engine->baseURL(), ad->creativeTag());

    ASSERT_EQ(engine->playPageLoad(), TNLNavigationActionPolicy::allow);
    const std::string payload = TNLJSON::serialize(ad->fullAd(), true);
    EXPECT_EQ(engine->evaluatedStatements(),
              (Calls{"ZENKO.isAdVisible(true)", "receivePayload(" + payload + ")",
                     "ZENKO.setVolume(1.000000)"}));
    EXPECT_EQ(engine->deliverNavigationAction("bridge://reward", Target::mainFrame),
              TNLNavigationActionPolicy::cancel);
    ASSERT_TRUE(service.waitForEvents(6));
    EXPECT_NE(stored(zone), nullptr) << "kept until closed";
    const int appearedBefore = screen->appeared;
    engine->deliverNavigationAction("bridge://close", Target::mainFrame);
    EXPECT_EQ(stored(zone), nullptr);
    ASSERT_TRUE(TNLMainQueue::runUntil([&] { return screen->appeared == appearedBefore + 1; }));
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
  service.publishManifest({{0, "/ads"}});
  server.on("GET", "/ads", Response::json(adJSON()).after(kContentDelay));
  warmUp();

  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLRewardedAd::loadRewardedAdForZone("Z");
  ASSERT_TRUE(screen->waitForCalls(1));
  EXPECT_EQ(service.queriesTo("/ads"), Calls{"z=Z&p=2"});
  ASSERT_NE(stored("Z"), nullptr);
  EXPECT_TRUE(stored("Z")->rewarded());

  showAndPlay("Z", [] { TNLRewardedAd::showRewardedAdForZone("Z"); });
  EXPECT_EQ(screen->calls(), (Calls{"rewarded ready Z @http", "rewarded reward Z @main",
                                    "rewarded closed Z @main"}));
  EXPECT_EQ(service.events(), lifecycle());
}

TEST_F(FullScreenAds, TheFirstLoadOfAProcessFetchesTheManifestTwiceAndDropsItsRequestEvent) {
  // The ad client and the trackers each find no manifest: each fetches one. The request event
  // goes before the trackers have their monitoring section.
  service.publishManifest({{0, "/ads"}});
  server.on("GET", "/ads", Response::json(adJSON()).after(kContentDelay));
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  ASSERT_TRUE(screen->waitForCalls(1));
  EXPECT_EQ(screen->calls(), Calls{"interstitial ready Z @http"});
  EXPECT_EQ(server.requestsTo(service.manifestPath()).size(), 2u);
  ASSERT_TRUE(TNLMainQueue::runUntil([&] {
    const Calls events = service.events();
    return std::count(events.begin(), events.end(), TNL_ADREADY_TRACKER) == 1;
  }));
  TNLMainQueue::runFor(200ms);
  Calls events = service.events();
  events.erase(std::remove(events.begin(), events.end(), TNL_MANIFESTLOADED_TRACKER), events.end());
  EXPECT_EQ(events, (Calls{TNL_ADRETURNED_TRACKER, TNL_ADREADY_TRACKER}));
}

TEST_F(FullScreenAds, HostMarkupTakesThePlaceOfTheDemandSources) {
  service.publishManifest({{0, "/ads"}});
  warmUp();

  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("M", adJSON());
  ASSERT_TRUE(screen->waitForCalls(1));
  EXPECT_TRUE(service.queriesTo("/ads").empty());
  ASSERT_NE(stored("M"), nullptr);
  EXPECT_FALSE(stored("M")->rewarded());
  EXPECT_EQ(stored("M")->creativeTag(), server.url("/creative.html"));

  // An interstitial's creative may still grant a reward: the registered rewarded delegate hears it.
  showAndPlay("M", [] { TNLInterstitialAd::showInterstitialAdForZone("M"); });
  EXPECT_EQ(screen->calls(), (Calls{"interstitial ready M @http", "rewarded reward M @main",
                                    "interstitial closed M @main"}));
  // Markup needs no request, so "OnAdRequested" and "OnAdReturned" leave together and the
  // endpoint may take either first.
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
  warmUp();
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLRewardedAd::loadRewardedAdForZone("V");
  ASSERT_TRUE(screen->waitForCalls(1));
  const auto ad = stored("V");
  ASSERT_NE(ad, nullptr);
  ASSERT_NE(ad->xml().find("<VAST"), std::string::npos);
  // Every placeholder, each time it appears; the media file's address trimmed.
  EXPECT_EQ(ad->html(), "<html><script>var doc = `" + ad->xml() +
                            "`; var where = 'zone/site';</script><video "
                            "src=\"http://127.0.0.1/v.mp4\"></video><!-- zone --></html>");
}

TEST_F(FullScreenAds, WithoutADelegateOfItsTypeAnOperationOnlyPrintsItsLine) {
  TNLLogCapture capture;
  service.publishManifest({{0, "/ads"}});
  server.on("GET", "/ads", Response::json(adJSON()).after(kContentDelay));
  const auto exactly = [&](const std::string& line) {
    size_t n = 0;
    for (const auto& logged : capture.lines()) {
      n += TNLStrings::hasSuffix(logged, line) ? 1 : 0;
    }
    return n;
  };

  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  TNLInterstitialAd::showInterstitialAdForZone("Z");
  TNLRewardedAd::loadRewardedAdForZone("Z", adJSON());
  TNLRewardedAd::showRewardedAdForZone("Z");
  EXPECT_EQ(exactly(kInterstitialLine), 2u);
  EXPECT_EQ(exactly(kRewardedLine), 2u);

  // Registering one type does not open the other.
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  EXPECT_EQ(exactly(kInterstitialLine), 3u);
  TNLMainQueue::runFor(100ms);
  EXPECT_TRUE(screen->calls().empty());
  EXPECT_EQ(server.requestCount(), 0u);

  TNLRewardedAd::loadRewardedAdForZone("Z");
  ASSERT_TRUE(screen->waitForCalls(1));
  EXPECT_EQ(screen->calls(), Calls{"rewarded ready Z @http"});
  EXPECT_EQ(exactly(kRewardedLine), 2u);
}

TEST_F(FullScreenAds, ALoadedZoneAnswersAtOnceForTheTypeItWasLoadedAs) {
  service.publishManifest({{0, "/ads"}});
  server.on("GET", "/ads", Response::json(adJSON()).after(kContentDelay));
  warmUp();
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");

  TNLRewardedAd::loadRewardedAdForZone("Z");
  ASSERT_TRUE(screen->waitForCalls(1));
  ASSERT_TRUE(service.waitForEvents(4));

  // Again, and as an interstitial: the stored rewarded ad answers, synchronously, to the
  // rewarded delegate, without a request or an event.
  TNLRewardedAd::loadRewardedAdForZone("Z");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  EXPECT_EQ(screen->calls(),
            (Calls{"rewarded ready Z @http", "rewarded ready Z @main", "rewarded ready Z @main"}));

  // No zone is the zone "".
  TNLInterstitialAd::loadInterstitialAdForZone(std::nullopt);
  ASSERT_TRUE(screen->waitForCalls(4));
  EXPECT_EQ(screen->calls().back(), "interstitial ready  @http");
  EXPECT_EQ(service.queriesTo("/ads"), (Calls{"z=Z&p=2", "z=&p=1"}));
  EXPECT_NE(stored(""), nullptr);
  ASSERT_TRUE(service.waitForEvents(7));
  EXPECT_EQ(service.events(),
            (Calls{TNL_MANIFESTLOADED_TRACKER, TNL_ADREQUESTED_TRACKER, TNL_ADRETURNED_TRACKER,
                   TNL_ADREADY_TRACKER, TNL_ADREQUESTED_TRACKER, TNL_ADRETURNED_TRACKER,
                   TNL_ADREADY_TRACKER}));
}

TEST_F(FullScreenAds, ASecondLoadWhileTheFirstIsInFlightAsksAgain) {
  service.publishManifest({{0, "/ads"}});
  server.on("GET", "/ads", Response::json(adJSON()).after(kContentDelay));
  warmUp();
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  ASSERT_TRUE(screen->waitForCalls(2));
  EXPECT_EQ(screen->calls(), (Calls{"interstitial ready Z @http", "interstitial ready Z @http"}));
  EXPECT_EQ(service.queriesTo("/ads").size(), 2u);
  EXPECT_NE(stored("Z"), nullptr);
}

TEST_F(FullScreenAds, EmptyZonesAreReportedToTheInterstitialSide) {
  service.publishManifest({{0, "/ads"}});
  warmUp();
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLRewardedAd::setRewardedAdDelegate(screen, "APP1");

  // A rewarded show finds nothing: the failure goes to the interstitial delegate, at once.
  TNLRewardedAd::showRewardedAdForZone("R");
  EXPECT_EQ(screen->calls(), Calls{"interstitial failed R @main"});

  // A close for a zone with nothing stored also counts as an interstitial, and is announced.
  TNLFSAdHandler::sharedHandler()->adWillCloseInZone("R");
  EXPECT_EQ(screen->calls(), (Calls{"interstitial failed R @main", "interstitial closed R @main"}));
  ASSERT_TRUE(service.waitForEvents(2));
  TNLMainQueue::runFor(100ms);
  EXPECT_EQ(service.events(), (Calls{TNL_MANIFESTLOADED_TRACKER, TNL_ADCLOSED_TRACKER}));
  EXPECT_EQ(screen->presentedViewController(), nullptr);
}

TEST_F(FullScreenAds, FailedLoadsAreReportedOnTheHTTPThread) {
  service.publishManifest({{0, "/ads"}});
  // Zone A has no ad; zone B's ad has a page whose connection breaks.
  const std::string broken = TNLJSON::serialize({{"creative_tag", server.url("/broken.html")}});
  server.on("GET", "/ads", [broken](const TNLTestServer::Request& request) {
    return (request.query == "z=B&p=1" ? Response::json(broken) : Response(404))
        .after(kContentDelay);
  });
  server.on("GET", "/broken.html", Response::dropped("<html>").after(kContentDelay));
  warmUp();
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");

  TNLInterstitialAd::loadInterstitialAdForZone("A");
  ASSERT_TRUE(screen->waitForCalls(1));
  EXPECT_EQ(screen->calls(), Calls{"interstitial failed A @http"});
  ASSERT_TRUE(service.waitForEvents(3));

  TNLInterstitialAd::loadInterstitialAdForZone("B");
  ASSERT_TRUE(screen->waitForCalls(2));
  EXPECT_EQ(screen->calls().back(), "interstitial failed B @http");
  EXPECT_TRUE(TNLFSAdHandler::sharedHandler()->loadedAds().empty());
  ASSERT_TRUE(service.waitForEvents(6));
  EXPECT_EQ(service.events(),
            (Calls{TNL_MANIFESTLOADED_TRACKER, TNL_ADREQUESTED_TRACKER, TNL_ADUNAVAILABLE_TRACKER,
                   TNL_ADREQUESTED_TRACKER, TNL_ADRETURNED_TRACKER, TNL_ADUNAVAILABLE_TRACKER}));
}

TEST_F(FullScreenAds, AHostMayHaveReadyAndFailedOnTheMainThread) {
  service.publishManifest({{0, "/ads"}});
  server.on("GET", "/ads", [this](const TNLTestServer::Request& request) {
    return (request.query == "z=B&p=1" ? Response::json(adJSON()) : Response(404))
        .after(kContentDelay);
  });
  warmUp();
  TNLSetup::setCallbacksOnMainThread(true);
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");

  TNLInterstitialAd::loadInterstitialAdForZone("A");
  ASSERT_TRUE(screen->waitForCalls(1));
  TNLInterstitialAd::loadInterstitialAdForZone("B");
  ASSERT_TRUE(screen->waitForCalls(2));
  // A loaded zone answers a load from another thread on the main thread too, later; one from
  // the main thread at once.
  std::thread([] { TNLInterstitialAd::loadInterstitialAdForZone("B"); }).join();
  EXPECT_EQ(screen->calls().size(), 2u);
  ASSERT_TRUE(screen->waitForCalls(3));
  TNLInterstitialAd::loadInterstitialAdForZone("B");
  EXPECT_EQ(screen->calls(), (Calls{"interstitial failed A @main", "interstitial ready B @main",
                                    "interstitial ready B @main", "interstitial ready B @main"}));
}

TEST_F(FullScreenAds, ShowingTwiceBeforeACloseShowsTheSameAdAgain) {
  TNLLogCapture capture;
  service.publishManifest({{0, "/ads"}});
  server.on("GET", "/ads", Response::json(adJSON()).after(kContentDelay));
  warmUp();
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("Z");
  ASSERT_TRUE(screen->waitForCalls(1));
  ASSERT_TRUE(service.waitForEvents(4));
  const auto ad = stored("Z");

  TNLInterstitialAd::showInterstitialAdForZone("Z");
  TNLInterstitialAd::showInterstitialAdForZone("Z");
  const auto webView = waitForShownAd();
  ASSERT_NE(webView, nullptr);
  EXPECT_EQ(webView->loadedAd(), ad);
  // The second showing is made for the same ad, and the screen, already covered, refuses it.
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return capture.contains("Attempt to present"); }));
  EXPECT_EQ(screen->disappeared, 1);
  EXPECT_EQ(stored("Z"), ad);
  ASSERT_TRUE(service.waitForEvents(6));
  EXPECT_EQ(service.events()[4], TNL_ADSHOWING_TRACKER);
  EXPECT_EQ(service.events()[5], TNL_ADSHOWING_TRACKER);

  const auto engine = TNLHeadlessWebEngine::of(webView);
  engine->playPageLoad();
  engine->deliverNavigationAction("bridge://close", Target::mainFrame);
  EXPECT_EQ(screen->calls(), (Calls{"interstitial ready Z @http", "interstitial closed Z @main"}));
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return screen->presentedViewController() == nullptr; }));
  // Forgotten once closed.
  TNLInterstitialAd::showInterstitialAdForZone("Z");
  EXPECT_EQ(screen->calls().back(), "interstitial failed Z @main");
}

TEST_F(FullScreenAds, ClosingAMeasuredCreativeFinishesItsSession) {
  service.publishManifest({{0, "/ads"}});
  warmUp();
  TNLInterstitialAd::setInterstitialAdDelegate(screen, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("OM", adJSON());
  ASSERT_TRUE(screen->waitForCalls(1));
  TNLInterstitialAd::showInterstitialAdForZone("OM");
  const auto webView = waitForShownAd();
  ASSERT_NE(webView, nullptr);
  const auto engine = TNLHeadlessWebEngine::of(webView);
  ASSERT_EQ(engine->playPageLoad(), TNLNavigationActionPolicy::allow);
  engine->deliverNavigationAction("bridge://optin?display", Target::mainFrame);
  ASSERT_TRUE(OMIDTestStatements::waitFor(webView, "startSession"));
  // The impression went out when the bridge opened, before the session existed: nothing to say.
  EXPECT_EQ(OMIDTestStatements::count(webView, "publishImpressionEvent"), 0u);
  engine->deliverNavigationAction("bridge://close", Target::mainFrame);
  EXPECT_TRUE(OMIDTestStatements::waitFor(webView, "finishSession"));
}

}  // namespace
