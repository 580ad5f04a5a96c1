#include <gtest/gtest.h>

#include <atomic>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "support/OMIDTestStatements.h"

namespace {

constexpr char kIntegrationVersion[] = R"({"v":"1.2.4","a":"1"})";

using OMIDTestStatements::described;
using Resource = OMIDTarnelVerificationScriptResource;

// Compatible: a JSON object whose "v" has the SDK's major version.
TEST(OMIDTarnelSDK, ActivationRefusesOtherMajorVersionsAndRunsTheManagerSetupOnce) {
  const std::vector<std::pair<std::string, bool>> cases{
      {R"({"v":"1.9.0"})", true}, {R"({"a":"7","v":"1"})", true}, {R"({"v":"2.0"})", false},
      {R"({"a":"1"})", false},    {R"({"v":1})", false},          {"1.2.4", false}};
  for (const auto& [version, compatible] : cases) {
    EXPECT_EQ(OMIDTarnelSDK::isCompatibleWithOMIDAPIVersion(version), compatible) << version;
  }
  std::atomic<int> setups{0};
  OMIDTarnelSDK::setManagerSetup([&] { ++setups; });
  const auto sdk = OMIDTarnelSDK::sharedInstance();
  TNLErrorPtr error;
  EXPECT_FALSE(sdk->activateWithOMIDAPIVersion(R"({"v":"2.0"})", &error));
  EXPECT_EQ(
      described(error),
      R"(1 OM SDK is not compatible with API version {"v":"2.0"}. OM SDK version is 1.2.4-Tarnel.)");
  EXPECT_FALSE(sdk->isActive());
  EXPECT_EQ(setups, 0);

  // Repeated activations succeed; the setup runs once.
  EXPECT_TRUE(sdk->activateWithOMIDAPIVersion(R"({"v":"1.9.0"})", nullptr));
  EXPECT_TRUE(sdk->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));
  EXPECT_EQ(setups, 1);
  // An incompatible activation afterwards fails but leaves the SDK active.
  EXPECT_FALSE(sdk->activateWithOMIDAPIVersion(R"({"v":"3"})", nullptr));
  EXPECT_TRUE(sdk->isActive());
  OMIDTarnelSDK::setManagerSetup([&] { ++setups; });
  EXPECT_EQ(setups, 1);
  OMIDTarnelSDK::setManagerSetup(nullptr);
}

// Each check in its order: a fault early in the list shadows those after it.
TEST(OMIDTarnelSDK, RefusedObjectsCarryTheirCodeAndMessage) {
  const auto partner = OMIDTarnelPartner::create("Tarnel", "1.0.0.001");
  const auto webView = TNLWebView::create({0, 0, 320, 50}, TNLWebViewConfiguration());
  const auto plainView = TNLView::create({0, 0, 10, 10});
  const std::vector<Resource> one{Resource("https://a.example/a.js")};
  TNLErrorPtr error;
  const auto html = [&](const std::shared_ptr<OMIDTarnelPartner>& p,
                        const std::shared_ptr<TNLView>& view, std::optional<std::string> id) {
    return OMIDTarnelAdSessionContext::create(p, view, id, &error) ? "created" : described(error);
  };
  const auto native = [&](const std::shared_ptr<OMIDTarnelPartner>& p, const std::string& script,
                          const std::vector<Resource>& resources, std::optional<std::string> id) {
    return OMIDTarnelAdSessionContext::create(p, script, resources, id, &error) ? "created"
                                                                                : described(error);
  };
  EXPECT_EQ(html(nullptr, plainView, std::string(300, 'x')), "2 OM SDK has not been activated.");
  ASSERT_TRUE(
      OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));

  EXPECT_EQ(html(nullptr, plainView, std::nullopt),
            "1508 Web view should be UIWebView or WKWebView or not null.");
  EXPECT_EQ(html(nullptr, webView, std::string(300, 'x')), "1509 Partner can not be nil.");
  const std::string tooLong =
      "1500 The supplied customReferenceIdentifier is 257 characters which exceeds the 256 limit.";
  EXPECT_EQ(html(partner, webView, std::string(257, 'x')), tooLong);
  EXPECT_EQ(html(partner, webView, std::string(256, 'x')), "created");

  EXPECT_EQ(native(nullptr, "", {}, std::nullopt), "1510 Resources can not be empty.");
  EXPECT_EQ(native(nullptr, "", one, std::nullopt), "1509 Partner can not be nil.");
  EXPECT_EQ(native(partner, "", one, std::string(300, 'x')), "1501 Script can not be empty.");
  // The identifier's limit counts characters, not bytes: 256 two-byte characters fit.
  std::string accented;
  for (int i = 0; i < 256; ++i) {
    accented += "\xC3\xA9";
  }
  EXPECT_EQ(native(partner, "s", one, accented), "created");
  EXPECT_EQ(native(partner, "s", one, accented + "e"), tooLong);

  EXPECT_EQ(OMIDTarnelPartner::create("", "1.0"), nullptr);
  EXPECT_EQ(OMIDTarnelPartner::create("Tarnel", ""), nullptr);
  EXPECT_EQ(OMIDTarnelAdSessionConfiguration::create(OMIDTarnelNoneOwner, OMIDTarnelJavaScriptOwner,
                                                     false, &error),
            nullptr);
  EXPECT_EQ(described(error), "1502 Impression owner can not be none.");
}

// The HTML context's whole text is checked with the session; here what only native ones have.
TEST(OMIDTarnelSDK, NativeContextsListEachVendorsParametersOnce) {
  ASSERT_TRUE(
      OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));
  const auto context = OMIDTarnelAdSessionContext::create(
      OMIDTarnelPartner::create("Tarnel", "1.0.0.001"), "var s = 1;",
      {Resource("https://a.example/a.js", "alpha", "a=1"),
       Resource("https://b.example/b.js", "beta"),
       Resource("https://c.example/c.js", "alpha", "a=2"),
       Resource("https://d.example/d.js", std::nullopt, "x")},
      "", nullptr);
  ASSERT_NE(context, nullptr);
  // The later duplicate wins; a resource without parameters, or without a vendor, is left out.
  EXPECT_EQ(context->resourcesJSON().dump(), R"({"alpha":"a=2"})");
  // An empty identifier is still one.
  EXPECT_EQ(context->toJSON()["customReferenceData"], "");
}

}  // namespace
