#pragma once

#include <string>

#include "TarnelAd/TNLExport.h"

// What a host hears about its interstitial ads. Every operation is optional; the argument is the
// zone. Ready and failed arrive on the library's HTTP thread (a ready for a zone that is already
// loaded arrives at once, on the thread that asked for the load); closed arrives on the main
// thread. Do not assume the main thread for ready and failed.
//
// The object registered with TNLInterstitialAd::setInterstitialAdDelegate is also the view
// controller that the ads are presented from, so a host derives from both:
//   class GameScreen : public TNLViewController, public TNLInterstitialAdDelegate { ... };
class TNL_EXPORT TNLInterstitialAdDelegate {
 public:
  virtual ~TNLInterstitialAdDelegate() = default;

  // An interstitial for the zone is loaded and can be shown.
  virtual void onInterstitialAdReadyForZone(const std::string& zone) { (void)zone; }
  // A load failed, or a show found nothing loaded for the zone (whatever its type: a rewarded
  // show of an empty zone is reported here).
  virtual void onInterstitialAdFailedForZone(const std::string& zone) { (void)zone; }
  // The shown interstitial was closed.
  virtual void onInterstitialAdClosedForZone(const std::string& zone) { (void)zone; }
};
