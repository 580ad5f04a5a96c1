#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "TarnelAd/TNLSetup.h"
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
  EXPECT_EQ(OMIDTarnelSDK::majorVersionFrom("12.0"), 12);
  EXPECT_EQ(OMIDTarnelSDK::majorVersionFrom("x.1"), 0);
  // The same major version, given as the string member "v" of a JSON object.
  EXPECT_TRUE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"v":"1.9.0"})"));
  EXPECT_TRUE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"a":"7","v":"1"})"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"v":"2.0"})"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"a":"1"})"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(R"({"v":1})"));
  EXPECT_FALSE(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion("1.2.4"));
}

TEST(OMIDTarnelSDK, ActivationRefusesOtherMajorVersionsAndRunsTheManagerSetupOnce) {
  std::atomic<int> setups{0};
  OMIDTarnelSDK::setManagerSetup([&] { ++setups; });
  const auto sdk = OMIDTarnelSDK::sharedInstance();
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
  EXPECT_EQ(OMIDTarnelAdSessionConfiguration::create(3, 1, true, nullptr), nullptr);
}

TEST(OMIDTarnelSDK, NativeContextChecksRunInOrder) {
  ASSERT_TRUE(
      OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));
  const auto partner = OMIDTarnelPartner::create("Tarnel", "1.0.0.001");
  const std::vector<OMIDTarnelVerificationScriptResource> one{
      OMIDTarnelVerificationScriptResource("https://a.example/a.js")};
  TNLErrorPtr error;
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(nullptr, "", {}, std::nullopt, &error), nullptr);
  expectOMIDError(error, 1510, "Resources can not be empty.");
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(nullptr, "", one, std::nullopt, &error), nullptr);
  expectOMIDError(error, 1509, "Partner can not be nil.");
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(partner, "", one, std::string(300, 'x'), &error),
            nullptr);
  expectOMIDError(error, 1501, "Script can not be empty.");

  // The identifier's limit counts characters, not bytes: 256 two-byte characters fit.
  std::string accented;
  for (int i = 0; i < 256; ++i) {
    accented += "\xC3\xA9";
  }
  EXPECT_NE(nativeContext(accented, nullptr), nullptr);
  EXPECT_EQ(nativeContext(accented + "e", &error), nullptr);
  expectOMIDError(error, 1500,
                  "The supplied customReferenceIdentifier is 257 characters which exceeds the 256 "
                  "limit.");
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
  EXPECT_EQ(context->typeString(), "native");
  // The later duplicate wins; a resource without parameters, or without a vendor, is left out.
  EXPECT_EQ(context->resourcesJSON().dump(), R"({"alpha":"a=2"})");

  // The session tests check the whole text of an HTML context; these members differ.
  const TNLJson json = context->toJSON();
  EXPECT_EQ(json["adSessionType"], "native");
  EXPECT_EQ(json["app"].dump(),
            R"({"appId":"com.example.measured","libraryVersion":"1.2.4-Tarnel"})");
  EXPECT_EQ(json["deviceInfo"].dump(),
            R"({"deviceType":"arm64","os":"Linux","osVersion":"6.1.0"})");
  EXPECT_EQ(json["customReferenceData"], "ref-1");

  // Without an identifier the key is absent; an empty identifier is still one.
  EXPECT_FALSE(nativeContext(std::nullopt, nullptr)->toJSON().contains("customReferenceData"));
  EXPECT_EQ(nativeContext("", nullptr)->toJSON()["customReferenceData"], "");
}

}  // namespace
