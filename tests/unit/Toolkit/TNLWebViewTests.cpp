#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/Toolkit/Headless/TNLHeadlessViewPeer.h"
#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"
#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

using Policy = TNLNavigationActionPolicy;
using Target = TNLHeadlessWebEngine::Target;

constexpr char kTag[] = "https://cdn.example.com/creative/index.html";

TNLWebViewConfiguration creativeConfiguration() {
  TNLWebViewConfiguration configuration;
  configuration.mediaTypesRequiringUserActionForPlayback = TNLAudiovisualMediaTypes::none;
  configuration.allowsInlineMediaPlayback = true;
  return configuration;
}

// A web view that is its own navigation delegate, as a creative's view is: it allows its own
// page and every navigation outside the main frame, cancels the rest, and greets the page once
// it has loaded.
class CreativeView : public TNLWebView, public TNLNavigationDelegate {
 public:
  static std::shared_ptr<CreativeView> create() {
    auto view = std::make_shared<CreativeView>();
    view->setNavigationDelegate(view);
    return view;
  }

  CreativeView() : TNLWebView({}, creativeConfiguration()) {
    scrollView()->setScrollEnabled(false);
    scrollView()->setBounces(false);
    setOpaque(false);
  }

  std::string className() const override { return "CreativeView"; }

  void webViewDecidePolicyForNavigationActionDecisionHandler(
      const std::shared_ptr<TNLWebView>& webView, const TNLNavigationAction& action,
      DecisionHandler decisionHandler) override {
    EXPECT_EQ(webView.get(), this);
    const auto& frame = action.targetFrame();
    seen.push_back(action.requestURL() + " " +
                   (!frame                 ? "none"
                    : frame->isMainFrame() ? "main"
                                           : "iframe"));
    if (action.requestURL() == kTag || !frame || !frame->isMainFrame()) {
      decisionHandler(Policy::allow);
    } else {
      decisionHandler(Policy::cancel);
    }
  }

  void webViewDidFinishNavigation(const std::shared_ptr<TNLWebView>& webView) override {
    EXPECT_EQ(webView.get(), this);
    evaluateJavaScript("receivePayload({})");
  }

  std::vector<std::string> seen;
};

// Keeps the decision handler to answer later.
class SlowDelegate : public TNLNavigationDelegate {
 public:
  void webViewDecidePolicyForNavigationActionDecisionHandler(const std::shared_ptr<TNLWebView>&,
                                                             const TNLNavigationAction&,
                                                             DecisionHandler handler) override {
    pending = std::move(handler);
  }
  DecisionHandler pending;
};

TEST(TNLWebView, TheHeadlessEnginePlaysACreativePage) {
  auto view = CreativeView::create();
  view->loadHTMLString("<html>ad</html>", std::string(kTag));
  const auto engine = TNLHeadlessWebEngine::of(view);
  ASSERT_NE(engine, nullptr);
  EXPECT_EQ(engine, TNLHeadlessWebEngine::of(view));  // one engine per view
  EXPECT_EQ(engine->html(), "<html>ad</html>");
  EXPECT_EQ(engine->baseURL(), kTag);
  EXPECT_EQ(engine->loadCount(), 1u);
  // What the view was set up with reached the engine.
  EXPECT_EQ(engine->configuration(), creativeConfiguration());
  EXPECT_TRUE(engine->configuration().javaScriptEnabled);
  EXPECT_FALSE(engine->viewState().isOpaque());
  EXPECT_FALSE(engine->scrollState().isScrollEnabled());
  EXPECT_FALSE(engine->scrollState().bounces());

  // The load's own navigation goes to the base URL in the main frame, then the page finishes.
  EXPECT_EQ(engine->playPageLoad(), Policy::allow);
  EXPECT_EQ(engine->currentURL(), kTag);
  EXPECT_EQ(engine->evaluatedStatements(), (std::vector<std::string>{"receivePayload({})"}));

  // The page's own navigations, by target.
  EXPECT_EQ(engine->deliverNavigationAction("bridge://close", Target::mainFrame), Policy::cancel);
  EXPECT_EQ(engine->deliverNavigationAction("bridge://close", Target::childFrame), Policy::allow);
  EXPECT_EQ(engine->deliverNavigationAction("https://advertiser.example/", Target::none),
            Policy::allow);
  EXPECT_EQ(view->seen, (std::vector<std::string>{std::string(kTag) + " main",
                                                  "bridge://close main", "bridge://close iframe",
                                                  "https://advertiser.example/ none"}));
  ASSERT_EQ(engine->decisions().size(), 4u);
  EXPECT_EQ(engine->decisions()[1].url, "bridge://close");
  EXPECT_EQ(engine->decisions()[1].policy, Policy::cancel);
  EXPECT_EQ(engine->currentURL(), kTag);  // only allowed main-frame navigations move the page

  view->evaluateJavaScript("ZENKO.setVolume(0.500000)");
  view->evaluateJavaScript("ZENKO.isAdVisible(true)");
  EXPECT_EQ(engine->evaluatedStatements(),
            (std::vector<std::string>{"receivePayload({})", "ZENKO.setVolume(0.500000)",
                                      "ZENKO.isAdVisible(true)"}));

  // Without a base URL the page loads as about:blank, which this delegate cancels.
  view->loadHTMLString("<p>", std::nullopt);
  EXPECT_EQ(engine->baseURL(), std::nullopt);
  EXPECT_EQ(engine->playPageLoad(), Policy::cancel);
  EXPECT_EQ(view->seen.back(), "about:blank main");
  EXPECT_EQ(engine->evaluatedStatements().size(), 3u);  // no finish after a cancel
}

