#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include <memory>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "AppVerificationLibrary/OMIDTreeWalker.h"
#include "AppVerificationLibrary/OMIDTreeWalkerTimeLogger.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"
#include "support/OMIDTestStatements.h"
#include "support/TNLTestDeviceFacts.h"

using namespace std::chrono_literals;
namespace statements = OMIDTestStatements;

namespace {

constexpr char kHierarchy[] = "setNativeViewHierarchy";
const std::string kEmptyState =
    R"(setNativeViewHierarchy({"x":0.0,"y":0.0,"width":0.0,"height":0.0,"clipsToBounds":true}))";

// The window the system shows its keyboard in.
class KeyboardWindow : public TNLWindow {
 public:
  using TNLWindow::TNLWindow;
  std::string className() const override { return "UITextEffectsWindow"; }
};

class WalkCounter : public OMIDTarnelTreeWalkerTimeLogger {
 public:
  void didProcessObjectsCount(size_t count, double) override {
    counts.push_back(count);
    times.push_back(std::chrono::steady_clock::now());
  }
  std::vector<size_t> counts;
  std::vector<std::chrono::steady_clock::time_point> times;
};

// The hierarchies a page received, parsed.
std::vector<TNLJson> hierarchies(const std::shared_ptr<TNLWebView>& webView) {
  std::vector<TNLJson> result;
  for (const auto& call : statements::calls(webView, kHierarchy)) {
    const std::string json = call.substr(std::string(kHierarchy).size() + 1);
    result.push_back(TNLJSON::parse(json.substr(0, json.size() - 1)));
  }
  return result;
}

// x, y, width, height and clipping of a view state, for compact comparisons.
std::string frameOf(const TNLJson& state) {
  return std::to_string(state["x"].get<int>()) + "," + std::to_string(state["y"].get<int>()) + "," +
         std::to_string(state["width"].get<int>()) + "," +
         std::to_string(state["height"].get<int>()) +
         (state["clipsToBounds"].get<bool>() ? " clips" : "");
}

size_t childCount(const TNLJson& state) {
  return state.contains("childViews") ? state["childViews"].size() : 0;
}

// A window on the headless screen (375 x 667) with an ad web view inside a container, measured by
// a session that has started, as the integration leaves it.
class OMIDTreeWalkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TNLSetup::setDeviceFacts(facts_);
    ASSERT_TRUE(OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(
        R"({"v":"1.2.4","a":"1"})", nullptr));
    OMIDTarnelTreeWalker::getInstance()->setTimeLogger(walks_);
    window_->makeKeyAndVisible();
    container_->setClipsToBounds(true);
    window_->addSubview(container_);
    container_->addSubview(webView_);
  }

  std::shared_ptr<OMIDTarnelAdSession> startSession(
      const std::shared_ptr<TNLWebView>& webView,
      const std::shared_ptr<TNLView>& friendlyObstruction = nullptr) {
    const auto context = OMIDTarnelAdSessionContext::create(
        OMIDTarnelPartner::create("Tarnel", "1.0.0.001"), webView, "", nullptr);
    const auto session = OMIDTarnelAdSession::create(
        OMIDTarnelAdSessionConfiguration::create(1, 3, false, nullptr), context, nullptr);
    session->setMainAdView(webView);
    session->addFriendlyObstruction(friendlyObstruction);
    session->start();
    return session;
  }

  // Runs the loop until `n` more walks have been made.
  bool walk(size_t n = 1) {
    const size_t target = walks_->counts.size() + n;
    return TNLMainQueue::runUntil([&] { return walks_->counts.size() >= target; }, 3s);
  }

  std::shared_ptr<TNLTestDeviceFacts> facts_ = std::make_shared<TNLTestDeviceFacts>();
  std::shared_ptr<WalkCounter> walks_ = std::make_shared<WalkCounter>();
  std::shared_ptr<TNLWindow> window_ = TNLWindow::create({0, 0, 375, 667});
  std::shared_ptr<TNLView> container_ = TNLView::create({10, 100, 355, 300});
  std::shared_ptr<TNLWebView> webView_ =
      TNLWebView::create({5, 20, 320, 50}, TNLWebViewConfiguration());
};

