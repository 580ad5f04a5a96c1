#include <gtest/gtest.h>

#include <thread>

#include "Ads/FullScreenAds/TNLFSAd.h"
#include "Ads/TNLAd.h"
#include "Ads/TNLAdClient.h"
#include "Platform/Http/TNLHttpSession.h"
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
  // Equal ranks keep the manifest's order.
  service.publishManifest({{5, "/rank5"}, {1, "/tie-first"}, {1, "/tie-second"}});
  server.on("GET", "/tie-first", Response(204));
  server.on("GET", "/tie-second",
            Response::json(R"({"creative_tag": "http://c/1.html", "sdkType": "html"})"));
  server.on("GET", "/rank5", Response::json(R"({"creative_tag": "http://c/5.html"})"));

  Outcome outcome;
  TNLAdClient().getAdForZone("Z1", false, true, outcome.success(), outcome.failure());
  EXPECT_EQ(outcome.settledCount(), 1u);
  ASSERT_EQ(outcome.ads.size(), 1u);
  EXPECT_EQ(outcome.ads[0]->creativeTag(), "http://c/1.html");
  EXPECT_EQ(service.queriesTo("/tie-first"), (std::vector<std::string>{"z=Z1&p=2"}));
  EXPECT_EQ(service.queriesTo("/tie-second").size(), 1u);
  EXPECT_TRUE(service.queriesTo("/rank5").empty());
}

TEST_F(AdClient, MovesOnPastBlankTagsEmptyBodiesArraysAndTemplatelessVAST) {
  // The VAST source resolves, but without a template page its ad is not valid.
  service.publishManifest(
      {{0, "/blank"}, {1, "/nocontent"}, {2, "/array"}, {3, "/vast"}, {4, "/good"}}, 3600, "");
  server.on("GET", "/blank", Response::json(R"({"creative_tag": "  \n "})"));
  server.on("GET", "/nocontent", Response(204));
  server.on("GET", "/array", Response::json(R"([{"creative_tag": "http://c/array.html"}])"));
  server.on("GET", "/vast", Response::xml(kInlineMP4));
  server.on("GET", "/good", Response::json(R"({"creative_tag": "http://c/good.html"})"));

  Outcome outcome;
  TNLAdClient().getAdForZone("Z", false, false, outcome.success(), outcome.failure());
  EXPECT_EQ(outcome.settledCount(), 1u);
  ASSERT_EQ(outcome.ads.size(), 1u);
  EXPECT_EQ(outcome.ads[0]->creativeTag(), "http://c/good.html");
  for (const char* path : {"/blank", "/nocontent", "/array", "/vast", "/good"}) {
    EXPECT_EQ(service.queriesTo(path).size(), 1u) << path;
  }
}

TEST_F(AdClient, AVASTResponseBecomesAFullScreenAdOnTheTemplatePage) {
  service.publishManifest({{0, "/vast"}});
  server.on("GET", "/vast", Response::xml(kInlineMP4));
  TNLTestSignal signal;
  std::shared_ptr<TNLFSAd> ad;
  TNLAdClient().getFSAdForZone(
      "Z", false,
      [&](const std::shared_ptr<TNLFSAd>& result) { signal.record([&] { ad = result; }); },
      [](const TNLErrorPtr&) {});
  ASSERT_TRUE(signal.waitFor());
  ASSERT_NE(ad, nullptr);
  EXPECT_TRUE(ad->isVast());
  EXPECT_EQ(ad->creativeTag(), server.url(TNLTestAdService::kTemplatePath));
  EXPECT_EQ(ad->mediaFile(), "http://127.0.0.1/v.mp4");
  EXPECT_NE(ad->xml().find("<VAST"), std::string::npos);
  EXPECT_EQ(service.queriesTo("/vast"), (std::vector<std::string>{"z=Z&p=1"}));
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
  ASSERT_NE(outcome.errors[0], nullptr);
  EXPECT_EQ(outcome.errors[0]->domain(), TNLURLErrorDomain);
  EXPECT_EQ(outcome.errors[0]->code(), 0);
  EXPECT_TRUE(outcome.errors[0]->userInfo().empty());
  EXPECT_EQ(service.queriesTo("/a"), (std::vector<std::string>{"z=B&p=3"}));
  EXPECT_EQ(service.queriesTo("/c").size(), 1u);

  // A manifest without any demand source fails the same way.
  service.publishManifest({}, 0);
  Outcome empty;
  TNLAdClient().getAdForZone("B", false, false, empty.success(), empty.failure());
  ASSERT_TRUE(empty.signal.waitFor());
  ASSERT_EQ(empty.errors.size(), 1u);
  EXPECT_EQ(empty.errors[0]->code(), 0);
}

TEST_F(AdClient, AManifestFailureReachesTheCallerUnchangedAndNoSourceIsAsked) {
  TNLSetup::setManifestBaseURL("http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()));
  Outcome outcome;
  TNLAdClient().getAdForZone("Z", false, false, outcome.success(), outcome.failure());
  ASSERT_TRUE(outcome.signal.waitFor());
  ASSERT_EQ(outcome.errors.size(), 1u);
  EXPECT_EQ(outcome.errors[0]->domain(), TNLURLErrorDomain);
  EXPECT_EQ(outcome.errors[0]->code(), TNLURLError::CannotConnectToHost);
  EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(AdClient, AWrapperWhoseTargetIsNotXMLAdvancesTheListTwice) {
  // The workflow reports the parse error and then code 2; each report moves the shared list on,
  // so the third source is asked after the second and the caller hears twice.
  service.publishManifest({{0, "/wrapper"}, {1, "/second"}, {2, "/third"}});
  server.on("GET", "/wrapper",
            Response::xml("<VAST version=\"3.0\"><Ad><Wrapper><VASTAdTagURI>" +
                          server.url("/garbage") + "</VASTAdTagURI></Wrapper></Ad></VAST>"));
  server.on("GET", "/garbage", Response(200, "this is not xml"));
  server.on("GET", "/second",
            Response::json(R"({"creative_tag": "http://c/second.html"})").after(300ms));
  server.on("GET", "/third", Response::json(R"({"creative_tag": ""})"));

  Outcome outcome;
  TNLAdClient().getAdForZone("Z", false, false, outcome.success(), outcome.failure());
  EXPECT_EQ(outcome.settledCount(2), 2u);
  EXPECT_EQ(service.queriesTo("/second").size(), 1u);
  EXPECT_EQ(service.queriesTo("/third").size(), 1u);
  ASSERT_EQ(outcome.ads.size(), 1u);
  EXPECT_EQ(outcome.ads[0]->creativeTag(), "http://c/second.html");
  ASSERT_EQ(outcome.errors.size(), 1u);
  EXPECT_EQ(outcome.errors[0]->code(), 0);
}

}  // namespace
