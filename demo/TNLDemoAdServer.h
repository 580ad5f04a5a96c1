#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace httplib {
class Server;
struct Request;
}  // namespace httplib

// The demo's bundled ad service on 127.0.0.1: the manifest, three demand sources that exercise the
// waterfall (one that fails, one with HTML ads, one with a VAST wrapper chain down to an inline ad
// whose MP4 clip it serves too, played on its template page), the creatives, and a monitoring
// endpoint; each tracker event and each VAST pixel (event "VAST") is reported.
class TNLDemoAdServer {
 public:
  using EventSink = std::function<void(const std::string& event, const std::string& query)>;

  // Starts at once on an ephemeral port; `onEvent` hears every tracker event and VAST pixel that
  // arrives, with the request's query.
  TNLDemoAdServer(std::string appId, EventSink onEvent);
  ~TNLDemoAdServer();
  TNLDemoAdServer(const TNLDemoAdServer&) = delete;
  TNLDemoAdServer& operator=(const TNLDemoAdServer&) = delete;

  // "http://127.0.0.1:<port>", the base URL of the manifest endpoint.
  std::string baseURL() const;

 private:
  void addRoutes();
  void report(const std::string& event, const httplib::Request& request) const;

  const std::string appId_;
  const EventSink onEvent_;
  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
  int port_ = 0;
};
