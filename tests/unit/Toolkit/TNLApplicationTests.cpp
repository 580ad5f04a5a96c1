#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Toolkit/Headless/TNLHeadlessViewPeer.h"
#include "TarnelAd/TNLDeviceFacts.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLScreen.h"
#include "TarnelAd/Toolkit/TNLToolkit.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

std::string stateName(TNLApplicationState state) {
  switch (state) {
    case TNLApplicationState::active:
      return "active";
    case TNLApplicationState::inactive:
      return "inactive";
    case TNLApplicationState::background:
      return "background";
  }
  return "?";
}

TEST(TNLApplication, StateChangesPostTheirNotificationsInThePlatformOrder) {
  const auto application = TNLApplication::sharedApplication();
  EXPECT_EQ(application->applicationState(), TNLApplicationState::active);
  // Each entry: the notification and the state the application reports while it is posted.
  std::vector<std::string> posted;
  const auto center = TNLNotificationCenter::defaultCenter();
  for (const char* name :
       {TNLApplicationDidBecomeActiveNotification, TNLApplicationWillResignActiveNotification,
        TNLApplicationDidEnterBackgroundNotification,
        TNLApplicationWillEnterForegroundNotification}) {
    center->addObserver(&posted, name, nullptr, [&](const TNLNotification& notification) {
      EXPECT_EQ(notification.object, application.get());
      posted.push_back(notification.name + "@" + stateName(application->applicationState()));
    });
  }

  application->setApplicationState(TNLApplicationState::background);
  EXPECT_EQ(posted, (std::vector<std::string>{
                        "TNLApplicationWillResignActiveNotification@active",
                        "TNLApplicationDidEnterBackgroundNotification@background",
                    }));
  posted.clear();
  application->setApplicationState(TNLApplicationState::background);
  EXPECT_TRUE(posted.empty());

  application->setApplicationState(TNLApplicationState::active);
  EXPECT_EQ(posted, (std::vector<std::string>{
                        "TNLApplicationWillEnterForegroundNotification@background",
                        "TNLApplicationDidBecomeActiveNotification@active",
                    }));
  posted.clear();
  application->setApplicationState(TNLApplicationState::inactive);
  application->setApplicationState(TNLApplicationState::active);
  EXPECT_EQ(posted, (std::vector<std::string>{
                        "TNLApplicationWillResignActiveNotification@active",
                        "TNLApplicationDidBecomeActiveNotification@active",
                    }));
  center->removeObserver(&posted);
}

TEST(TNLApplication, WindowsKeyWindowAndTheBackendsScreen) {
  const auto application = TNLApplication::sharedApplication();
  auto main = TNLWindow::create();
  auto alert = TNLWindow::create();
  alert->setWindowLevel(2000);
  auto plain = std::make_shared<TNLWindow>(TNLRect{0, 0, 10, 10});  // registers when shown
  EXPECT_EQ(application->windows(), (std::vector<std::shared_ptr<TNLWindow>>{main, alert}));
  plain->setHidden(false);
  EXPECT_EQ(application->windows(), (std::vector<std::shared_ptr<TNLWindow>>{main, plain, alert}));
  alert.reset();  // released windows leave the list
  EXPECT_EQ(application->windows(), (std::vector<std::shared_ptr<TNLWindow>>{main, plain}));

  main->makeKeyAndVisible();
  EXPECT_FALSE(main->isHidden());
  EXPECT_EQ(application->keyWindow(), main);
  plain->makeKeyWindow();
  EXPECT_FALSE(main->isKeyWindow());
  EXPECT_FALSE(TNLHeadlessViewPeer::of(main)->isKeyWindow());

  // Device facts read the application's orientation as the platform's number.
  application->setDeviceOrientation(TNLDeviceOrientation::landscapeRight);
  EXPECT_EQ(TNLDeviceFacts::linuxFacts()->deviceOrientation(),
            TNLDeviceFacts::Orientation::LandscapeRight);

  // Installing a backend takes its screen.
  TNLScreen::mainScreen()->setBounds({0, 0, 1920, 1080});
  TNLToolkit::useHeadlessBackend();
  EXPECT_EQ(TNLScreen::mainScreen()->bounds(), TNLRect(0, 0, 375, 667));
  EXPECT_EQ(TNLScreen::mainScreen()->scale(), 2.0);
}

}  // namespace
