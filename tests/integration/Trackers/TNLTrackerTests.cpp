#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "Ads/Macros/TNLDeviceInfo.h"
#include "Ads/Macros/TNLMacros.h"
#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "Trackers/TNLTrackerHandler.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestServer.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;

namespace {

constexpr char kManifestPath[] = "/v4/manifest/APP1";

class Trackers : public ::testing::Test {
 protected:
  void SetUp() override {
    TNLSetup::setManifestBaseURL(server.baseURL());
    TNLTestDeviceFacts::install();
    TNLMacros::setValueInMacroDictionary("APP1", TNL_APPID_MACRO);
  }

  // Answers manifest requests with a manifest whose monitoring section is `monitoring`.
  void serveManifest(int ttl, const std::string& monitoring) {
    server.on("POST", kManifestPath,
              TNLTestServer::Response::json(R"({"ttl": )" + std::to_string(ttl) +
                                            (monitoring.empty() ? "" : R"(, "monitoring": )") +
                                            monitoring + "}"));
  }
  std::string monitoringTo(const std::string& path, const std::string& method,
                           const std::string& content = "?e=%EVENT_NAME%") {
    return R"({"loglevel": "debug", "method": ")" + method + R"(", "baseuri": ")" +
           server.url(path) + R"(", "uri_content": ")" + content + R"("})";
  }

  void retrieve() {
    TNLTestSignal answered;
    TNLManifestHandler::retrieveManifestWithSuccess([&](const auto&) { answered.record(); },
                                                    [&](const auto&) { answered.record(); });
    ASSERT_TRUE(answered.waitFor());
  }

  std::vector<std::string> queriesTo(const std::string& path) const {
    std::vector<std::string> queries;
    for (const auto& request : server.requestsTo(path)) {
      queries.push_back(request.query);
    }
    std::sort(queries.begin(), queries.end());
    return queries;
  }

  // Waits for `count` requests to `path`, then a little longer for extra ones to show.
  bool waitFor(const std::string& path, size_t count) const {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (server.requestsTo(path).size() < count && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(10ms);
    }
    std::this_thread::sleep_for(150ms);
    return server.requestsTo(path).size() == count;
  }

  TNLTestServer server;
};

TEST_F(Trackers, EachEventReachesTheMonitoringUrlWithTheManifestsMethod) {
  serveManifest(3600, monitoringTo("/track", "POST", "?e=%EVENT_NAME%&s=%SESSION_ID%&a=%APP_ID%"));
  retrieve();
  std::vector<std::string> events = {TNL_ADREQUESTED_TRACKER,   TNL_ADRETURNED_TRACKER,
                                     TNL_ADUNAVAILABLE_TRACKER, TNL_ADREADY_TRACKER,
                                     TNL_ADSHOWING_TRACKER,     TNL_ADCLOSED_TRACKER,
                                     TNL_ADREWARDED_TRACKER};
  for (const auto& event : events) {
    TNLTrackerHandler::sendTrackerForEvent(event);
  }
  events.push_back(TNL_MANIFESTLOADED_TRACKER);
  ASSERT_TRUE(waitFor("/track", events.size()));
  std::vector<std::string> expected;
  for (const auto& event : events) {
    expected.push_back("e=" + event + "&s=" + TNLDeviceInfo::sharedInstance()->sessionId() +
                       "&a=APP1");
  }
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(queriesTo("/track"), expected);
  for (const auto& request : server.requestsTo("/track")) {
    EXPECT_EQ(request.method + request.body, "POST");
  }
}

// Trackers are set up from the first manifest and stay on its monitoring URL.
TEST_F(Trackers, AnEventBeforeAnyManifestIsDroppedAndALaterManifestDoesNotMoveTheTrackers) {
  serveManifest(0, monitoringTo("/trackA", "GET"));
  TNLTrackerHandler::sendTrackerForEvent(TNL_ADREQUESTED_TRACKER);  // starts a fetch
  ASSERT_TRUE(server.waitForRequests(1));
  EXPECT_EQ(server.requestsTo(kManifestPath).size(), 1u);
  ASSERT_TRUE(TNLMainQueue::runUntil(
      [] { return TNLTrackerHandler::sharedHandler()->monitoring() != nullptr; }));
  // Neither the early event nor the fetch's own announcement (made before the trackers were set up)
  // went out.
  EXPECT_TRUE(waitFor("/trackA", 0));

  serveManifest(0, monitoringTo("/trackB", "GET"));
  retrieve();
  ASSERT_EQ(TNLManifestHandler::sharedHandler()->manifest()->monitoring()->url(),
            server.url("/trackB") + "?e=%EVENT_NAME%");
  TNLTrackerHandler::sendTrackerForEvent(TNL_ADCLOSED_TRACKER);
  ASSERT_TRUE(waitFor("/trackA", 2));
  EXPECT_EQ(queriesTo("/trackA"), (std::vector<std::string>{"e=OnAdClosed", "e=OnManifestLoaded"}));
  EXPECT_EQ(server.requestsTo("/trackA")[0].method, "GET");
  EXPECT_TRUE(server.requestsTo("/trackB").empty());
}

}  // namespace
