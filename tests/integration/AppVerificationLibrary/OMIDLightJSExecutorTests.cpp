#include <gtest/gtest.h>

#include <chrono>
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
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;

namespace {

// What the scripts report through a native `report(...)`: the arguments joined by "|", and
// whether all came on the executor's queue.
class Reports {
 public:
  void install(const std::shared_ptr<OMIDTarnelLightJSExecutor>& executor) {
    executor->dispatchQueue()->sync([&] {
      const auto context = executor->jsContext();
      const auto queue = executor->dispatchQueue();
      context->setFunction(context->globalObject(), "report",
                           [this, queue](TNLJSContext& ctx, const std::vector<TNLJSValue>& args) {
                             std::string line;
                             for (size_t i = 0; i < args.size(); ++i) {
                               line += (i > 0 ? "|" : "") + args[i].toString();
                             }
                             signal_.record([&] {
                               lines_.push_back(line);
                               allOnQueue_ = allOnQueue_ && queue->isCurrent();
                             });
                             return ctx.undefinedValue();
                           });
    });
  }
  bool waitFor(size_t count, std::chrono::milliseconds timeout = 5s) {
    return signal_.waitFor(count, timeout);
  }
  std::vector<std::string> lines() const {
    return signal_.read([&] { return lines_; });
  }
  bool allOnQueue() const {
    return signal_.read([&] { return allOnQueue_; });
  }

 private:
  TNLTestSignal signal_;
  std::vector<std::string> lines_;
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
  // Each callback reports the milliseconds since the script started.
  executor->injectJavaScriptFromString(
      "var start = Date.now(); function since() { return Date.now() - start; }"
      "var ids = [omidNative.setTimeout(function () { report('zero', since()); }, 0),"
      "           omidNative.setTimeout(function () { report('five', since()); }, 5),"
      "           omidNative.setTimeout(\"report('string', since())\"),"
      "           omidNative.setTimeout(function () { report('forty', since()); }, 40)];"
      "var interval = omidNative.setInterval(function () { omidNative.clearInterval(interval); }, "
      "10);"
      "report('ids', ids.join(','), interval);");
  ASSERT_TRUE(reports.waitFor(5));
  const auto lines = reports.lines();
  EXPECT_EQ(lines[0], "ids|1,2,3,4|5");
  for (size_t i = 1; i < lines.size(); ++i) {
    const auto bar = lines[i].find('|');
    const std::string name = lines[i].substr(0, bar);
    EXPECT_GE(std::stoi(lines[i].substr(bar + 1)), name == "forty" ? 40 : 10) << lines[i];
  }
  EXPECT_EQ(lines.back().substr(0, 6), "forty|");
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
