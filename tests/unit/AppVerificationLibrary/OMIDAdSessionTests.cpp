#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDAdEvents.h"
#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistryStateObserver.h"
#include "AppVerificationLibrary/OMIDAdSessionStatePublisher.h"
#include "AppVerificationLibrary/OMIDBridge.h"
#include "AppVerificationLibrary/OMIDJSExecutorFactory.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "support/OMIDTestStatements.h"
#include "support/TNLTestDeviceFacts.h"

using namespace std::chrono_literals;
namespace statements = OMIDTestStatements;

namespace {

constexpr char kIntegrationVersion[] = R"({"v":"1.2.4","a":"1"})";

void expectOMIDError(const TNLErrorPtr& error, long code, const std::string& message) {
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->domain(), "com.omid.library");
  EXPECT_EQ(error->code(), code);
  EXPECT_EQ(error->localizedDescription(), message);
}

std::shared_ptr<TNLWebView> makeWebView() {
  return TNLWebView::create({0, 0, 320, 50}, TNLWebViewConfiguration());
}

std::shared_ptr<OMIDTarnelPartner> partner() {
  return OMIDTarnelPartner::create("Tarnel", "1.0.0.001");
}

// Device facts of a known machine, and an active SDK.
class OMIDSessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    facts_ = std::make_shared<TNLTestDeviceFacts>();
    TNLSetup::setDeviceFacts(facts_);
    ASSERT_TRUE(
        OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));
  }

  std::shared_ptr<OMIDTarnelAdSession> htmlSession(const std::shared_ptr<TNLWebView>& webView,
                                                   OMIDTarnelOwner impressionOwner = 1,
                                                   OMIDTarnelOwner videoEventsOwner = 3) {
    const auto context = OMIDTarnelAdSessionContext::create(partner(), webView, "ref", nullptr);
    const auto configuration =
        OMIDTarnelAdSessionConfiguration::create(impressionOwner, videoEventsOwner, false, nullptr);
    return OMIDTarnelAdSession::create(configuration, context, nullptr);
  }

  std::shared_ptr<TNLTestDeviceFacts> facts_;
};

class RecordingObserver : public OMIDTarnelAdSessionRegistryStateObserver {
 public:
  void adSessionRegistryDidBecomeActive() override { events.push_back("active"); }
  void adSessionRegistryDidResignActive() override { events.push_back("inactive"); }
  void adSessionDidBecomeActive(const std::shared_ptr<OMIDTarnelAdSession>& session) override {
    events.push_back("started " + session->identifier());
  }
  std::vector<std::string> events;
};

// Records what a bridge hands it, on whatever thread.
class RecordingExecutor : public OMIDTarnelJSExecutor {
 public:
  bool supportBackgroundThread() const override { return true; }
  std::shared_ptr<void> jsEnvironment() const override { return nullptr; }
  void injectJavaScriptFromString(const std::string& javaScript) override {
    injected.push_back(javaScript);
  }
  std::vector<std::string> injected;
};

TEST(OMIDTarnelAdSessionContext, HTMLContextChecksRunInOrderAndHoldTheWebViewWeakly) {
  auto webView = makeWebView();
  const auto plainView = TNLView::create({0, 0, 10, 10});
  TNLErrorPtr error;
  // Before activation every other fault is shadowed by code 2.
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(nullptr, plainView, std::string(300, 'x'), &error),
            nullptr);
  expectOMIDError(error, 2, "OM SDK has not been activated.");
  ASSERT_TRUE(
      OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(kIntegrationVersion, nullptr));

  EXPECT_EQ(OMIDTarnelAdSessionContext::create(nullptr, plainView, std::nullopt, &error), nullptr);
  expectOMIDError(error, 1508, "Web view should be UIWebView or WKWebView or not null.");
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(nullptr, webView, std::string(300, 'x'), &error),
            nullptr);
  expectOMIDError(error, 1509, "Partner can not be nil.");
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(partner(), webView, std::string(257, 'x'), &error),
            nullptr);
  expectOMIDError(error, 1500,
                  "The supplied customReferenceIdentifier is 257 characters which exceeds the 256 "
                  "limit.");
  EXPECT_EQ(OMIDTarnelAdSessionContext::create(partner(), plainView, std::nullopt, nullptr),
            nullptr);  // no out-value: no crash

  const auto context =
      OMIDTarnelAdSessionContext::create(partner(), webView, std::string(256, 'x'), &error);
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(context->webView(), webView);

  // The executor of an HTML session is the web view, used on the main thread.
  const auto executor = OMIDTarnelJSExecutorFactory::JSExecutorForContext(context);
  ASSERT_NE(executor, nullptr);
  EXPECT_FALSE(executor->supportBackgroundThread());
  EXPECT_EQ(executor->jsEnvironment(), std::static_pointer_cast<void>(webView));
  EXPECT_EQ(OMIDTarnelJSExecutorFactory::JSExecutorWithWebView(plainView), nullptr);
  EXPECT_EQ(OMIDTarnelJSExecutorFactory::JSExecutorWithWebView(nullptr), nullptr);

  // Neither the context nor the executor keeps the page alive.
  webView.reset();
  EXPECT_EQ(context->webView(), nullptr);
  EXPECT_EQ(executor->jsEnvironment(), nullptr);
}

