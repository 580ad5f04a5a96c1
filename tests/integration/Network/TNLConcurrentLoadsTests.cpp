#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>

#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TarnelAd.h"
#include "support/TNLNginx.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestHosts.h"

using namespace std::chrono_literals;

namespace {

// A thousand zones loaded at once from one ad server that caps its connections (nginx, 1,024 a
// worker): the library's few connections per host carry them all, and each zone hears once.
TEST(ConcurrentLoads, AThousandZonesEachEndReadyOnce) {
  constexpr int kZones = 1000;
  const TNLJson manifest = {
      {"ttl", 3600},
      {"developer", {{"applicationid", "APP1"}, {"applicationname", "Load"}, {"active", true}}},
      {"monitoring",
       {{"method", "GET"}, {"baseuri", "@BASE@"}, {"uri_content", "/monitor?e=%EVENT_NAME%"}}},
      {"demandsources",
       {{"demandsource",
         {{{"source", "a"}, {"rank", 0}, {"url", "@BASE@/ad.json?z=%ZONE%&p=%PRODUCT%"}}}}}},
  };
  const TNLNginx nginx({{"/v4/manifest/APP1", TNLJSON::serialize(manifest)},
                        {"/ad.json", R"({"creative_tag":"@BASE@/creative.html"})"},
                        {"/creative.html", "<html><body>ad</body></html>"}});
  TNLSetup::setManifestBaseURL(nginx.baseURL());
  TNLSetup::setDeviceFacts(std::make_shared<TNLTestDeviceFacts>());

  const auto host = std::make_shared<TNLTestFullScreenHost>();
  TNLInterstitialAd::setInterstitialAdDelegate(host, "APP1");
  // One manifest for all: retrievals that find none are not merged.
  std::atomic<bool> manifestLoaded{false};
  TNLManifestHandler::retrieveManifestWithSuccess([&](const auto&) { manifestLoaded = true; },
                                                  [](const auto&) {});
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return manifestLoaded.load(); }));

  for (int i = 0; i < kZones; ++i) {
    TNLInterstitialAd::loadInterstitialAdForZone("zone-" + std::to_string(i));
  }
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return host->calls().size() >= kZones; }, 100s))
      << host->calls().size() << " of " << kZones;
  TNLMainQueue::runUntil([] { return false; }, 200ms);

  std::set<std::string> expected;
  for (int i = 0; i < kZones; ++i) {
    expected.insert("interstitial ready zone-" + std::to_string(i) + " @http");
  }
  const auto calls = host->calls();
  EXPECT_EQ(calls.size(), static_cast<size_t>(kZones));
  EXPECT_EQ(std::set<std::string>(calls.begin(), calls.end()), expected);
  EXPECT_LE(nginx.connectionsSeen(), 6u);
}

}  // namespace