TEST(TNLWebView, DecisionsCountOnceMayComeLaterAndDefaultToAllow) {
  auto view = TNLWebView::create({0, 0, 100, 100}, {});
  const auto engine = TNLHeadlessWebEngine::of(view);
  ASSERT_NE(engine, nullptr);
  EXPECT_EQ(engine->playPageLoad(), std::nullopt);  // nothing loaded yet

  // No delegate: everything is allowed.
  view->loadRequest("https://advertiser.example/landing");
  EXPECT_EQ(engine->requestURL(), "https://advertiser.example/landing");
  EXPECT_EQ(engine->html(), std::nullopt);
  EXPECT_EQ(engine->playPageLoad(), Policy::allow);
  EXPECT_EQ(engine->currentURL(), "https://advertiser.example/landing");

  auto slow = std::make_shared<SlowDelegate>();
  view->setNavigationDelegate(slow);
  EXPECT_EQ(engine->deliverNavigationAction("https://elsewhere.example/", Target::mainFrame),
            std::nullopt);
  ASSERT_TRUE(slow->pending);
  slow->pending(Policy::cancel);
  slow->pending(Policy::allow);  // only the first answer counts
  ASSERT_EQ(engine->decisions().size(), 2u);
  EXPECT_EQ(engine->decisions()[1].policy, Policy::cancel);
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
  EXPECT_EQ(scroll->frame(), TNLRect(0, 0, 320, 50));
  scroll->setContentOffset({0, 30});  // before the engine exists: handed over when it is made
  const auto engine = TNLHeadlessWebEngine::of(view);
  EXPECT_EQ(engine->scrollState().contentOffset(), (TNLPoint{0, 30}));
  EXPECT_TRUE(engine->scrollState().isScrollEnabled());

  view->setFrame({10, 10, 320, 250});
  EXPECT_EQ(scroll->frame(), TNLRect(0, 0, 320, 250));
  EXPECT_EQ(scroll->contentOffset(), (TNLPoint{0, 30}));
  EXPECT_EQ(engine->viewState().frame(), TNLRect(10, 10, 320, 250));
  scroll->setScrollEnabled(true);
  scroll->setBounces(false);
  scroll->setContentOffset({0, 12});
  EXPECT_FALSE(engine->scrollState().bounces());
  EXPECT_EQ(engine->scrollState().contentOffset(), (TNLPoint{0, 12}));

  // The page scrolled by itself: the model follows without telling the engine back.
  scroll->peerDidScroll({0, 99});
  EXPECT_EQ(scroll->contentOffset(), (TNLPoint{0, 99}));
  EXPECT_EQ(engine->scrollState().contentOffset(), (TNLPoint{0, 12}));
}

TEST(TNLButton, TitlesPerStateAndTapActionsInOrder) {
  auto button = TNLButton::create(TNLButtonType::system);
  EXPECT_EQ(button->buttonType(), TNLButtonType::system);
  EXPECT_EQ(button->titleForState(TNLControlState::normal), std::nullopt);
  button->setTitle("Done", TNLControlState::normal);
  button->setTitle("Pressed", TNLControlState::highlighted);
  EXPECT_EQ(button->titleForState(TNLControlState::highlighted), "Pressed");
  EXPECT_EQ(button->titleForState(TNLControlState::disabled), "Done");  // falls back to normal
  EXPECT_EQ(TNLHeadlessViewPeer::of(button)->title(), "Done");
  EXPECT_EQ(button->intrinsicContentSize(), (TNLSize{36, 30}));

  std::vector<std::string> taps;
  button->addTapAction([&](TNLButton& sender) {
    EXPECT_EQ(&sender, button.get());
    taps.push_back("first");
  });
  button->addTapAction([&](TNLButton&) { taps.push_back("second"); });
  button->sendTap();
  button->sendTap();
  EXPECT_EQ(taps, (std::vector<std::string>{"first", "second", "first", "second"}));
}

}  // namespace