TEST_F(OMIDSessionTest, InitAndStartSessionReachTheWebViewAsStatements) {
  facts_->setOutputVolume(0.5f);
  const auto webView = makeWebView();
  const auto session = htmlSession(webView);
  ASSERT_NE(session, nullptr);
  EXPECT_EQ(session->identifier().size(), 36u);
  EXPECT_NE(htmlSession(makeWebView())->identifier(), session->identifier());

  // Published at construction, delivered by the main loop.
  EXPECT_TRUE(statements::statements(webView).empty());
  ASSERT_TRUE(statements::waitFor(webView, "init"));
  EXPECT_EQ(
      statements::statements(webView),
      std::vector<std::string>{statements::wrapped(
          R"(init({"impressionOwner":"javascript","videoEventsOwner":"none","isolateVerificationScripts":false}))")});

  session->start();
  session->start();
  ASSERT_TRUE(statements::waitFor(webView, "setState"));
  TNLMainQueue::runFor(50ms);
  const auto names = statements::names(webView);
  ASSERT_GE(names.size(), 4u);
  EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 4),
            (std::vector<std::string>{"init", "startSession", "setDeviceVolume", "setState"}));
  EXPECT_EQ(statements::calls(webView, "startSession"),
            std::vector<std::string>{
                "startSession('" + session->identifier() +
                R"(',{"environment":"app","adSessionType":"html","supports":["clid","vlid"],)"
                R"("omidNativeInfo":{"partnerName":"Tarnel","partnerVersion":"1.0.0.001"},)"
                R"("app":{"appId":"com.example.game","libraryVersion":"1.2.4-Tarnel"},)"
                R"("deviceInfo":{"deviceType":"x86_64","os":"TestOS","osVersion":"12.4"},)"
                R"("customReferenceData":"ref"},{}))"});
  EXPECT_EQ(statements::calls(webView, "setDeviceVolume"),
            std::vector<std::string>{"setDeviceVolume(0.50)"});
  EXPECT_EQ(statements::calls(webView, "setState"),
            std::vector<std::string>{"setState('foregrounded')"});
  EXPECT_DOUBLE_EQ(session->deviceVolume(), 0.5);
}

TEST_F(OMIDSessionTest, FinishIsPublishedOnceAndEndsTheSession) {
  const auto webView = makeWebView();
  const auto session = htmlSession(webView);
  session->start();
  session->logErrorWithType(OMIDTarnelErrorTypeGeneric, "Something failed");
  session->logErrorWithType(OMIDTarnelErrorTypeVideo, "Stalled");
  session->logErrorWithType(OMIDTarnelErrorTypeVideo, "");
  session->finish();
  session->finish();
  ASSERT_TRUE(statements::waitFor(webView, "finishSession"));
  TNLMainQueue::runFor(300ms);
  EXPECT_EQ(statements::count(webView, "finishSession"), 1u);
  EXPECT_EQ(statements::calls(webView, "error"),
            (std::vector<std::string>{"error(generic,Something failed)", "error(video,Stalled)"}));

  // Nothing is accepted after the finish.
  const size_t published = statements::statements(webView).size();
  session->start();
  session->logErrorWithType(OMIDTarnelErrorTypeGeneric, "late");
  const auto otherView = TNLView::create();
  session->setMainAdView(otherView);
  session->addFriendlyObstruction(otherView);
  TNLErrorPtr error;
  EXPECT_EQ(OMIDTarnelAdEvents::create(session, &error), nullptr);
  expectOMIDError(error, 1505, "Event filter does not accept.");
  TNLMainQueue::runFor(300ms);
  EXPECT_EQ(statements::statements(webView).size(), published);
  EXPECT_EQ(session->mainAdView(), nullptr);
  EXPECT_TRUE(session->friendlyObstructions().empty());
  EXPECT_FALSE(OMIDTarnelAdSessionRegistry::getInstance()->isActive());
}

