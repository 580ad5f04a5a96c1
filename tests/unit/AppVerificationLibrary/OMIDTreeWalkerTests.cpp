#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSession.h"
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

// The tree as "x,y,width,height[ clips][ ad=ID][ obstructs=IDS][children]", for comparing whole
// hierarchies at once.
std::string outline(const TNLJson& state) {
  std::string text =
      std::to_string(state["x"].get<int>()) + "," + std::to_string(state["y"].get<int>()) + "," +
      std::to_string(state["width"].get<int>()) + "," + std::to_string(state["height"].get<int>());
  text += state["clipsToBounds"].get<bool>() ? " clips" : "";
  text += state.contains("adSessionId") ? " ad=" + state["adSessionId"].get<std::string>() : "";
  for (const auto& id : state.value("isFriendlyObstructionFor", TNLJson::array())) {
    text += " obstructs=" + id.get<std::string>();
  }
  std::string separator = "[";
  for (const auto& child : state.value("childViews", TNLJson::array())) {
    text += std::exchange(separator, ",") + outline(child);
  }
  return separator == "," ? text + "]" : text;
}

// The same, of a hierarchy statement the page received.
std::string outlineOf(const std::string& call) {
  const size_t open = sizeof(kHierarchy);  // the name and "("
  return outline(TNLJSON::parse(call.substr(open, call.size() - open - 1)));
}

// A window on the headless screen (375 x 667) with an ad web view inside a container, measured by
// a session that has started, as the integration leaves it.
class OMIDTreeWalkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TNLSetup::setDeviceFacts(facts_);
    OMIDTarnelTreeWalker::getInstance()->setTimeLogger(walks_);
    window_->makeKeyAndVisible();
    container_->setClipsToBounds(true);
    window_->addSubview(container_);
    container_->addSubview(webView_);
  }

  std::shared_ptr<OMIDTarnelAdSession> startSession(
      const std::shared_ptr<TNLWebView>& webView,
      const std::shared_ptr<TNLView>& friendlyObstruction = nullptr) {
    const auto session = statements::htmlSession(webView);
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

  const std::string id = startSession(webView_, closeButton)->identifier();
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy));
  // An unchanged hierarchy is sent once.
  ASSERT_TRUE(walk(3));
  TNLMainQueue::runFor(50ms);
  const auto received = statements::calls(webView_, kHierarchy);
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(outlineOf(received[0]),
            "0,0,375,667 clips[0,0,375,667[10,100,355,300 clips[15,120,320,50 ad=" + id +
                ",310,100,20,20 obstructs=" + id +
                "],0,110,100,40[1,112,3,4],0,0,50,50],0,600,375,67]");
  // Ad window, container, ad, button, cover and its child, the raised view, the window above.
  EXPECT_EQ(walks_->counts.back(), 8u);
}

TEST_F(OMIDTreeWalkTest, AnAdViewThatCannotBeSeenGetsTheEmptyStateOnce) {
  container_->setAlpha(0.0);
  startSession(webView_);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy));
  ASSERT_TRUE(walk(3));
  TNLMainQueue::runFor(50ms);
  EXPECT_EQ(statements::calls(webView_, kHierarchy), std::vector<std::string>{kEmptyState});

  // Seen again: the hierarchy; outside any window: the empty state again.
  container_->setAlpha(0.5);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 2));
  webView_->removeFromSuperview();
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy, 3));
  EXPECT_EQ(statements::calls(webView_, kHierarchy).back(), kEmptyState);
}

// Both sessions get the one hierarchy, which names both ads.
TEST_F(OMIDTreeWalkTest, TwoAdsInOneTreeShareOneHierarchy) {
  const auto session = startSession(webView_);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy));
  const auto secondView = TNLWebView::create({5, 200, 320, 50}, TNLWebViewConfiguration());
  container_->addSubview(secondView);
  const auto second = startSession(secondView);
  ASSERT_TRUE(TNLMainQueue::runUntil([&] {
    const auto shared = statements::calls(secondView, kHierarchy);
    return !shared.empty() && statements::calls(webView_, kHierarchy).back() == shared[0];
  }));
  EXPECT_EQ(outlineOf(statements::calls(secondView, kHierarchy)[0]),
            "0,0,375,667 clips[0,0,375,667[10,100,355,300 clips[15,120,320,50 ad=" +
                session->identifier() + ",15,300,320,50 ad=" + second->identifier() + "]]]");
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
  EXPECT_EQ(statements::names(webView_).back(), "finishSession");
}

TEST_F(OMIDTreeWalkTest, WalksFiveTimesASecondWhileActiveAndSessionsAreToldTheStateAndVolume) {
  const auto application = TNLApplication::sharedApplication();
  const auto session = startSession(webView_);
  ASSERT_TRUE(statements::waitFor(webView_, kHierarchy));
  ASSERT_TRUE(walk(6));
  const auto& times = walks_->times;
  for (size_t i = times.size() - 5; i < times.size(); ++i) {
    EXPECT_GE(times[i] - times[i - 1], 150ms);  // a repeating timer never fires early
  }

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
