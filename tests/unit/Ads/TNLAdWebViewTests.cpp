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
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
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
  EXPECT_EQ(TNLHeadlessWebEngine::of(webView)->baseURL(), kTag);

  // A tag that is not a URL gives the page no base URL; one that needs escapes is loaded as a
  // browser reads it, and that page is the creative's.
  EXPECT_EQ(TNLHeadlessWebEngine::of(loaded(makeAd("http://not a url/")))->baseURL(), std::nullopt);
  const auto escapedView = loaded(makeAd("https://cdn.example.test/my ad/caf\xC3\xA9.html"));
  const auto escaped = TNLHeadlessWebEngine::of(escapedView);
  EXPECT_EQ(escaped->baseURL(), "https://cdn.example.test/my%20ad/caf%C3%A9.html");
  EXPECT_EQ(escaped->playPageLoad(), Policy::allow);
}

TEST_F(AdWebView, OnlyTheCreativesPageAndOtherFramesMayNavigate) {
  const auto webView = loaded(makeAd());
  const auto engine = TNLHeadlessWebEngine::of(webView);
  EXPECT_EQ(engine->playPageLoad(), Policy::allow);
  journal->calls.clear();
  const struct {
    const char* url;
    Target target;
    Policy policy;
  } navigations[] = {
      {"https://tracker.test/pixel", Target::childFrame, Policy::allow},
      {"https://popup.test/", Target::none, Policy::allow},
      // A bridge URL inside a frame is an ordinary navigation there.
      {"bridge://close", Target::childFrame, Policy::allow},
      // Main-frame navigations never leave the creative.
      {"https://elsewhere.test/a%41", Target::mainFrame, Policy::cancel},
      {"bridge://close", Target::mainFrame, Policy::cancel},
      {"bridge://open?url=https%3A%2F%2Fshop.test%2F%3Fq%3D1", Target::mainFrame, Policy::cancel},
      // A broken escape gives the bridge nothing.
      {"bridge://open?url=https%3A%2", Target::mainFrame, Policy::cancel},
  };
  for (const auto& n : navigations) {
    EXPECT_EQ(engine->deliverNavigationAction(n.url, n.target), n.policy) << n.url;
  }
  EXPECT_EQ(journal->calls, (Statements{"close", "open https://shop.test/?q=1"}));

  // Once the creative enables redirects, an ordinary address opens as it stands; substring
  // matching makes a redirect to an address that mentions "close" close.
  journal->calls.clear();
  engine->deliverNavigationAction("bridge://enableRedirect", Target::mainFrame);
  webView->enableRedirect(true);  // the hosting controller's answer
  EXPECT_EQ(engine->deliverNavigationAction("https://elsewhere.test/a%41", Target::mainFrame),
            Policy::cancel);
  engine->deliverNavigationAction("https://elsewhere.test/close", Target::mainFrame);
  EXPECT_EQ(journal->calls,
            (Statements{"enableRedirect", "open https://elsewhere.test/a%41", "close"}));
}

TEST_F(AdWebView, AFinishedPageGetsThePayloadThenTheBridgeOpensThenTheVolume) {
  facts->setOutputVolume(0.25f);
  const auto ad = makeAd();
  auto webView = loaded(ad);
  const auto engine = TNLHeadlessWebEngine::of(webView);
  ASSERT_EQ(engine->playPageLoad(), Policy::allow);
  EXPECT_EQ(journal->calls, Statements{"opened"});

  // Volume changes follow, from the main thread at once and from others through the main loop.
  facts->setOutputVolume(0.5f);
  std::thread([&] { facts->setOutputVolume(0.75f); }).join();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return engine->evaluatedStatements().size() == 4; }));
  EXPECT_EQ(engine->evaluatedStatements(),
            (Statements{"receivePayload(" + TNLJSON::serialize(ad->fullAd(), true) + ")",
                        "ZENKO.setVolume(0.250000)", "ZENKO.setVolume(0.500000)",
                        "ZENKO.setVolume(0.750000)"}));
}

TEST_F(AdWebView, DeviceDataDescribesScreenOrientationAndView) {
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
  EXPECT_EQ(sendAndRead(), (TNLJson{{"devicePixelRatio", 2.0},
                                    {"orientation", 1},
                                    {"screenHeight", macros.at(TNL_SCREENHEIGHT_MACRO)},
                                    {"screenWidth", macros.at(TNL_SCREENWIDTH_MACRO)},
                                    {"webviewHeight", 600.0},
                                    {"webviewOffsetX", 0.0},
                                    {"webviewOffsetY", 12.0},
                                    {"webviewWidth", 375.0}}));
  // Anything but a portrait orientation counts as landscape.
  TNLApplication::sharedApplication()->setStatusBarOrientation(TNLInterfaceOrientation::unknown);
  EXPECT_EQ(sendAndRead()["orientation"], 2);
}

}  // namespace
