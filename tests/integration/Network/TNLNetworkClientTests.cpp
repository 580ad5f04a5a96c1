#include <gtest/gtest.h>

#include <thread>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Http/TNLHttpSession.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "support/TNLTestServer.h"
#include "support/TNLTestSignal.h"

using namespace std::chrono_literals;
using Response = TNLTestServer::Response;

namespace {

// Records what one request's callbacks delivered, and where.
struct Outcome {
  TNLTestSignal signal;
  int successes = 0;
  bool onSessionThread = true;
  TNLJson json;
  std::optional<std::string> text;
  std::string bytes;
  TNLErrorPtr error;

  template <class Value>
  auto into(Value Outcome::*field) {
    return [this, field](const Value& value) {
      note([&] {
        this->*field = value;
        ++successes;
      });
    };
  }
  auto failure() {
    return [this](const TNLErrorPtr& e) { note([&] { error = e; }); };
  }
  // Lets a duplicate callback arrive, then checks there was one, on the session thread.
  void settle() {
    ASSERT_TRUE(signal.waitFor());
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(signal.count(), 1u) << "exactly one callback";
    EXPECT_TRUE(onSessionThread);
  }

 private:
  template <class Store>
  void note(Store store) {
    signal.record([&] {
      store();
      onSessionThread = onSessionThread && TNLHttpSession::sharedSession()->isSessionThread() &&
                        !TNLMainQueue::isMainThread();
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

// JSON must be an object; no shape looks at the status.
TEST(TNLNetworkClient, ShapesDecodeTheBodyWhateverTheStatus) {
  TNLTestServer server;
  server.on("GET", "/object", Response::json(R"({"ttl": 5})"));
  server.on("GET", "/array", Response::json("[]"));
  server.on("GET", "/text", Response::xml("<VAST/>"));
  server.on("GET", "/404", Response(404, "<p>not found</p>", "text/html"));
  server.on("GET", "/empty", Response(204));
  server.on("GET", "/latin1", Response(200, "caf\xe9", "text/html"));

  Outcome object, array, text, notFoundHtml, notFoundRaw, empty, latin1;
  json(server.url("/object"), object);
  json(server.url("/array"), array);
  json(server.url("/text"), text);
  html(server.url("/404"), notFoundHtml);
  raw(server.url("/404"), notFoundRaw);
  html(server.url("/empty"), empty);
  html(server.url("/latin1"), latin1);
  for (Outcome* o : {&object, &array, &text, &notFoundHtml, &notFoundRaw, &empty, &latin1}) {
    o->settle();
  }
  EXPECT_EQ(object.json["ttl"], 5);
  EXPECT_EQ(array.successes, 0);
  EXPECT_EQ(array.error, nullptr);  // decoded, but not an object
  ASSERT_NE(text.error, nullptr);
  EXPECT_EQ(text.error->domain(), TNLCocoaErrorDomain);
  EXPECT_EQ(notFoundHtml.text, "<p>not found</p>");
  EXPECT_EQ(notFoundRaw.bytes, "<p>not found</p>");
  EXPECT_EQ(empty.successes, 1);
  EXPECT_FALSE(empty.text.has_value());
  EXPECT_EQ(latin1.successes, 1);
  EXPECT_FALSE(latin1.text.has_value());  // not UTF-8
}

TEST(TNLNetworkClient, RequestsCarryOnlyMethodAndBody) {
  TNLTestServer server;
  server.on("POST", "/m", Response::json("{}"));
  Outcome withBody, withoutBody;
  json(server.url("/m"), withBody, std::string(R"({"k": "v"})"), POST_METHOD);
  ASSERT_TRUE(withBody.signal.waitFor());
  json(server.url("/m"), withoutBody, std::nullopt, POST_METHOD);
  ASSERT_TRUE(withoutBody.signal.waitFor());

  const auto requests = server.requestsTo("/m");
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].body, R"({"k": "v"})");
  EXPECT_FALSE(requests[0].hasHeader("Content-Type"));
  EXPECT_FALSE(requests[0].hasHeader("User-Agent"));
  EXPECT_EQ(requests[1].method, "POST");
  EXPECT_EQ(requests[1].header("Content-Length"), "0");  // a POST without a body says so
}

TEST(TNLNetworkClient, TransportFailuresAreURLErrors) {
  TNLTestServer server;
  server.on("GET", "/drop", Response::dropped("partial"));
  const std::pair<std::string, long> cases[] = {
      {"http://127.0.0.1:" + std::to_string(TNLTestServer::closedPort()) + "/",
       TNLURLError::CannotConnectToHost},
      {server.url("/drop"), TNLURLError::NetworkConnectionLost},
      {"http://exa mple.com/", TNLURLError::BadURL},
      {"ftp://127.0.0.1/file", TNLURLError::UnsupportedURL},
  };
  for (const auto& [url, code] : cases) {
    SCOPED_TRACE(url);
    Outcome o;
    raw(url, o);
    o.settle();
    ASSERT_NE(o.error, nullptr);
    EXPECT_EQ(o.error->domain(), TNLURLErrorDomain);
    EXPECT_EQ(o.error->code(), code);
  }
}

}  // namespace
