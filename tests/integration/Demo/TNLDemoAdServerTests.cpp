#include <gtest/gtest.h>

#include <mutex>

#include "Ads/BannerAds/TNLBannerAd.h"
#include "Ads/FullScreenAds/TNLFSAd.h"
#include "Ads/Macros/TNLMacros.h"
#include "Ads/TNLAdClient.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TNLDemoAdServer.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;

namespace {

template <class T>
struct Result {
  TNLTestSignal signal;
  std::shared_ptr<T> value;
  auto success() {
    return [this](const std::shared_ptr<T>& v) { signal.record([&] { value = v; }); };
  }
  auto failure() {
    return [this](const TNLErrorPtr&) { signal.record(); };
  }
};

class DemoAdServer : public ::testing::Test {
 protected:
  void SetUp() override {
    TNLSetup::setManifestBaseURL(server.baseURL());
    TNLTestDeviceFacts::install();
    TNLMacros::setValueInMacroDictionary("demo-app", TNL_APPID_MACRO);
  }

  std::shared_ptr<TNLFSAd> fullScreenAd(bool rewarded) {
    Result<TNLFSAd> result;
    TNLAdClient().getFSAdForZone("level-end", rewarded, result.success(), result.failure());
    EXPECT_TRUE(result.signal.waitFor());
    return result.value;
  }

  std::mutex eventsMutex;
  std::vector<std::string> events;
  TNLDemoAdServer server{"demo-app", [this](const std::string& event, const std::string&) {
                           std::lock_guard lock(eventsMutex);
                           events.push_back(event);
                         }};
};

TEST_F(DemoAdServer, InterstitialsComeFromTheHTMLSourceAfterTheFailingOne) {
  const auto ad = fullScreenAd(false);
  ASSERT_NE(ad, nullptr);
  EXPECT_FALSE(ad->isVast());
  EXPECT_EQ(ad->creativeTag(), server.baseURL() + "/creatives/interstitial.html");
  EXPECT_EQ(ad->adCopy()["brandName"], "Tarnel Demo");
  EXPECT_EQ(ad->payload()["zone"], "level-end");
}

TEST_F(DemoAdServer, RewardedAdsAreVideoThroughTwoWrappersOnTheTemplatePage) {
  const auto ad = fullScreenAd(true);
  ASSERT_NE(ad, nullptr);
  EXPECT_TRUE(ad->isVast());
  EXPECT_EQ(ad->creativeTag(), server.baseURL() + "/creatives/vast-template.html");
  EXPECT_EQ(ad->mediaFile(), server.baseURL() + "/media/clip.mp4");
  // Both wrappers' tracking events were merged under the inline ad's.
  EXPECT_NE(ad->xml().find("event=complete&amp;source=exchange"), std::string::npos);
  EXPECT_NE(ad->xml().find("event=complete&amp;source=network"), std::string::npos);
  EXPECT_EQ(ad->xml().find('\n'), std::string::npos);

  // The template page carries every placeholder that the library fills.
  TNLTestSignal fetched;
  std::optional<std::string> page;
  TNLNetworkClient::makeHTMLRequestWithURL(
      *ad->creativeTag(), GET_METHOD,
      [&](const std::optional<std::string>& text) { fetched.record([&] { page = text; }); },
      [](const TNLErrorPtr&) {});
  ASSERT_TRUE(fetched.waitFor());
  ASSERT_TRUE(page.has_value());
  for (const char* placeholder : {"^#xml_doc#^", "^#zone#^", "^#site#^", "^#video#^"}) {
    EXPECT_NE(page->find(placeholder), std::string::npos) << placeholder;
  }
}

TEST_F(DemoAdServer, BannersAreHTMLAndTheManifestLoadIsMonitored) {
  Result<TNLBannerAd> result;
  TNLAdClient().getBannerAdForZone("home", result.success(), result.failure());
  ASSERT_TRUE(result.signal.waitFor());
  ASSERT_NE(result.value, nullptr);
  EXPECT_EQ(result.value->creativeTag(), server.baseURL() + "/creatives/banner.html");
  EXPECT_TRUE(TNLMainQueue::runUntil([&] {
    std::lock_guard lock(eventsMutex);
    return !events.empty();
  }));
  std::lock_guard lock(eventsMutex);
  EXPECT_EQ(events, (std::vector<std::string>{"OnManifestLoaded"}));
}

}  // namespace
