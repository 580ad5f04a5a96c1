#include <gtest/gtest.h>

#include "Ads/Macros/TNLDeviceInfo.h"
#include "Ads/Macros/TNLMacros.h"
#include "Ads/Macros/TNLUrlParser.h"
#include "Manifest/TNLManifestHandler.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestDeviceFacts.h"

using namespace std::chrono_literals;

namespace {

constexpr char kZero[] = "00000000-0000-0000-0000-000000000000";

void holdManifestWithPrivacy(bool coppa, bool gdpr) {
  auto manifest = std::make_shared<TNLManifest>();
  manifest->setPrivacy(std::make_shared<TNLPrivacy>(coppa, gdpr));
  TNLManifestHandler::sharedHandler()->setManifest(manifest);
}

TEST(TNLMacros, UnrestrictedTableHoldsEveryTokenOfTheDevice) {
  const auto facts = TNLTestDeviceFacts::install();
  const TNLMacroDict dict = TNLMacros::sharedMacroDict();

  const auto device = TNLDeviceInfo::sharedInstance();
  EXPECT_FALSE(device->restricted());
  // 53 tokens, less "%APP_ID%" and "%AD_SIZE%", which are only written later.
  TNLMacroDict expected = {
      {TNL_SESSIONID_MACRO, device->sessionId()},
      {TNL_PACKAGEID_MACRO, "com.example.game"},
      {TNL_APPNAME_MACRO, "Game"},
      {TNL_APPVERSION_MACRO, "2.1"},
      {TNL_APPDOMAIN_MACRO, ""},
      {TNL_PROPERTY_MACRO, ""},
      {TNL_DEVICEID_MACRO, "6D92078A-8246-4BA4-AE5B-76104861E7DC"},
      {TNL_IOSDEVICEID_MACRO, "6D92078A-8246-4BA4-AE5B-76104861E7DC"},
      {TNL_ANDROIDDEVICEID_MACRO, ""},
      {TNL_ADVERTISERID_MACRO, "6D92078A-8246-4BA4-AE5B-76104861E7DC"},
      {TNL_DONOTTRACK_MACRO, "false"},
      {TNL_COPPA_MACRO, "false"},
      {TNL_DEVICENAME_MACRO, "Test Device"},
      {TNL_EXTERNALIP_MACRO, ""},
      {TNL_CONNECTIONTYPE_MACRO, "Wifi"},
      {TNL_CARRIER_MACRO, "no-carrier"},
      {TNL_OS_MACRO, "iOS"},
      {TNL_OSVERSION_MACRO, "12.4"},
      {TNL_MANUFACTURER_MACRO, "Apple"},
      {TNL_MODEL_MACRO, "x86_64"},
      {TNL_SDKVERSION_MACRO, "4.0.0"},
      {TNL_SDKBUILDVERSION_MACRO, "001"},
      {TNL_LANGUAGE_MACRO, "de-CH"},
      {TNL_LATITUDE_MACRO, "0"},
      {TNL_LONGITUDE_MACRO, "0"},
      {TNL_IP_MACRO, "192.168.1.20"},
      {TNL_INTERNALIP_MACRO, "192.168.1.20"},
      {TNL_SCREENWIDTH_MACRO, "375"},
      {TNL_SCREENHEIGHT_MACRO, "667"},
      {TNL_DEVICERESOLUTION_MACRO, "667X375"},
      {TNL_USERAGENT_MACRO, "Game/2.1 x86_64 TestOS/12.4 CFNetwork/8.5.0 Darwin/6.1.0"},
  };
  for (const char* blank : {TNL_CONTINENT_MACRO,      TNL_CONTINENTISOCODE_MACRO,
                            TNL_TIMEZONE_MACRO,       TNL_TRACKERTYPE_MACRO,
                            TNL_EVENTNAME_MACRO,      TNL_CONTENTTYPE_MACRO,
                            TNL_WORKFLOW_MACRO,       TNL_ZONE_MACRO,
                            TNL_PRODUCT_MACRO,        TNL_CREATIVEID_MACRO,
                            TNL_ORDERID_MACRO,        TNL_LINEITEMID_MACRO,
                            TNL_ADSVRADID_BLANKMACRO, TNL_VIDEODURATION_BLANKMACRO,
                            TNL_HOST_BLANKMACRO,      TNL_PLATFORM_BLANKMACRO,
                            TNL_VALUE_BLANKMACRO,     TNL_RAND_MACRO,
                            TNL_TIMESTAMP_MACRO,      TNL_DEVICEORIENTATION_MACRO}) {
    expected.emplace(blank, "");
  }
  EXPECT_EQ(dict, expected);

  // Not restricted: one location request, made on the main queue.
  EXPECT_EQ(facts->testLocationSource()->requestCount(), 0);
  EXPECT_TRUE(
      TNLMainQueue::runUntil([&] { return facts->testLocationSource()->requestCount() == 1; }, 2s));
}

// COPPA or GDPR in a manifest held when the table is built hides the identity for the life of
// the process; only COPPA sets the COPPA token.
class RestrictedMacros : public ::testing::TestWithParam<bool> {};

TEST_P(RestrictedMacros, HideTheIdentityForTheLifeOfTheProcess) {
  const bool coppa = GetParam();
  const auto facts = TNLTestDeviceFacts::install();
  holdManifestWithPrivacy(coppa, !coppa);
  const TNLMacroDict dict = TNLMacros::sharedMacroDict();
  using Texts = std::vector<std::string>;
  EXPECT_EQ((Texts{dict.at(TNL_DEVICEID_MACRO), dict.at(TNL_IOSDEVICEID_MACRO),
                   dict.at(TNL_ADVERTISERID_MACRO), dict.at(TNL_DEVICENAME_MACRO),
                   dict.at(TNL_COPPA_MACRO)}),
            (Texts{kZero, kZero, kZero, "", coppa ? "true" : "false"}));
  EXPECT_TRUE(TNLDeviceInfo::sharedInstance()->restricted());

  // A later manifest without either changes nothing.
  holdManifestWithPrivacy(false, false);
  EXPECT_EQ(TNLMacros::sharedMacroDict().at(TNL_DEVICEID_MACRO), kZero);
  TNLMainQueue::runFor(100ms);
  EXPECT_EQ(facts->testLocationSource()->requestCount(), 0) << "no location for a restricted user";
}

INSTANTIATE_TEST_SUITE_P(CoppaOrGdpr, RestrictedMacros, ::testing::Bool());

TEST(TNLMacros, SnapshotsDoNotSeeLaterWritesAndNullRemovesAToken) {
  TNLTestDeviceFacts::install();
  const TNLMacroDict before = TNLMacros::sharedMacroDict();
  TNLMacros::setValueInMacroDictionary("APP-1", TNL_APPID_MACRO);
  EXPECT_EQ(before.count(TNL_APPID_MACRO), 0u);
  EXPECT_EQ(TNLMacros::sharedMacroDict().at(TNL_APPID_MACRO), "APP-1");

  TNLMacros::setValueInMacroDictionary(std::nullopt, TNL_PROPERTY_MACRO);
  EXPECT_EQ(TNLMacros::sharedMacroDict().count(TNL_PROPERTY_MACRO), 0u);
  // With the token gone, a substitution leaves it in the text.
  EXPECT_EQ(TNLUrlParser().fillMacrosForUrl("http://h/p?a=%APP_ID%&p=%PROPERTY%", std::nullopt),
            "http://h/p?a=APP-1&p=%25PROPERTY%25");
}

}  // namespace
