#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// An HTTP server on 127.0.0.1 that misbehaves on purpose, written on raw sockets so that every
// byte it sends (or does not send) is the test's choice. Each connection gets one answer, then
// closes.
class TNLHostileServer {
 public:
  enum class Behaviour {
    body,          // a normal answer with `body`
    endlessBody,   // a 200 whose body never ends
    gzipBomb,      // a gzip body that inflates to a gigabyte
    cutOff,        // announces twice the body's length, sends the body, closes
    drip,          // announces a long body and sends five bytes a second
    silent,        // accepts the request and never answers
    redirectLoop,  // redirects to its own path, for ever
  };
  struct Route {
    Route(Behaviour behaviour = Behaviour::body, std::string body = "",
          std::string contentType = "application/json")
        : behaviour(behaviour), body(std::move(body)), contentType(std::move(contentType)) {}
    Behaviour behaviour;
    std::string body;
    std::string contentType;
  };

  TNLHostileServer();
  ~TNLHostileServer();
  TNLHostileServer(const TNLHostileServer&) = delete;
  TNLHostileServer& operator=(const TNLHostileServer&) = delete;

  // Paths match without their query; unknown paths answer 404.
  void on(const std::string& path, Route route);
  std::string url(const std::string& path) const;
  // Requests that reached `path` so far.
  size_t requestsTo(const std::string& path) const;

 private:
  void acceptLoop();
  void serve(int fd);

  int listener_ = -1;
  int port_ = 0;
  std::atomic<bool> stopping_{false};
  std::thread acceptor_;
  mutable std::mutex mutex_;
  std::condition_variable stopped_;
  std::map<std::string, Route> routes_;
  std::map<std::string, size_t> hits_;
  std::vector<std::thread> connections_;
  std::vector<int> sockets_;
};
