#include <gtest/gtest.h>

#include "Ads/Macros/TNLLocationService.h"
#include "Ads/Macros/TNLMacros.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestDeviceFacts.h"

using namespace std::chrono_literals;

namespace {

using Authorization = TNLLocationSource::Authorization;

std::string coordinates() {
  const TNLMacroDict dict = TNLMacros::sharedMacroDict();
  return dict.at(TNL_LATITUDE_MACRO) + " " + dict.at(TNL_LONGITUDE_MACRO);
}

// Installs facts whose location source starts with `authorization`, and builds the macro table.
std::shared_ptr<TNLTestLocationSource> setUp(Authorization authorization, bool enabled = true) {
  auto facts = std::make_shared<TNLTestDeviceFacts>();
  facts->testLocationSource()->update([&](auto& s) {
    s.authorization = authorization;
    s.enabled = enabled;
  });
  TNLSetup::setDeviceFacts(facts);
  TNLMacros::sharedMacros();
  TNLMainQueue::runFor(50ms);
  return facts->testLocationSource();
}

TEST(TNLLocationService, AsksOnlyWithServicesOnAndPermissionAlreadyGiven) {
  const auto source = setUp(Authorization::Denied);
  EXPECT_FALSE(TNLLocationService::locationServiceAvailable());
  EXPECT_EQ(source->requestCount(), 0);

  for (const auto refused :
       {Authorization::Denied, Authorization::Restricted, Authorization::NotDetermined}) {
    source->update([&](auto& s) { s.authorization = refused; });
    TNLLocationService::makeLocationRequest();
  }
  source->update([](auto& s) {
    s.authorization = Authorization::AuthorizedAlways;
    s.enabled = false;
  });
  TNLLocationService::makeLocationRequest();
  TNLMainQueue::runFor(50ms);
  EXPECT_EQ(source->requestCount(), 0);
  EXPECT_EQ(coordinates(), "0 0");

  source->update([](auto& s) { s.enabled = true; });
  EXPECT_TRUE(TNLLocationService::locationServiceAvailable());
  TNLLocationService::makeLocationRequest();
  EXPECT_EQ(source->requestCount(), 0) << "the request is made on the main queue, later";
  EXPECT_TRUE(TNLMainQueue::runUntil([&] { return source->requestCount() == 1; }, 2s));
}

TEST(TNLLocationService, TheLastFixOfTheCurrentRequestIsWritten) {
  const auto source = setUp(Authorization::AuthorizedWhenInUse);
  ASSERT_EQ(source->requestCount(), 1);
  EXPECT_EQ(coordinates(), "0 0");

  // A second request replaces the manager: the first one's answer is ignored.
  TNLLocationService::makeLocationRequest();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return source->requestCount() == 2; }, 2s));
  source->succeed({{1.5, 2.5}});
  TNLMainQueue::runFor(50ms);
  EXPECT_EQ(coordinates(), "0 0");

  source->succeed({{48.1, 11.5}, {52.520008, 13.404954}});
  ASSERT_TRUE(TNLMainQueue::runUntil([] { return coordinates() != "0 0"; }, 2s));
  EXPECT_EQ(coordinates(), "52.520008 13.404954");
}

TEST(TNLLocationService, AKnownLocationIsUsedWithoutAsking) {
  const auto source = setUp(Authorization::Denied);
  source->update([](auto& s) {
    s.authorization = Authorization::AuthorizedAlways;
    s.lastKnown = TNLLocationSource::Location{-33.8688, 151.2093};
  });
  TNLLocationService::makeLocationRequest();
  ASSERT_TRUE(TNLMainQueue::runUntil([] { return coordinates() != "0 0"; }, 2s));
  EXPECT_EQ(coordinates(), "-33.868800 151.209300");
  EXPECT_EQ(source->requestCount(), 0);
}

}  // namespace
