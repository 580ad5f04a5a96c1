#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "Manifest/ManifestObjects/TNLManifest.h"
#include "Platform/Foundation/TNLError.h"

// Holds the current manifest in memory with its expiry, and fetches a new one when there is none
// or it has expired. Nothing is stored on disk. Concurrent retrievals are not merged: each caller
// that finds no valid manifest starts its own fetch, and the last completion to arrive wins.
class TNLManifestHandler {
 public:
  using Clock = std::chrono::system_clock;
  // Receives the manifest; null when the fetched manifest could not be parsed.
  using Success = std::function<void(const std::shared_ptr<TNLManifest>& manifest)>;
  using Failure = std::function<void(const TNLErrorPtr& error)>;

  static std::shared_ptr<TNLManifestHandler> sharedHandler();

  // The one way to obtain the manifest. A valid held manifest is handed to `success` at once, on
  // the caller's thread; otherwise a fetch starts and its callbacks run on the HTTP thread. A
  // fetched manifest is stored, its expiry set to now + ttl, and "OnManifestLoaded" sent, before
  // `success` runs. A failed fetch leaves the held manifest as it was.
  static void retrieveManifestWithSuccess(Success success, Failure failure);
  // True while the expiry lies in the future. (The name's spelling is kept.)
  static bool manfiestIsValid();

  // The expiry starts at the moment of construction, so a fresh handler holds nothing valid.
  TNLManifestHandler();

  std::shared_ptr<TNLManifest> manifest() const;
  void setManifest(std::shared_ptr<TNLManifest> manifest);
  std::optional<Clock::time_point> expiryDate() const;
  void setExpiryDate(std::optional<Clock::time_point> expiryDate);

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<TNLManifest> manifest_;
  std::optional<Clock::time_point> expiryDate_;
};
