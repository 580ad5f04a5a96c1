#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "TarnelAd/TNLDeviceFacts.h"
#include "TarnelAd/TNLNetworkLimits.h"

// Process-wide set-up that a host may do before its first ad request.
class TNLSetup {
 public:
  // Replaces the base URL of the manifest endpoint (scheme, host, optional port and path prefix,
  // without a trailing slash), for example "http://127.0.0.1:8080". The library's requests go to
  // <base>/v4/manifest/<application id>. Without this call the build's default is used.
  static void setManifestBaseURL(const std::string& baseURL);
  static std::string manifestBaseURL();

  // Replaces the source of device, application and identity facts; null restores the Linux
  // default. The library takes its snapshot of the device when it first needs one (normally on
  // the first ad request or delegate registration), so call this before. A typical host:
  //   TNLHostApplicationInfo info;
  //   info.bundleIdentifier = "com.example.game";
  //   info.displayName = "Game";
  //   info.shortVersion = "2.1";
  //   TNLSetup::setDeviceFacts(TNLDeviceFacts::linuxFacts(info));
  static void setDeviceFacts(std::shared_ptr<TNLDeviceFacts> facts);
  static std::shared_ptr<TNLDeviceFacts> deviceFacts();

  // Renders views in memory without a display (the default): web views run no engine. Hosts
  // that want real windows install the GTK backend instead (TarnelAd/Gtk). Call at start-up,
  // before any view is made.
  static void useHeadlessBackend();

  // Replaces the bounds on the library's HTTP requests (see TNLNetworkLimits for the defaults).
  // Call before the first request: requests already started keep the limits they started with.
  // Returns false, and changes nothing, when a value is zero or negative.
  static bool setNetworkLimits(const TNLNetworkLimits& limits);
  static TNLNetworkLimits networkLimits();

  // Ends the library's network activity before the host exits: requests for content (manifest,
  // ads, creatives) are abandoned and their callbacks never run; trackers already sent, and
  // those that callbacks running now still send, get up to `maxWait` to reach the monitoring
  // server; what is still running then is abandoned. Afterwards the library sends nothing.
  // A host that returns from main without calling it gets the same, with the limits'
  // shutdownWait. Call it from the host's own thread (the main thread), not from a callback
  // that runs on the library's network thread: that thread cannot wait for itself, and its
  // trackers are then dropped.
  static void shutdown();
  static void shutdown(std::chrono::milliseconds maxWait);
};
