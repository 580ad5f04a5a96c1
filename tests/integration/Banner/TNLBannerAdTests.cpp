#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Ads/BannerAds/TNLBannerAd.h"
#include "Ads/BannerAds/TNLBannerAdHandler.h"
#include "Ads/TNLAdWebView.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TarnelAd/TarnelAd.h"
#include "support/TNLTestAdService.h"
#include "support/TNLTestHosts.h"

using namespace std::chrono_literals;
using Response = TNLTestServer::Response;
using Calls = std::vector<std::string>;
using Target = TNLHeadlessWebEngine::Target;

namespace {

constexpr auto kContentDelay = TNLTestAdService::kContentDelay;
constexpr char kBannerPage[] = "<html><body><script>/* banner */</script></body></html>";

class BannerAds : public ::testing::Test {
 protected:
  void SetUp() override {
    service.install();
    window->setRootViewController(screen);
    window->makeKeyAndVisible();
    server.on("GET", "/banner.html", Response(200, kBannerPage, "text/html").after(kContentDelay));
    server.on("GET", "/dropped.html", Response::dropped("<html>").after(kContentDelay));
    // Zone D's page breaks off; zone N has no ad; every other zone gets the banner.
    server.on("GET", "/ads", [this](const TNLTestServer::Request& request) {
      if (request.query.starts_with("z=N&")) {
        return Response(404).after(kContentDelay);
      }
      const char* page = request.query.starts_with("z=D&") ? "/dropped.html" : "/banner.html";
      return Response::json(TNLJSON::serialize({{"sdkType", "html"},
                                                {"creative_tag", server.url(page)},
                                                {"copy", {{"brandName", "Acme"}}}}))
          .after(kContentDelay);
    });
    service.publishManifest({{0, "/ads"}});
    ASSERT_TRUE(service.preloadManifest());
  }

  std::shared_ptr<TNLBannerAdView> placedBanner() {
    auto banner = TNLBannerAdView::create(screen, "APP1", TNLBannerAdSizeStandard, screen);
    screen->view()->addSubview(banner);
    return banner;
  }

  static std::shared_ptr<TNLBannerAd> cached(const std::string& zone) {
    const auto ads = TNLBannerAdHandler::sharedHandler()->loadedAds();
    const auto found = ads.find(zone);
    return found == ads.end() ? nullptr : found->second;
  }

  // The events received from `from` on. Events sent back to back (the return and the showing
  // of a banner leave together) may reach the endpoint in either order, so they are compared
  // sorted.
  Calls sortedEventsFrom(size_t from) const {
    const Calls all = service.events();
    Calls part(all.begin() + static_cast<std::ptrdiff_t>(std::min(from, all.size())), all.end());
    std::sort(part.begin(), part.end());
    return part;
  }

  static Calls sorted(Calls calls) {
    std::sort(calls.begin(), calls.end());
    return calls;
  }

