#include <gtest/gtest.h>

#include "Ads/BannerAds/TNLBannerAd.h"
#include "Ads/FullScreenAds/TNLFSAd.h"
#include "Ads/Macros/TNLMacros.h"
#include "Ads/TNLAd.h"
#include "Ads/TNLAdFactory.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestDeviceFacts.h"

namespace {

TEST(TNLAdFactory, JSONRecordKeepsEveryMemberAndAddsTheSDKVariables) {
  TNLTestDeviceFacts::install();
  const auto ad = TNLAdFactory::generateAdFromDictionary(TNLJSON::parse(
      R"({"creative_tag": "http://a/c.html", "copy": {"brandName": "B"}, "extra": [1],
          "sdkName": "theirs", "sdkVars": 5})"));
  ASSERT_NE(ad, nullptr);
  EXPECT_EQ(ad->creativeTag(), "http://a/c.html");
  EXPECT_EQ(ad->adCopy()["brandName"], "B");
  EXPECT_FALSE(ad->sdkType().has_value());
  EXPECT_TRUE(ad->assets().is_null());
  EXPECT_TRUE(ad->payload().is_null());
  EXPECT_FALSE(ad->isVast());
  EXPECT_TRUE(ad->adIsValid());

  const TNLJson& full = ad->fullAd();
  EXPECT_EQ(full["extra"], TNLJson::array({1}));
  EXPECT_EQ(full["sdkName"], "Tarnel-1.0");  // the record's own value is replaced
  const TNLJson& vars = full["sdkVars"];
  ASSERT_TRUE(vars.is_object());
  EXPECT_EQ(vars.size(), TNLMacros::sharedMacroDict().size());
  EXPECT_EQ(vars["session_id"], TNLMacros::sharedMacroDict().at(TNL_SESSIONID_MACRO));
  EXPECT_EQ(vars["continent.isocode"], "");
  EXPECT_EQ(vars["lat"], "0");
  EXPECT_EQ(vars["os"], "iOS");
}

TEST(TNLAdFactory, ConnectionTypeRefreshShowsInTheNextAd) {
  const auto facts = TNLTestDeviceFacts::install();
  TNLMacros::sharedMacros();  // built while on Wi-Fi
  facts->update(
      [](auto& v) { v.flags = TNLDeviceFacts::kFlagReachable | TNLDeviceFacts::kFlagIsWWAN; });
  const auto first = TNLAdFactory::generateAdFromDictionary({{"creative_tag", "t"}});
  const auto second = TNLAdFactory::generateAdFromDictionary({{"creative_tag", "t"}});
  EXPECT_EQ(first->fullAd()["sdkVars"]["conn_type"], "Wifi");
  EXPECT_EQ(second->fullAd()["sdkVars"]["conn_type"], "Cellular");
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
}

TEST(TNLAdFactory, VASTAdCarriesTheTemplateDocumentAndMediaFile) {
  TNLTestDeviceFacts::install();
  const auto ad =
      TNLAdFactory::generateVASTAdFromXML("<VAST/>", "http://m/v.mp4", "http://t/page.html");
  ASSERT_NE(ad, nullptr);
  EXPECT_TRUE(ad->isVast());
  // A VAST ad's complete record holds only the SDK variables.
  EXPECT_EQ(ad->fullAd().size(), 1u);
  EXPECT_TRUE(ad->fullAd().contains("sdkVars"));
  EXPECT_TRUE(ad->adIsValid());

  EXPECT_FALSE(TNLAdFactory::generateVASTAdFromXML("<VAST/>", "m", "")->adIsValid());
  EXPECT_FALSE(TNLAdFactory::generateVASTAdFromXML("<VAST/>", "m", std::nullopt)->adIsValid());
}

TEST(TNLAdFactory, ARecordThatIsNotAnObjectGivesNoAdAndIsLogged) {
  TNLTestDeviceFacts::install();
  TNLLogCapture capture;
  TNLLog::sharedLogger()->setShowLogs(true);
  EXPECT_EQ(TNLAdFactory::generateAdFromDictionary(TNLJson::array()), nullptr);
  EXPECT_TRUE(capture.contains("Failed to generate Ad due to exception: "));
}

struct Listener : TNLAdDelegate {
  std::vector<std::string> events;
  void adWillCloseInZone(const std::string& zone) override { events.push_back("close " + zone); }
  void adRewardedForZone(const std::string& zone) override { events.push_back("reward " + zone); }
};

TEST(TNLAd, TellsItsListenerWhileItLivesAndCopiesAsEachKindRequires) {
  TNLAd source(std::string("type"), std::string("tag"), {{"a", 1}}, TNLJson::object(), {}, {}, {},
               {{"full", true}});
  source.setXml("<VAST/>");
  source.setMediaFile("v.mp4");
  source.setIsVast(true);
  source.setHtml("<html/>");
  source.setZone("Z");

  const TNLFSAd fullScreen(source);
  EXPECT_EQ(fullScreen.xml(), "<VAST/>");
  EXPECT_EQ(fullScreen.mediaFile(), "v.mp4");
  EXPECT_TRUE(fullScreen.isVast());
  EXPECT_FALSE(fullScreen.rewarded());
  EXPECT_FALSE(fullScreen.html().has_value());
  EXPECT_FALSE(fullScreen.zone().has_value());
  EXPECT_EQ(fullScreen.fullAd()["full"], true);

  const TNLBannerAd banner(source);
  EXPECT_EQ(banner.creativeTag(), "tag");
  EXPECT_FALSE(banner.isVast());
  EXPECT_EQ(banner.xml(), "");

  auto listener = std::make_shared<Listener>();
  source.setDelegate(listener);
  source.adRewarded();
  source.adClosed();
  EXPECT_EQ(listener->events, (std::vector<std::string>{"reward Z", "close Z"}));
}

}  // namespace
