#pragma once

#include <string>

// Process-wide set-up that a host may do before its first ad request.
class TNLSetup {
 public:
  // Replaces the base URL of the manifest endpoint (scheme, host, optional port and path prefix,
  // without a trailing slash), for example "http://127.0.0.1:8080". The library's requests go to
  // <base>/v4/manifest/<application id>. Without this call the build's default is used.
  static void setManifestBaseURL(const std::string& baseURL);
  static std::string manifestBaseURL();
};
