#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDJSExecutorFactory.h"
#include "AppVerificationLibrary/OMIDJSNetworkBridge.h"
#include "AppVerificationLibrary/OMIDJSTimer.h"
#include "AppVerificationLibrary/OMIDLightJSExecutor.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "Platform/Foundation/TNLSerialQueue.h"
#include "Platform/Script/TNLJSContext.h"
#include "support/TNLTestServer.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

// What the scripts report through a native `report(...)`: the arguments joined by "|", when, and
// whether on the executor's queue.
class Reports {
 public:
  void install(const std::shared_ptr<OMIDTarnelLightJSExecutor>& executor) {
    executor->dispatchQueue()->sync([&] {
      const auto context = executor->jsContext();
      ASSERT_NE(context, nullptr);
      const auto queue = executor->dispatchQueue();
      context->setFunction(context->globalObject(), "report",
                           [this, queue](TNLJSContext& ctx, const std::vector<TNLJSValue>& args) {
                             std::string line;
                             for (size_t i = 0; i < args.size(); ++i) {
                               line += (i > 0 ? "|" : "") + args[i].toString();
                             }
                             add(line, queue->isCurrent());
                             return ctx.undefinedValue();
                           });
      context->setFunction(context->globalObject(), "mark",
                           [this](TNLJSContext& ctx, const std::vector<TNLJSValue>&) {
                             std::lock_guard lock(mutex_);
                             mark_ = Clock::now();
                             return ctx.undefinedValue();
                           });
    });
  }

  bool waitFor(size_t count, std::chrono::milliseconds timeout = 5s) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return lines_.size() >= count; });
  }
  std::vector<std::string> lines() {
    std::lock_guard lock(mutex_);
    return lines_;
  }
  // Time from the last mark() to the report with the given text.
  std::chrono::milliseconds sinceMark(const std::string& line) {
    std::lock_guard lock(mutex_);
    for (size_t i = 0; i < lines_.size(); ++i) {
      if (lines_[i] == line) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(times_[i] - mark_);
      }
    }
    ADD_FAILURE() << "no report " << line;
    return {};
  }
  bool allOnQueue() {
    std::lock_guard lock(mutex_);
    return allOnQueue_;
  }

 private:
  void add(const std::string& line, bool onQueue) {
    std::lock_guard lock(mutex_);
    lines_.push_back(line);
    times_.push_back(Clock::now());
    allOnQueue_ = allOnQueue_ && onQueue;
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> lines_;
  std::vector<Clock::time_point> times_;
  Clock::time_point mark_;
  bool allOnQueue_ = true;
};

// Runs on the executor's queue and waits for it, so that everything queued before has run.
void drain(const std::shared_ptr<OMIDTarnelLightJSExecutor>& executor) {
  executor->dispatchQueue()->sync([] {});
}

TEST(OMIDTarnelLightJSExecutor, RunsScriptsAndCallbacksOnItsQueue) {
  Reports reports;
  const auto executor = OMIDTarnelLightJSExecutor::lightJSExecutor();
  EXPECT_TRUE(executor->supportBackgroundThread());
  reports.install(executor);
  EXPECT_EQ(executor->jsEnvironment(), std::static_pointer_cast<void>(executor->jsContext()));

  // The empty string is not evaluated: the previous script's exception is still the last one.
  executor->injectJavaScriptFromString("throw 'kept'");
  executor->injectJavaScriptFromString("");
  std::optional<std::string> exception;
  executor->dispatchQueue()->sync([&] { exception = executor->jsContext()->exception(); });
  EXPECT_EQ(exception, std::optional<std::string>("kept"));
  executor->injectJavaScriptFromString(" ");
  executor->dispatchQueue()->sync([&] { exception = executor->jsContext()->exception(); });
  EXPECT_EQ(exception, std::nullopt);

  // Callbacks: strings are evaluated, functions called, undefined and null ignored; a callback
  // with an argument receives it as a script value.
  TNLJSValue function;
  TNLJSValue text;
  executor->dispatchQueue()->sync([&] {
    function =
        executor->jsContext()->evaluateScript("(function (a) { report('called', typeof a, a); })");
    text = executor->jsContext()->stringValue("report('evaluated')");
  });
  executor->invokeCallback(function);
  executor->invokeCallback(text);
  executor->invokeCallback(TNLJSValue());
  executor->invokeCallback(function, TNLJson(3));
  executor->invokeCallback(function, TNLJson("t"));
  ASSERT_TRUE(reports.waitFor(4));
  EXPECT_EQ(reports.lines(), (std::vector<std::string>{"called|undefined|undefined", "evaluated",
                                                       "called|number|3", "called|string|t"}));
  EXPECT_TRUE(reports.allOnQueue());
}

