#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>

#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TarnelAd.h"
#include "support/TNLTestAdService.h"
#include "support/TNLTestHosts.h"

using namespace std::chrono_literals;
using Response = TNLTestServer::Response;

namespace {

// A thousand zones loaded at once from one ad server: the library never has more content
// requests in flight to the host than its per-host connection limit, and each zone hears once.
TEST(ConcurrentLoads, AThousandZonesEachEndReadyOnce) {
  constexpr int kZones = 1000;
  std::atomic<int> inFlight{0};
  std::atomic<int> peak{0};
  TNLTestAdService service;
  // Answers after a few milliseconds, so that requests the library lets run together overlap.
  const auto held = [&inFlight, &peak](Response response) {
    return [&inFlight, &peak, response](const TNLTestServer::Request&) {
      const int now = ++inFlight;
      for (int seen = peak; now > seen && !peak.compare_exchange_weak(seen, now);) {
      }
      std::this_thread::sleep_for(5ms);
      --inFlight;
      return response;
    };
  };
  service.server.on(
      "GET", "/ad.json",
      held(Response::json(R"({"creative_tag":")" + service.server.url("/creative.html") + "\"}")));
  service.server.on("GET", "/creative.html",
                    held(Response(200, "<html><body>ad</body></html>", "text/html")));
  service.publishManifest({{0, "/ad.json"}});
  service.install();
  const auto host = std::make_shared<TNLTestFullScreenHost>();
  TNLInterstitialAd::setInterstitialAdDelegate(host, "APP1");
  // One manifest for all: retrievals that find none are not merged.
  ASSERT_TRUE(service.preloadManifest());

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
  EXPECT_LE(peak.load(), 6);
}

}  // namespace
