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
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLLabel.h"
#include "TarnelAd/Toolkit/TNLWindow.h"
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
  const size_t before = engine->evaluatedStatements().size();
  window->transitionToSize({768, 1024});
  window->transitionToSize({1024, 768});
  window->transitionToSize({800, 800});
  const auto application = TNLApplication::sharedApplication();
  application->setApplicationState(TNLApplicationState::background);
  application->setApplicationState(TNLApplicationState::active);
  const Statements sent(engine->evaluatedStatements().begin() + static_cast<std::ptrdiff_t>(before),
                        engine->evaluatedStatements().end());
  EXPECT_EQ(sent, (Statements{"ZENKO.orientationDidChange('portrait')",
                              "ZENKO.orientationDidChange('landscape')", "ZENKO.isAdVisible(false)",
                              "ZENKO.isAdVisible(true)"}));
}

TEST_F(FSAdViewController, BridgeActionsReachTheWebViewButCannotResizeIt) {
  const size_t observers = TNLNotificationCenter::defaultCenter()->observerCount();
  present();
  const size_t before = engine->evaluatedStatements().size();
  const TNLRect frame = webView->frame();
  play("bridge://expand=300&touch=true");
  play("bridge://collapse");
  EXPECT_EQ(webView->frame(), frame);
  play("bridge://deviceData");
  play("bridge://enableRedirect");
  ASSERT_EQ(engine->evaluatedStatements().size(), before + 1);
  EXPECT_EQ(engine->evaluatedStatements().back().rfind("ZENKO.onDeviceData({", 0), 0u);
  EXPECT_TRUE(webView->allowRedirect());

  // Once closed and gone, neither the controller nor its web view observes anything.
  play("bridge://close");
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return host->appeared == 1; }));
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
  EXPECT_EQ(browser->brandNameLabel()->text(), "Acme");
  const auto engine = TNLHeadlessWebEngine::of(browser->webView());
  EXPECT_EQ(engine->requestURL(), "https://shop.test/item?id=7");
  // The browser has no policy of its own.
  EXPECT_EQ(engine->deliverNavigationAction("https://shop.test/cart", Target::mainFrame),
            TNLNavigationActionPolicy::allow);

  // The title 8 below the safe area's top; "Done" 16 inside its trailing edge; the page 16
  // below the title, out to the safe area's other edges.
  browser->view()->layoutIfNeeded();
  const TNLRect title = browser->brandNameLabel()->frame();
  const TNLRect page = browser->webView()->frame();
  EXPECT_EQ((std::vector<double>{title.minY(), browser->doneButton()->frame().maxX(), page.minX(),
                                 page.maxX(), page.maxY()}),
            (std::vector<double>{20 + 8, 375 - 12 - 16, 10, 375 - 12, 667 - 34}));
  EXPECT_DOUBLE_EQ(page.minY(), title.maxY() + 16);

  // "Done" closes the browser; the ad, visible again, stays.
  browser->doneButton()->sendTap();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return count("ZENKO.isAdVisible(true)") == 2; }));
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return !controller->presentedViewController(); }));
  EXPECT_EQ(host->presentedViewController(), controller);

  // A close while the browser is open dismisses the ad with it.
  play("bridge://open?url=https%3A%2F%2Fshop.test%2F");
  ASSERT_TRUE(
      TNLMainQueue::runUntil([&] { return controller->presentedViewController() != nullptr; }));
  play("bridge://close");
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return !host->presentedViewController(); }));
  EXPECT_EQ(controller->presentedViewController(), nullptr);
  EXPECT_EQ(webView->window(), nullptr);
  EXPECT_EQ(listener->calls, Statements{"closed Z"});
}

}  // namespace