TEST(OMIDTarnelJSTimer, TimeoutsWaitAtLeastTenMillisecondsAndNumberFromOne) {
  Reports reports;
  const auto executor = OMIDTarnelLightJSExecutor::lightJSExecutor();
  reports.install(executor);
  executor->injectJavaScriptFromString(
      "mark();"
      "var ids = [omidNative.setTimeout(function () { report('zero'); }, 0),"
      "           omidNative.setTimeout(function () { report('five'); }, 5),"
      "           omidNative.setTimeout(\"report('string')\"),"
      "           omidNative.setTimeout(function () { report('forty'); }, 40)];"
      "var interval = omidNative.setInterval(function () { omidNative.clearInterval(interval); }, "
      "10);"
      "report('ids', ids.join(','), interval);");
  ASSERT_TRUE(reports.waitFor(5));
  const auto lines = reports.lines();
  EXPECT_EQ(lines[0], "ids|1,2,3,4|5");
  EXPECT_EQ(lines.back(), "forty");
  for (const std::string name : {"zero", "five", "string"}) {
    EXPECT_GE(reports.sinceMark(name), 10ms) << name;
  }
  EXPECT_GE(reports.sinceMark("forty"), 40ms);
  EXPECT_TRUE(reports.allOnQueue());
}

TEST(OMIDTarnelJSTimer, ClearingStopsTimeoutsAndIntervals) {
  Reports reports;
  const auto executor = OMIDTarnelLightJSExecutor::lightJSExecutor();
  reports.install(executor);
  executor->injectJavaScriptFromString(
      "var cleared = omidNative.setTimeout(function () { report('cleared timeout ran'); }, 20);"
      "omidNative.clearTimeout(cleared);"
      "omidNative.clearTimeout(999); omidNative.clearTimeout('junk'); omidNative.clearTimeout();"
      "var ticks = 0;"
      "var interval = omidNative.setInterval(function () {"
      "  ticks++; report('tick ' + ticks);"
      "  if (ticks === 3) { omidNative.clearInterval(interval); }"
      "}, 10);"
      "omidNative.setTimeout(function () { report('done'); }, 400);");
  ASSERT_TRUE(reports.waitFor(4, 3s));
  EXPECT_EQ(reports.lines(), (std::vector<std::string>{"tick 1", "tick 2", "tick 3", "done"}));

  // cancelAllTimers (what a finished session does) stops every pending timer at once.
  executor->injectJavaScriptFromString(
      "omidNative.setInterval(function () { report('late tick'); }, 10);"
      "omidNative.setTimeout(function () { report('late timeout'); }, 30);");
  drain(executor);
  EXPECT_TRUE(executor->timer()->isTimerActive(4));
  EXPECT_TRUE(executor->timer()->isTimerActive(5));
  executor->timer()->cancelAllTimers();
  EXPECT_FALSE(executor->timer()->isTimerActive(4));
  std::this_thread::sleep_for(80ms);
  drain(executor);
  EXPECT_EQ(reports.lines().size(), 4u);
}

TEST(OMIDTarnelJSNetworkBridge, SendUrlPingsAndReportsTheOutcomeOnTheQueue) {
  TNLTestServer server;
  server.on("GET", "/ping", TNLTestServer::Response(204));
  server.on("GET", "/missing", TNLTestServer::Response(404, "nope"));
  Reports reports;
  const auto executor = OMIDTarnelLightJSExecutor::lightJSExecutor();
  reports.install(executor);
  const std::string closed =
      "http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()) + "/x";

  executor->injectJavaScriptFromString(
      "omidNative.sendUrl('" + server.url("/ping?a=1") +
      "', function () { report('ping ok'); }, function () { report('ping failed'); });");
  ASSERT_TRUE(reports.waitFor(1));
  executor->injectJavaScriptFromString(
      "omidNative.sendUrl('" + server.url("/missing") +
      "', function () { report('status is not an error'); }, function () { report('wrong'); });");
  ASSERT_TRUE(reports.waitFor(2));
  executor->injectJavaScriptFromString(
      "omidNative.sendUrl('" + closed +
      "', function () { report('wrong'); }, \"report('closed port failed')\");");
  ASSERT_TRUE(reports.waitFor(3));
  executor->injectJavaScriptFromString(
      "omidNative.sendUrl('not a url', null, function () { report('bad url failed'); });");
  ASSERT_TRUE(reports.waitFor(4));
  EXPECT_EQ(reports.lines(), (std::vector<std::string>{"ping ok", "status is not an error",
                                                       "closed port failed", "bad url failed"}));
  EXPECT_TRUE(reports.allOnQueue());

  const auto pings = server.requestsTo("/ping");
  ASSERT_EQ(pings.size(), 1u);  // one attempt
  EXPECT_EQ(pings[0].method, "GET");
  EXPECT_EQ(pings[0].query, "a=1");
  EXPECT_EQ(pings[0].header("Cache-Control"), "no-cache");
}

