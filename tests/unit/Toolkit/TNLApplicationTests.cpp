#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/Foundation/TNLNotificationCenter.h"
#include "TarnelAd/Toolkit/TNLApplication.h"

namespace {

TEST(TNLApplication, StateChangesPostTheirNotificationsInThePlatformOrder) {
  using State = TNLApplicationState;
  const auto application = TNLApplication::sharedApplication();
  // Each entry: the notification and the state the application reports while it is posted.
  std::vector<std::string> posted;
  const auto center = TNLNotificationCenter::defaultCenter();
  for (const char* name :
       {TNLApplicationDidBecomeActiveNotification, TNLApplicationWillResignActiveNotification,
        TNLApplicationDidEnterBackgroundNotification,
        TNLApplicationWillEnterForegroundNotification}) {
    center->addObserver(&posted, name, nullptr, [&](const TNLNotification& notification) {
      const char* states[] = {"active", "inactive", "background"};
      posted.push_back(notification.name + "@" +
                       states[static_cast<int>(application->applicationState())]);
    });
  }
  // Setting the same state again posts nothing.
  for (const State state :
       {State::background, State::background, State::active, State::inactive, State::active}) {
    application->setApplicationState(state);
  }
  EXPECT_EQ(posted, (std::vector<std::string>{
                        "TNLApplicationWillResignActiveNotification@active",
                        "TNLApplicationDidEnterBackgroundNotification@background",
                        "TNLApplicationWillEnterForegroundNotification@background",
                        "TNLApplicationDidBecomeActiveNotification@active",
                        "TNLApplicationWillResignActiveNotification@active",
                        "TNLApplicationDidBecomeActiveNotification@active",
                    }));
  center->removeObserver(&posted);
}

}  // namespace
