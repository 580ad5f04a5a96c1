// The library's HTTP path against the same work done by hand with raw libcurl on one reused
// handle, both against the nginx that scripts/bench.sh starts:
//   - one GET through the network client;
//   - an interstitial load through the public API, headless, with the manifest cached, until the
//     ready callback: the ad GET, its JSON, the creative GET and the load's trackers;
//   - the TCP connections that a second load opens, counted in the server's access log.

#include <benchmark/benchmark.h>

#include <nlohmann/json.hpp>

#include <atomic>
#include <memory>
#include <string>

#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TNLBenchRatios.h"
#include "TNLBenchServer.h"
#include "TNLBenchSignal.h"
#include "TNLNetworkClient.h"
#include "TNLRawCurl.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TarnelAd.h"

namespace {

constexpr char kApplication[] = "BENCH";

void BM_NetworkClientGet(benchmark::State& state) {
  const auto& server = TNLBenchServer::shared();
  server.publish("/get.json", R"({"creative_tag":"@BASE@/creative.html"})");
  const std::string url = server.url("/get.json");
  for (auto _ : state) {
    const auto signal = std::make_shared<TNLBenchSignal>();
    TNLNetworkClient::makeURLRequestWithURL(
        url, GET_METHOD, [signal](const std::string&) { signal->set(true); },
        [signal](const TNLErrorPtr&) { signal->set(false); });
    if (!signal->wait()) {
      state.SkipWithError("the GET failed");
      break;
    }
  }
}
BENCHMARK(BM_NetworkClientGet)->UseRealTime()->MeasureProcessCPUTime();

void BM_RawCurlGet(benchmark::State& state) {
  const auto& server = TNLBenchServer::shared();
  server.publish("/get.json", R"({"creative_tag":"@BASE@/creative.html"})");
  const std::string url = server.url("/get.json");
  TNLRawCurl curl;
  for (auto _ : state) {
    benchmark::DoNotOptimize(curl.get(url).size());
  }
}
BENCHMARK(BM_RawCurlGet)->UseRealTime()->MeasureProcessCPUTime();

// The host of the load benchmarks: counts ready and failed callbacks, and wakes the main loop
// that the benchmark runs while it waits.
class Host : public TNLViewController, public TNLInterstitialAdDelegate {
 public:
  void onInterstitialAdReadyForZone(const std::string&) override { note(ready); }
  void onInterstitialAdFailedForZone(const std::string&) override { note(failed); }

  std::atomic<int> ready{0};
  std::atomic<int> failed{0};

 private:
  static void note(std::atomic<int>& count) {
    ++count;
    TNLMainQueue::async([] {});
  }
};

// The ad server of the load benchmarks, and a host whose first load fetched the manifest.
std::shared_ptr<Host> loadingHost() {
  static const std::shared_ptr<Host> host = [] {
    const auto& server = TNLBenchServer::shared();
    const TNLJson manifest = {
        {"ttl", 3600},
        {"developer",
         {{"applicationid", kApplication}, {"applicationname", "Bench"}, {"active", true}}},
        {"monitoring",
         {{"method", "GET"}, {"baseuri", "@BASE@"}, {"uri_content", "/monitor?e=%EVENT_NAME%"}}},
        {"demandsources",
         {{"demandsource",
           {{{"source", "a"}, {"rank", 0}, {"url", "@BASE@/ad.json?z=%ZONE%&p=%PRODUCT%"}}}}}},
    };
    server.publish(std::string("/v4/manifest/") + kApplication, TNLJSON::serialize(manifest));
    server.publish("/ad.json", R"({"creative_tag":"@BASE@/creative.html"})");
    server.publish("/creative.html",
                   "<!DOCTYPE html><html><body><p>An interstitial</p></body></html>");
    TNLSetup::useHeadlessBackend();
    TNLSetup::setManifestBaseURL(server.url(""));
    auto created = std::make_shared<Host>();
    TNLInterstitialAd::setInterstitialAdDelegate(created, kApplication);
    TNLInterstitialAd::loadInterstitialAdForZone("warm-up");
    TNLMainQueue::runUntil([&] { return created->ready + created->failed > 0; });
    return created;
  }();
  return host;
}

// One load of a zone that holds no ad yet; false when it failed.
bool loadOnce(Host& host, const std::string& zone) {
  const int before = host.ready + host.failed;
  const int readyBefore = host.ready;
  TNLInterstitialAd::loadInterstitialAdForZone(zone);
  TNLMainQueue::runUntil([&] { return host.ready + host.failed > before; });
  return host.ready > readyBefore;
}

void BM_InterstitialLoad(benchmark::State& state) {
  const auto host = loadingHost();
  static int zones = 0;
  for (auto _ : state) {
    if (!loadOnce(*host, "zone-" + std::to_string(++zones))) {
      state.SkipWithError("the load failed");
      break;
    }
  }
}
BENCHMARK(BM_InterstitialLoad)->UseRealTime()->MeasureProcessCPUTime();

// The same requests by hand: the ad, its JSON, the creative and three trackers.
void BM_RawCurlInterstitialLoad(benchmark::State& state) {
  loadingHost();
  const auto& server = TNLBenchServer::shared();
  TNLRawCurl curl;
  int zones = 0;
  for (auto _ : state) {
    const std::string zone = "zone-" + std::to_string(++zones);
    curl.get(server.url("/monitor?e=OnAdRequested"));
    const auto ad = nlohmann::json::parse(curl.get(server.url("/ad.json?z=" + zone + "&p=1")));
    benchmark::DoNotOptimize(curl.get(ad.at("creative_tag").get<std::string>()).size());
    curl.get(server.url("/monitor?e=OnAdReturned"));
    curl.get(server.url("/monitor?e=OnAdReady"));
  }
}
BENCHMARK(BM_RawCurlInterstitialLoad)->UseRealTime()->MeasureProcessCPUTime();

// After one load, how many new connections the next opens at the server: none, when the
// session keeps its connections.
void BM_SecondLoadNewConnections(benchmark::State& state) {
  const auto host = loadingHost();
  const auto& server = TNLBenchServer::shared();
  static int zones = 0;
  size_t opened = 0;
  for (auto _ : state) {
    loadOnce(*host, "first-" + std::to_string(++zones));
    const size_t before = server.connectionsSeen();
    if (!loadOnce(*host, "second-" + std::to_string(zones))) {
      state.SkipWithError("the load failed");
      break;
    }
    opened += server.connectionsSeen() - before;
  }
  state.counters["new_connections"] =
      benchmark::Counter(static_cast<double>(opened), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_SecondLoadNewConnections)->UseRealTime()->MeasureProcessCPUTime()->Iterations(20);

const bool kRatiosRegistered = TNLBenchCompare("BM_NetworkClientGet", "BM_RawCurlGet") &&
                               TNLBenchCompare("BM_InterstitialLoad", "BM_RawCurlInterstitialLoad");

}  // namespace
