#pragma once

/// @file
/// @brief TNLBannerAdDelegate: what a host hears about its banners.

#include <memory>
#include <string>

#include "TarnelAd/TNLExport.h"

class TNLBannerAdView;

/// What a host hears about a banner view. Every operation is optional (the default does
/// nothing); the arguments are the banner view and the zone, valid for the duration of the call.
///
/// Threads. All three arrive on the main thread, queued on the main loop: never inside the call
/// that caused them (TNLBannerAdView::loadAdForZone may even answer on another thread's behalf).
/// The delegate is read when the queued call runs: one released by then hears nothing.
///
/// Order. Each load ends in one ready or one failed; closed comes after ready, once the creative
/// has closed itself.
///
/// Ownership. The banner view holds its delegate weakly: the host keeps it alive (usually the
/// host's screen, which also owns the banner).
class TNL_EXPORT TNLBannerAdDelegate {
 public:
  virtual ~TNLBannerAdDelegate() = default;

  /// The banner for the zone has been handed to the view, which shows it.
  virtual void onBannerAdReadyForZone(const std::shared_ptr<TNLBannerAdView>& bannerAd,
                                      const std::string& zone) {
    (void)bannerAd, (void)zone;
  }
  /// No banner could be loaded for the zone.
  virtual void onBannerAdFailedForZone(const std::shared_ptr<TNLBannerAdView>& bannerAd,
                                       const std::string& zone) {
    (void)bannerAd, (void)zone;
  }
  /// The creative closed itself; the view has already left its superview and released its web
  /// view. The host may drop its own reference.
  virtual void onBannerAdClosedForZone(const std::shared_ptr<TNLBannerAdView>& bannerAd,
                                       const std::string& zone) {
    (void)bannerAd, (void)zone;
  }
};
