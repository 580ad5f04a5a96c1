#include <gtest/gtest.h>

#include <thread>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Http/TNLHttpSession.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "support/TNLTestServer.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;

namespace {

// Records what one request's callbacks delivered, and where.
struct Outcome {
  TNLTestSignal signal;
  int successes = 0;
  int failures = 0;
  bool onSessionThread = true;
  bool onMainThread = false;
  TNLJson json;
  std::optional<std::string> text;
  std::string bytes;
  TNLErrorPtr error;

  // A success callback that stores its value in `field`.
  template <class Value>
  auto into(Value Outcome::*field) {
    return [this, field](const Value& value) { note(true, [&] { this->*field = value; }); };
  }
  auto failure() {
    return [this](const TNLErrorPtr& e) { note(false, [&] { error = e; }); };
  }
  // Lets a duplicate callback arrive, then checks there was one, on the session thread.
  void settle() {
    ASSERT_TRUE(signal.waitFor());
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(signal.count(), 1u) << "exactly one callback";
    EXPECT_TRUE(onSessionThread);
    EXPECT_FALSE(onMainThread);
  }

 private:
  template <class Store>
  void note(bool success, Store store) {
    signal.record([&] {
      store();
      (success ? successes : failures)++;
      onSessionThread = onSessionThread && TNLHttpSession::sharedSession()->isSessionThread();
      onMainThread = onMainThread || TNLMainQueue::isMainThread();
    });
  }
};

void json(const std::string& url, Outcome& o, std::optional<std::string> body = std::nullopt,
          const std::string& method = GET_METHOD) {
  TNLNetworkClient::makeJSONRequestWithURL(url, method, body, o.into(&Outcome::json), o.failure());
}
void html(const std::string& url, Outcome& o) {
  TNLNetworkClient::makeHTMLRequestWithURL(url, GET_METHOD, o.into(&Outcome::text), o.failure());
}
void raw(const std::string& url, Outcome& o) {
  TNLNetworkClient::makeURLRequestWithURL(url, GET_METHOD, o.into(&Outcome::bytes), o.failure());
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
  ASSERT_TRUE(withBody.signal.waitFor());
  json(server.url("/m"), withoutBody, std::nullopt, POST_METHOD);
  ASSERT_TRUE(withoutBody.signal.waitFor());

  const auto requests = server.requestsTo("/m");
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].body, R"({"k": "v"})");
  EXPECT_FALSE(requests[0].hasHeader("Content-Type"));
  EXPECT_FALSE(requests[0].hasHeader("User-Agent"));
  EXPECT_EQ(requests[1].method, "POST");
  EXPECT_EQ(requests[1].body, "");
  EXPECT_EQ(requests[1].header("Content-Length"), "0");  // a POST without a body says so
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
    o->settle();
    ASSERT_NE(o->error, nullptr);
    EXPECT_EQ(o->error->domain(), TNLURLErrorDomain);
  }
  EXPECT_EQ(refused.error->code(), TNLURLError::CannotConnectToHost);
  EXPECT_EQ(dropped.error->code(), TNLURLError::NetworkConnectionLost);
  EXPECT_EQ(badURL.error->code(), TNLURLError::BadURL);
  EXPECT_EQ(badScheme.error->code(), TNLURLError::UnsupportedURL);
}

}  // namespace