TEST_F(OMIDTreeWalkTest, HierarchyHasScreenWindowPathToTheAdViewAndWhatMayCoverIt) {
  // A window below the ad's, and views drawn before the path, cannot cover the ad: left out.
  const auto below = std::make_shared<TNLWindow>(TNLRect{0, 0, 375, 667});
  below->setWindowLevel(-1);
  below->setHidden(false);
  window_->insertSubview(TNLView::create({0, 0, 375, 667}), 0);
  // Drawn after the ad: a cover with a child, a hidden view, a view listed first but raised by
  // its z position, a close button inside the container that belongs to the ad, a window above
  // and the keyboard's window.
  const auto raised = TNLView::create({0, 0, 50, 50});
  raised->setZPosition(1);
  window_->insertSubview(raised, 0);
  const auto cover = TNLView::create({0, 110, 100, 40});
  cover->addSubview(TNLView::create({1, 2, 3, 4}));
  window_->addSubview(cover);
  const auto hidden = TNLView::create({0, 0, 375, 667});
  hidden->setHidden(true);
  window_->addSubview(hidden);
  const auto closeButton = TNLView::create({300, 0, 20, 20});
  container_->addSubview(closeButton);
  const auto keyboard = std::make_shared<KeyboardWindow>(TNLRect{0, 400, 375, 267});
  keyboard->setHidden(false);
  const auto above = TNLWindow::create({0, 600, 375, 67});
  above->setWindowLevel(1);
  above->setHidden(false);

  const auto session = startSession(webView_, closeButton);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy));
  const auto received = hierarchies(webView_);
  ASSERT_EQ(received.size(), 1u);
  const TNLJson& screen = received[0];
  EXPECT_EQ(frameOf(screen), "0,0,375,667 clips");
  ASSERT_EQ(childCount(screen), 2u);  // the ad's window and the one above

  const TNLJson& window = screen["childViews"][0];
  EXPECT_EQ(frameOf(window), "0,0,375,667");
  ASSERT_EQ(childCount(window), 3u);
  const TNLJson& container = window["childViews"][0];
  EXPECT_EQ(frameOf(container), "10,100,355,300 clips");
  ASSERT_EQ(childCount(container), 2u);
  const TNLJson& ad = container["childViews"][0];
  EXPECT_EQ(frameOf(ad), "15,120,320,50");
  EXPECT_EQ(ad["adSessionId"], session->identifier());
  EXPECT_FALSE(ad.contains("childViews"));
  const TNLJson& button = container["childViews"][1];
  EXPECT_EQ(frameOf(button), "310,100,20,20");
  EXPECT_EQ(button["isFriendlyObstructionFor"], TNLJson::array({session->identifier()}));
  EXPECT_FALSE(button.contains("adSessionId"));

  const TNLJson& coverState = window["childViews"][1];
  EXPECT_EQ(frameOf(coverState), "0,110,100,40");
  ASSERT_EQ(childCount(coverState), 1u);
  EXPECT_EQ(frameOf(coverState["childViews"][0]), "1,112,3,4");
  EXPECT_EQ(frameOf(window["childViews"][2]), "0,0,50,50");
  EXPECT_EQ(frameOf(screen["childViews"][1]), "0,600,375,67");
  // Ad window, container, ad, button, cover and its child, the raised view, the window above.
  EXPECT_EQ(walks_->counts.back(), 8u);

  // The text the scripts receive, for a tree of the ad alone.
  cover->removeFromSuperview();
  raised->removeFromSuperview();
  closeButton->removeFromSuperview();
  above->setHidden(true);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 2));
  EXPECT_EQ(
      statements::calls(webView_, kHierarchy).back(),
      R"(setNativeViewHierarchy({"x":0.0,"y":0.0,"width":375.0,"height":667.0,"clipsToBounds":true,)"
      R"("childViews":[{"x":0.0,"y":0.0,"width":375.0,"height":667.0,"clipsToBounds":false,)"
      R"("childViews":[{"x":10.0,"y":100.0,"width":355.0,"height":300.0,"clipsToBounds":true,)"
      R"("childViews":[{"x":15.0,"y":120.0,"width":320.0,"height":50.0,"clipsToBounds":false,)"
      R"("adSessionId":")" +
          session->identifier() + R"("}]}]}]}))");
}

TEST_F(OMIDTreeWalkTest, AnAdViewThatCannotBeSeenGetsTheEmptyStateOnce) {
  container_->setAlpha(0.0);
  startSession(webView_);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy));
  ASSERT_TRUE(walk(3));
  TNLMainQueue::runFor(50ms);
  EXPECT_EQ(statements::calls(webView_, kHierarchy), std::vector<std::string>{kEmptyState});
  EXPECT_EQ(walks_->counts.back(), 0u);

  // Seen again: the hierarchy; hidden again: the empty state again, once.
  container_->setAlpha(0.5);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 2));
  EXPECT_EQ(
      hierarchies(webView_)[1]["childViews"][0]["childViews"][0]["childViews"][0]["adSessionId"]
          .is_string(),
      true);
  window_->setHidden(true);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 3));
  ASSERT_TRUE(walk(3));
  TNLMainQueue::runFor(50ms);
  const auto calls = statements::calls(webView_, kHierarchy);
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[2], kEmptyState);

  // Outside any window the ad cannot be seen either.
  window_->setHidden(false);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 4));
  webView_->removeFromSuperview();
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 5));
  EXPECT_EQ(statements::calls(webView_, kHierarchy).back(), kEmptyState);
}

