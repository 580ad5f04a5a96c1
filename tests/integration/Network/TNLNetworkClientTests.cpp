#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Http/TNLHttpSession.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "support/TNLTestServer.h"

using namespace std::chrono_literals;

namespace {

// Records what one request's callbacks delivered, and where.
struct Outcome {
  std::mutex mutex;
  std::condition_variable changed;
  int successes = 0;
  int failures = 0;
  bool onSessionThread = true;
  bool onMainThread = false;
  TNLJson json;
  std::optional<std::string> text;
  std::string bytes;
  TNLErrorPtr error;

  void record(bool success) {
    std::lock_guard lock(mutex);
    (success ? successes : failures)++;
    onSessionThread = onSessionThread && TNLHttpSession::sharedSession()->isSessionThread();
    onMainThread = onMainThread || TNLMainQueue::isMainThread();
    changed.notify_all();
  }
  bool wait(std::chrono::milliseconds timeout = 10s) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, timeout, [&] { return successes + failures > 0; });
  }
  // Lets a duplicate callback arrive before it is counted.
  void settle() {
    std::this_thread::sleep_for(50ms);
    std::lock_guard lock(mutex);
    EXPECT_EQ(successes + failures, 1) << "exactly one callback";
    EXPECT_TRUE(onSessionThread);
    EXPECT_FALSE(onMainThread);
  }
};

void json(const std::string& url, Outcome& o, std::optional<std::string> body = std::nullopt,
          const std::string& method = GET_METHOD) {
  TNLNetworkClient::makeJSONRequestWithURL(
      url, method, body,
      [&](const TNLJson& value) {
        o.json = value;
        o.record(true);
      },
      [&](const TNLErrorPtr& error) {
        o.error = error;
        o.record(false);
      });
}

void html(const std::string& url, Outcome& o) {
  TNLNetworkClient::makeHTMLRequestWithURL(
      url, GET_METHOD,
      [&](const std::optional<std::string>& text) {
        o.text = text;
        o.record(true);
      },
      [&](const TNLErrorPtr& error) {
        o.error = error;
        o.record(false);
      });
}

void raw(const std::string& url, Outcome& o) {
  TNLNetworkClient::makeURLRequestWithURL(
      url, GET_METHOD,
      [&](const std::string& bytes) {
        o.bytes = bytes;
        o.record(true);
      },
      [&](const TNLErrorPtr& error) {
        o.error = error;
        o.record(false);
      });
}

TEST(TNLNetworkClient, JSONShapeAcceptsOnlyObjects) {
  TNLTestServer server;
  server.on("GET", "/object", TNLTestServer::Response::json(R"({"ttl": 5})"));
  server.on("GET", "/array", TNLTestServer::Response::json("[]"));
  server.on("GET", "/text", TNLTestServer::Response::xml("<VAST/>"));
  server.on("GET", "/missing", TNLTestServer::Response::json(R"({"error": "nope"})", 404));

  Outcome object, array, text, missing;
  json(server.url("/object"), object);
  json(server.url("/array"), array);
  json(server.url("/text"), text);
  json(server.url("/missing"), missing);
  for (Outcome* o : {&object, &array, &text, &missing}) {
    ASSERT_TRUE(o->wait());
    o->settle();
  }
  EXPECT_EQ(object.json["ttl"], 5);
  EXPECT_EQ(array.failures, 1);
  EXPECT_EQ(array.error, nullptr);  // decoded, but not an object
  ASSERT_NE(text.error, nullptr);
  EXPECT_EQ(text.error->domain(), TNLCocoaErrorDomain);
  EXPECT_EQ(missing.successes, 1);  // the status is never examined
  EXPECT_EQ(missing.json["error"], "nope");
}

