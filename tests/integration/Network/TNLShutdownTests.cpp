#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "Trackers/TNLTrackerClient.h"
#include "support/TNLTestServer.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;
using Response = TNLTestServer::Response;

namespace {

// A tracker that takes a second to be answered, and a content request answered half-way through
// that second: shutting down delivers the first and never runs the second's callbacks.
class Shutdown : public ::testing::Test {
 protected:
  void SetUp() override {
    server.on("GET", "/monitor", Response(204).after(1s));
    server.on("GET", "/ad", Response::json("{}").after(500ms));
  }
  // Returns once both requests have reached the server at `base`.
  static void startBoth(const std::string& base) {
    TNLNetworkClient::makeURLRequestWithURL(
        base + "/ad", GET_METHOD, [](const std::string&) { contentCalled(); },
        [](const TNLErrorPtr&) { contentCalled(); });
    TNLTrackerClient().sendTrackerEventToURL(base + "/monitor?e=OnAdClosed", GET_METHOD);
    std::this_thread::sleep_for(200ms);
  }
  static void contentCalled() { std::fputs("content callback\n", stderr); }

  TNLTestServer server;
};

TEST_F(Shutdown, DeliversTrackersInFlightAndAbandonsContent) {
  ::testing::internal::CaptureStderr();
  startBoth(server.baseURL());
  TNLSetup::shutdown();
  std::this_thread::sleep_for(500ms);
  EXPECT_THAT(::testing::internal::GetCapturedStderr(),
              ::testing::Not(::testing::HasSubstr("content callback")));
  EXPECT_EQ(server.requestsTo("/monitor").size(), 1u);
  EXPECT_EQ(server.requestsTo("/ad").size(), 1u);
  // Nothing is sent after shutting down.
  TNLTrackerClient().sendTrackerEventToURL(server.url("/monitor?e=late"), GET_METHOD);
  std::this_thread::sleep_for(100ms);
  EXPECT_EQ(server.requestsTo("/monitor").size(), 1u);
}

TEST_F(Shutdown, ReturningFromMainDoesTheSame) {
  // The child is a fresh run of this binary (forking a process whose server threads hold locks
  // could hang it); it talks to this process's server, whose address it inherits.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  setenv("TNL_TEST_PARENT_SERVER", server.baseURL().c_str(), 0);
  const std::string parent = std::getenv("TNL_TEST_PARENT_SERVER");
  EXPECT_EXIT(
      {
        startBoth(parent);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), ::testing::Not(::testing::HasSubstr("content callback")));
  EXPECT_EQ(server.requestsTo("/monitor").size(), 1u);
}

TEST_F(Shutdown, GivesUpOnATrackerAfterTheWait) {
  server.on("GET", "/silent", Response::silent());
  TNLTrackerClient().sendTrackerEventToURL(server.url("/silent"), GET_METHOD);
  ASSERT_TRUE(server.waitForRequests(1));
  const auto start = std::chrono::steady_clock::now();
  TNLSetup::shutdown(300ms);
  // A bound on the wait, not a measurement: an unbounded wait would block for the stall time-out.
  EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

}  // namespace