TEST_F(OMIDTreeWalkTest, AnUnchangedHierarchyIsSentOnce) {
  const auto session = startSession(webView_);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy));
  ASSERT_TRUE(walk(3));
  TNLMainQueue::runFor(50ms);
  EXPECT_EQ(statements::count(webView_, kHierarchy), 1u);
  EXPECT_EQ(walks_->counts.back(), 3u);  // window, container, ad

  webView_->setFrame({6, 20, 320, 50});
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 2));
  EXPECT_EQ(hierarchies(webView_)[1]["childViews"][0]["childViews"][0]["childViews"][0]["x"], 16.0);

  // A second ad in the same tree: both sessions get the one hierarchy, which names both.
  const auto secondView = TNLWebView::create({5, 200, 320, 50}, TNLWebViewConfiguration());
  container_->addSubview(secondView);
  const auto second = startSession(secondView);
  ASSERT_TRUE(statements::waitFor(secondView, kHierarchy));
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 3));
  const TNLJson shared = hierarchies(secondView)[0];
  EXPECT_EQ(hierarchies(webView_)[2], shared);
  const TNLJson& ads = shared["childViews"][0]["childViews"][0]["childViews"];
  ASSERT_EQ(ads.size(), 2u);
  EXPECT_EQ(ads[0]["adSessionId"], session->identifier());
  EXPECT_EQ(ads[1]["adSessionId"], second->identifier());
}

TEST_F(OMIDTreeWalkTest, AViewStateQueuedBeforeTheFinishNeverFollowsIt) {
  const auto session = startSession(webView_);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy));
  // A walk whose hierarchy is on its way to the main loop when the session finishes.
  webView_->setFrame({6, 20, 320, 50});
  OMIDTarnelTreeWalker::getInstance()->onTick();
  std::this_thread::sleep_for(200ms);
  session->finish();
  TNLMainQueue::runFor(300ms);
  const auto names = statements::names(webView_);
  ASSERT_EQ(std::count(names.begin(), names.end(), "finishSession"), 1);
  EXPECT_EQ(names.back(), "finishSession");
}

TEST_F(OMIDTreeWalkTest, TheTreeIsWalkedFiveTimesASecond) {
  startSession(webView_);
  ASSERT_TRUE(walk(6));
  const auto& times = walks_->times;
  for (size_t i = times.size() - 5; i < times.size(); ++i) {
    EXPECT_GE(times[i] - times[i - 1], 150ms);  // a repeating timer never fires early
  }
  EXPECT_LE(times.back() - times[times.size() - 6], 2s);
}

TEST_F(OMIDTreeWalkTest, AnInactiveApplicationPausesWalkingAndSessionsAreToldTheStateAndVolume) {
  const auto application = TNLApplication::sharedApplication();
  const auto session = startSession(webView_);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy));
  ASSERT_TRUE(walk(2));

  // Inactive counts as backgrounded.
  application->setApplicationState(TNLApplicationState::inactive);
  ASSERT_TRUE(statements::waitFor(webView_, "setState", 2));
  EXPECT_EQ(statements::calls(webView_, "setState"),
            (std::vector<std::string>{"setState('foregrounded')", "setState('backgrounded')"}));
  const size_t walksWhenPaused = walks_->counts.size();
  webView_->setFrame({0, 0, 100, 100});
  TNLMainQueue::runFor(700ms);
  EXPECT_EQ(walks_->counts.size(), walksWhenPaused);
  EXPECT_EQ(statements::count(webView_, kHierarchy), 1u);
  EXPECT_EQ(statements::count(webView_, "setState"), 2u);

  // Back in the foreground: told, and the walk resumes at once with the changed tree.
  application->setApplicationState(TNLApplicationState::active);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 2));
  EXPECT_EQ(statements::calls(webView_, "setState").back(), "setState('foregrounded')");
  ASSERT_TRUE(walk(2));

  // The volume is followed while measurement runs.
  facts_->setOutputVolume(0.25f);
  ASSERT_TRUE(statements::waitFor(webView_, "setDeviceVolume", 2));
  EXPECT_EQ(statements::calls(webView_, "setDeviceVolume").back(), "setDeviceVolume(0.25)");

  // Once the last session has finished, nothing is walked or watched any more.
  session->finish();
  ASSERT_TRUE(statements::waitFor(webView_, "finishSession"));
  const size_t walksWhenFinished = walks_->counts.size();
  const size_t published = statements::statements(webView_).size();
  facts_->setOutputVolume(0.75f);
  application->setApplicationState(TNLApplicationState::background);
  TNLMainQueue::runFor(500ms);
  EXPECT_EQ(walks_->counts.size(), walksWhenFinished);
  EXPECT_EQ(statements::statements(webView_).size(), published);
}

}  // namespace