TEST(TNLNetworkClient, HTMLAndRawShapesIgnoreTheStatus) {
  TNLTestServer server;
  server.on("GET", "/404", TNLTestServer::Response(404, "<p>not found</p>", "text/html"));
  server.on("GET", "/empty", TNLTestServer::Response(204));
  server.on("GET", "/latin1", TNLTestServer::Response(200, "caf\xe9", "text/html"));

  Outcome notFoundHtml, notFoundRaw, empty, latin1;
  html(server.url("/404"), notFoundHtml);
  raw(server.url("/404"), notFoundRaw);
  html(server.url("/empty"), empty);
  html(server.url("/latin1"), latin1);
  for (Outcome* o : {&notFoundHtml, &notFoundRaw, &empty, &latin1}) {
    ASSERT_TRUE(o->wait());
    o->settle();
  }
  EXPECT_EQ(notFoundHtml.text, "<p>not found</p>");
  EXPECT_EQ(notFoundRaw.bytes, "<p>not found</p>");
  EXPECT_EQ(empty.successes, 1);
  EXPECT_FALSE(empty.text.has_value());
  EXPECT_EQ(latin1.successes, 1);
  EXPECT_FALSE(latin1.text.has_value());  // not UTF-8
}

TEST(TNLNetworkClient, RequestsCarryOnlyMethodAndBody) {
  TNLTestServer server;
  server.on("POST", "/m", TNLTestServer::Response::json("{}"));
  Outcome withBody, withoutBody;
  json(server.url("/m"), withBody, std::string(R"({"k": "v"})"), POST_METHOD);
  ASSERT_TRUE(withBody.wait());
  json(server.url("/m"), withoutBody, std::nullopt, POST_METHOD);
  ASSERT_TRUE(withoutBody.wait());

  const auto requests = server.requestsTo("/m");
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].body, R"({"k": "v"})");
  EXPECT_FALSE(requests[0].hasHeader("Content-Type"));
  EXPECT_FALSE(requests[0].hasHeader("User-Agent"));
  EXPECT_EQ(requests[1].method, "POST");
  EXPECT_EQ(requests[1].body, "");
  EXPECT_TRUE(requests[1].header("Content-Length").empty() ||
              requests[1].header("Content-Length") == "0");
}

TEST(TNLNetworkClient, TransportFailuresAreURLErrors) {
  TNLTestServer server;
  server.on("GET", "/drop", TNLTestServer::Response::dropped("partial"));

  Outcome refused, dropped, badURL, badScheme;
  html("http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()) + "/", refused);
  raw(server.url("/drop"), dropped);
  raw("http://exa mple.com/", badURL);
  raw("ftp://127.0.0.1/file", badScheme);
  for (Outcome* o : {&refused, &dropped, &badURL, &badScheme}) {
    ASSERT_TRUE(o->wait());
    o->settle();
    ASSERT_NE(o->error, nullptr);
    EXPECT_EQ(o->error->domain(), TNLURLErrorDomain);
  }
  EXPECT_EQ(refused.error->code(), TNLURLError::CannotConnectToHost);
  EXPECT_EQ(dropped.error->code(), TNLURLError::NetworkConnectionLost);
  EXPECT_EQ(badURL.error->code(), TNLURLError::BadURL);
  EXPECT_EQ(badScheme.error->code(), TNLURLError::UnsupportedURL);
}

TEST(TNLNetworkClient, AServerThatNeverAnswersTimesOut) {
  TNLHttpSession::setTimeoutOverrideForTesting(1s);
  TNLTestServer server;
  server.on("GET", "/silent", TNLTestServer::Response::silent());
  Outcome silent;
  html(server.url("/silent"), silent);
  ASSERT_TRUE(silent.wait(15s));
  silent.settle();
  ASSERT_NE(silent.error, nullptr);
  EXPECT_EQ(silent.error->code(), TNLURLError::TimedOut);
}

TEST(TNLHttpSession, ExitsCleanlyWithTransfersInFlight) {
  // A child process starts a transfer to a server that never answers and exits at once; it must
  // end normally instead of crashing in a torn-down library. The child is a fresh run of this
  // binary: forking a process whose server threads hold locks could hang it.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  TNLTestServer server;
  server.on("GET", "/silent", TNLTestServer::Response::silent());
  const std::string url = server.url("/silent");
  EXPECT_EXIT(
      {
        TNLNetworkClient::makeURLRequestWithURL(
            url, GET_METHOD, [](const std::string&) {}, [](const TNLErrorPtr&) {});
        std::this_thread::sleep_for(100ms);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
}

}  // namespace
