#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDContext.h"
#include "AppVerificationLibrary/OMIDDevice.h"
#include "AppVerificationLibrary/OMIDError.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "AppVerificationLibrary/OMIDTreeWalker.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "support/OMIDTestStatements.h"
#include "support/TNLTestDeviceFacts.h"

namespace {

constexpr char kIntegrationVersion[] = R"({"v":"1.2.4","a":"1"})";

void expectOMIDError(const TNLErrorPtr& error, long code, const std::string& message) {
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain(), "com.omid.library");
  EXPECT_EQ(error->code(), code);
  EXPECT_EQ(error->localizedDescription(), message);
}

std::shared_ptr<OMIDTarnelAdSessionContext> nativeContext(
    const std::optional<std::string>& identifier, TNLErrorPtr* error,
    std::vector<OMIDTarnelVerificationScriptResource> resources = {
        OMIDTarnelVerificationScriptResource("https://vendor.example/v.js", "vendor", "p=1")}) {
  return OMIDTarnelAdSessionContext::create(OMIDTarnelPartner::create("Tarnel", "1.0.0.001"),
                                            "var s = 1;", resources, identifier, error);
}

TEST(OMIDTarnelSDK, VersionsAndCompatibility) {
  EXPECT_EQ(OMIDTarnelSDK::versionString(), "1.2.4-Tarnel");
  EXPECT_EQ(OMIDTarnelSDK::majorVersionFrom("1.2.4-Tarnel"), 1);
  EXPECT_EQ(OMIDTarnelSDK::majorVersionFrom("12.0"), 12);
  EXPECT_EQ(OMIDTarnelSDK::majorVersionFrom(" 2"), 2);
  EXPECT_EQ(OMIDTarnelSDK::majorVersionFrom("x.1"), 0);
  EXPECT_EQ(OMIDTarnelSDK::majorVersionFrom(""), 0);

  EXPECT_TRUE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(kIntegrationVersion));
  EXPECT_TRUE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"v":"1.9.0"})"));
  EXPECT_TRUE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"a":"7","v":"1"})"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"v":"2.0"})"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"v":"0.9"})"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"a":"1"})"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"v":1})"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"(["v"])"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion("1.2.4"));
}

TEST(OMIDTarnelSDK, ActivationRefusesOtherMajorVersionsAndRunsTheManagerSetupOnce) {
  std::atomic<int> setups{0};
  OMIDTarnelSDK::setManagerSetup([&] { ++setups; });
  const auto sdk = OMIDTarnelSDK::sharedInstance();
  EXPECT_EQ(sdk, OMIDTarnelSDK::sharedInstance());
  EXPECT_FALSE(sdk->isActive());

  TNLErrorPtr error;
  EXPECT_FALSE(sdk->activateWithOMIDAPIVersion(R"({"v":"2.0"})", &error));
  expectOMIDError(
      error, 1,
      R"(OM SDK is not compatible with API version {"v":"2.0"}. OM SDK version is 1.2.4-Tarnel.)");
  EXPECT_FALSE(sdk->isActive());
  EXPECT_FALSE(sdk->activateWithOMIDAPIVersion("garbage", nullptr));  // no out-value: no crash
  EXPECT_EQ(setups, 0);

  // Concurrent and repeated activations all succeed; the setup runs once.
  std::vector<std::thread> threads;
  std::atomic<int> succeeded{0};
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back(
        [&] { succeeded += sdk->activateWithOMIDAPIVersion(R"({"v":"1.9.0"})", nullptr); });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  TNLErrorPtr untouched;
  EXPECT_TRUE(sdk->activateWithOMIDAPIVersion(kIntegrationVersion, &untouched));
  EXPECT_EQ(untouched, nullptr);
  EXPECT_EQ(succeeded, 4);
  EXPECT_TRUE(sdk->isActive());
  EXPECT_EQ(setups, 1);

  // An incompatible activation afterwards fails but leaves the SDK active.
  EXPECT_FALSE(sdk->activateWithOMIDAPIVersion(R"({"v":"3"})", &error));
  EXPECT_TRUE(sdk->isActive());

  // The setup is once per process: another one installed later does not run.
  std::atomic<int> laterSetups{0};
  OMIDTarnelSDK::setManagerSetup([&] { ++laterSetups; });
  EXPECT_EQ(laterSetups, 0);
  OMIDTarnelSDK::setManagerSetup(nullptr);
}

