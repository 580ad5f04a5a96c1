#include <gtest/gtest.h>

#include <thread>

#include "Ads/Macros/TNLMacros.h"
#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Http/TNLHttpSession.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestServer.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;

namespace {

constexpr char kPath[] = "/v4/manifest/APP1";

std::string manifestJSON(int ttl) {
  return R"({"ttl": )" + std::to_string(ttl) +
         R"(, "developer": {"applicationname": "My Property"}, "privacy": {"coppa": false}})";
}

// What one retrieval delivered.
struct Retrieval {
  TNLTestSignal signal;
  int successes = 0;
  int failures = 0;
  std::shared_ptr<TNLManifest> manifest;
  TNLErrorPtr error;
  bool onSessionThread = false;

  Retrieval() {
    TNLManifestHandler::retrieveManifestWithSuccess(
        [this](const std::shared_ptr<TNLManifest>& m) {
          signal.record([&] {
            manifest = m;
            ++successes;
            onSessionThread = TNLHttpSession::sharedSession()->isSessionThread();
          });
        },
        [this](const TNLErrorPtr& e) {
          signal.record([&] {
            error = e;
            ++failures;
          });
        });
  }
};

class ManifestRetrieval : public ::testing::Test {
 protected:
  void SetUp() override {
    TNLSetup::setManifestBaseURL(server.baseURL());
    TNLSetup::setDeviceFacts(facts);
  }
  // Serves `json` and registers the application, whose ID names the path.
  void serve(const std::string& json, const std::string& path = kPath) {
    server.on("POST", path, TNLTestServer::Response::json(json));
    TNLMacros::setValueInMacroDictionary("APP1", TNL_APPID_MACRO);
  }
  TNLJson deviceInfoSent() const {
    const auto requests = server.requestsTo(kPath);
    return requests.empty() ? TNLJson() : TNLJson::parse(requests[0].body).at("device_info");
  }

  TNLTestServer server;
  std::shared_ptr<TNLTestDeviceFacts> facts = std::make_shared<TNLTestDeviceFacts>();
};

TEST_F(ManifestRetrieval, PostsTheDeviceFactsAndServesTheManifestWithinItsTtl) {
  serve(manifestJSON(3600));
  Retrieval first;
  ASSERT_TRUE(first.signal.waitFor());
  ASSERT_EQ(first.successes, 1);
  EXPECT_TRUE(first.onSessionThread);
  ASSERT_NE(first.manifest, nullptr);
  EXPECT_EQ(TNLMacros::sharedMacroDict().at(TNL_PROPERTY_MACRO), "My Property");

  const auto requests = server.requestsTo(kPath);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].body.rfind("{\n  \"", 0), 0u) << "pretty-printed: " << requests[0].body;
  const TNLJson body = TNLJson::parse(requests[0].body);
  EXPECT_EQ(body.size(), 3u);
  EXPECT_EQ(body.at("version"), "4.0.0");
  EXPECT_EQ(body.at("sdk"), "4.0.0.001");
  const TNLJson expected = {
      {"public_ip_address", "192.168.1.20"},
      {"package_name", "com.example.game"},
      {"system_API", "12"},
      {"system_name", "iOS"},
      {"system_version", "12.4"},
      {"model", "x86_64"},
      {"UID", "6D92078A-8246-4BA4-AE5B-76104861E7DC"},
      {"trk", "false"},
      {"screen_size", "normal"},
      {"screen_DPI", "326.000000"},
      {"carrier", "no-carrier"},
      {"connection_type", "Wifi"},
      {"language", "de-CH"},
      {"manufacturer", "Apple"},
      {"latitude", "0"},
      {"longitude", "0"},
      {"name", "Test Device"},
  };
  EXPECT_EQ(deviceInfoSent(), expected);

  // Within the ttl the held manifest is handed over before the call returns.
  Retrieval second;
  EXPECT_EQ(second.signal.count(), 1u);
  EXPECT_EQ(second.manifest, first.manifest);
  EXPECT_FALSE(second.onSessionThread);
  EXPECT_EQ(server.requestsTo(kPath).size(), 1u);
  EXPECT_TRUE(TNLManifestHandler::manfiestIsValid());
}

