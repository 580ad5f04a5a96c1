#pragma once

#include <memory>
#include <string>

#include "TarnelAd/TNLExport.h"

class TNLBannerAdView;

// What a host hears about a banner view. Every operation is optional; the arguments are the
// banner view and the zone. All three arrive on the main thread, queued (never inside the call
// that caused them).
class TNL_EXPORT TNLBannerAdDelegate {
 public:
  virtual ~TNLBannerAdDelegate() = default;

  // The banner for the zone has been handed to the view, which shows it.
  virtual void onBannerAdReadyForZone(const std::shared_ptr<TNLBannerAdView>& bannerAd,
                                      const std::string& zone) {
    (void)bannerAd, (void)zone;
  }
  // No banner could be loaded for the zone.
  virtual void onBannerAdFailedForZone(const std::shared_ptr<TNLBannerAdView>& bannerAd,
                                       const std::string& zone) {
    (void)bannerAd, (void)zone;
  }
  // The creative closed itself; the view has already left its superview.
  virtual void onBannerAdClosedForZone(const std::shared_ptr<TNLBannerAdView>& bannerAd,
                                       const std::string& zone) {
    (void)bannerAd, (void)zone;
  }
};
