#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDAdEvents.h"
#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDAdSessionStatePublisher.h"
#include "AppVerificationLibrary/OMIDBridge.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "support/OMIDTestStatements.h"
#include "support/TNLTestDeviceFacts.h"

using namespace std::chrono_literals;
namespace statements = OMIDTestStatements;

namespace {

using OMIDTestStatements::described;
using OMIDTestStatements::htmlSession;

std::shared_ptr<TNLWebView> makeWebView() {
  return TNLWebView::create({0, 0, 320, 50}, TNLWebViewConfiguration());
}

// Device facts of a known machine.
class OMIDSessionTest : public ::testing::Test {
 protected:
  void SetUp() override { TNLSetup::setDeviceFacts(facts_); }
  std::shared_ptr<TNLTestDeviceFacts> facts_ = std::make_shared<TNLTestDeviceFacts>();
};

class RecordingExecutor : public OMIDTarnelJSExecutor {
 public:
  bool supportBackgroundThread() const override { return true; }
  std::shared_ptr<void> jsEnvironment() const override { return nullptr; }
  void injectJavaScriptFromString(const std::string& javaScript) override {
    injected.push_back(javaScript);
  }
  std::vector<std::string> injected;
};

TEST_F(OMIDSessionTest, InitAndStartSessionReachTheWebViewAsStatementsOnTheMainLoop) {
  facts_->setOutputVolume(0.5f);
  auto webView = makeWebView();
  const auto session = htmlSession(webView);
  EXPECT_TRUE(statements::statements(webView).empty());  // delivered by the main loop
  session->start();
  session->start();
  ASSERT_TRUE(statements::waitFor(webView, "setState"));
  TNLMainQueue::runFor(50ms);
  EXPECT_EQ(
      statements::statements(webView),
      (std::vector<std::string>{
          statements::wrapped(
              R"(init({"impressionOwner":"javascript","videoEventsOwner":"none","isolateVerificationScripts":false}))"),
          statements::wrapped(
              "startSession('" + session->identifier() +
              R"(',{"environment":"app","adSessionType":"html","supports":["clid","vlid"],)"
              R"("omidNativeInfo":{"partnerName":"Tarnel","partnerVersion":"1.0.0.001"},)"
              R"("app":{"appId":"com.example.game","libraryVersion":"1.2.4-Tarnel"},)"
              R"("deviceInfo":{"deviceType":"x86_64","os":"TestOS","osVersion":"12.4"},)"
              R"("customReferenceData":"ref"},{}))"),
          statements::wrapped("setDeviceVolume(0.50)"),
          statements::wrapped("setState('foregrounded')")}));

  // The session holds its web view weakly.
  webView.reset();
  EXPECT_EQ(session->context()->webView(), nullptr);
}

TEST_F(OMIDSessionTest, FinishIsPublishedOnceAndNothingIsAcceptedAfterIt) {
  const auto webView = makeWebView();
  const auto session = htmlSession(webView);
  session->start();
  session->logErrorWithType(OMIDTarnelErrorTypeGeneric, "Something failed");
  session->logErrorWithType(OMIDTarnelErrorTypeVideo, "");
  session->finish();
  session->finish();
  ASSERT_TRUE(statements::waitFor(webView, "finishSession"));
  TNLMainQueue::runFor(300ms);
  EXPECT_EQ(statements::count(webView, "finishSession"), 1u);
  EXPECT_EQ(statements::calls(webView, "error"),
            std::vector<std::string>{"error(generic,Something failed)"});

  const size_t published = statements::statements(webView).size();
  session->start();
  session->logErrorWithType(OMIDTarnelErrorTypeGeneric, "late");
  const auto otherView = TNLView::create();
  session->setMainAdView(otherView);
  session->addFriendlyObstruction(otherView);
  TNLErrorPtr error;
  EXPECT_EQ(OMIDTarnelAdEvents::create(session, &error), nullptr);
  EXPECT_EQ(described(error), "1505 Event filter does not accept.");
  TNLMainQueue::runFor(300ms);
  EXPECT_EQ(statements::statements(webView).size(), published);
  EXPECT_EQ(session->mainAdView(), nullptr);
  EXPECT_TRUE(session->friendlyObstructions().empty());
}

TEST_F(OMIDSessionTest, AdEventsAreOnePerSessionAndTakeOnlyNativeImpressions) {
  TNLErrorPtr error;
  EXPECT_EQ(OMIDTarnelAdSession::create(
                OMIDTarnelAdSessionConfiguration::create(1, 3, false, nullptr), nullptr, &error),
            nullptr);
  EXPECT_EQ(described(error), "1506 Context can not be nil.");
  EXPECT_EQ(OMIDTarnelAdEvents::create(nullptr, &error), nullptr);
  EXPECT_EQ(described(error), "1507 Ad session can not be nil.");

  const auto scriptOwned = htmlSession(makeWebView());
  const auto adEvents = OMIDTarnelAdEvents::create(scriptOwned, &error);
  ASSERT_NE(adEvents, nullptr);
  EXPECT_EQ(OMIDTarnelAdEvents::create(scriptOwned, &error), nullptr);
  EXPECT_EQ(described(error), "1505 Event filter does not accept.");
  EXPECT_FALSE(adEvents->impressionOccurredWithError(&error));
  EXPECT_EQ(described(error), "1503 Impression owner should be NATIVE.");

  // A native impression on a session that was never started starts it first.
  const auto webView = makeWebView();
  const auto nativeEvents = OMIDTarnelAdEvents::create(htmlSession(webView, 2, 2), nullptr);
  ASSERT_NE(nativeEvents, nullptr);
  EXPECT_TRUE(nativeEvents->impressionOccurredWithError(&error));
  EXPECT_FALSE(nativeEvents->impressionOccurredWithError(&error));
  EXPECT_EQ(described(error), "1505 Event filter does not accept.");
  ASSERT_TRUE(statements::waitFor(webView, "setState"));
  TNLMainQueue::runFor(300ms);
  EXPECT_EQ(statements::names(webView),
            (std::vector<std::string>{"init", "startSession", "setDeviceVolume",
                                      "publishImpressionEvent", "setState"}));
}

TEST_F(OMIDSessionTest, TheRegistryTracksSessionsUntilTheyFinish) {
  const auto registry = OMIDTarnelAdSessionRegistry::getInstance();
  const auto first = htmlSession(makeWebView());
  const auto second = htmlSession(makeWebView());
  {
    const auto dropped = htmlSession(makeWebView());  // held weakly until it starts
    EXPECT_EQ(registry->adSessions().size(), 3u);
  }
  EXPECT_EQ(registry->adSessions(), (std::vector{first, second}));

  // Starts and finishes reach the registry on a later turn of the main loop.
  first->start();
  second->start();
  EXPECT_FALSE(registry->isActive());
  first->finish();
  ASSERT_TRUE(
      TNLMainQueue::runUntil([&] { return registry->adSessions() == std::vector{second}; }));
  EXPECT_EQ(registry->activeAdSessions(), std::vector{second});
}

TEST_F(OMIDSessionTest, AViewBelongsToOneSessionAndObstructionsAreListedOnce) {
  const auto adView = TNLView::create({0, 0, 50, 50});
  const auto a = htmlSession(makeWebView());
  const auto b = htmlSession(makeWebView());
  a->setMainAdView(adView);
  const double before = a->statePublisher()->timestamp();
  b->setMainAdView(adView);
  EXPECT_EQ(a->mainAdView(), nullptr);
  EXPECT_GT(a->statePublisher()->timestamp(), before);

  auto button = TNLView::create();
  const auto label = TNLView::create();
  b->addFriendlyObstruction(button);
  b->addFriendlyObstruction(label);
  b->addFriendlyObstruction(button);
  b->removeFriendlyObstruction(label);
  b->addFriendlyObstruction(label);
  EXPECT_EQ(b->friendlyObstructions(), (std::vector{button, label}));
  button.reset();
  EXPECT_EQ(b->friendlyObstructions(), std::vector{label});
}

TEST(OMIDTarnelAdSessionStatePublisher, DropsStaleViewStatesAndRepeatsNoEmptyState) {
  const auto executor = std::make_shared<RecordingExecutor>();
  OMIDTarnelAdSessionStatePublisher publisher(std::make_shared<OMIDTarnelBridge>(executor));
  const double created = publisher.timestamp();
  publisher.publishNativeViewStateWithCommand("stale", created);
  publisher.publishEmptyNativeViewStateWithCommand("stale empty", created - 1);
  publisher.publishNativeViewStateWithCommand("view 1", created + 1);
  publisher.publishEmptyNativeViewStateWithCommand("empty 1", created + 2);
  publisher.publishEmptyNativeViewStateWithCommand("empty 2", created + 3);
  publisher.publishNativeViewStateWithCommand("view 2", created + 4);
  publisher.publishEmptyNativeViewStateWithCommand("empty 3", created + 5);
  publisher.publishDeviceVolume(0.126);
  EXPECT_EQ(executor->injected,
            (std::vector<std::string>{"view 1", "empty 1", "view 2", "empty 3",
                                      statements::wrapped("setDeviceVolume(0.13)")}));
}

}  // namespace