TEST(OMIDTarnelSDK, AManagerSetupInstalledAfterAnActivationThatRanNoneRunsAtOnce) {
  OMIDTarnelSDK::setManagerSetup(nullptr);
  ASSERT_TRUE(
      OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));
  int setups = 0;
  OMIDTarnelSDK::setManagerSetup([&] { ++setups; });
  EXPECT_EQ(setups, 1);
  EXPECT_TRUE(
      OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));
  EXPECT_EQ(setups, 1);
  OMIDTarnelSDK::setManagerSetup(nullptr);
}

TEST(OMIDTarnelSDK, TheFirstActivationSetsUpTheViewStateManager) {
  TNLSetup::setDeviceFacts(std::make_shared<TNLTestDeviceFacts>());
  ASSERT_TRUE(
      OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));
  int laterSetups = 0;
  OMIDTarnelSDK::setManagerSetup([&] { ++laterSetups; });
  EXPECT_EQ(laterSetups, 0);

  // The manager follows the sessions: a started session is told the application state and the
  // view tree is walked until it finishes.
  const auto webView = TNLWebView::create({0, 0, 320, 50}, TNLWebViewConfiguration());
  const auto session = OMIDTarnelAdSession::create(
      OMIDTarnelAdSessionConfiguration::create(1, 3, false, nullptr),
      OMIDTarnelAdSessionContext::create(OMIDTarnelPartner::create("Tarnel", "1.0.0.001"), webView,
                                         std::nullopt, nullptr),
      nullptr);
  session->start();
  ASSERT_TRUE(
      TNLMainQueue::runUntil([&] { return OMIDTestStatements::count(webView, "setState"); }));
  EXPECT_TRUE(OMIDTarnelTreeWalker::getInstance()->isRunning());
  session->finish();
  ASSERT_TRUE(
      TNLMainQueue::runUntil([] { return !OMIDTarnelTreeWalker::getInstance()->isRunning(); }));
}

TEST(OMIDTarnelSDK, PartnerAndConfiguration) {
  EXPECT_EQ(OMIDTarnelPartner::create("", "1.0"), nullptr);
  EXPECT_EQ(OMIDTarnelPartner::create("Tarnel", ""), nullptr);
  const auto partner = OMIDTarnelPartner::create("Tarnel", "1.0.0.001");
  ASSERT_NE(partner, nullptr);
  EXPECT_EQ(partner->toJSON().dump(), R"({"partnerName":"Tarnel","partnerVersion":"1.0.0.001"})");

  TNLErrorPtr error;
  EXPECT_EQ(OMIDTarnelAdSessionConfiguration::create(OMIDTarnelNoneOwner, OMIDTarnelJavaScriptOwner,
                                                     false, &error),
            nullptr);
  expectOMIDError(error, 1502, "Impression owner can not be none.");
  error.reset();
  EXPECT_EQ(OMIDTarnelAdSessionConfiguration::create(0, 1, &error), nullptr);
  expectOMIDError(error, 1502, "Impression owner can not be none.");
  EXPECT_EQ(OMIDTarnelAdSessionConfiguration::create(3, 1, true, nullptr), nullptr);

  const auto video =
      OMIDTarnelAdSessionConfiguration::create(OMIDTarnelJavaScriptOwner, 0, false, nullptr);
  ASSERT_NE(video, nullptr);
  EXPECT_EQ(video->impressionOwner(), OMIDTarnelJavaScriptOwner);
  EXPECT_EQ(video->videoEventsOwner(), OMIDTarnelNoneOwner);
  EXPECT_FALSE(video->isolateVerificationScripts());

  const auto isolated = OMIDTarnelAdSessionConfiguration::create(OMIDTarnelNativeOwner, 7, nullptr);
  ASSERT_NE(isolated, nullptr);
  EXPECT_EQ(isolated->impressionOwner(), OMIDTarnelNativeOwner);
  EXPECT_EQ(isolated->videoEventsOwner(), 7u);
  EXPECT_TRUE(isolated->isolateVerificationScripts());
}

