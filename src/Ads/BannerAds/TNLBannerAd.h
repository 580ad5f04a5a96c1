#pragma once

#include "Ads/TNLAd.h"

// The ad that banner requests produce; the banner handler caches it per zone.
class TNLBannerAd : public TNLAd {
 public:
  TNLBannerAd() = default;
  // The source ad's JSON fields and complete record; the VAST fields are not copied.
  explicit TNLBannerAd(const TNLAd& ad);
  static std::shared_ptr<TNLBannerAd> initFromAd(const TNLAd& ad) {
    return std::make_shared<TNLBannerAd>(ad);
  }
};
