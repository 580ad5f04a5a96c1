#include <gtest/gtest.h>

#include "TNLOMHandler.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "Ads/FullScreenAds/TNLFSAdViewController.h"
#include "Ads/TNLAd.h"
#include "Ads/TNLAdDelegate.h"
#include "Ads/TNLAdWebView.h"
#include "Ads/TNLClickOutViewController.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLLabel.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestHosts.h"

namespace {

using Target = TNLHeadlessWebEngine::Target;
using Statements = std::vector<std::string>;

constexpr char kTag[] = "https://cdn.example.test/creative/index.html";

class AdListener : public TNLAdDelegate {
 public:
  void adWillCloseInZone(const std::string& zone) override { calls.push_back("closed " + zone); }
  void adRewardedForZone(const std::string& zone) override { calls.push_back("rewarded " + zone); }
  std::vector<std::string> calls;
};

// A shown window with a host controller, and an ad ready to present over it.
class FSAdViewController : public ::testing::Test {
 protected:
  void SetUp() override {
    TNLTestDeviceFacts::install();
    // The measurement SDK's process-wide observers exist before any count below.
    TNLOMHandler::sharedHandler();
    window->setRootViewController(host);
    window->makeKeyAndVisible();
    host->appeared = 0;
    TNLJson copy = {{"brandName", "Acme"}};
    ad = std::make_shared<TNLAd>("html", kTag, TNLJson::object(), copy, TNLJson::object(),
                                 TNLJson::object(), TNLJson::object(), TNLJson::object());
    ad->setHtml("<html></html>");
    ad->setZone("Z");
    ad->setDelegate(listener);
  }

  // Presents the ad and plays its page load.
  void present() {
    webView = TNLAdWebView::create()->loadAd(ad);
    controller = TNLFSAdViewController::create();
    controller->loadWebView(webView, host);
    ASSERT_TRUE(TNLMainQueue::runUntil(
        [&] { return host->disappeared == 1 && webView->loadedAd() == ad; }));
    ASSERT_EQ(host->presentedViewController(), controller);
    engine = TNLHeadlessWebEngine::of(webView);
    engine->playPageLoad();
  }
  void play(const std::string& url) { engine->deliverNavigationAction(url, Target::mainFrame); }
  size_t count(const std::string& statement) const {
    const auto& sent = engine->evaluatedStatements();
    return static_cast<size_t>(std::count(sent.begin(), sent.end(), statement));
  }

  std::shared_ptr<TNLWindow> window = TNLWindow::create({0, 0, 375, 667});
  std::shared_ptr<TNLTestFullScreenHost> host = std::make_shared<TNLTestFullScreenHost>();
  std::shared_ptr<AdListener> listener = std::make_shared<AdListener>();
  std::shared_ptr<TNLAd> ad;
  std::shared_ptr<TNLAdWebView> webView;
  std::shared_ptr<TNLFSAdViewController> controller;
  std::shared_ptr<TNLHeadlessWebEngine> engine;
};

TEST_F(FSAdViewController, TheAdFillsTheWindowAndHearsOfVisibilityAndOrientation) {
  present();
  EXPECT_EQ(webView->frame(), window->bounds());
  // Visible before the page loaded, then the page's own messages.
  ASSERT_EQ(engine->evaluatedStatements().size(), 3u);
  EXPECT_EQ(engine->evaluatedStatements()[0], "ZENKO.isAdVisible(true)");
  EXPECT_EQ(engine->evaluatedStatements()[1].rfind("receivePayload(", 0), 0u);

  window->transitionToSize({768, 1024});
  window->transitionToSize({1024, 768});
  window->transitionToSize({800, 800});
  const auto application = TNLApplication::sharedApplication();
  application->setApplicationState(TNLApplicationState::background);
  application->setApplicationState(TNLApplicationState::active);
  const Statements sent(engine->evaluatedStatements().begin() + 3,
                        engine->evaluatedStatements().end());
  EXPECT_EQ(sent, (Statements{"ZENKO.orientationDidChange('portrait')",
                              "ZENKO.orientationDidChange('landscape')", "ZENKO.isAdVisible(false)",
                              "ZENKO.isAdVisible(true)"}));
}

TEST_F(FSAdViewController, BridgeActionsReachTheWebViewAndTheAdAndCloseDismisses) {
  const size_t observers = TNLNotificationCenter::defaultCenter()->observerCount();
  present();
  const size_t before = engine->evaluatedStatements().size();
  const TNLRect frame = webView->frame();
  // A full-screen creative cannot expand or collapse.
  play("bridge://expand=300&touch=true");
  play("bridge://expandPercent=50");
  play("bridge://collapse");
  EXPECT_EQ(webView->frame(), frame);
  EXPECT_EQ(engine->evaluatedStatements().size(), before);

  play("bridge://deviceData");
  ASSERT_EQ(engine->evaluatedStatements().size(), before + 1);
  EXPECT_EQ(engine->evaluatedStatements().back().rfind("ZENKO.onDeviceData({", 0), 0u);
  play("bridge://allowScrolling=true");
  EXPECT_TRUE(webView->scrollView()->isScrollEnabled());
  EXPECT_TRUE(webView->scrollView()->bounces());
  play("bridge://enableRedirect");
  EXPECT_TRUE(webView->allowRedirect());

  // The reward leaves the ad on screen; the close tells the ad, then dismisses.
  play("bridge://reward");
  EXPECT_EQ(listener->calls, Statements{"rewarded Z"});
  EXPECT_EQ(host->presentedViewController(), controller);
  play("bridge://close");
  EXPECT_EQ(listener->calls, (Statements{"rewarded Z", "closed Z"}));
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return host->appeared == 1; }));
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_EQ(webView->window(), nullptr);
  // Once gone, neither the controller nor its web view observes anything.
  std::weak_ptr<TNLFSAdViewController> gone = controller;
  controller.reset();
  webView.reset();
  EXPECT_TRUE(gone.expired());
  EXPECT_EQ(TNLNotificationCenter::defaultCenter()->observerCount(), observers);
}

