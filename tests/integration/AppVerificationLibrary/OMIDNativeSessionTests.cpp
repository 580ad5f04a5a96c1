#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

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
#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestServer.h"

using namespace std::chrono_literals;

namespace {

// A stand-in for the OMID service script: records the name of every call it receives, and the
// parameters the verification scripts are started with.
constexpr char kServiceScript[] =
    "var calls = []; var parameters;"
    "this.omidBridge = new Proxy({}, { get: function (target, name) { return function () {"
    "  calls.push(name); if (name === 'startSession') { parameters = arguments[2]; } }; } });";

// A resource's declarations stay inside its wrapper; a broken or missing one stops no other.
TEST(OMIDTarnelAdSession, ANativeSessionTalksToItsVerificationScriptsInTheScriptEngine) {
  TNLTestDeviceFacts::install();
  TNLTestServer server;
  server.on("GET", "/broken.js", TNLTestServer::Response(200, "ticks = ;"));
  server.on(
      "GET", "/verify.js",
      TNLTestServer::Response(200, "var inside = 1; omidNative.setInterval(function () {}, 10);")
          .after(30ms));
  ASSERT_TRUE(OMIDTarnelSDK::sharedInstance()->activateWithOMIDAPIVersion(
      R"({"v":"1.2.4","a":"1"})", nullptr));
  const auto context = OMIDTarnelAdSessionContext::create(
      OMIDTarnelPartner::create("Tarnel", "1.0.0.001"), kServiceScript,
      {OMIDTarnelVerificationScriptResource(server.url("/broken.js")),
       OMIDTarnelVerificationScriptResource(
           "http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()) + "/gone.js"),
       OMIDTarnelVerificationScriptResource(server.url("/verify.js"), "vendor", "k=v")},
      std::nullopt, nullptr);
  const auto session =
      OMIDTarnelAdSession::create(OMIDTarnelAdSessionConfiguration::create(
                                      OMIDTarnelNativeOwner, OMIDTarnelNativeOwner, true, nullptr),
                                  context, nullptr);
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
  std::string seen;
  executor->dispatchQueue()->sync([&] {
    seen = executor->jsContext()
               ->evaluateScript("[typeof inside, calls, JSON.stringify(parameters)].join(' ')")
               .toString();
  });
  EXPECT_EQ(
      seen,
      R"(undefined init,startSession,setDeviceVolume,setState,finishSession {"vendor":"k=v"})");
  // The registry lets go of the finished session (and so of its engine) on the main loop.
  ASSERT_TRUE(TNLMainQueue::runUntil(
      [] { return !OMIDTarnelAdSessionRegistry::getInstance()->isActive(); }));
}

}  // namespace
