#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Ads/BannerAds/TNLBannerAd.h"
#include "Ads/Macros/TNLMacros.h"
#include "Ads/TNLAdWebView.h"
#include "Ads/TNLClickOutViewController.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TNLLog.h"
#include "TNLOMHandler.h"
#include "TarnelAd/TarnelAd.h"
#include "support/OMIDTestStatements.h"
#include "support/TNLLogCapture.h"
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
    ad->setZone("Z");
    ad->setAdCopy({{"brandName", "Acme"}});
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

  // The statements that reached the banner's page since the given count, once the main loop
  // has run the queued work.
  static Statements sentSince(const std::shared_ptr<TNLBannerAdView>& banner, size_t from) {
    TNLMainQueue::runFor(20ms);
    const Statements& all = engine(banner)->evaluatedStatements();
    return Statements(all.begin() + static_cast<std::ptrdiff_t>(std::min(from, all.size())),
                      all.end());
  }

  static void act(const std::shared_ptr<TNLBannerAdView>& banner, const std::string& action) {
    engine(banner)->deliverNavigationAction(TNL_BRIDGE_CALLOUT + action, Target::mainFrame);
  }

  std::shared_ptr<TNLTestBannerHost> host = std::make_shared<TNLTestBannerHost>();
  std::shared_ptr<TNLWindow> window;
};

TEST_F(BannerAdView, TheBannerIsTheScreensShortSideWideWithTheProportionsOfItsSizeCode) {
  // An unknown code is the standard size.
  EXPECT_EQ(TNLBannerAdView::baseSizeForAdSize(5), (TNLSize{320, 50}));
  EXPECT_EQ(TNLBannerAdView::calculateHeightForWidth(320, 5), 50.0);
  // The headless screen's short side is 375, whichever way the screen is turned.
  for (const TNLRect screen : {TNLRect(0, 0, 375, 667), TNLRect(0, 0, 667, 375)}) {
    TNLScreen::mainScreen()->setBounds(screen);
    EXPECT_EQ(TNLBannerAdView::calculateBannerSizeForAdSize(0), (TNLSize{375, 58.59375}));
    EXPECT_EQ(TNLBannerAdView::calculateBannerSizeForAdSize(2), (TNLSize{375, 312.5}));
  }

  // Laid out by its constraints, with the web view filling it; the host only positions it.
  const auto banner = TNLBannerAdView::create(host, "APP1", 0, host);
  EXPECT_EQ(banner->heightConstraint()->constant(), 58.59375);
  host->view()->addSubview(banner);
  banner->setFrame({0, 100, 10, 10});
  banner->layoutIfNeeded();
  EXPECT_EQ(banner->frame(), (TNLRect{0, 100, 375, 58.59375}));
  EXPECT_EQ(banner->loadedWebView()->frame(), (TNLRect{0, 0, 375, 58.59375}));
  EXPECT_EQ(TNLMacros::sharedMacroDict().at(TNL_APPID_MACRO), "APP1");
}