TEST(OMIDTarnelJSNetworkBridge, DownloadJavaScriptResourceHandsOverTextOrAnErrorNumber) {
  TNLTestServer server;
  server.on("GET", "/lib.js", TNLTestServer::Response(200, "var lib = 'h\xC3\xA9';"));
  Reports reports;
  const auto executor = OMIDTarnelLightJSExecutor::lightJSExecutor();
  reports.install(executor);
  const std::string closed =
      "http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()) + "/lib.js";

  executor->injectJavaScriptFromString("omidNative.downloadJavaScriptResource('" +
                                       server.url("/lib.js") +
                                       "', function (text) { report('got', text); },"
                                       " function (code) { report('failed', code); });");
  ASSERT_TRUE(reports.waitFor(1));
  executor->injectJavaScriptFromString(
      "omidNative.downloadJavaScriptResource('" + closed +
      "', function (text) { report('got', text); },"
      " function (code) { report('failed', typeof code, code); });");
  ASSERT_TRUE(reports.waitFor(2));
  EXPECT_EQ(reports.lines(),
            (std::vector<std::string>{"got|var lib = 'h\xC3\xA9';", "failed|number|3"}));
  EXPECT_EQ(server.requestsTo("/lib.js").size(), 1u);
  EXPECT_TRUE(reports.allOnQueue());

  // The error numbers of the platform's codes.
  EXPECT_EQ(OMIDTarnelJSNetworkBridge::getOMIDError(TNLError::make(TNLURLErrorDomain, -1009)), 0);
  EXPECT_EQ(OMIDTarnelJSNetworkBridge::getOMIDError(TNLError::make(TNLURLErrorDomain, -1008)), 1);
  EXPECT_EQ(OMIDTarnelJSNetworkBridge::getOMIDError(TNLError::make(TNLURLErrorDomain, LONG_MAX)),
            2);
  EXPECT_EQ(OMIDTarnelJSNetworkBridge::getOMIDError(TNLError::make(TNLURLErrorDomain, -1001)), 3);
}

TEST(OMIDTarnelJSExecutorFactory, NativeContextsRunTheScriptThenEachResourceWrapped) {
  TNLTestServer server;
  server.on(
      "GET", "/one.js",
      TNLTestServer::Response(200, "var privateToOne = 1; report('one', this === globalThis);"));
  server.on("GET", "/two.js",
            TNLTestServer::Response(200, "report('two', typeof privateToOne);").after(30ms));
  server.on("GET", "/broken.js", TNLTestServer::Response(200, "report('broken' +);"));
  ASSERT_TRUE(OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(
      R"({"v":"1.2.4","a":"1"})", nullptr));
  const auto context = OMIDTarnelAdSessionContext::create(
      OMIDTarnelPartner::create("Tarnel", "1.0.0.001"), "var fromScript = 'main';",
      {OMIDTarnelVerificationScriptResource(server.url("/broken.js")),
       OMIDTarnelVerificationScriptResource(server.url("/one.js"), "one", "p"),
       OMIDTarnelVerificationScriptResource(server.url("/two.js"), "two", "q"),
       OMIDTarnelVerificationScriptResource(
           "http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()) + "/gone.js")},
      std::nullopt, nullptr);
  ASSERT_NE(context, nullptr);

  const auto executor = std::dynamic_pointer_cast<OMIDTarnelLightJSExecutor>(
      OMIDTarnelJSExecutorFactory::JSExecutorForContext(context));
  ASSERT_NE(executor, nullptr);
  EXPECT_EQ(OMIDTarnelJSExecutorFactory::JSExecutorForContext(nullptr), nullptr);
  Reports reports;
  reports.install(executor);
  ASSERT_TRUE(server.waitForRequests(3));
  ASSERT_TRUE(reports.waitFor(2));
  // A resource's declarations stay inside its wrapper; the context's script ran as it is.
  EXPECT_EQ(reports.lines(), (std::vector<std::string>{"one|true", "two|undefined"}));
  std::string fromScript;
  executor->dispatchQueue()->sync(
      [&] { fromScript = executor->jsContext()->evaluateScript("fromScript").toString(); });
  EXPECT_EQ(fromScript, "main");
}

}  // namespace
