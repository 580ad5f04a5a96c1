#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>

#include "Ads/BannerAds/TNLBannerAd.h"
#include "Ads/FullScreenAds/TNLFSAd.h"
#include "Ads/Macros/TNLMacros.h"
#include "Ads/TNLAdClient.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TNLDemoAdServer.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestSignal.h"

namespace {

// Waits for the ad client's answer: the ad, or null on failure.
template <class T, class Request>
std::shared_ptr<T> answer(Request&& request) {
  TNLTestSignal signal;
  std::shared_ptr<T> ad;
  request([&](const std::shared_ptr<T>& value) { signal.record([&] { ad = value; }); },
          [&](const TNLErrorPtr&) { signal.record(); });
  EXPECT_TRUE(signal.waitFor());
  return ad;
}

// The bundled ad service, without a display: each format comes from the source meant for it.
TEST(DemoAdServer, EachFormatComesFromItsSourceAndTheManifestLoadIsMonitored) {
  std::mutex mutex;
  std::vector<std::string> events;
  TNLDemoAdServer server{"demo-app", [&](const std::string& event, const std::string&) {
                           std::lock_guard lock(mutex);
                           events.push_back(event);
                         }};
  TNLSetup::setManifestBaseURL(server.baseURL());
  TNLTestDeviceFacts::install();
  TNLMacros::setValueInMacroDictionary("demo-app", TNL_APPID_MACRO);
  const auto fullScreen = [](bool rewarded) {
    return answer<TNLFSAd>([&](auto success, auto failure) {
      TNLAdClient().getFSAdForZone("level-end", rewarded, success, failure);
    });
  };

  // Interstitials: HTML, from the source after the one that fails.
  const auto interstitial = fullScreen(false);
  ASSERT_NE(interstitial, nullptr);
  EXPECT_EQ(interstitial->creativeTag(), server.baseURL() + "/creatives/interstitial.html");
  EXPECT_EQ(interstitial->payload()["zone"], "level-end");

  // Rewarded ads: video through two wrappers, whose tracking events are merged, on the template.
  const auto rewarded = fullScreen(true);
  ASSERT_NE(rewarded, nullptr);
  EXPECT_EQ(rewarded->creativeTag(), server.baseURL() + "/creatives/vast-template.html");
  EXPECT_EQ(rewarded->mediaFile(), server.baseURL() + "/media/clip.mp4");
  for (const char* source : {"exchange", "network"}) {
    EXPECT_NE(rewarded->xml().find("event=complete&amp;source=" + std::string(source)),
              std::string::npos);
  }

  const auto banner = answer<TNLBannerAd>([](auto success, auto failure) {
    TNLAdClient().getBannerAdForZone("home", success, failure);
  });
  ASSERT_NE(banner, nullptr);
  EXPECT_EQ(banner->creativeTag(), server.baseURL() + "/creatives/banner.html");
  EXPECT_TRUE(TNLMainQueue::runUntil([&] {
    std::lock_guard lock(mutex);
    return std::count(events.begin(), events.end(), "OnManifestLoaded") > 0;
  }));
}

}  // namespace
