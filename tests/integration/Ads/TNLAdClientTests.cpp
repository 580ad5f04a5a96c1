#include <gtest/gtest.h>

#include <thread>

#include "Ads/TNLAd.h"
#include "Ads/TNLAdClient.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestAdService.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;
using Response = TNLTestServer::Response;

namespace {

constexpr char kInlineMP4[] =
    R"(<VAST version="3.0"><Ad id="1"><InLine><AdSystem>T</AdSystem><AdTitle>t</AdTitle>)"
    R"(<Creatives><Creative><Linear><Duration>00:00:05</Duration><MediaFiles>)"
    R"(<MediaFile type="video/mp4" delivery="progressive" width="640" height="360">)"
    R"(http://127.0.0.1/v.mp4</MediaFile></MediaFiles></Linear></Creative></Creatives>)"
    R"(</InLine></Ad></VAST>)";

// What one request's callbacks delivered.
struct Outcome {
  TNLTestSignal signal;
  std::vector<std::shared_ptr<TNLAd>> ads;
  std::vector<TNLErrorPtr> errors;

  TNLAdClient::AdSuccess success() {
    return [this](const std::shared_ptr<TNLAd>& ad) { signal.record([&] { ads.push_back(ad); }); };
  }
  TNLAdClient::Failure failure() {
    return [this](const TNLErrorPtr& e) { signal.record([&] { errors.push_back(e); }); };
  }
  // Waits for `calls` callbacks, then lets a late extra one arrive and counts.
  size_t settledCount(size_t calls = 1) {
    EXPECT_TRUE(signal.waitFor(calls));
    std::this_thread::sleep_for(100ms);
    return signal.count();
  }
};

class AdClient : public ::testing::Test {
 protected:
  void SetUp() override { service.install(); }

  TNLTestAdService service;
  TNLTestServer& server = service.server;
};

TEST_F(AdClient, AsksSourcesInRankOrderAndStopsAtTheFirstValidAd) {
  // Equal ranks keep the manifest's order. A blank tag, an array, a VAST ad without a template
  // page and an empty body are not valid ads.
  service.publishManifest({{5, "/rank5"},
                           {3, "/tie-first"},
                           {3, "/tie-second"},
                           {0, "/blank"},
                           {1, "/array"},
                           {2, "/vast"}},
                          3600, "");
  server.on("GET", "/blank", Response::json(R"({"creative_tag": "  \n "})"));
  server.on("GET", "/array", Response::json(R"([{"creative_tag": "http://c/array.html"}])"));
  server.on("GET", "/vast", Response::xml(kInlineMP4));
  server.on("GET", "/tie-first", Response(204));
  server.on("GET", "/tie-second", Response::json(R"({"creative_tag": "http://c/good.html"})"));
  server.on("GET", "/rank5", Response::json(R"({"creative_tag": "http://c/5.html"})"));

  Outcome outcome;
  TNLAdClient().getAdForZone("Z1", false, true, outcome.success(), outcome.failure());
  EXPECT_EQ(outcome.settledCount(), 1u);
  ASSERT_EQ(outcome.ads.size(), 1u);
  EXPECT_EQ(outcome.ads[0]->creativeTag(), "http://c/good.html");
  for (const char* path : {"/blank", "/array", "/vast", "/tie-first", "/tie-second"}) {
    EXPECT_EQ(service.queriesTo(path), (std::vector<std::string>{"z=Z1&p=2"})) << path;
  }
  EXPECT_TRUE(service.queriesTo("/rank5").empty());
}

TEST_F(AdClient, WhenEverySourceFailsTheFailureComesOnceWithCodeZero) {
  service.publishManifest({{0, "/a"}, {1, "/missing"}, {2, "/c"}});
  server.on("GET", "/a", Response::json(R"({"no_tag": true})"));
  server.on("GET", "/c", Response(200, "<not-vast/>", "application/xml"));
  Outcome outcome;
  TNLAdClient().getBannerAdForZone(
      "B", [&](const std::shared_ptr<TNLBannerAd>&) { outcome.success()(nullptr); },
      outcome.failure());
  EXPECT_EQ(outcome.settledCount(), 1u);
  ASSERT_EQ(outcome.errors.size(), 1u);
  EXPECT_EQ(outcome.errors[0]->domain(), TNLURLErrorDomain);
  EXPECT_EQ(outcome.errors[0]->code(), 0);
  EXPECT_EQ(service.queriesTo("/a"), (std::vector<std::string>{"z=B&p=3"}));
  EXPECT_EQ(service.queriesTo("/c").size(), 1u);
}

}  // namespace