TEST_F(BannerAdView, VisibilityIsReportedOnceTheBridgeIsOpenAndOnlyFromTheViewsOwnState) {
  // Before the page has loaded nothing is said, whatever changes.
  auto banner = TNLBannerAdView::create(host, "APP1", 0, host);
  host->view()->addSubview(banner);
  banner->setAlpha(0.5);
  banner->setHidden(true);
  banner->setHidden(false);
  banner->setAlpha(1.0);
  TNLMainQueue::runFor(20ms);
  EXPECT_TRUE(engine(banner)->evaluatedStatements().empty());

  banner = shownBanner();
  EXPECT_EQ(engine(banner)->evaluatedStatements().back(), "ZENKO.isAdVisible(true)");
  EXPECT_TRUE(banner->impressionSent());
  size_t sent = engine(banner)->evaluatedStatements().size();

  // The check is queued: nothing is sent inside the change itself.
  banner->setAlpha(0.5);
  EXPECT_EQ(engine(banner)->evaluatedStatements().size(), sent);
  EXPECT_EQ(sentSince(banner, sent), Statements{"ZENKO.isAdVisible(false)"});
  Statements reported;
  for (const auto& change : std::vector<std::function<void()>>{
           [&] { banner->setAlpha(0.99); }, [&] { banner->setAlpha(1.0); },
           [&] { banner->setHidden(true); }, [&] { banner->setHidden(false); }}) {
    sent = engine(banner)->evaluatedStatements().size();
    change();
    const Statements now = sentSince(banner, sent);
    reported.insert(reported.end(), now.begin(), now.end());
  }
  EXPECT_EQ(reported, (Statements{"ZENKO.isAdVisible(false)", "ZENKO.isAdVisible(true)",
                                  "ZENKO.isAdVisible(false)", "ZENKO.isAdVisible(true)"}));

  // Each check reads the state when it runs: two changes in one turn report the last state.
  sent = engine(banner)->evaluatedStatements().size();
  banner->setAlpha(0.5);
  banner->setAlpha(1.0);
  EXPECT_EQ(sentSince(banner, sent),
            (Statements{"ZENKO.isAdVisible(true)", "ZENKO.isAdVisible(true)"}));

  // A hidden ancestor does not count; being out of a window does, but only at the next change.
  sent = engine(banner)->evaluatedStatements().size();
  host->view()->setHidden(true);
  banner->setAlpha(1.0);
  EXPECT_EQ(sentSince(banner, sent), Statements{"ZENKO.isAdVisible(true)"});
  host->view()->setHidden(false);
  banner->removeFromSuperview();
  EXPECT_EQ(sentSince(banner, sent + 1), Statements{});
  banner->setAlpha(1.0);
  EXPECT_EQ(sentSince(banner, sent + 1), Statements{"ZENKO.isAdVisible(false)"});
}

TEST_F(BannerAdView, TheApplicationsTransitionsSendFixedMessages) {
  // Even before the bridge has opened, and whatever the view's state.
  const auto banner = TNLBannerAdView::create(host, "APP1", 0, host);
  banner->setHidden(true);
  const auto application = TNLApplication::sharedApplication();
  application->setApplicationState(TNLApplicationState::background);
  application->setApplicationState(TNLApplicationState::active);
  EXPECT_EQ(sentSince(banner, 0),
            (Statements{"ZENKO.isAdVisible(false)", "ZENKO.isAdVisible(true)"}));

  // A state changed on another thread reaches the page on the main one.
  std::thread([&] { application->setApplicationState(TNLApplicationState::background); }).join();
  EXPECT_EQ(sentSince(banner, 2), Statements{"ZENKO.isAdVisible(false)"});
  EXPECT_FALSE(banner->impressionSent());
}

TEST_F(BannerAdView, ExpansionGrowsByPointsResizesByPercentAndLetsTouchesThrough) {
  const auto banner = shownBanner();
  ASSERT_EQ(banner->frame().height(), 50.0);
  const auto webView = banner->loadedWebView();
  size_t sent = engine(banner)->evaluatedStatements().size();

  // Points never shrink the banner, nor keep it as it is.
  act(banner, "expand=40&touch=true");
  act(banner, "expand=50&touch=true");
  EXPECT_EQ(banner->frame().height(), 50.0);
  EXPECT_EQ(banner->touchIgnoreZone(), TNLRect());
  EXPECT_TRUE(sentSince(banner, sent).empty());

  act(banner, "expand=250&touch=true");
  EXPECT_EQ(banner->heightConstraint()->constant(), 250.0);
  EXPECT_EQ(banner->frame().height(), 250.0);  // laid out at once
  EXPECT_EQ(webView->frame().height(), 250.0);
  EXPECT_EQ(banner->touchIgnoreZone(), (TNLRect{0, 0, 320, 200}));
  EXPECT_EQ(sentSince(banner, sent), Statements{"ZENKO.onWebViewExpanded(250.000000)"});

  // The added band passes touches to the host's view behind; the rest is the creative's.
  const auto hitAt = [&](double x, double y) {
    return window->hitTest(banner->convertPoint({x, y}, window));
  };
  EXPECT_FALSE(banner->pointInside({10, 10}));
  EXPECT_EQ(hitAt(10, 10), host->view());
  EXPECT_EQ(hitAt(319, 199), host->view());
  EXPECT_EQ(hitAt(10, 200), webView);
  EXPECT_FALSE(banner->pointInside({-1, 220}));

  // Collapse restores the height; the zone stays, and so does an expansion without touch.
  sent = engine(banner)->evaluatedStatements().size();
  act(banner, "collapse");
  EXPECT_EQ(banner->frame().height(), 50.0);
  EXPECT_EQ(hitAt(10, 10), host->view());
  EXPECT_EQ(banner->touchIgnoreZone(), (TNLRect{0, 0, 320, 200}));
  act(banner, "expand=250");
  EXPECT_EQ(banner->touchIgnoreZone(), (TNLRect{0, 0, 320, 200}));
  EXPECT_EQ(sentSince(banner, sent),
            (Statements{"ZENKO.onWebViewCollapsed()", "ZENKO.onWebViewExpanded(250.000000)"}));

  // Percent of the root view's 600 points may shrink the banner; the zone then goes negative
  // and lets nothing through.
  sent = engine(banner)->evaluatedStatements().size();
  act(banner, "expandPercent=10&touch=true");
  EXPECT_EQ(banner->frame().height(), 60.0);
  EXPECT_EQ(banner->touchIgnoreZone(), (TNLRect{0, 0, 320, -190}));
  EXPECT_EQ(hitAt(10, 10), webView);
  EXPECT_EQ(sentSince(banner, sent), Statements{"ZENKO.onWebViewExpanded(60.000000)"});

  // The safe area is the base.
  host->setAdditionalSafeAreaInsets({100, 0, 0, 0});
  act(banner, "expandPercent=50");
  EXPECT_EQ(banner->frame().height(), 250.0);

  // Without a root controller the base is 0.
  banner->setRootVC(nullptr);
  act(banner, "expandPercent=50");
  EXPECT_EQ(banner->frame().height(), 0.0);
  EXPECT_EQ(sentSince(banner, sent).back(), "ZENKO.onWebViewExpanded(0.000000)");
}

