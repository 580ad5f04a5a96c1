#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Ads/Macros/TNLMacros.h"
#include "Ads/TNLAd.h"
#include "Ads/TNLAdWebView.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestBridgeJournal.h"
#include "support/TNLTestDeviceFacts.h"

namespace {

using Policy = TNLNavigationActionPolicy;
using Target = TNLHeadlessWebEngine::Target;
using Statements = std::vector<std::string>;

constexpr char kTag[] = "https://cdn.example.test/creative/index.html";
constexpr char kPage[] = "<html><body>creative</body></html>";

std::shared_ptr<TNLAd> makeAd(const std::optional<std::string>& tag = std::string(kTag)) {
  TNLJson full = {{"creative_tag", tag ? *tag : ""},
                  {"copy", {{"brandName", "Acme"}}},
                  {"sdkName", "Tarnel-1.0"}};
  auto ad = std::make_shared<TNLAd>("html", tag, TNLJson::object(), full["copy"], TNLJson::object(),
                                    TNLJson::object(), TNLJson::object(), full);
  ad->setHtml(kPage);
  return ad;
}

class AdWebView : public ::testing::Test {
 protected:
  void SetUp() override { TNLSetup::setDeviceFacts(facts); }

  // A web view with the ad loaded (the load runs on the main loop) and a bridge journal.
  std::shared_ptr<TNLAdWebView> loaded(const std::shared_ptr<TNLAd>& ad) {
    auto webView = TNLAdWebView::create();
    webView->bridge()->setDelegate(journal);
    webView->loadAd(ad);
    EXPECT_TRUE(TNLMainQueue::runUntil([&] { return webView->loadedAd() == ad; }));
    return webView;
  }

  std::shared_ptr<TNLTestDeviceFacts> facts = std::make_shared<TNLTestDeviceFacts>();
  std::shared_ptr<TNLTestBridgeJournal> journal = std::make_shared<TNLTestBridgeJournal>();
};

TEST_F(AdWebView, LoadsTheAdLaterWithItsCreativeTagAsBaseURL) {
  const auto ad = makeAd();
  const auto webView = TNLAdWebView::create();
  // The load is scheduled: the view comes back at once, still without the ad.
  EXPECT_EQ(webView->loadAd(ad), webView);
  EXPECT_EQ(webView->loadedAd(), nullptr);
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return webView->loadedAd() == ad; }));

  const auto engine = TNLHeadlessWebEngine::of(webView);
  ASSERT_NE(engine, nullptr);
  EXPECT_EQ(engine->html(), kPage);
  EXPECT_EQ(engine->baseURL(), kTag);

  // A tag that is not a URL gives the page no base URL.
  const auto untagged = loaded(makeAd("http://not a url/"));
  EXPECT_EQ(TNLHeadlessWebEngine::of(untagged)->baseURL(), std::nullopt);
  EXPECT_EQ(TNLHeadlessWebEngine::of(untagged)->html(), kPage);

  // A tag that needs escapes is loaded as a browser reads it, and that page is the creative's.
  const auto escaped = loaded(makeAd("https://cdn.example.test/my ad/caf\xC3\xA9.html"));
  const auto escapedEngine = TNLHeadlessWebEngine::of(escaped);
  EXPECT_EQ(escapedEngine->baseURL(), "https://cdn.example.test/my%20ad/caf%C3%A9.html");
  EXPECT_EQ(escapedEngine->playPageLoad(), Policy::allow);
}

