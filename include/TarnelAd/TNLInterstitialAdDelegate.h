#pragma once

/// @file
/// @brief TNLInterstitialAdDelegate: what a host hears about its interstitials.

#include <string>

#include "TarnelAd/TNLExport.h"

/// What a host hears about its interstitial ads. Every operation is optional (the default does
/// nothing); the argument is the zone, valid for the duration of the call.
///
/// Threads. Ready and failed come on the thread that completed the work: the library's HTTP
/// thread after a request, or at once on the thread that called the load for a zone that is
/// already loaded (and on the caller's thread for a show of an empty zone). Do not assume the
/// main thread for them, unless TNLSetup::setCallbacksOnMainThread asked for it. Closed comes on
/// the main thread.
///
/// Order. Each load ends in one ready or one failed. After a show, closed comes once the creative
/// has closed itself; the zone is then empty again (a load made inside closed is still answered
/// with the closing ad, which is forgotten right after the call).
///
/// Ownership. The object registered with TNLInterstitialAd::setInterstitialAdDelegate is held
/// strongly by the library until it is replaced, and it is also the view controller that the
/// ads are presented from, so a host derives from both:
/// @code
/// class GameScreen : public TNLViewController, public TNLInterstitialAdDelegate { ... };
/// @endcode
class TNL_EXPORT TNLInterstitialAdDelegate {
 public:
  virtual ~TNLInterstitialAdDelegate() = default;

  /// An interstitial for the zone is loaded and can be shown.
  virtual void onInterstitialAdReadyForZone(const std::string& zone) { (void)zone; }
  /// A load failed, or a show found nothing loaded for the zone (whatever its type: a rewarded
  /// show of an empty zone is reported here, at once, on the thread that asked for the show).
  virtual void onInterstitialAdFailedForZone(const std::string& zone) { (void)zone; }
  /// The shown interstitial was closed and its view dismissed. Main thread.
  virtual void onInterstitialAdClosedForZone(const std::string& zone) { (void)zone; }
};
