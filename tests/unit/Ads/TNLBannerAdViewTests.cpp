#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Ads/BannerAds/TNLBannerAd.h"
#include "Ads/TNLAdWebView.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TNLOMHandler.h"
#include "TarnelAd/TarnelAd.h"
#include "support/OMIDTestStatements.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestHosts.h"

using namespace std::chrono_literals;
using Statements = std::vector<std::string>;
using Target = TNLHeadlessWebEngine::Target;

namespace {

constexpr char kTag[] = "https://cdn.example.test/banner/index.html";

class BannerAdView : public ::testing::Test {
 protected:
  void SetUp() override {
    TNLTestDeviceFacts::install();
    // The measurement SDK's process-wide observers exist before any count below.
    TNLOMHandler::sharedHandler();
    TNLScreen::mainScreen()->setBounds({0, 0, 320, 568});
    window = TNLWindow::create({0, 0, 320, 600});
    window->setRootViewController(host);
    window->makeKeyAndVisible();
  }

  // A banner in the host's view, laid out, with its creative's page loaded (the bridge is open
  // and the first visibility check has run).
  std::shared_ptr<TNLBannerAdView> shownBanner(unsigned size = TNLBannerAdSizeStandard) {
    auto banner = TNLBannerAdView::create(host, "APP1", size, host);
    host->view()->addSubview(banner);
    banner->layoutIfNeeded();
    auto ad = std::make_shared<TNLBannerAd>();
    ad->setCreativeTag(kTag);
    ad->setHtml("<html><body>banner</body></html>");
    const auto webView = banner->loadedWebView();
    webView->loadAd(ad);
    EXPECT_TRUE(TNLMainQueue::runUntil([&] { return webView->loadedAd() != nullptr; }));
    EXPECT_EQ(engine(banner)->playPageLoad(), TNLNavigationActionPolicy::allow);
    TNLMainQueue::runFor(20ms);
    return banner;
  }

  static std::shared_ptr<TNLHeadlessWebEngine> engine(
      const std::shared_ptr<TNLBannerAdView>& banner) {
    return TNLHeadlessWebEngine::of(banner->loadedWebView());
  }

  // What reaches the page from the change on, once the main loop has run the queued work.
  static Statements sentAfter(const std::shared_ptr<TNLBannerAdView>& banner,
                              const std::function<void()>& change) {
    const auto from = static_cast<std::ptrdiff_t>(engine(banner)->evaluatedStatements().size());
    change();
    TNLMainQueue::runFor(20ms);
    const Statements& all = engine(banner)->evaluatedStatements();
    return Statements(all.begin() + from, all.end());
  }

  static void act(const std::shared_ptr<TNLBannerAdView>& banner, const std::string& action) {
    engine(banner)->deliverNavigationAction(TNL_BRIDGE_CALLOUT + action, Target::mainFrame);
  }

