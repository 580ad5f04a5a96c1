#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDJSTimer.h"
#include "AppVerificationLibrary/OMIDLightJSExecutor.h"
#include "Platform/Foundation/TNLSerialQueue.h"
#include "Platform/Script/TNLJSContext.h"
#include "support/TNLTestServer.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;

namespace {

// What the scripts report through a native `report(...)`: the arguments joined by "|", and
// whether all came on the executor's queue.
struct Reports {
  explicit Reports(const std::shared_ptr<OMIDTarnelLightJSExecutor>& executor) {
    executor->dispatchQueue()->sync([&] {
      const auto context = executor->jsContext();
      context->setFunction(context->globalObject(), "report",
                           [this, queue = executor->dispatchQueue()](
                               TNLJSContext& ctx, const std::vector<TNLJSValue>& args) {
                             std::string line;
                             for (size_t i = 0; i < args.size(); ++i) {
                               line += (i > 0 ? "|" : "") + args[i].toString();
                             }
                             signal.record([&] {
                               reported.push_back(line);
                               onQueue = onQueue && queue->isCurrent();
                             });
                             return ctx.undefinedValue();
                           });
    });
  }
  std::vector<std::string> lines() const {
    return signal.read([&] { return reported; });
  }
  bool allOnQueue() const {
    return signal.read([&] { return onQueue; });
  }
  TNLTestSignal signal;
  std::vector<std::string> reported;
  bool onQueue = true;
};

class OMIDLightExecutorTest : public ::testing::Test {
 protected:
  std::shared_ptr<OMIDTarnelLightJSExecutor> executor_ =
      OMIDTarnelLightJSExecutor::lightJSExecutor();
  Reports reports_{executor_};
};

TEST_F(OMIDLightExecutorTest, RunsScriptsAndCallbacksOnItsQueue) {
  // Callbacks: strings are evaluated, functions called, undefined ignored; a callback with an
  // argument receives it as a script value.
  TNLJSValue function;
  TNLJSValue text;
  executor_->dispatchQueue()->sync([&] {
    function =
        executor_->jsContext()->evaluateScript("(function (a) { report('called', typeof a, a); })");
    text = executor_->jsContext()->stringValue("report('evaluated')");
  });
  executor_->invokeCallback(function);
  executor_->invokeCallback(text);
  executor_->invokeCallback(TNLJSValue());
  executor_->invokeCallback(function, TNLJson("t"));
  ASSERT_TRUE(reports_.signal.waitFor(3, 5s));
  EXPECT_EQ(reports_.lines(), (std::vector<std::string>{"called|undefined|undefined", "evaluated",
                                                        "called|string|t"}));
  EXPECT_TRUE(reports_.allOnQueue());
}

TEST_F(OMIDLightExecutorTest, TimersWaitAtLeastTenMillisecondsAndCanBeCleared) {
  // Each callback reports the milliseconds since the script started.
  executor_->injectJavaScriptFromString(
      "var start = Date.now(); function since() { return Date.now() - start; }"
      "var ids = [omidNative.setTimeout(function () { report('zero', since()); }, 0),"
      "           omidNative.setTimeout(function () { report('five', since()); }, 5),"
      "           omidNative.setTimeout(\"report('string', since())\"),"
      "           omidNative.setTimeout(function () { report('forty', since()); }, 40)];"
      "var interval = omidNative.setInterval(function () { omidNative.clearInterval(interval); }, "
      "10);"
      "report('ids', ids.join(','), interval);");
  ASSERT_TRUE(reports_.signal.waitFor(5, 5s));
  auto lines = reports_.lines();
  EXPECT_EQ(lines[0], "ids|1,2,3,4|5");
  for (size_t i = 1; i < lines.size(); ++i) {
    const auto bar = lines[i].find('|');
    const std::string name = lines[i].substr(0, bar);
    EXPECT_GE(std::stoi(lines[i].substr(bar + 1)), name == "forty" ? 40 : 10) << lines[i];
  }
  EXPECT_EQ(lines.back().substr(0, 6), "forty|");

  executor_->injectJavaScriptFromString(
      "var cleared = omidNative.setTimeout(function () { report('cleared timeout ran'); }, 20);"
      "omidNative.clearTimeout(cleared);"
      "omidNative.clearTimeout(999); omidNative.clearTimeout('junk'); omidNative.clearTimeout();"
      "var ticks = 0;"
      "interval = omidNative.setInterval(function () {"
      "  ticks++; report('tick ' + ticks);"
      "  if (ticks === 3) { omidNative.clearInterval(interval); }"
      "}, 10);"
      "omidNative.setTimeout(function () { report('done'); }, 400);");
  ASSERT_TRUE(reports_.signal.waitFor(9, 5s));
  lines = reports_.lines();
  EXPECT_EQ(std::vector<std::string>(lines.begin() + 5, lines.end()),
            (std::vector<std::string>{"tick 1", "tick 2", "tick 3", "done"}));
  EXPECT_TRUE(reports_.allOnQueue());
}

// Outcomes reach the script on the executor's queue; a ping is made once, whatever happens.
TEST_F(OMIDLightExecutorTest, PingsAndDownloadsReportTheirOutcome) {
  TNLTestServer server;
  server.on("GET", "/ping", TNLTestServer::Response(204));
  server.on("GET", "/missing", TNLTestServer::Response(404, "nope"));
  server.on("GET", "/lib.js", TNLTestServer::Response(200, "var lib = 'h\xC3\xA9';"));
  const std::string closed =
      "http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()) + "/x";
  // on(what): a callback that reports `what`, and the type and value of an argument it gets.
  executor_->injectJavaScriptFromString(
      "function on(what) { return function (x) {"
      "  report(x === undefined ? what : what + '|' + typeof x + '|' + x); }; }");
  const std::vector<std::string> scripts{
      "omidNative.sendUrl('" + server.url("/ping?a=1") + "', on('ping ok'), on('wrong'));",
      "omidNative.sendUrl('" + server.url("/missing") + "', on('404 is no error'), on('wrong'));",
      "omidNative.sendUrl('" + closed + "', on('wrong'), \"report('closed port failed')\");",
      "omidNative.sendUrl('not a url', null, on('bad url failed'));",
      "omidNative.downloadJavaScriptResource('" + server.url("/lib.js") + "', on('got'), null);",
      "omidNative.downloadJavaScriptResource('" + closed + "', null, on('failed'));"};
  for (size_t i = 0; i < scripts.size(); ++i) {
    executor_->injectJavaScriptFromString(scripts[i]);
    ASSERT_TRUE(reports_.signal.waitFor(i + 1, 5s)) << scripts[i];
  }
  EXPECT_EQ(reports_.lines(),
            (std::vector<std::string>{"ping ok", "404 is no error", "closed port failed",
                                      "bad url failed", "got|string|var lib = 'h\xC3\xA9';",
                                      "failed|number|3"}));
  EXPECT_TRUE(reports_.allOnQueue());
  const auto pings = server.requestsTo("/ping");
  ASSERT_EQ(pings.size(), 1u);
  EXPECT_EQ(pings[0].query, "a=1");
  EXPECT_EQ(pings[0].header("Cache-Control"), "no-cache");
}

}  // namespace
