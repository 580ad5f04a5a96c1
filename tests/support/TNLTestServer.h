#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace httplib {
class Server;
}

// A real HTTP server on 127.0.0.1 with an ephemeral port, for integration tests. Routes answer with
// scripted responses; every request is recorded.
class TNLTestServer {
 public:
  struct Request {
    std::string method;
    std::string path;
    std::string query;  // the raw query, without '?', exactly as it arrived
    std::multimap<std::string, std::string> headers;
    std::string body;

    std::string header(const std::string& name) const;
    bool hasHeader(const std::string& name) const;
  };

  struct Response {
    Response(int status = 200, std::string body = "", std::string contentType = "text/plain")
        : status(status), body(std::move(body)), contentType(std::move(contentType)) {}
    static Response json(std::string body, int status = 200) {
      return Response(status, std::move(body), "application/json");
    }
    static Response xml(std::string body, int status = 200) {
      return Response(status, std::move(body), "application/xml");
    }
    static Response dropped(std::string partialBody) {
      Response r(200, std::move(partialBody));
      r.dropConnection = true;
      return r;
    }
    static Response silent() {
      Response r;
      r.neverAnswer = true;
      return r;
    }
    Response& after(std::chrono::milliseconds wait) {
      delay = wait;
      return *this;
    }

    int status = 200;
    std::string body;
    std::string contentType = "text/plain";
    std::chrono::milliseconds delay{0};
    // Sends the status line and a Content-Length larger than the body, then closes the connection.
    bool dropConnection = false;
    // Never answers; the connection stays open until the server stops.
    bool neverAnswer = false;
  };

  using Handler = std::function<Response(const Request&)>;

  TNLTestServer();
  ~TNLTestServer();
  TNLTestServer(const TNLTestServer&) = delete;
  TNLTestServer& operator=(const TNLTestServer&) = delete;

  // "http://127.0.0.1:<port>"
  std::string baseURL() const;
  std::string url(const std::string& path) const { return baseURL() + path; }

  // Answers GET or POST requests for `path` (exact match) with the response, or with a handler's.
  // A later registration for the same method and path replaces the earlier one.
  void on(const std::string& method, const std::string& path, Response response);
  void on(const std::string& method, const std::string& path, Handler handler);
  // Unregistered paths answer 404 with an empty body.

  std::vector<Request> requestsTo(const std::string& path) const;
  size_t requestCount() const;
  // Waits until at least `count` requests were recorded.
  bool waitForRequests(size_t count,
                       std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

  // A port on 127.0.0.1 where nothing listens.
  static int closedPort();

 private:
  Response respond(const Request& request);

  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
  int port_ = 0;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  bool stopping_ = false;
  std::map<std::pair<std::string, std::string>, Handler> routes_;
  std::vector<Request> requests_;
};
