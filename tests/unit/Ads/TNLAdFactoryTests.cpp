#include <gtest/gtest.h>

#include "Ads/FullScreenAds/TNLFSAd.h"
#include "Ads/Macros/TNLMacros.h"
#include "Ads/TNLAd.h"
#include "Ads/TNLAdFactory.h"
#include "TarnelAd/TNLConstants.h"
#include "support/TNLTestDeviceFacts.h"

namespace {

TEST(TNLAdFactory, JSONRecordKeepsEveryMemberAndAddsTheSDKVariables) {
  const auto facts = TNLTestDeviceFacts::install();
  TNLMacros::sharedMacros();  // built while on Wi-Fi
  const auto ad = TNLAdFactory::generateAdFromDictionary(TNLJSON::parse(
      R"({"creative_tag": "http://a/c.html", "copy": {"brandName": "B"}, "extra": [1],
          "sdkName": "theirs", "sdkVars": 5})"));
  ASSERT_NE(ad, nullptr);
  EXPECT_EQ(ad->adCopy()["brandName"], "B");
  EXPECT_TRUE(ad->adIsValid());
  const TNLJson& full = ad->fullAd();
  EXPECT_EQ(full["extra"], TNLJson::array({1}));
  EXPECT_EQ(full["sdkName"], "Tarnel-1.0");  // the record's own value is replaced
  const TNLJson& vars = full["sdkVars"];
  EXPECT_EQ(vars.size(), TNLMacros::sharedMacroDict().size());
  EXPECT_EQ(vars["session_id"], TNLMacros::sharedMacroDict().at(TNL_SESSIONID_MACRO));

  // The connection type is refreshed after every ad, so a change shows in the next but one.
  facts->update(
      [](auto& v) { v.flags = TNLDeviceFacts::kFlagReachable | TNLDeviceFacts::kFlagIsWWAN; });
  const auto stale = TNLAdFactory::generateAdFromDictionary({{"creative_tag", "t"}});
  const auto fresh = TNLAdFactory::generateAdFromDictionary({{"creative_tag", "t"}});
  EXPECT_EQ(stale->fullAd()["sdkVars"]["conn_type"], "Wifi");
  EXPECT_EQ(fresh->fullAd()["sdkVars"]["conn_type"], "Cellular");
  // Not an object: no ad.
  EXPECT_EQ(TNLAdFactory::generateAdFromDictionary(TNLJson::array()), nullptr);
}

TEST(TNLAdFactory, OnlyANonBlankStringMakesAValidCreativeTag) {
  TNLTestDeviceFacts::install();
  for (const char* body :
       {R"({"creative_tag": " \n\t "})", R"({"creative_tag": ""})", "{}",
        R"({"creative_tag": null})", R"({"creative_tag": 42})", R"({"creative_tag": true})",
        R"({"creative_tag": {"url": "http://a/c.html"}})", R"({"creative_tag": ["http://a"]})"}) {
    const auto ad = TNLAdFactory::generateAdFromDictionary(TNLJSON::parse(body));
    ASSERT_NE(ad, nullptr) << body;
    EXPECT_FALSE(ad->adIsValid()) << body;
  }
  // A VAST ad is valid with a template page; its record holds only the SDK variables.
  const auto vast =
      TNLAdFactory::generateVASTAdFromXML("<VAST/>", "http://m/v.mp4", "http://t/page.html");
  EXPECT_TRUE(vast->isVast());
  EXPECT_TRUE(vast->adIsValid());
  EXPECT_EQ(vast->fullAd().size(), 1u);
  EXPECT_FALSE(TNLAdFactory::generateVASTAdFromXML("<VAST/>", "m", "")->adIsValid());
  EXPECT_FALSE(TNLAdFactory::generateVASTAdFromXML("<VAST/>", "m", std::nullopt)->adIsValid());
}

}  // namespace
