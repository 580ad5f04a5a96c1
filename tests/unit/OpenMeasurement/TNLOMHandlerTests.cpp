#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "TNLLog.h"
#include "TNLOMHandler.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "support/OMIDTestStatements.h"
#include "support/TNLLogCapture.h"
#include "support/TNLTestDeviceFacts.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
namespace statements = OMIDTestStatements;

namespace {

// An ad web view as the library makes them: a subclass that is also something else, so that the
// web view part does not start at the object's address.
class Listener {
 public:
  virtual ~Listener() = default;
  virtual void listen() {}
  int listened = 0;
};

class AdWebView : public Listener, public TNLWebView {
 public:
  AdWebView() : TNLWebView({0, 0, 320, 50}, TNLWebViewConfiguration()) {}
  std::string className() const override { return "AdWebView"; }
  std::string address() const { return TNLFormat("%p", TNLPointer(this)); }
};

class TNLOMHandlerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    TNLTestDeviceFacts::install();
    TNLLog::sharedLogger()->setShowLogs(true);
  }

  std::shared_ptr<TNLOMHandler> handler_ = TNLOMHandler::sharedHandler();
  TNLLogCapture log_;
};

TEST_F(TNLOMHandlerTest, ActivatesOnceAndOpensOneSessionPerOptedInWebView) {
  EXPECT_TRUE(OMIDTarnelSDK::sharedInstance()->isActive());
  // Filed under the whole object's address, as the ad web view prints it.
  const auto display = std::make_shared<AdWebView>();
  const std::string key = display->address();
  EXPECT_NE(key, TNLFormat("%p", TNLPointer(static_cast<TNLWebView*>(display.get()))));
  handler_->createOMIDSessionForWebView(display, "display");
  handler_->createOMIDSessionForWebView(display, "display");
  handler_->createOMIDSessionForWebView(display, "video");
  ASSERT_EQ(handler_->omidSessions().size(), 1u);

  // Video: the scripts own the video events and run isolated. Any other word opens nothing.
  const auto video = std::make_shared<AdWebView>();
  handler_->createOMIDSessionForWebView(video, "video");
  const auto other = std::make_shared<AdWebView>();
  for (const std::string word : {"", "Display", "banner", "display "}) {
    handler_->createOMIDSessionForWebView(other, word);
  }
  ASSERT_TRUE(statements::waitFor(display, "startSession"));
  ASSERT_TRUE(statements::waitFor(video, "startSession"));
  const std::string init = R"(init({"impressionOwner":"javascript","videoEventsOwner":)";
  EXPECT_EQ(statements::calls(display, "init"),
            std::vector<std::string>{init + R"("none","isolateVerificationScripts":false}))"});
  EXPECT_EQ(statements::calls(video, "init"),
            std::vector<std::string>{init + R"("javascript","isolateVerificationScripts":true}))"});
  EXPECT_EQ(handler_->omidSessions().size(), 2u);
  EXPECT_TRUE(statements::statements(other).empty());
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(TNLOMHandlerTest, DestroyFinishesAtOnceAndForgetsTheSessionASecondLater) {
  const auto webView = std::make_shared<AdWebView>();
  const std::string key = webView->address();
  handler_->destroyOMIDSessionForWebView(webView);  // unknown: nothing
  handler_->createOMIDSessionForWebView(webView, "display");
  const auto session = handler_->omidSessions().at(key);

  const auto destroyed = Clock::now();
  handler_->destroyOMIDSessionForWebView(webView);
  ASSERT_TRUE(statements::waitFor(webView, "finishSession"));
  // Still filed during the second: a second destroy finishes nothing more, an opt-in opens
  // nothing new.
  TNLMainQueue::runUntil([&] { return Clock::now() - destroyed >= 500ms; });
  handler_->destroyOMIDSessionForWebView(webView);
  handler_->createOMIDSessionForWebView(webView, "display");
  TNLMainQueue::runUntil([&] { return Clock::now() - destroyed >= 900ms; });
  EXPECT_EQ(handler_->omidSessions().at(key), session);

  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return handler_->omidSessions().empty(); }, 2s));
  EXPECT_GE(Clock::now() - destroyed, 1000ms);
  EXPECT_TRUE(handler_->webviews().empty());
  EXPECT_EQ(statements::count(webView, "finishSession"), 1u);

  // Once forgotten, the web view may opt in again: a new session, which the removal scheduled by
  // the second destroy leaves alone.
  handler_->createOMIDSessionForWebView(webView, "display");
  TNLMainQueue::runUntil([&] { return Clock::now() - destroyed >= 1800ms; });
  ASSERT_EQ(handler_->omidSessions().count(key), 1u);
  EXPECT_NE(handler_->omidSessions().at(key), session);
  EXPECT_EQ(session.use_count(), 1);  // only this test holds the finished one
}

}  // namespace