TEST(OMIDTarnelSDK, NativeContextChecksRunInOrder) {
  TNLErrorPtr error;
  // Before activation every other fault is shadowed by code 2.
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(nullptr, "", {}, std::string(300, 'x'), &error),
            nullptr);
  expectOMIDError(error, 2, "OM SDK has not been activated.");
  EXPECT_EQ(nativeContext(std::nullopt, &error), nullptr);
  expectOMIDError(error, 2, "OM SDK has not been activated.");

  ASSERT_TRUE(
      OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));
  const auto partner = OMIDTarnelPartner::create("Tarnel", "1.0.0.001");
  const std::vector<OMIDTarnelVerificationScriptResource> one{
      OMIDTarnelVerificationScriptResource("https://a.example/a.js")};

  EXPECT_EQ(OMIDTarnelAdSessionContext::create(nullptr, "", {}, std::nullopt, &error), nullptr);
  expectOMIDError(error, 1510, "Resources can not be empty.");
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(nullptr, "", one, std::nullopt, &error), nullptr);
  expectOMIDError(error, 1509, "Partner can not be nil.");
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(partner, "", one, std::string(300, 'x'), &error),
            nullptr);
  expectOMIDError(error, 1501, "Script can not be empty.");

  EXPECT_NE(nativeContext(std::string(256, 'x'), nullptr), nullptr);
  EXPECT_EQ(nativeContext(std::string(257, 'x'), &error), nullptr);
  expectOMIDError(error, 1500,
                  "The supplied customReferenceIdentifier is 257 characters which exceeds the 256 "
                  "limit.");
  // Characters, not bytes: 256 two-byte characters fit.
  std::string accented;
  for (int i = 0; i < 256; ++i) {
    accented += "\xC3\xA9";
  }
  EXPECT_NE(nativeContext(accented, nullptr), nullptr);
  EXPECT_EQ(nativeContext(accented + "e", nullptr), nullptr);
  EXPECT_EQ(nativeContext(std::string(257, 'x'), nullptr), nullptr);  // no out-value: no crash
}

TEST(OMIDTarnelSDK, NativeContextJSON) {
  // The app and device records come from the device facts.
  auto facts = std::make_shared<TNLTestDeviceFacts>();
  facts->update([](auto& v) {
    v.bundleIdentifier = "com.example.measured";
    v.machine = "arm64";
    v.systemName = "Linux";
    v.systemVersion = "6.1.0";
  });
  TNLSetup::setDeviceFacts(facts);
  ASSERT_TRUE(
      OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));
  const auto context = nativeContext(
      "ref-1", nullptr,
      {OMIDTarnelVerificationScriptResource("https://a.example/a.js", "alpha", "a=1"),
       OMIDTarnelVerificationScriptResource("https://b.example/b.js", "beta"),
       OMIDTarnelVerificationScriptResource("https://c.example/c.js", "alpha", "a=2"),
       OMIDTarnelVerificationScriptResource("https://d.example/d.js", std::nullopt, "orphan")});
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(context->type(), OMIDTarnelAdSessionContextType::Native);
  EXPECT_EQ(context->typeString(), "native");
  EXPECT_EQ(context->script(), "var s = 1;");
  EXPECT_EQ(context->resources().size(), 4u);

  // The later duplicate wins; a resource without parameters, or without a vendor, is left out.
  EXPECT_EQ(context->resourcesJSON().dump(), R"({"alpha":"a=2"})");

  const TNLJson json = context->toJSON();
  std::vector<std::string> keys;
  for (const auto& [key, value] : json.items()) {
    keys.push_back(key);
  }
  EXPECT_EQ(keys,
            (std::vector<std::string>{"environment", "adSessionType", "supports", "omidNativeInfo",
                                      "app", "deviceInfo", "customReferenceData"}));
  EXPECT_EQ(json["environment"], "app");
  EXPECT_EQ(json["adSessionType"], "native");
  EXPECT_EQ(json["supports"].dump(), R"(["clid","vlid"])");
  EXPECT_EQ(json["omidNativeInfo"].dump(),
            R"({"partnerName":"Tarnel","partnerVersion":"1.0.0.001"})");
  EXPECT_EQ(
      json["app"].dump(),
      TNLJson({{"appId", "com.example.measured"}, {"libraryVersion", "1.2.4-Tarnel"}}).dump());
  EXPECT_EQ(json["app"], OMIDTarnelContext::sharedContext()->toJSON());
  EXPECT_EQ(json["deviceInfo"].dump(),
            TNLJson({{"deviceType", "arm64"}, {"os", "Linux"}, {"osVersion", "6.1.0"}}).dump());
  EXPECT_EQ(json["customReferenceData"], "ref-1");

  // Without an identifier the key is absent; an empty identifier is still one.
  EXPECT_FALSE(nativeContext(std::nullopt, nullptr)->toJSON().contains("customReferenceData"));
  EXPECT_EQ(nativeContext("", nullptr)->toJSON()["customReferenceData"], "");
  EXPECT_EQ(OMIDTarnelDevice::toJSON(), OMIDTarnelDevice::deviceDictionary());
}

}  // namespace