TEST_F(BannerAdView, AnyBridgeMayDriveTheBannerButOnlyItsOwnMayCloseIt) {
  const auto banner = shownBanner();
  const auto webView = banner->loadedWebView();
  const size_t sent = engine(banner)->evaluatedStatements().size();

  TNLBridge stranger;
  stranger.setDelegate(banner);
  stranger.respondToBridgeAction("close");
  stranger.respondToBridgeAction("expand=120");
  stranger.respondToBridgeAction("allowScrolling=true");
  stranger.respondToBridgeAction("enableRedirect");
  TNLMainQueue::runFor(20ms);
  EXPECT_EQ(banner->loadedWebView(), webView);
  EXPECT_EQ(banner->superview(), host->view());
  EXPECT_TRUE(host->calls().empty());
  EXPECT_EQ(banner->frame().height(), 120.0);
  EXPECT_TRUE(webView->scrollView()->isScrollEnabled());
  EXPECT_TRUE(webView->allowRedirect());
  EXPECT_EQ(sentSince(banner, sent), Statements{"ZENKO.onWebViewExpanded(120.000000)"});

  // A link opens in the click-out browser over the root controller, titled with the brand.
  act(banner, "open?url=https%3A%2F%2Fshop.example.test%2F");
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return host->presentedViewController() != nullptr; }));
  const auto clickOut =
      std::dynamic_pointer_cast<TNLClickOutViewController>(host->presentedViewController());
  ASSERT_NE(clickOut, nullptr);
  EXPECT_EQ(clickOut->brandName(), "Acme");
  EXPECT_EQ(clickOut->url(), "https://shop.example.test/");
}

TEST_F(BannerAdView, DestructionUndoesTheRegistrationsAndFinishesTheMeasurement) {
  const auto center = TNLNotificationCenter::defaultCenter();
  const size_t observersBefore = center->observerCount();
  auto banner = shownBanner();
  const std::shared_ptr<TNLWebView> webView = banner->loadedWebView();
  act(banner, "optin?display");
  ASSERT_TRUE(OMIDTestStatements::waitFor(webView, "startSession"));
  EXPECT_GT(center->observerCount(), observersBefore);

  TNLLogCapture log;
  TNLLog::sharedLogger()->setShowLogs(true);
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
  EXPECT_FALSE(log.contains("exception"));

  // A banner without a web view goes as quietly.
  auto closed = TNLBannerAdView::create(host, "APP1", 0, host);
  closed->setLoadedWebView(nullptr);
  closed.reset();
  EXPECT_EQ(center->observerCount(), observersBefore + 1);
  EXPECT_FALSE(log.contains("exception"));
}

}  // namespace
