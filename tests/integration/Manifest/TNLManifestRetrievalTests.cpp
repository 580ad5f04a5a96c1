#include <gtest/gtest.h>

#include <thread>

#include "Ads/Macros/TNLMacros.h"
#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Http/TNLHttpSession.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestServer.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;

namespace {

constexpr char kPath[] = "/v4/manifest/APP1";
constexpr char kZero[] = "00000000-0000-0000-0000-000000000000";

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

  void start() {
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
  bool wait() { return signal.waitFor(); }
};

class ManifestRetrieval : public ::testing::Test {
 protected:
  void SetUp() override {
    TNLSetup::setManifestBaseURL(server.baseURL());
    TNLSetup::setDeviceFacts(facts);
  }
  void registerApp() { TNLMacros::setValueInMacroDictionary("APP1", TNL_APPID_MACRO); }

  TNLTestServer server;
  std::shared_ptr<TNLTestDeviceFacts> facts = std::make_shared<TNLTestDeviceFacts>();
};

TEST_F(ManifestRetrieval, PostsTheDeviceFactsToTheApplicationsPath) {
  server.on("POST", kPath, TNLTestServer::Response::json(manifestJSON(3600)));
  registerApp();
  Retrieval retrieval;
  retrieval.start();
  ASSERT_TRUE(retrieval.wait());
  ASSERT_EQ(retrieval.successes, 1);
  EXPECT_TRUE(retrieval.onSessionThread);
  ASSERT_NE(retrieval.manifest, nullptr);
  EXPECT_EQ(retrieval.manifest->ttl(), 3600u);
  EXPECT_EQ(TNLMacros::sharedMacroDict().at(TNL_PROPERTY_MACRO), "My Property");

  const auto requests = server.requestsTo(kPath);
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].method, "POST");
  const std::string& text = requests[0].body;
  EXPECT_EQ(text.rfind("{\n  \"", 0), 0u) << "pretty-printed, one member per line: " << text;
  const TNLJson body = TNLJson::parse(text);
  ASSERT_TRUE(body.is_object());
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
  const TNLJson& deviceInfo = body.at("device_info");
  ASSERT_EQ(deviceInfo.size(), 17u) << deviceInfo.dump(2);
  for (const auto& [key, value] : expected.items()) {
    ASSERT_TRUE(deviceInfo.contains(key)) << key;
    EXPECT_EQ(deviceInfo.at(key), value) << key;
  }
}

TEST_F(ManifestRetrieval, RetrievalsWithinTheTtlMakeOneRequest) {
  server.on("POST", kPath, TNLTestServer::Response::json(manifestJSON(3600)));
  registerApp();
  Retrieval first;
  first.start();
  ASSERT_TRUE(first.wait());

  Retrieval second;
  second.start();
  EXPECT_EQ(second.signal.count(), 1u) << "a valid manifest is handed over before the call returns";
  EXPECT_EQ(second.manifest, first.manifest);
  EXPECT_FALSE(second.onSessionThread);
  EXPECT_EQ(server.requestsTo(kPath).size(), 1u);
  EXPECT_TRUE(TNLManifestHandler::manfiestIsValid());
}

