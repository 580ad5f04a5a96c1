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

TEST(OMIDTarnelLoadTask, StringLoadsCompleteOnTheMainQueue) {
  TNLTestServer server;
  server.on("GET", "/script.js", TNLTestServer::Response(200, "var a = '\xC3\xA9';"));
  server.on("GET", "/binary", TNLTestServer::Response(200, std::string("\xFF\xFE", 2)));
  server.on("GET", "/missing", TNLTestServer::Response(404, "not here"));

  Completion text;
  OMIDTarnelLoadTask::taskToLoadStringFromURL(server.url("/script.js"), 1, text.handler())->start();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return text.calls > 0; }));
  EXPECT_TRUE(text.onMain);
  EXPECT_EQ(text.error, nullptr);
  EXPECT_EQ(text.result, std::optional<std::string>("var a = '\xC3\xA9';"));

  // Bytes that are not UTF-8 give no text, and no error; a 404 is an answer like any other.
  Completion binary;
  OMIDTarnelLoadTask::taskToLoadStringFromURL(server.url("/binary"), 1, binary.handler())->start();
  Completion missing;
  OMIDTarnelLoadTask::taskToLoadStringFromURL(server.url("/missing"), 1, missing.handler())
      ->start();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return binary.calls > 0 && missing.calls > 0; }));
  EXPECT_EQ(binary.error, nullptr);
  EXPECT_EQ(binary.result, std::nullopt);
  EXPECT_EQ(missing.error, nullptr);
  EXPECT_EQ(missing.result, std::optional<std::string>("not here"));
  TNLMainQueue::runFor(30ms);
  EXPECT_EQ(text.calls + binary.calls + missing.calls, 3);
}

TEST(OMIDTarnelLoadTask, TransportErrorsAreRetriedUpToTheAttemptsCount) {
  TNLTestServer server;
  server.on("GET", "/flaky", TNLTestServer::Response::dropped("partial"));

  Completion flaky;
  const auto task =
      OMIDTarnelLoadTask::taskToLoadStringFromURL(server.url("/flaky"), 3, flaky.handler());
  EXPECT_EQ(task->attemptNumber(), 0u);
  task->start();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return flaky.calls > 0; }));
  EXPECT_EQ(server.requestsTo("/flaky").size(), 3u);
  EXPECT_EQ(task->attemptNumber(), 3u);
  EXPECT_EQ(task->attemptsCount(), 3u);
  ASSERT_NE(flaky.error, nullptr);
  EXPECT_EQ(flaky.result, std::nullopt);

  // A ping is one attempt, whatever happens; its result is the raw body.
  Completion ping;
  std::atomic<bool> queued{false};
  const auto pingTask = OMIDTarnelLoadTask::taskToSendPingToURL(
      "http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()) + "/p",
      [&](std::function<void()> work) {
        queued = true;
        TNLMainQueue::async(std::move(work));
      },
      ping.handler());
  pingTask->start();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return ping.calls > 0; }));
  EXPECT_TRUE(queued);
  EXPECT_EQ(pingTask->attemptNumber(), 1u);
  ASSERT_NE(ping.error, nullptr);
  EXPECT_EQ(ping.error->code(), TNLURLError::CannotConnectToHost);

  server.on("GET", "/bytes", TNLTestServer::Response(200, std::string("\x00\xFF", 2)));
  Completion bytes;
  OMIDTarnelLoadTask::taskToSendPingToURL(server.url("/bytes"), TNLMainQueue::async,
                                          bytes.handler())
      ->start();
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return bytes.calls > 0; }));
  EXPECT_EQ(bytes.result, std::optional<std::string>(std::string("\x00\xFF", 2)));
}

}  // namespace
