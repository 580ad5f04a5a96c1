#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Manifest/ManifestObjects/TNLManifest.h"
#include "Platform/Foundation/TNLError.h"

// Fetches the manifest: a POST of the application ID (in the path) and the device facts (in the
// body) to the manifest endpoint. Stateless: one per fetch.
class TNLManifestClient {
 public:
  using Success = std::function<void(const std::shared_ptr<TNLManifest>& manifest)>;
  using Failure = std::function<void(const TNLErrorPtr& error)>;

  // Success receives the parsed manifest, or null when the answer could not be parsed; either way
  // the developer's application name becomes "%PROPERTY%" first. Failure receives the network
  // client's error (possibly null). Callbacks run on the HTTP thread.
  void getManifestWithSuccess(Success success, Failure failure) const;

  // The pretty-printed JSON body: "version", "sdk" and the 17 "device_info" strings. Null when it
  // cannot be built; the POST then goes without a body.
  std::optional<std::string> createManifestBody() const;
};
