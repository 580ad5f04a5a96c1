#pragma once

/// @file
/// @brief TNLSetup: process-wide set-up.

#include <chrono>
#include <memory>
#include <string>

#include "TarnelAd/TNLDeviceFacts.h"
#include "TarnelAd/TNLExport.h"
#include "TarnelAd/TNLNetworkLimits.h"

/// Process-wide set-up that a host may do before its first ad request. Any thread.
class TNL_EXPORT TNLSetup {
 public:
  /// Replaces the base URL of the manifest endpoint (scheme, host, optional port and path prefix,
  /// without a trailing slash), for example "http://127.0.0.1:8080". The library's requests go to
  /// `base`/v4/manifest/`application id`. Without this call the build's default is used.
  static void setManifestBaseURL(const std::string& baseURL);
  /// The base URL in use.
  static std::string manifestBaseURL();

  /// Replaces the source of device, application and identity facts; null restores the Linux
  /// default. The library takes its snapshot of the device when it first needs one (normally on
  /// the first ad request or delegate registration), so call this before. The library keeps the
  /// object (strongly) and calls it from any thread. A typical host:
  /// @code
  /// TNLHostApplicationInfo info;
  /// info.bundleIdentifier = "com.example.game";
  /// info.displayName = "Game";
  /// info.shortVersion = "2.1";
  /// TNLSetup::setDeviceFacts(TNLDeviceFacts::linuxFacts(info));
  /// @endcode
  static void setDeviceFacts(std::shared_ptr<TNLDeviceFacts> facts);
  /// The facts in use: the host's, or the Linux default.
  static std::shared_ptr<TNLDeviceFacts> deviceFacts();

  /// The full-screen delegates' ready and failed callbacks come, by default, on the thread that
  /// completed the work: the library's HTTP thread, or the loading thread for a zone already
  /// loaded. With `onMainThread` true they are queued to the main thread (the one that runs GLib's
  /// default main context, where a GTK host runs its loop) in the order they were made, and one
  /// made on the main thread still runs at once; the host then needs no thread hopping of its
  /// own. Closed, rewarded and every banner callback come on the main thread either way.
  static void setCallbacksOnMainThread(bool onMainThread);
  /// Whether full-screen callbacks go to the main thread; false unless the host asked.
  static bool callbacksOnMainThread();

  /// Renders views in memory without a display (the default): web views run no engine. Hosts
  /// that want real windows install the GTK backend instead (TarnelAd/Gtk). Call at start-up,
  /// before any view is made.
  static void useHeadlessBackend();

  /// Replaces the bounds on the library's HTTP requests (see TNLNetworkLimits for the defaults).
  /// Call before the first request: requests already started keep the limits they started with.
  /// Returns false, and changes nothing, when a value is zero or negative. Any thread.
  static bool setNetworkLimits(const TNLNetworkLimits& limits);
  /// The limits in force for requests started from now on.
  static TNLNetworkLimits networkLimits();

  /// Ends the library's network activity before the host exits, waiting at most the limits'
  /// shutdownWait (two seconds unless the host changed it). Requests for content (manifest, ads,
  /// creatives) are abandoned and their callbacks never run; trackers already sent, and those
  /// that callbacks running at that moment still send, get the wait to reach the monitoring
  /// server; what is still running then is abandoned with its connection. Afterwards the library
  /// sends nothing. A host that returns from main without calling it gets the same from an exit
  /// handler. Call it from the host's own thread (the main thread), not from a callback on the
  /// library's HTTP thread: that thread cannot wait for itself, and its trackers are then
  /// dropped.
  static void shutdown();
  /// shutdown() with a wait of the host's choosing.
  static void shutdown(std::chrono::milliseconds maxWait);
};
