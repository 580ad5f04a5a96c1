#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

namespace {

using Policy = TNLNavigationActionPolicy;
using Target = TNLHeadlessWebEngine::Target;

// Keeps the decision handler to answer later, and cancels the loads it is asked about at once.
class SlowDelegate : public TNLNavigationDelegate {
 public:
  void webViewDecidePolicyForNavigationActionDecisionHandler(const std::shared_ptr<TNLWebView>&,
                                                             const TNLNavigationAction& action,
                                                             DecisionHandler handler) override {
    if (action.requestURL() == "about:blank") {
      handler(Policy::cancel);
      return;
    }
    pending = std::move(handler);
  }
  void webViewDidFinishNavigation(const std::shared_ptr<TNLWebView>&) override { ++finished; }
  DecisionHandler pending;
  int finished = 0;
};

TEST(TNLWebView, DecisionsCountOnceMayComeLaterAndDefaultToAllow) {
  auto view = TNLWebView::create({0, 0, 100, 100}, {});
  const auto engine = TNLHeadlessWebEngine::of(view);
  ASSERT_NE(engine, nullptr);
  EXPECT_EQ(engine->playPageLoad(), std::nullopt);  // nothing loaded yet

  // No delegate: everything is allowed.
  view->loadRequest("https://advertiser.example/landing");
  EXPECT_EQ(engine->requestURL(), "https://advertiser.example/landing");
  EXPECT_EQ(engine->playPageLoad(), Policy::allow);
  EXPECT_EQ(engine->currentURL(), "https://advertiser.example/landing");

  // Without a base URL a page loads as about:blank; a cancelled load never finishes.
  auto slow = std::make_shared<SlowDelegate>();
  view->setNavigationDelegate(slow);
  view->loadHTMLString("<p>", std::nullopt);
  EXPECT_EQ(engine->playPageLoad(), Policy::cancel);
  EXPECT_EQ(slow->finished, 0);

  EXPECT_EQ(engine->deliverNavigationAction("https://elsewhere.example/", Target::mainFrame),
            std::nullopt);
  ASSERT_TRUE(slow->pending);
  slow->pending(Policy::cancel);
  slow->pending(Policy::allow);  // only the first answer counts
  EXPECT_EQ(engine->decisions().back().policy, Policy::cancel);
  EXPECT_EQ(engine->currentURL(), "https://advertiser.example/landing");

  // The delegate is weak: once it is gone, the default applies again.
  slow.reset();
  EXPECT_EQ(engine->deliverNavigationAction("https://third.example/", Target::mainFrame),
            Policy::allow);

  // A released web view leaves an engine that no longer reports anything.
  std::weak_ptr<TNLWebView> weakView = view;
  view.reset();
  EXPECT_TRUE(weakView.expired());
  EXPECT_EQ(engine->deliverNavigationAction("https://late.example/", Target::mainFrame),
            std::nullopt);
  engine->finishNavigation();
}

TEST(TNLWebView, ItsScrollViewFollowsItsBoundsAndReachesTheEngine) {
  auto view = TNLWebView::create({0, 0, 320, 50}, {});
  const auto scroll = view->scrollView();
  scroll->setContentOffset({0, 30});  // before the engine exists: handed over when it is made
  const auto engine = TNLHeadlessWebEngine::of(view);
  EXPECT_EQ(engine->scrollState().contentOffset(), (TNLPoint{0, 30}));

  view->setFrame({10, 10, 320, 250});
  EXPECT_EQ(scroll->frame(), TNLRect(0, 0, 320, 250));
  EXPECT_EQ(engine->viewState().frame(), TNLRect(10, 10, 320, 250));
  scroll->setContentOffset({0, 12});
  EXPECT_EQ(engine->scrollState().contentOffset(), (TNLPoint{0, 12}));

  // The page scrolled by itself: the model follows without telling the engine back.
  scroll->peerDidScroll({0, 99});
  EXPECT_EQ(scroll->contentOffset(), (TNLPoint{0, 99}));
  EXPECT_EQ(engine->scrollState().contentOffset(), (TNLPoint{0, 12}));
}

TEST(TNLButton, TitlesFallBackToNormalAndTapActionsRunInOrder) {
  auto button = TNLButton::create(TNLButtonType::system);
  button->setTitle("Done", TNLControlState::normal);
  button->setTitle("Pressed", TNLControlState::highlighted);
  EXPECT_EQ(button->titleForState(TNLControlState::highlighted), "Pressed");
  EXPECT_EQ(button->titleForState(TNLControlState::disabled), "Done");

  std::vector<std::string> taps;
  button->addTapAction([&](TNLButton&) { taps.push_back("first"); });
  button->addTapAction([&](TNLButton&) { taps.push_back("second"); });
  button->sendTap();
  button->sendTap();
  EXPECT_EQ(taps, (std::vector<std::string>{"first", "second", "first", "second"}));
}

}  // namespace