TEST_F(FSAdViewController, ALinkOpensTheBrowserOverTheAdAndDoneReturnsToIt) {
  window->setWindowSafeAreaInsets({20, 10, 34, 12});
  present();
  play("bridge://open?url=https%3A%2F%2Fshop.test%2Fitem%3Fid%3D7&local=1");
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return count("ZENKO.isAdVisible(false)") == 1; }));
  const auto browser =
      std::dynamic_pointer_cast<TNLClickOutViewController>(controller->presentedViewController());
  ASSERT_NE(browser, nullptr);
  EXPECT_EQ(browser->brandName(), "Acme");
  EXPECT_EQ(browser->brandNameLabel()->text(), "Acme");
  EXPECT_EQ(browser->doneButton()->titleForState(TNLControlState::normal), "Done");
  const auto page = TNLHeadlessWebEngine::of(browser->webView());
  EXPECT_EQ(page->requestURL(), "https://shop.test/item?id=7");
  // The browser has no policy of its own.
  EXPECT_EQ(page->deliverNavigationAction("https://shop.test/cart", Target::mainFrame),
            TNLNavigationActionPolicy::allow);

  // Title 8 below the safe area's top and centred in it; "Done" 16 inside its trailing edge on
  // the title's line; the page 16 below the title, out to the safe area's other edges.
  browser->view()->layoutIfNeeded();
  const TNLRect title = browser->brandNameLabel()->frame();
  const TNLRect done = browser->doneButton()->frame();
  const TNLRect pageFrame = browser->webView()->frame();
  EXPECT_DOUBLE_EQ(title.minY(), 20 + 8);
  EXPECT_DOUBLE_EQ(title.midX(), (10 + 375 - 12) / 2.0);
  EXPECT_DOUBLE_EQ(done.maxX(), 375 - 12 - 16);
  EXPECT_DOUBLE_EQ(done.midY(), title.midY());
  EXPECT_DOUBLE_EQ(pageFrame.minY(), title.maxY() + 16);
  EXPECT_DOUBLE_EQ(pageFrame.minX(), 10);
  EXPECT_DOUBLE_EQ(pageFrame.maxX(), 375 - 12);
  EXPECT_DOUBLE_EQ(pageFrame.maxY(), 667 - 34);

  // "Done" closes the browser; the ad, visible again, stays.
  browser->doneButton()->sendTap();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return count("ZENKO.isAdVisible(true)") == 2; }));
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return !controller->presentedViewController(); }));
  EXPECT_EQ(host->presentedViewController(), controller);
  EXPECT_TRUE(listener->calls.empty());
}

TEST_F(FSAdViewController, ACloseWhileTheBrowserIsOpenDismissesTheAdWithIt) {
  present();
  play("bridge://open?url=https%3A%2F%2Fshop.test%2F");
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return count("ZENKO.isAdVisible(false)") == 1; }));
  ASSERT_NE(controller->presentedViewController(), nullptr);
  play("bridge://close");
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return !host->presentedViewController(); }));
  EXPECT_EQ(controller->presentedViewController(), nullptr);
  EXPECT_EQ(webView->window(), nullptr);
  EXPECT_EQ(listener->calls, Statements{"closed Z"});
}

TEST_F(FSAdViewController, ABrowserWithoutBrandOrValidAddressKeepsItsLayout) {
  const auto browser = TNLClickOutViewController::create(std::nullopt, "http://not an address/");
  browser->view()->setFrame({0, 0, 375, 667});
  browser->view()->layoutIfNeeded();
  EXPECT_EQ(browser->brandNameLabel()->text(), std::nullopt);
  EXPECT_EQ(TNLHeadlessWebEngine::of(browser->webView())->loadCount(), 0u);
  EXPECT_DOUBLE_EQ(browser->brandNameLabel()->frame().minY(), 8);
  EXPECT_DOUBLE_EQ(browser->webView()->frame().minY(),
                   browser->brandNameLabel()->frame().maxY() + 16);
}

TEST_F(FSAdViewController, ACloseWithoutAWebViewStillDismisses) {
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  // Nothing to present from: the failure is logged and the observation stays.
  const size_t observers = TNLNotificationCenter::defaultCenter()->observerCount();
  auto orphan = TNLFSAdViewController::create();
  orphan->loadWebView(TNLAdWebView::create(), nullptr);
  EXPECT_EQ(capture.count("Failed to load webview due to exception: "), 1u);
  EXPECT_EQ(TNLNotificationCenter::defaultCenter()->observerCount(), observers + 2);
  orphan.reset();
  EXPECT_EQ(TNLNotificationCenter::defaultCenter()->observerCount(), observers);

  controller = TNLFSAdViewController::create();
  host->present(controller, false);
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return host->disappeared == 1; }));
  TNLBridge bridge;
  controller->openUrl("https://shop.test/", bridge);
  controller->rewardActionSentByBridge(bridge);
  controller->closeActionSentByBridge(bridge);
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return host->appeared == 1; }));
  EXPECT_EQ(host->presentedViewController(), nullptr);
  EXPECT_TRUE(listener->calls.empty());
}

}  // namespace
