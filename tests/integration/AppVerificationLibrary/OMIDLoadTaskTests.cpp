#include <gtest/gtest.h>

#include <atomic>

#include "AppVerificationLibrary/OMIDLoadTask.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "support/TNLTestServer.h"

using namespace std::chrono_literals;

namespace {

struct Completion {
  std::atomic<int> calls{0};
  bool onMain = false;
  OMIDTarnelLoadTask::Result result;
  TNLErrorPtr error;

  OMIDTarnelLoadTask::CompletionHandler handler() {
    return [this](const OMIDTarnelLoadTask::Result& r, const TNLErrorPtr& e) {
      onMain = TNLMainQueue::isMainThread();
      result = r;
      error = e;
      ++calls;
    };
  }
};

// Completions come on the main queue; transport errors are retried, pings are made once.
TEST(OMIDTarnelLoadTask, LoadsRetryTransportErrorsAndCompleteOnTheMainQueue) {
  TNLTestServer server;
  server.on("GET", "/binary", TNLTestServer::Response(200, std::string("\xFF\xFE", 2)));
  server.on("GET", "/missing", TNLTestServer::Response(404, "not here"));
  server.on("GET", "/flaky", TNLTestServer::Response::dropped("partial"));
  Completion binary;
  Completion missing;
  Completion flaky;
  Completion ping;
  OMIDTarnelLoadTask::taskToLoadStringFromURL(server.url("/binary"), 1, binary.handler())->start();
  OMIDTarnelLoadTask::taskToLoadStringFromURL(server.url("/missing"), 1, missing.handler())
      ->start();
  OMIDTarnelLoadTask::taskToLoadStringFromURL(server.url("/flaky"), 3, flaky.handler())->start();
  ASSERT_TRUE(TNLMainQueue::runUntil(
      [&] { return binary.calls > 0 && missing.calls > 0 && flaky.calls > 0; }));
  EXPECT_TRUE(binary.onMain && missing.onMain && flaky.onMain);
  // Bytes that are not UTF-8 give no text, and no error; a 404 is an answer like any other.
  EXPECT_EQ(binary.error, nullptr);
  EXPECT_EQ(binary.result, std::nullopt);
  EXPECT_EQ(missing.result, std::optional<std::string>("not here"));
  EXPECT_NE(flaky.error, nullptr);
  EXPECT_EQ(server.requestsTo("/flaky").size(), 3u);

  OMIDTarnelLoadTask::taskToSendPingToURL(server.url("/flaky"), TNLMainQueue::async, ping.handler())
      ->start();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return ping.calls > 0; }));
  EXPECT_NE(ping.error, nullptr);
  EXPECT_EQ(server.requestsTo("/flaky").size(), 4u);
  EXPECT_EQ(binary.calls + missing.calls + flaky.calls, 3);
}

}  // namespace
