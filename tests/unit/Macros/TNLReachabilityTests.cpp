#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>

#include "Macros/TNLReachability.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestDeviceFacts.h"

using namespace std::chrono_literals;

namespace {

using Facts = TNLDeviceFacts;

TEST(TNLReachability, FlagTableAndTheAlwaysPrintedFlagLine) {
  TNLTestDeviceFacts::install();
  const auto reachability = TNLReachability::reachabilityForInternetConnection();
  ASSERT_NE(reachability, nullptr);

  struct Row {
    uint32_t flags;
    long status;
    const char* line;
  };
  const uint32_t R = Facts::kFlagReachable;
  const Row rows[] = {
      {R | Facts::kFlagIsWWAN, 2, "Reachability Flag Status: WR ------- networkStatusForFlags"},
      {R, 1, "Reachability Flag Status: -R ------- networkStatusForFlags"},
      {R | Facts::kFlagConnectionRequired, 0,
       "Reachability Flag Status: -R -c----- networkStatusForFlags"},
      {R | Facts::kFlagConnectionRequired | Facts::kFlagConnectionOnDemand, 1,
       "Reachability Flag Status: -R -c--D-- networkStatusForFlags"},
      {R | Facts::kFlagConnectionRequired | Facts::kFlagConnectionOnTraffic |
           Facts::kFlagInterventionRequired,
       0, "Reachability Flag Status: -R -cCi--- networkStatusForFlags"},
      {R | Facts::kFlagConnectionRequired | Facts::kFlagIsWWAN, 2,
       "Reachability Flag Status: WR -c----- networkStatusForFlags"},
      {0, 0, "Reachability Flag Status: -- ------- networkStatusForFlags"},
      {Facts::kFlagIsWWAN, 0, "Reachability Flag Status: W- ------- networkStatusForFlags"},
      {0x7003F, 2, "Reachability Flag Status: WR tcCiDld networkStatusForFlags"},
  };
  // The line goes out with the library's log switched off.
  for (const Row& row : rows) {
    TNLLogCapture capture;
    EXPECT_EQ(reachability->networkStatusForFlags(row.flags), row.status) << std::hex << row.flags;
    EXPECT_EQ(capture.lines(), std::vector<std::string>{row.line});
  }
}

TEST(TNLReachability, StatusComesFromTheDeviceFactsUnlessTheTargetIsLoopback) {
  const auto facts = TNLTestDeviceFacts::install();
  const auto internet = TNLReachability::reachabilityForInternetConnection();
  facts->update([](auto& v) { v.flags = Facts::kFlagReachable | Facts::kFlagConnectionRequired; });
  EXPECT_EQ(internet->currentReachabilityStatus(), TNLReachability::NotReachable);
  EXPECT_TRUE(internet->connectionRequired());

  facts->update([](auto& v) { v.flags.reset(); });
  TNLLogCapture capture;
  EXPECT_EQ(internet->currentReachabilityStatus(), TNLReachability::NotReachable);
  EXPECT_FALSE(internet->connectionRequired());
  EXPECT_TRUE(capture.lines().empty()) << "unreadable flags are not mapped, so no flag line";

  sockaddr_in loopback{};
  loopback.sin_family = AF_INET;
  loopback.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const auto local =
      TNLReachability::reachabilityWithAddress(reinterpret_cast<const sockaddr*>(&loopback));
  ASSERT_NE(local, nullptr);
  EXPECT_EQ(local->currentReachabilityStatus(), TNLReachability::ReachableViaWiFi);
  EXPECT_TRUE(capture.contains("Reachability Flag Status: -R -----ld networkStatusForFlags"));
  for (const auto& [host, status] : {std::pair{"localhost", 1}, {"example.com", 0}}) {
    const auto byName = TNLReachability::reachabilityWithHostName(host);
    ASSERT_NE(byName, nullptr);
    EXPECT_EQ(byName->currentReachabilityStatus(), status) << host;
  }
  EXPECT_EQ(TNLReachability::reachabilityWithHostName(""), nullptr);
  sockaddr unixAddress{};
  unixAddress.sa_family = AF_UNIX;
  EXPECT_EQ(TNLReachability::reachabilityWithAddress(&unixAddress), nullptr);
}

TEST(TNLReachability, NotifierPostsWhenTheFlagsChange) {
  const auto facts = TNLTestDeviceFacts::install();
  const auto reachability = TNLReachability::reachabilityForInternetConnection();
  int posted = 0;
  const void* sender = nullptr;
  const auto center = TNLNotificationCenter::defaultCenter();
  center->addObserver(&posted, kReachabilityChangedNotification, nullptr,
                      [&](const TNLNotification& n) {
                        ++posted;
                        sender = n.object;
                      });
  ASSERT_TRUE(reachability->startNotifier());
  TNLMainQueue::runFor(700ms);
  EXPECT_EQ(posted, 0) << "unchanged flags post nothing";

  facts->update([](auto& v) { v.flags = Facts::kFlagReachable | Facts::kFlagIsWWAN; });
  EXPECT_TRUE(TNLMainQueue::runUntil([&] { return posted == 1; }, 3s));
  EXPECT_EQ(sender, reachability.get());

  reachability->stopNotifier();
  facts->update([](auto& v) { v.flags = 0; });
  TNLMainQueue::runFor(1200ms);
  EXPECT_EQ(posted, 1);
  center->removeObserver(&posted);
}

}  // namespace
