#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "Platform/Foundation/TNLError.h"

class TNLBannerAd;

// Turns a zone into a banner ready to render: asks the ad client for a banner ad, downloads its
// HTML creative (the creative tag is the page's URL), attaches the HTML and the zone, and keeps
// the finished ad per zone for the life of the process. A zone once loaded answers from the cache
// from then on, with the same ad object and without any request.
//
// Threads: a cache hit answers at once on the caller's thread; otherwise the callbacks run on the
// thread that completes the request (the HTTP thread). The cache is guarded by a mutex that is
// never held while calling out.
class TNLBannerAdHandler {
 public:
  using Success = std::function<void(const std::shared_ptr<TNLBannerAd>& ad)>;
  using Failure = std::function<void(const TNLErrorPtr& error)>;

  static std::shared_ptr<TNLBannerAdHandler> sharedHandler();

  // Exactly one callback, once; neither when the start of the load fails (that is logged). The
  // failure receives whatever the ad client or the download reported.
  void loadBannerAdForZone(const std::string& zone, Success success, Failure failure);

  // A copy of the cache.
  std::map<std::string, std::shared_ptr<TNLBannerAd>> loadedAds() const;
  void setLoadedAds(std::map<std::string, std::shared_ptr<TNLBannerAd>> loadedAds);

 private:
  TNLBannerAdHandler() = default;

  std::shared_ptr<TNLBannerAd> cachedAdForZone(const std::string& zone) const;
  void storeAdForZone(const std::string& zone, const std::shared_ptr<TNLBannerAd>& ad);

  mutable std::mutex mutex_;
  std::map<std::string, std::shared_ptr<TNLBannerAd>> loadedAds_;
};