TEST_F(ManifestRetrieval, ZeroTtlFetchesEveryTime) {
  serve(manifestJSON(0));
  for (int i = 0; i < 3; ++i) {
    Retrieval retrieval;
    ASSERT_TRUE(retrieval.signal.waitFor());
    EXPECT_EQ(retrieval.successes, 1);
    EXPECT_NE(retrieval.manifest, nullptr);
    EXPECT_FALSE(TNLManifestHandler::manfiestIsValid());
  }
  // One fetch each, and one more by the trackers, set up when the first fetch announced itself.
  ASSERT_TRUE(server.waitForRequests(4));
  std::this_thread::sleep_for(100ms);
  EXPECT_EQ(server.requestsTo(kPath).size(), 4u);
}

TEST_F(ManifestRetrieval, AnUnparsableManifestStillSucceedsWithNull) {
  serve(R"({"ttl": "3600", "developer": {"applicationname": "X"}})");
  Retrieval retrieval;
  ASSERT_TRUE(retrieval.signal.waitFor());
  EXPECT_EQ(retrieval.successes, 1);
  EXPECT_EQ(retrieval.manifest, nullptr);
  EXPECT_FALSE(TNLManifestHandler::manfiestIsValid());
}

TEST_F(ManifestRetrieval, AFailedFetchKeepsThePreviousManifest) {
  serve(manifestJSON(1));
  Retrieval good;
  ASSERT_TRUE(good.signal.waitFor());
  ASSERT_NE(good.manifest, nullptr);
  std::this_thread::sleep_for(1100ms);  // let it expire
  ASSERT_FALSE(TNLManifestHandler::manfiestIsValid());

  TNLSetup::setManifestBaseURL("http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()));
  Retrieval unreachable;
  ASSERT_TRUE(unreachable.signal.waitFor());
  EXPECT_EQ(unreachable.failures, 1);
  ASSERT_NE(unreachable.error, nullptr);
  EXPECT_EQ(unreachable.error->domain(), TNLURLErrorDomain);
  EXPECT_EQ(TNLManifestHandler::sharedHandler()->manifest(), good.manifest);
}

TEST_F(ManifestRetrieval, ABaseURLWithPercentEscapesIsUsedAsItStands) {
  TNLSetup::setManifestBaseURL(server.baseURL() + "/ad%20service");
  serve(manifestJSON(3600), std::string("/ad service") + kPath);
  Retrieval retrieval;
  ASSERT_TRUE(retrieval.signal.waitFor());
  EXPECT_EQ(retrieval.successes, 1);
}

// COPPA held when the macro table is built hides the identity in every later request body
// (GDPR alone does the same; the macro table's tests cover both).
TEST_F(ManifestRetrieval, PrivacyHeldAtMacroConstructionHidesTheIdentity) {
  auto held = std::make_shared<TNLManifest>();
  held->setPrivacy(std::make_shared<TNLPrivacy>(true, false));
  TNLManifestHandler::sharedHandler()->setManifest(held);  // held, but already expired
  serve(manifestJSON(3600));
  Retrieval retrieval;
  ASSERT_TRUE(retrieval.signal.waitFor());
  const TNLJson deviceInfo = deviceInfoSent();
  EXPECT_EQ(deviceInfo.at("UID"), "00000000-0000-0000-0000-000000000000");
  EXPECT_EQ(deviceInfo.at("public_ip_address"), "");
  EXPECT_EQ(deviceInfo.at("name"), "");
  EXPECT_EQ(deviceInfo.at("model"), "x86_64");
}

TEST_F(ManifestRetrieval, WithoutAnApplicationIdOrABodyTheRequestStillGoesOut) {
  facts->update([](auto& v) { v.bundleIdentifier = "com.example.\xC3"; });  // not UTF-8
  server.on("POST", "/v4/manifest/(null)", TNLTestServer::Response::json(manifestJSON(3600)));
  Retrieval retrieval;
  ASSERT_TRUE(retrieval.signal.waitFor());
  EXPECT_EQ(retrieval.successes, 1);
  const auto requests = server.requestsTo("/v4/manifest/(null)");
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].body, "");
}

}  // namespace
