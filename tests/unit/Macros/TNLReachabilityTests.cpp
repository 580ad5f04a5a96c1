#include <gtest/gtest.h>

#include "Macros/TNLReachability.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestDeviceFacts.h"

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

TEST(TNLReachability, StatusComesFromTheDeviceFacts) {
  const auto facts = TNLTestDeviceFacts::install();
  const auto internet = TNLReachability::reachabilityForInternetConnection();
  facts->update([](auto& v) { v.flags = Facts::kFlagReachable | Facts::kFlagConnectionRequired; });
  EXPECT_EQ(internet->currentReachabilityStatus(), TNLReachability::NotReachable);

  facts->update([](auto& v) { v.flags.reset(); });
  TNLLogCapture capture;
  EXPECT_EQ(internet->currentReachabilityStatus(), TNLReachability::NotReachable);
  EXPECT_TRUE(capture.lines().empty()) << "unreadable flags are not mapped, so no flag line";
}

}  // namespace
