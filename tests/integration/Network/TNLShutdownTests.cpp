#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <thread>

#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLSetup.h"
#include "Trackers/TNLTrackerClient.h"
#include "support/TNLTestServer.h"

using namespace std::chrono_literals;
using Response = TNLTestServer::Response;

namespace {

class Shutdown : public ::testing::Test {
 protected:
  TNLTestServer server;
};

// A tracker that takes a second to be answered, and a content request answered half-way through
// that second: shutting down delivers the first and never runs the second's callbacks.
TEST_F(Shutdown, DeliversTrackersInFlightAndAbandonsContent) {
  server.on("GET", "/monitor", Response(204).after(1s));
  server.on("GET", "/ad", Response::json("{}").after(500ms));
  const auto contentCalled = std::make_shared<std::atomic<bool>>(false);
  TNLNetworkClient::makeURLRequestWithURL(
      server.url("/ad"), GET_METHOD, [contentCalled](const std::string&) { *contentCalled = true; },
      [contentCalled](const TNLErrorPtr&) { *contentCalled = true; });
  TNLTrackerClient().sendTrackerEventToURL(server.url("/monitor?e=OnAdClosed"), GET_METHOD);
  ASSERT_TRUE(server.waitForRequests(2));
  TNLSetup::shutdown();
  std::this_thread::sleep_for(500ms);
  EXPECT_FALSE(*contentCalled);
  EXPECT_EQ(server.requestsTo("/monitor").size(), 1u);
  // Nothing is sent after shutting down.
  TNLTrackerClient().sendTrackerEventToURL(server.url("/monitor?e=late"), GET_METHOD);
  std::this_thread::sleep_for(100ms);
  EXPECT_EQ(server.requestsTo("/monitor").size(), 1u);
}

// A host that never calls shutdown: returning from main still delivers a tracker just queued.
TEST_F(Shutdown, ExitingDeliversAQueuedTracker) {
  server.on("GET", "/monitor", Response(204).after(1s));
  // The child is a fresh run of this binary (forking a process whose server threads hold locks
  // could hang it); it talks to this process's server, whose address it inherits.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  setenv("TNL_TEST_PARENT_SERVER", server.baseURL().c_str(), 0);
  const std::string parent = std::getenv("TNL_TEST_PARENT_SERVER");
  EXPECT_EXIT(
      {
        TNLTrackerClient().sendTrackerEventToURL(parent + "/monitor?e=OnAdClosed", GET_METHOD);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
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
