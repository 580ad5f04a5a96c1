#pragma once

/// @file
/// @brief TNLSetup: process-wide set-up.

#include <memory>
#include <string>

#include "TarnelAd/TNLDeviceFacts.h"
#include "TarnelAd/TNLExport.h"

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
};
