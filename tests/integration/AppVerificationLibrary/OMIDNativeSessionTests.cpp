#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionConfiguration.h"
#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "AppVerificationLibrary/OMIDBridge.h"
#include "AppVerificationLibrary/OMIDJSTimer.h"
#include "AppVerificationLibrary/OMIDLightJSExecutor.h"
#include "AppVerificationLibrary/OMIDPartner.h"
#include "AppVerificationLibrary/OMIDSDK.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLSerialQueue.h"
#include "Platform/Script/TNLJSContext.h"
#include "TarnelAd/TNLSetup.h"
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestServer.h"

using namespace std::chrono_literals;

namespace {

// A stand-in for the OMID service script: records every call it receives.
constexpr char kServiceScript[] =
    "var calls = []; var ticks = 0;"
    "this.omidBridge = {"
    "  init: function (c) { calls.push('init ' + JSON.stringify(c)); },"
    "  startSession: function (id, context, parameters) {"
    "    calls.push('startSession ' + id.length + ' ' + context.adSessionType + ' ' +"
    "               context.omidNativeInfo.partnerName + ' ' + JSON.stringify(parameters) + ' ' +"
    "               ('customReferenceData' in context));"
    "  },"
    "  setDeviceVolume: function (v) { calls.push('setDeviceVolume ' + v); },"
    "  setState: function (s) { calls.push('setState ' + s); },"
    "  publishImpressionEvent: function () { calls.push('impression'); },"
    "  finishSession: function () { calls.push('finishSession'); }"
    "};";

std::string evaluate(const std::shared_ptr<OMIDTarnelLightJSExecutor>& executor,
                     const std::string& script) {
  std::string result;
  executor->dispatchQueue()->sync(
      [&] { result = executor->jsContext()->evaluateScript(script).toString(); });
  return result;
}

TEST(OMIDTarnelAdSession, ANativeSessionTalksToItsVerificationScriptsInTheScriptEngine) {
  TNLTestDeviceFacts::install();
  TNLTestServer server;
  server.on("GET", "/verify.js",
            TNLTestServer::Response(200, "omidNative.setInterval(function () { ticks++; }, 10);",
                                    "application/javascript"));
  ASSERT_TRUE(OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(
      R"({"v":"1.2.4","a":"1"})", nullptr));
  const auto context = OMIDTarnelAdSessionContext::create(
      OMIDTarnelPartner::create("Tarnel", "1.0.0.001"), kServiceScript,
      {OMIDTarnelVerificationScriptResource(server.url("/verify.js"), "vendor", "k=v")},
      std::nullopt, nullptr);
  ASSERT_NE(context, nullptr);
  const auto session =
      OMIDTarnelAdSession::create(OMIDTarnelAdSessionConfiguration::create(
                                      OMIDTarnelNativeOwner, OMIDTarnelNativeOwner, true, nullptr),
                                  context, nullptr);
  ASSERT_NE(session, nullptr);
  const auto executor =
      std::dynamic_pointer_cast<OMIDTarnelLightJSExecutor>(session->bridge()->jsExecutor());
  ASSERT_NE(executor, nullptr);

  // The verification resource loads and starts its timer.
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return executor->timer()->isTimerActive(1); }, 5s));
  session->start();
  TNLMainQueue::runFor(50ms);
  session->finish();
  // Its timers stop with the finish.
  EXPECT_FALSE(executor->timer()->isTimerActive(1));
  const std::string ticks = evaluate(executor, "String(ticks)");
  std::this_thread::sleep_for(60ms);
  EXPECT_EQ(evaluate(executor, "String(ticks)"), ticks);

  EXPECT_EQ(evaluate(executor, "calls.join('\\n')"),
            "init {\"impressionOwner\":\"native\",\"videoEventsOwner\":\"native\","
            "\"isolateVerificationScripts\":true}\n"
            "startSession 36 native Tarnel {\"vendor\":\"k=v\"} false\n"
            "setDeviceVolume 1\n"
            "setState foregrounded\n"
            "finishSession");
  // The registry lets go of the finished session (and so of its engine) on the main loop.
  ASSERT_TRUE(TNLMainQueue::runUntil(
      [] { return !OMIDTarnelAdSessionRegistry::getInstance()->isActive(); }));
}

}  // namespace
