#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/TNLTestDeviceFacts.h"
#include "support/TNLTestServer.h"

// A loopback ad service for integration tests: it answers the manifest POST for one application,
// serves demand sources and creatives that the test scripts, and records the tracker events that
// reach its monitoring endpoint. install() points the library at it.
class TNLTestAdService {
 public:
  struct Source {
    uint64_t rank;
    std::string path;  // answered by the test's own routes on `server`, or a whole URL
  };

  explicit TNLTestAdService(std::string appId = "APP1");

  // The manifest path ("/v4/manifest/<app id>") and the monitoring path.
  std::string manifestPath() const { return "/v4/manifest/" + appId_; }
  static constexpr char kMonitorPath[] = "/monitor";
  static constexpr char kTemplatePath[] = "/vast-template.html";
  // Trackers travel on connections of their own, so two sent close together may arrive in either
  // order. Ads and pages answer after this delay, so that the event sent before a request has
  // arrived when the next one is sent.
  static constexpr std::chrono::milliseconds kContentDelay{100};

  // Sets the base URL, injectable device facts and the application ID.
  void install();

  // Fetches the manifest as an earlier load in the session would have, so that the trackers are
  // set up when the first load starts, and waits for its OnManifestLoaded event. The main loop
  // runs meanwhile.
  bool preloadManifest();

  // Publishes a manifest whose sources ask `path?z=%ZONE%&p=%PRODUCT%` on this server, whose
  // monitoring URL is `/monitor?e=%EVENT_NAME%` (GET), and whose VAST template is
  // kTemplatePath unless another is given.
  void publishManifest(const std::vector<Source>& sources, int ttl = 3600,
                       std::optional<std::string> vastTemplateURI = std::nullopt);

  // The tracker events received, in arrival order.
  std::vector<std::string> events() const;
  // Waits until `count` events have arrived.
  bool waitForEvents(size_t count,
                     std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

  // The query strings of the requests a source path received.
  std::vector<std::string> queriesTo(const std::string& path) const;

  TNLTestServer server;
  std::shared_ptr<TNLTestDeviceFacts> facts = std::make_shared<TNLTestDeviceFacts>();

 private:
  std::string appId_;
};
