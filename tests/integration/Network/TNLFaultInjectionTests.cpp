#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <thread>
#include <vector>

#include "Platform/Foundation/TNLMainQueue.h"
#include "TNLLog.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TarnelAd.h"
#include "support/TNLHostileServer.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestAdService.h"
#include "support/TNLTestHosts.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;
using Behaviour = TNLHostileServer::Behaviour;

namespace {

// Peak resident memory of this process so far (each test case runs in a process of its own).
long peakResidentMB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

// Tight bounds, so that every attack ends within seconds.
TNLNetworkLimits testLimits() {
  TNLNetworkLimits limits;
  limits.maxResponseBytes = 1 << 20;
  limits.connectTimeout = 1s;
  limits.stallTimeout = 1s;
  limits.totalTimeout = 3s;
  limits.maxRedirects = 5;
  return limits;
}

// A valid ad with one field nested a million levels deep.
std::string deepJSONAd(const std::string& creativeTag) {
  constexpr size_t kDepth = 1'000'000;
  return R"({"creative_tag":")" + creativeTag + R"(","deep":)" + std::string(kDepth, '[') +
         std::string(kDepth, ']') + "}";
}

// 120 KB of VAST whose one 60 KB entity is referenced 20,000 times in its media file.
std::string entityFanOutVAST() {
  std::string references;
  for (int i = 0; i < 20'000; ++i) {
    references += "&e;";
  }
  return R"(<?xml version="1.0"?><!DOCTYPE VAST [<!ENTITY e ")" + std::string(60'000, 'A') +
         R"(">]><VAST version="3.0"><Ad><InLine><Creatives><Creative><Linear><MediaFiles>)"
         R"(<MediaFile type="video/mp4">)" +
         references +
         "</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>";
}

std::string selfWrapperVAST(const std::string& self) {
  return R"(<VAST version="3.0"><Ad><Wrapper><VASTAdTagURI>)" + self +
         "</VASTAdTagURI></Wrapper></Ad></VAST>";
}

struct Attack {
  const char* name;
  TNLHostileServer::Route route;
  long code;           // the transport error one request ends with
  const char* logged;  // the one log line's reason, or null when no limit is involved
};

// Five bytes a second: never a second without data, never a whole body.
TNLHostileServer::Route drip() {
  TNLHostileServer::Route route(Behaviour::drip);
  route.interval = 200ms;
  return route;
}

std::vector<Attack> transportAttacks() {
  using Route = TNLHostileServer::Route;
  return {
      {"endless", Route{Behaviour::endlessBody}, TNLURLError::DataLengthExceedsMaximum,
       "the response body passed 1048576 bytes"},
      {"gzip-bomb", Route{Behaviour::gzipBomb}, TNLURLError::DataLengthExceedsMaximum,
       "the response body passed 1048576 bytes"},
      {"cut-off", Route{Behaviour::cutOff, R"({"creative_tag":"x"})"},
       TNLURLError::NetworkConnectionLost, nullptr},
      {"drip", drip(), TNLURLError::TimedOut, "not complete within 3000 ms"},
      {"silent", Route{Behaviour::silent}, TNLURLError::TimedOut, "no data for 1000 ms"},
      {"redirect-loop", Route{Behaviour::redirectLoop}, TNLURLError::HTTPTooManyRedirects,
       "more than 5 redirects"},
  };
}

class FaultInjection : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(TNLSetup::setNetworkLimits(testLimits()));
    TNLLog::sharedLogger()->setShowLogs(true);
    baselineMB = peakResidentMB();
  }
  // Whatever the attacks sent (gigabytes, unbounded), the process grew by a few bodies' worth,
  // with room for a sanitizer's shadow memory.
  void TearDown() override { EXPECT_LT(peakResidentMB() - baselineMB, 192); }

  TNLHostileServer hostile;
  TNLLogCapture log;
  long baselineMB = 0;
};

TEST_F(FaultInjection, EachAttackEndsItsRequestWithOneTransportErrorAndOneLogLine) {
  auto attacks = transportAttacks();
  attacks.push_back({"refused", {}, TNLURLError::CannotConnectToHost, nullptr});
  for (const auto& attack : attacks) {
    SCOPED_TRACE(attack.name);
    const std::string path = std::string("/") + attack.name;
    hostile.on(path, attack.route);
    const std::string url = attack.name == std::string("refused")
                                ? "http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort())
                                : hostile.url(path);
    TNLTestSignal signal;
    TNLErrorPtr error;
    TNLNetworkClient::makeURLRequestWithURL(
        url, GET_METHOD, [&](const std::string&) { signal.record(); },
        [&](const TNLErrorPtr& e) { signal.record([&] { error = e; }); });
    ASSERT_TRUE(signal.waitFor(1, 10s));
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(signal.count(), 1u);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), TNLURLErrorDomain);
    EXPECT_EQ(error->code(), attack.code);
    const std::string line = "Network request to " + url + " stopped: ";
    EXPECT_EQ(log.count(line), attack.logged ? 1u : 0u);
    if (attack.logged) {
      EXPECT_TRUE(log.contains(line + attack.logged));
    }
  }
}

TEST_F(FaultInjection, AWaterfallOfHostileSourcesEndsAtTheFirstGoodOne) {
  TNLTestAdService service;
  service.install();
  const std::string creative = service.server.url("/creative.html");
  service.server.on("GET", "/creative.html", TNLTestServer::Response(200, "<html></html>"));
  service.server.on("GET", "/good",
                    TNLTestServer::Response::json(R"({"creative_tag":")" + creative + R"("})"));

  std::vector<TNLTestAdService::Source> sources;
  uint64_t rank = 0;
  for (const auto& attack : transportAttacks()) {
    hostile.on(std::string("/") + attack.name, attack.route);
    sources.push_back({rank++, hostile.url(std::string("/") + attack.name)});
  }
  hostile.on("/deep-json", {Behaviour::body, deepJSONAd(creative)});
  hostile.on("/entities", {Behaviour::body, entityFanOutVAST(), "application/xml"});
  hostile.on("/self-wrapper",
             {Behaviour::body, selfWrapperVAST(hostile.url("/self-wrapper")), "application/xml"});
  for (const char* path : {"/deep-json", "/entities", "/self-wrapper"}) {
    sources.push_back({rank++, hostile.url(path)});
  }
  sources.push_back({rank++, "/good"});
  service.publishManifest(sources);
  ASSERT_TRUE(service.preloadManifest());

  const auto host = std::make_shared<TNLTestFullScreenHost>();
  TNLInterstitialAd::setInterstitialAdDelegate(host, "APP1");
  TNLInterstitialAd::loadInterstitialAdForZone("z");
  ASSERT_TRUE(host->waitForCalls(1));
  TNLMainQueue::runUntil([] { return false; }, 100ms);
  EXPECT_EQ(host->calls(), std::vector<std::string>{"interstitial ready z @http"});
  for (const auto& attack : transportAttacks()) {
    EXPECT_GE(hostile.requestsTo(std::string("/") + attack.name), 1u) << attack.name;
  }
  // The wrapper that names itself is followed five times, then the chain fails.
  EXPECT_EQ(hostile.requestsTo("/self-wrapper"), 6u);
}

}  // namespace