  std::shared_ptr<TNLTestBannerHost> host = std::make_shared<TNLTestBannerHost>();
  std::shared_ptr<TNLWindow> window;
};

TEST_F(BannerAdView, TheBannerIsTheScreensShortSideWideWithTheProportionsOfItsSizeCode) {
  // The headless screen's short side is 375, whichever way the screen is turned.
  for (const TNLRect screen : {TNLRect(0, 0, 375, 667), TNLRect(0, 0, 667, 375)}) {
    TNLScreen::mainScreen()->setBounds(screen);
    EXPECT_EQ(TNLBannerAdView::calculateBannerSizeForAdSize(0), (TNLSize{375, 58.59375}));
    EXPECT_EQ(TNLBannerAdView::calculateBannerSizeForAdSize(2), (TNLSize{375, 312.5}));
  }

  // Laid out by its constraints, with the web view filling it; the host only positions it.
  const auto banner = TNLBannerAdView::create(host, "APP1", 0, host);
  host->view()->addSubview(banner);
  banner->setFrame({0, 100, 10, 10});
  banner->layoutIfNeeded();
  EXPECT_EQ(banner->frame(), (TNLRect{0, 100, 375, 58.59375}));
  EXPECT_EQ(banner->loadedWebView()->frame(), (TNLRect{0, 0, 375, 58.59375}));
}

TEST_F(BannerAdView, VisibilityIsReportedOnceTheBridgeIsOpenAndOnlyFromTheViewsOwnState) {
  // Before the page has loaded nothing is said, whatever changes.
  auto banner = TNLBannerAdView::create(host, "APP1", 0, host);
  host->view()->addSubview(banner);
  EXPECT_EQ(sentAfter(banner, [&] { banner->setHidden(true); }), Statements{});

  banner = shownBanner();
  EXPECT_EQ(engine(banner)->evaluatedStatements().back(), "ZENKO.isAdVisible(true)");
  EXPECT_TRUE(banner->impressionSent());
  const std::string seen = "ZENKO.isAdVisible(true)";
  const std::string unseen = "ZENKO.isAdVisible(false)";
  const struct {
    const char* change;
    std::function<void()> apply;
    Statements reported;
  } cases[] = {
      {"faded", [&] { banner->setAlpha(0.99); }, {unseen}},
      {"opaque", [&] { banner->setAlpha(1.0); }, {seen}},
      {"hidden", [&] { banner->setHidden(true); }, {unseen}},
      {"shown", [&] { banner->setHidden(false); }, {seen}},
      // Each check reads the state when it runs: two changes in one turn report the last one.
      {"twice",
       [&] {
         banner->setAlpha(0.5);
         banner->setAlpha(1.0);
       },
       {seen, seen}},
      // A hidden ancestor does not count.
      {"ancestor",
       [&] {
         host->view()->setHidden(true);
         banner->setAlpha(1.0);
       },
       {seen}},
      // Leaving the window is noticed only at the next change.
      {"removed",
       [&] {
         host->view()->setHidden(false);
         banner->removeFromSuperview();
       },
       {}},
      {"outside", [&] { banner->setAlpha(1.0); }, {unseen}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.change);
    EXPECT_EQ(sentAfter(banner, c.apply), c.reported);
  }
}

TEST_F(BannerAdView, TheApplicationsTransitionsSendFixedMessages) {
  // Even before the bridge has opened, whatever the view's state, and from any thread.
  const auto banner = TNLBannerAdView::create(host, "APP1", 0, host);
  banner->setHidden(true);
  const auto application = TNLApplication::sharedApplication();
  EXPECT_EQ(sentAfter(banner,
                      [&] {
                        application->setApplicationState(TNLApplicationState::background);
                        application->setApplicationState(TNLApplicationState::active);
                        std::thread([&] {
                          application->setApplicationState(TNLApplicationState::background);
                        }).join();
                      }),
            (Statements{"ZENKO.isAdVisible(false)", "ZENKO.isAdVisible(true)",
                        "ZENKO.isAdVisible(false)"}));
  EXPECT_FALSE(banner->impressionSent());
}

TEST_F(BannerAdView, ExpansionGrowsByPointsResizesByPercentAndLetsTouchesThrough) {
  const auto banner = shownBanner();
  ASSERT_EQ(banner->frame().height(), 50.0);
  const auto webView = banner->loadedWebView();
  const auto expand = [&](const std::string& action) {
    return sentAfter(banner, [&] { act(banner, action); });
  };

  // Points never shrink the banner, nor keep it as it is.
  EXPECT_EQ(expand("expand=40&touch=true"), Statements{});
  EXPECT_EQ(expand("expand=50&touch=true"), Statements{});
  EXPECT_EQ(banner->frame().height(), 50.0);

  EXPECT_EQ(expand("expand=250&touch=true"), Statements{"ZENKO.onWebViewExpanded(250.000000)"});
  EXPECT_EQ(banner->frame().height(), 250.0);
  EXPECT_EQ(webView->frame().height(), 250.0);
  // The added band passes touches to the host's view behind; the rest is the creative's.
  const auto hitAt = [&](double x, double y) {
    return window->hitTest(banner->convertPoint({x, y}, window));
  };
  EXPECT_EQ(banner->touchIgnoreZone(), (TNLRect{0, 0, 320, 200}));
  EXPECT_EQ(hitAt(319, 199), host->view());
  EXPECT_EQ(hitAt(10, 200), webView);

  // Collapse restores the height; the zone stays, and so does an expansion without touch.
  EXPECT_EQ(expand("collapse"), Statements{"ZENKO.onWebViewCollapsed()"});
  EXPECT_EQ(banner->frame().height(), 50.0);
  EXPECT_EQ(hitAt(10, 10), host->view());
  act(banner, "expand=250");
  EXPECT_EQ(banner->touchIgnoreZone(), (TNLRect{0, 0, 320, 200}));

  // Percent of the root view's 600 points may shrink the banner; the zone then goes negative
  // and lets nothing through.
  EXPECT_EQ(expand("expandPercent=10&touch=true"),
            Statements{"ZENKO.onWebViewExpanded(60.000000)"});
  EXPECT_EQ(banner->frame().height(), 60.0);
  EXPECT_EQ(hitAt(10, 10), webView);
  // Without a root controller the base is 0.
  banner->setRootVC(nullptr);
  act(banner, "expandPercent=50");
  EXPECT_EQ(banner->frame().height(), 0.0);
}

TEST_F(BannerAdView, AnyBridgeMayDriveTheBannerButOnlyItsOwnMayCloseIt) {
  const auto banner = shownBanner();
  const auto webView = banner->loadedWebView();
  TNLBridge stranger;
  stranger.setDelegate(banner);
  stranger.respondToBridgeAction("close");
  stranger.respondToBridgeAction("expand=120");
  stranger.respondToBridgeAction("allowScrolling=true");
  TNLMainQueue::runFor(20ms);
  EXPECT_EQ(banner->loadedWebView(), webView);
  EXPECT_TRUE(host->calls().empty());
  EXPECT_EQ(banner->frame().height(), 120.0);
  EXPECT_TRUE(webView->scrollView()->isScrollEnabled());
}

TEST_F(BannerAdView, DestructionUndoesTheRegistrationsAndFinishesTheMeasurement) {
  const auto center = TNLNotificationCenter::defaultCenter();
  const size_t observersBefore = center->observerCount();
  auto banner = shownBanner();
  const std::shared_ptr<TNLWebView> webView = banner->loadedWebView();
  act(banner, "optin?display");
  ASSERT_TRUE(OMIDTestStatements::waitFor(webView, "startSession"));

  banner->removeFromSuperview();
  const std::weak_ptr<TNLBannerAdView> weakBanner = banner;
  banner.reset();
  ASSERT_TRUE(weakBanner.expired());
  ASSERT_TRUE(OMIDTestStatements::waitFor(webView, "finishSession"));
  ASSERT_TRUE(
      TNLMainQueue::runUntil([] { return TNLOMHandler::sharedHandler()->webviews().empty(); }, 3s));
  EXPECT_EQ(webView.use_count(), 1);
  // Of the banner's registrations only its web view's volume observation is left, while this
  // test holds the web view.
  EXPECT_EQ(center->observerCount(), observersBefore + 1);
}

}  // namespace