TEST_F(ManifestRetrieval, ZeroTtlFetchesEveryTime) {
  server.on("POST", kPath, TNLTestServer::Response::json(manifestJSON(0)));
  registerApp();
  for (int i = 0; i < 3; ++i) {
    Retrieval retrieval;
    retrieval.start();
    ASSERT_TRUE(retrieval.wait());
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
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  server.on(
      "POST", kPath,
      TNLTestServer::Response::json(R"({"ttl": "3600", "developer": {"applicationname": "X"}})"));
  registerApp();
  Retrieval retrieval;
  retrieval.start();
  ASSERT_TRUE(retrieval.wait());
  EXPECT_EQ(retrieval.successes, 1);
  EXPECT_EQ(retrieval.manifest, nullptr);
  EXPECT_EQ(TNLManifestHandler::sharedHandler()->manifest(), nullptr);
  EXPECT_FALSE(TNLManifestHandler::manfiestIsValid());
  EXPECT_TRUE(capture.contains("Failed to create Manifest due to exception: "));
  EXPECT_EQ(TNLMacros::sharedMacroDict().count(TNL_PROPERTY_MACRO), 0u)
      << "no manifest, no property name";
}

TEST_F(ManifestRetrieval, AFailedFetchKeepsThePreviousManifest) {
  server.on("POST", kPath, TNLTestServer::Response::json(manifestJSON(1)));
  registerApp();
  Retrieval good;
  good.start();
  ASSERT_TRUE(good.wait());
  ASSERT_NE(good.manifest, nullptr);
  std::this_thread::sleep_for(1100ms);  // let it expire
  ASSERT_FALSE(TNLManifestHandler::manfiestIsValid());

  server.on("POST", kPath, TNLTestServer::Response::json("[]"));
  Retrieval notAnObject;
  notAnObject.start();
  ASSERT_TRUE(notAnObject.wait());
  EXPECT_EQ(notAnObject.failures, 1);
  EXPECT_EQ(notAnObject.error, nullptr);
  EXPECT_EQ(server.requestsTo(kPath).size(), 2u);

  TNLSetup::setManifestBaseURL("http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()));
  Retrieval unreachable;
  unreachable.start();
  ASSERT_TRUE(unreachable.wait());
  EXPECT_EQ(unreachable.failures, 1);
  ASSERT_NE(unreachable.error, nullptr);
  EXPECT_EQ(unreachable.error->domain(), TNLURLErrorDomain);

  EXPECT_EQ(TNLManifestHandler::sharedHandler()->manifest(), good.manifest);
}

TEST_F(ManifestRetrieval, ABaseURLWithPercentEscapesIsUsedAsItStands) {
  // "%20" in the base is part of the address, not a placeholder of the format.
  TNLSetup::setManifestBaseURL(server.baseURL() + "/ad%20service");
  server.on("POST", std::string("/ad service") + kPath,
            TNLTestServer::Response::json(manifestJSON(3600)));
  registerApp();
  Retrieval retrieval;
  retrieval.start();
  ASSERT_TRUE(retrieval.wait());
  EXPECT_EQ(retrieval.successes, 1);
}

// A manifest held when the macro table is built decides the privacy of every later request body.
void expectRestrictedBody(TNLTestServer& server, bool coppa, bool gdpr) {
  auto held = std::make_shared<TNLManifest>();
  held->setPrivacy(std::make_shared<TNLPrivacy>(coppa, gdpr));
  TNLManifestHandler::sharedHandler()->setManifest(held);  // held, but already expired
  server.on("POST", kPath, TNLTestServer::Response::json(manifestJSON(3600)));
  TNLMacros::setValueInMacroDictionary("APP1", TNL_APPID_MACRO);

  Retrieval retrieval;
  retrieval.start();
  ASSERT_TRUE(retrieval.wait());
  const auto requests = server.requestsTo(kPath);
  ASSERT_EQ(requests.size(), 1u);
  const TNLJson deviceInfo = TNLJson::parse(requests[0].body).at("device_info");
  EXPECT_EQ(deviceInfo.size(), 17u);
  EXPECT_EQ(deviceInfo.at("UID"), kZero);
  EXPECT_EQ(deviceInfo.at("public_ip_address"), "");
  EXPECT_EQ(deviceInfo.at("name"), "");
  EXPECT_EQ(deviceInfo.at("model"), "x86_64");
}

TEST_F(ManifestRetrieval, CoppaHeldAtMacroConstructionHidesTheIdentity) {
  expectRestrictedBody(server, true, false);
}

TEST_F(ManifestRetrieval, GdprHeldAtMacroConstructionHidesTheIdentity) {
  expectRestrictedBody(server, false, true);
}

TEST_F(ManifestRetrieval, WithoutAnApplicationIdOrABodyTheRequestStillGoesOut) {
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  facts->update([](auto& v) { v.bundleIdentifier = "com.example.\xC3"; });  // not UTF-8
  server.on("POST", "/v4/manifest/(null)", TNLTestServer::Response::json(manifestJSON(3600)));
  Retrieval retrieval;
  retrieval.start();
  ASSERT_TRUE(retrieval.wait());
  EXPECT_EQ(retrieval.successes, 1);
  const auto requests = server.requestsTo("/v4/manifest/(null)");
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].body, "");
  EXPECT_TRUE(capture.contains(
      "Error creating manifest header: Error Domain=NSCocoaErrorDomain Code=3851"));
}

}  // namespace