TEST_F(OMIDSessionTest, AdEventsAreOnePerSessionAndTakeOnlyNativeImpressions) {
  TNLErrorPtr error;
  EXPECT_EQ(OMIDTarnelAdSession::create(
                OMIDTarnelAdSessionConfiguration::create(1, 3, false, nullptr), nullptr, &error),
            nullptr);
  expectOMIDError(error, 1506, "Context can not be nil.");
  EXPECT_EQ(OMIDTarnelAdEvents::create(nullptr, &error), nullptr);
  expectOMIDError(error, 1507, "Ad session can not be nil.");

  // The script-owned impression of the integration: refused, nothing published.
  const auto scriptView = makeWebView();
  const auto scriptOwned = htmlSession(scriptView);
  scriptOwned->start();
  const auto adEvents = OMIDTarnelAdEvents::create(scriptOwned, &error);
  ASSERT_NE(adEvents, nullptr);
  EXPECT_EQ(OMIDTarnelAdEvents::create(scriptOwned, &error), nullptr);
  expectOMIDError(error, 1505, "Event filter does not accept.");
  error.reset();
  EXPECT_FALSE(adEvents->impressionOccurredWithError(&error));
  expectOMIDError(error, 1503, "Impression owner should be NATIVE.");
  EXPECT_FALSE(adEvents->impressionOccurredWithError(nullptr));

  // A native impression on a session that was never started starts it first.
  const auto nativeView = makeWebView();
  const auto nativeOwned = htmlSession(nativeView, OMIDTarnelNativeOwner, OMIDTarnelNativeOwner);
  const auto nativeEvents = OMIDTarnelAdEvents::create(nativeOwned, nullptr);
  ASSERT_NE(nativeEvents, nullptr);
  EXPECT_TRUE(nativeEvents->impressionOccurredWithError(&error));
  EXPECT_FALSE(nativeEvents->impressionOccurredWithError(&error));
  expectOMIDError(error, 1505, "Event filter does not accept.");

  ASSERT_TRUE(statements::waitFor(nativeView, "publishImpressionEvent"));
  ASSERT_TRUE(statements::waitFor(scriptView, "setState"));
  TNLMainQueue::runFor(300ms);
  const auto names = statements::names(nativeView);
  EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 5),
            (std::vector<std::string>{"init", "startSession", "setDeviceVolume",
                                      "publishImpressionEvent", "setState"}));
  EXPECT_EQ(statements::count(nativeView, "publishImpressionEvent"), 1u);
  EXPECT_EQ(statements::count(nativeView, "startSession"), 1u);
  EXPECT_EQ(statements::count(scriptView, "publishImpressionEvent"), 0u);
  EXPECT_EQ(
      statements::calls(nativeView, "init").front(),
      R"(init({"impressionOwner":"native","videoEventsOwner":"native","isolateVerificationScripts":false}))");
}

