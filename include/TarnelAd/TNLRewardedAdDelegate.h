#pragma once

/// @file
/// @brief TNLRewardedAdDelegate: what a host hears about its rewarded ads.

#include <string>

#include "TarnelAd/TNLExport.h"

/// What a host hears about its rewarded ads. Every operation is optional (the default does
/// nothing); the argument is the zone, valid for the duration of the call.
///
/// Threads. Ready and failed come on the thread that completed the work: the library's HTTP
/// thread after a request, or at once on the thread that called the load for a zone that is
/// already loaded. Do not assume the main thread for them, unless
/// TNLSetup::setCallbacksOnMainThread asked for it. Rewarded and closed come on the main thread.
///
/// Order. Each load ends in one ready or one failed. After a show, rewarded comes when the
/// creative grants the reward (the ad stays on screen), then closed once the creative has closed
/// itself; the zone is then empty again.
///
/// Ownership. The object registered with TNLRewardedAd::setRewardedAdDelegate is held strongly
/// by the library until it is replaced, and it is also the view controller that the ads are
/// presented from:
/// @code
/// class GameScreen : public TNLViewController, public TNLRewardedAdDelegate { ... };
/// @endcode
class TNL_EXPORT TNLRewardedAdDelegate {
 public:
  virtual ~TNLRewardedAdDelegate() = default;

  /// A rewarded ad for the zone is loaded and can be shown.
  virtual void onRewardedAdReadyForZone(const std::string& zone) { (void)zone; }
  /// A load failed. A show of a zone with nothing loaded is not reported here but to the
  /// interstitial delegate.
  virtual void onRewardedAdFailedForZone(const std::string& zone) { (void)zone; }
  /// The shown rewarded ad was closed and its view dismissed. Main thread, after any reward.
  virtual void onRewardedAdClosedForZone(const std::string& zone) { (void)zone; }
  /// The creative signalled that the reward was earned; the ad stays on screen until it closes.
  /// Main thread.
  virtual void onRewardedAdRewardedForZone(const std::string& zone) { (void)zone; }
};
