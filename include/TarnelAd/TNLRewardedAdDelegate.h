#pragma once

#include <string>

#include "TarnelAd/TNLExport.h"

// What a host hears about its rewarded ads. Every operation is optional; the argument is the
// zone. Ready and failed arrive on the library's HTTP thread (a ready for a zone that is already
// loaded arrives at once, on the thread that asked for the load); closed and rewarded arrive on
// the main thread. Do not assume the main thread for ready and failed.
//
// The object registered with TNLRewardedAd::setRewardedAdDelegate is also the view controller
// that the ads are presented from:
//   class GameScreen : public TNLViewController, public TNLRewardedAdDelegate { ... };
class TNL_EXPORT TNLRewardedAdDelegate {
 public:
  virtual ~TNLRewardedAdDelegate() = default;

  // A rewarded ad for the zone is loaded and can be shown.
  virtual void onRewardedAdReadyForZone(const std::string& zone) { (void)zone; }
  // A load failed. A show of a zone with nothing loaded is not reported here but to the
  // interstitial delegate.
  virtual void onRewardedAdFailedForZone(const std::string& zone) { (void)zone; }
  // The shown rewarded ad was closed.
  virtual void onRewardedAdClosedForZone(const std::string& zone) { (void)zone; }
  // The creative signalled that the reward was earned; the ad stays on screen until it closes.
  virtual void onRewardedAdRewardedForZone(const std::string& zone) { (void)zone; }
};