TEST_F(OMIDSessionTest, RegistryTracksActiveSessionsAndGivesEachViewOneSession) {
  const auto registry = OMIDTarnelAdSessionRegistry::getInstance();
  const auto observer = std::make_shared<RecordingObserver>();
  registry->addStateObserver(observer);

  const auto first = htmlSession(makeWebView());
  const auto second = htmlSession(makeWebView());
  EXPECT_EQ(first->delegate(), registry);
  EXPECT_EQ(registry->adSessions(), (std::vector{first, second}));
  {
    // Sessions are held weakly until they start.
    const auto dropped = htmlSession(makeWebView());
    EXPECT_EQ(registry->adSessions().size(), 3u);
  }
  EXPECT_EQ(registry->adSessions().size(), 2u);

  // The registry hears of starts and finishes on a later turn of the main loop.
  first->start();
  second->start();
  first->start();
  EXPECT_FALSE(registry->isActive());
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return registry->activeAdSessions().size() == 2; }));
  EXPECT_EQ(registry->activeAdSessions(), (std::vector{first, second}));
  first->finish();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return registry->activeAdSessions().size() == 1; }));
  EXPECT_TRUE(registry->isActive());
  second->finish();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return !registry->isActive(); }));
  EXPECT_EQ(observer->events,
            (std::vector<std::string>{"active", "started " + first->identifier(),
                                      "started " + second->identifier(), "inactive"}));
  EXPECT_TRUE(registry->adSessions().empty());

  // One session per view: registering a view takes it from the session that had it.
  const auto adView = TNLView::create({0, 0, 50, 50});
  const auto otherView = TNLView::create({0, 0, 50, 50});
  const auto a = htmlSession(makeWebView());
  const auto b = htmlSession(makeWebView());
  const auto c = htmlSession(makeWebView());
  a->setMainAdView(adView);
  c->setMainAdView(otherView);
  const double before = a->statePublisher()->timestamp();
  a->setMainAdView(adView);  // the same view again changes nothing
  EXPECT_EQ(a->statePublisher()->timestamp(), before);
  b->setMainAdView(adView);
  EXPECT_EQ(a->mainAdView(), nullptr);
  EXPECT_EQ(b->mainAdView(), adView);
  EXPECT_EQ(c->mainAdView(), otherView);
  EXPECT_GT(a->statePublisher()->timestamp(), before);

  // Friendly obstructions: listed once, removed by identity, dropped when gone.
  auto button = TNLView::create();
  const auto label = TNLView::create();
  b->addFriendlyObstruction(button);
  b->addFriendlyObstruction(label);
  b->addFriendlyObstruction(button);
  EXPECT_EQ(b->friendlyObstructions(), (std::vector{button, label}));
  b->removeFriendlyObstruction(label);
  b->removeFriendlyObstruction(otherView);
  EXPECT_EQ(b->friendlyObstructions(), std::vector{button});
  b->addFriendlyObstruction(label);
  button.reset();
  EXPECT_EQ(b->friendlyObstructions(), std::vector{label});
  b->removeAllFriendlyObstructions();
  EXPECT_TRUE(b->friendlyObstructions().empty());
}

TEST(OMIDTarnelAdSessionStatePublisher, DropsStaleViewStatesAndRepeatsNoEmptyState) {
  const auto executor = std::make_shared<RecordingExecutor>();
  const auto bridge = std::make_shared<OMIDTarnelBridge>(executor);
  OMIDTarnelAdSessionStatePublisher publisher(bridge);
  using AdState = OMIDTarnelAdSessionStatePublisher::AdState;
  EXPECT_EQ(publisher.adState(), AdState::none);
  const double created = publisher.timestamp();

  publisher.publishNativeViewStateWithCommand("stale", created);
  publisher.publishEmptyNativeViewStateWithCommand("stale empty", created - 1);
  publisher.publishNativeViewStateWithCommand("view 1", created + 1);
  EXPECT_EQ(publisher.adState(), AdState::populated);
  publisher.publishEmptyNativeViewStateWithCommand("empty 1", created + 2);
  publisher.publishEmptyNativeViewStateWithCommand("empty 2", created + 3);
  EXPECT_EQ(publisher.adState(), AdState::empty);
  publisher.publishNativeViewStateWithCommand("view 2", created + 4);
  publisher.publishEmptyNativeViewStateWithCommand("empty 3", created + 5);
  publisher.publishAppState("backgrounded");
  publisher.publishDeviceVolume(0.126);
  EXPECT_EQ(executor->injected,
            (std::vector<std::string>{"view 1", "empty 1", "view 2", "empty 3",
                                      statements::wrapped("setState('backgrounded')"),
                                      statements::wrapped("setDeviceVolume(0.13)")}));

  // A clean-up (a new ad view) starts afresh from now.
  publisher.cleanupAdState();
  EXPECT_EQ(publisher.adState(), AdState::none);
  EXPECT_GE(publisher.timestamp(), created);
  publisher.publishEmptyNativeViewStateWithCommand("empty before", publisher.timestamp());
  publisher.publishEmptyNativeViewStateWithCommand("empty after", publisher.timestamp() + 1);
  EXPECT_EQ(executor->injected.back(), "empty after");
}

}  // namespace