  TNLTestAdService service;
  TNLTestServer& server = service.server;
  std::shared_ptr<TNLWindow> window = TNLWindow::create();
  std::shared_ptr<TNLTestBannerHost> screen = std::make_shared<TNLTestBannerHost>();
};

TEST_F(BannerAds, ABannerLoadsIntoItsWebViewAndTheZoneIsThenAnsweredFromTheCache) {
  const auto banner = placedBanner();
  banner->loadAdForZone("B");
  ASSERT_TRUE(screen->waitForCalls(1));
  EXPECT_EQ(service.queriesTo("/ads"), Calls{"z=B&p=3"});
  const auto ad = cached("B");
  ASSERT_NE(ad, nullptr);
  const auto webView = banner->loadedWebView();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return webView->loadedAd() != nullptr; }));
  EXPECT_EQ(webView->loadedAd(), ad);
  const auto engine = TNLHeadlessWebEngine::of(webView);
  EXPECT_EQ(engine->html(), kBannerPage);
  EXPECT_EQ(engine->baseURL(), server.url("/banner.html"));
  ASSERT_TRUE(service.waitForEvents(4));
  EXPECT_EQ(sortedEventsFrom(0), sorted({TNL_MANIFESTLOADED_TRACKER, TNL_ADREQUESTED_TRACKER,
                                         TNL_ADRETURNED_TRACKER, TNL_ADSHOWING_TRACKER}));

  // Another banner for the zone: the same ad, without a request, answered before the call
  // returns; the host still hears of it on a later turn of the main loop.
  const auto again = placedBanner();
  again->loadAdForZone("B");
  EXPECT_EQ(screen->calls().size(), 1u);
  ASSERT_TRUE(screen->waitForCalls(2));
  EXPECT_EQ(screen->calls(), (Calls{"ready B @main", "ready B @main"}));
  EXPECT_EQ(screen->banners, (std::vector<std::shared_ptr<TNLBannerAdView>>{banner, again}));
  ASSERT_TRUE(
      TNLMainQueue::runUntil([&] { return again->loadedWebView()->loadedAd() != nullptr; }));
  EXPECT_EQ(again->loadedWebView()->loadedAd(), ad);
  ASSERT_TRUE(service.waitForEvents(7));
  TNLMainQueue::runFor(100ms);
  EXPECT_EQ(server.requestsTo("/ads").size(), 1u);
  EXPECT_EQ(server.requestsTo("/banner.html").size(), 1u);
  EXPECT_EQ(sortedEventsFrom(4),
            sorted({TNL_ADREQUESTED_TRACKER, TNL_ADRETURNED_TRACKER, TNL_ADSHOWING_TRACKER}));
}

TEST_F(BannerAds, FailuresAreReportedAndLeaveTheCacheAsItWas) {
  const auto banner = placedBanner();
  banner->loadAdForZone("A");
  ASSERT_TRUE(screen->waitForCalls(1));
  const auto loaded = cached("A");
  ASSERT_TRUE(service.waitForEvents(4));
  // The page breaks off (the ad was returned, but nothing is kept); no source has an ad.
  banner->loadAdForZone("D");
  ASSERT_TRUE(screen->waitForCalls(2));
  ASSERT_TRUE(service.waitForEvents(6));
  EXPECT_EQ(sortedEventsFrom(4), sorted({TNL_ADREQUESTED_TRACKER, TNL_ADUNAVAILABLE_TRACKER}));
  banner->loadAdForZone("N");
  ASSERT_TRUE(screen->waitForCalls(3));
  EXPECT_EQ(screen->calls(), (Calls{"ready A @main", "failed D @main", "failed N @main"}));
  const auto ads = TNLBannerAdHandler::sharedHandler()->loadedAds();
  EXPECT_EQ(ads, (std::map<std::string, std::shared_ptr<TNLBannerAd>>{{"A", loaded}}));
}

TEST_F(BannerAds, AClosingCreativeTakesItsBannerOffTheScreenAndIsHeardNoMore) {
  const auto banner = placedBanner();
  banner->loadAdForZone("B");
  ASSERT_TRUE(screen->waitForCalls(1));
  const auto webView = banner->loadedWebView();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return webView->loadedAd() != nullptr; }));
  const auto engine = TNLHeadlessWebEngine::of(webView);
  ASSERT_EQ(engine->playPageLoad(), TNLNavigationActionPolicy::allow);
  ASSERT_TRUE(service.waitForEvents(4));
  engine->deliverNavigationAction("bridge://close", Target::mainFrame);
  EXPECT_EQ(banner->superview(), nullptr);
  ASSERT_TRUE(screen->waitForCalls(2));
  EXPECT_EQ(screen->calls(), (Calls{"ready B @main", "closed B @main"}));
  ASSERT_TRUE(service.waitForEvents(5));
  EXPECT_EQ(service.events().back(), TNL_ADCLOSED_TRACKER);

  // Nothing more reaches the closed creative.
  const size_t sent = engine->evaluatedStatements().size();
  screen->view()->addSubview(banner);
  banner->setAlpha(0.5);
  engine->deliverNavigationAction("bridge://expand=300", Target::mainFrame);
  TNLMainQueue::runFor(50ms);
  EXPECT_EQ(engine->evaluatedStatements().size(), sent);
}

}  // namespace