TEST_F(AdWebView, OnlyTheCreativesPageAndOtherFramesMayNavigate) {
  TNLLogCapture capture;
  const auto webView = loaded(makeAd());
  const auto engine = TNLHeadlessWebEngine::of(webView);

  EXPECT_EQ(engine->playPageLoad(), Policy::allow);
  journal->calls.clear();
  EXPECT_EQ(engine->deliverNavigationAction("https://tracker.test/pixel", Target::childFrame),
            Policy::allow);
  EXPECT_EQ(engine->deliverNavigationAction("https://popup.test/", Target::none), Policy::allow);
  // A bridge URL inside a frame is an ordinary navigation there.
  EXPECT_EQ(engine->deliverNavigationAction("bridge://close", Target::childFrame), Policy::allow);
  EXPECT_TRUE(journal->calls.empty());

  // Main-frame navigations never leave the creative.
  EXPECT_EQ(engine->deliverNavigationAction("https://elsewhere.test/a%41", Target::mainFrame),
            Policy::cancel);
  EXPECT_EQ(engine->deliverNavigationAction("bridge://close", Target::mainFrame), Policy::cancel);
  EXPECT_EQ(engine->deliverNavigationAction("bridge://open?url=https%3A%2F%2Fshop.test%2F%3Fq%3D1",
                                            Target::mainFrame),
            Policy::cancel);
  // A broken escape gives the bridge nothing.
  EXPECT_EQ(engine->deliverNavigationAction("bridge://open?url=https%3A%2", Target::mainFrame),
            Policy::cancel);
  EXPECT_EQ(journal->calls, (Statements{"close", "open https://shop.test/?q=1"}));

  // Once the creative enables redirects, an ordinary address opens as it stands.
  journal->calls.clear();
  EXPECT_EQ(engine->deliverNavigationAction("bridge://enableRedirect", Target::mainFrame),
            Policy::cancel);
  webView->enableRedirect(true);  // the hosting controller's answer
  EXPECT_EQ(engine->deliverNavigationAction("https://elsewhere.test/a%41", Target::mainFrame),
            Policy::cancel);
  // Substring matching: a redirect to an address that mentions "close" closes.
  engine->deliverNavigationAction("https://elsewhere.test/close", Target::mainFrame);
  EXPECT_EQ(journal->calls,
            (Statements{"enableRedirect", "open https://elsewhere.test/a%41", "close"}));

  // Every decision is logged, whatever the library log switch says.
  EXPECT_EQ(capture.count(std::string("URL String: ") + kTag), 1u);
  EXPECT_EQ(capture.count("URL String: bridge://close"), 2u);
  EXPECT_EQ(capture.count("URL String: "), 11u);

  // A navigation that another web view reports is cancelled without reaching this bridge.
  journal->calls.clear();
  const auto other = TNLAdWebView::create();
  std::optional<Policy> decision;
  webView->webViewDecidePolicyForNavigationActionDecisionHandler(
      other, TNLNavigationAction("bridge://close", TNLFrameInfo(true)),
      [&](Policy policy) { decision = policy; });
  EXPECT_EQ(decision, Policy::cancel);
  EXPECT_TRUE(journal->calls.empty());
}

TEST_F(AdWebView, AFinishedPageGetsThePayloadThenTheBridgeOpensThenTheVolume) {
  TNLLogCapture capture;
  facts->setOutputVolume(0.25f);
  const auto ad = makeAd();
  auto webView = loaded(ad);
  const auto engine = TNLHeadlessWebEngine::of(webView);
  ASSERT_EQ(engine->playPageLoad(), Policy::allow);

  const std::string payload = TNLJSON::serialize(ad->fullAd(), true);
  ASSERT_NE(payload.find('\n'), std::string::npos) << "pretty-printed";
  EXPECT_EQ(engine->evaluatedStatements(),
            (Statements{"receivePayload(" + payload + ")", "ZENKO.setVolume(0.250000)"}));
  EXPECT_EQ(journal->calls, Statements{"opened"});
  EXPECT_EQ(capture.count("Bridge Message sent: receivePayload({"), 1u);

  // Volume changes follow, from the main thread at once and from others through the main loop.
  facts->setOutputVolume(0.5f);
  std::thread([&] { facts->setOutputVolume(0.75f); }).join();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return engine->evaluatedStatements().size() == 4; }));
  EXPECT_EQ(engine->evaluatedStatements()[2], "ZENKO.setVolume(0.500000)");
  EXPECT_EQ(engine->evaluatedStatements()[3], "ZENKO.setVolume(0.750000)");

  // A notification without a volume is logged and sends nothing.
  TNLLog::sharedLogger()->setShowLogs(true);
  TNLNotificationCenter::defaultCenter()->post(TNLDeviceFacts::kOutputVolumeDidChangeNotification);
  EXPECT_EQ(capture.count("Volume change notification caused exception: "), 1u);
  EXPECT_EQ(engine->evaluatedStatements().size(), 4u);

  // A finish reported for another web view is not this page's.
  webView->webViewDidFinishNavigation(TNLAdWebView::create());
  EXPECT_EQ(engine->evaluatedStatements().size(), 4u);

  // A destroyed view stops listening.
  const size_t observers = TNLNotificationCenter::defaultCenter()->observerCount();
  std::weak_ptr<TNLAdWebView> gone = webView;
  webView.reset();
  EXPECT_TRUE(gone.expired());
  EXPECT_EQ(TNLNotificationCenter::defaultCenter()->observerCount(), observers - 1);
}

