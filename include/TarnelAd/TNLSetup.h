#pragma once

#include <memory>
#include <string>

#include "TarnelAd/TNLDeviceFacts.h"
#include "TarnelAd/TNLExport.h"

// Process-wide set-up that a host may do before its first ad request.
class TNL_EXPORT TNLSetup {
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

  // The full-screen delegates' ready and failed callbacks come, by default, on the thread that
  // completed the work: the library's HTTP thread, or the loading thread for a zone already
  // loaded. With `onMainThread` true they are queued to the main thread (the one that runs GLib's
  // default main context, where a GTK host runs its loop) in the order they were made, and one
  // made on the main thread still runs at once; the host then needs no thread hopping of its
  // own. Closed, rewarded and every banner callback come on the main thread either way.
  static void setCallbacksOnMainThread(bool onMainThread);
  static bool callbacksOnMainThread();

  // Renders views in memory without a display (the default): web views run no engine. Hosts
  // that want real windows install the GTK backend instead (TarnelAd/Gtk). Call at start-up,
  // before any view is made.
  static void useHeadlessBackend();
};