TEST_F(AdWebView, APageWithoutAnAdIsNotInitialised) {
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  const auto webView = TNLAdWebView::create();
  webView->bridge()->setDelegate(journal);
  webView->loadAd(nullptr);
  TNLMainQueue::runFor(std::chrono::milliseconds(20));
  const auto engine = TNLHeadlessWebEngine::of(webView);
  EXPECT_EQ(engine->html(), "");
  engine->finishNavigation();
  EXPECT_EQ(capture.count("Failed to initialize Ad in webview due to exception: "), 1u);
  EXPECT_TRUE(engine->evaluatedStatements().empty());
  EXPECT_TRUE(journal->calls.empty()) << "the bridge stays closed";
}

TEST_F(AdWebView, DeviceDataDescribesScreenOrientationAndView) {
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  const auto webView = loaded(makeAd());
  const auto engine = TNLHeadlessWebEngine::of(webView);
  webView->setFrame({0, 0, 375, 600});
  webView->scrollView()->setContentOffset({0, 12});
  const TNLMacroDict macros = TNLMacros::sharedMacroDict();

  const auto sendAndRead = [&] {
    webView->sendDeviceData();
    const std::string& sent = engine->evaluatedStatements().back();
    EXPECT_EQ(sent.rfind("ZENKO.onDeviceData({", 0), 0u) << sent;
    return TNLJSON::parse(sent.substr(19, sent.size() - 20));
  };
  const TNLJson portrait = sendAndRead();
  EXPECT_EQ(portrait["devicePixelRatio"], 2.0);
  EXPECT_EQ(portrait["orientation"], 1);
  EXPECT_EQ(portrait["screenHeight"], macros.at(TNL_SCREENHEIGHT_MACRO));
  EXPECT_EQ(portrait["screenWidth"], macros.at(TNL_SCREENWIDTH_MACRO));
  EXPECT_TRUE(portrait["screenWidth"].is_string());
  EXPECT_EQ(portrait["webviewHeight"], 600.0);
  EXPECT_EQ(portrait["webviewWidth"], 375.0);
  EXPECT_EQ(portrait["webviewOffsetX"], 0.0);
  EXPECT_EQ(portrait["webviewOffsetY"], 12.0);

  const auto application = TNLApplication::sharedApplication();
  for (const auto orientation :
       {TNLInterfaceOrientation::landscapeLeft, TNLInterfaceOrientation::unknown}) {
    application->setStatusBarOrientation(orientation);
    EXPECT_EQ(sendAndRead()["orientation"], 2);
  }
  application->setStatusBarOrientation(TNLInterfaceOrientation::portraitUpsideDown);
  EXPECT_EQ(sendAndRead()["orientation"], 1);

  // Without the screen width in the table nothing is sent.
  const size_t sent = engine->evaluatedStatements().size();
  TNLMacros::setValueInMacroDictionary(std::nullopt, TNL_SCREENWIDTH_MACRO);
  webView->sendDeviceData();
  EXPECT_EQ(engine->evaluatedStatements().size(), sent);
  EXPECT_EQ(capture.count("Sending device data failed due to exception: "), 1u);
}

}  // namespace
