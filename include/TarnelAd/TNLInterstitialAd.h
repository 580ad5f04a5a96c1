#pragma once

/// @file
/// @brief TNLInterstitialAd: full-screen interstitial ads.

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/TNLInterstitialAdDelegate.h"

/// Full-screen interstitial ads. Register a delegate first, then load a zone and, once it is
/// ready, show it:
/// @code
/// TNLInterstitialAd::setInterstitialAdDelegate(screen, "my-app-id");
/// TNLInterstitialAd::loadInterstitialAdForZone("level-complete");
/// // ... onInterstitialAdReadyForZone("level-complete") ...
/// TNLInterstitialAd::showInterstitialAdForZone("level-complete");
/// @endcode
///
/// Zones: pass std::nullopt for "no zone"; it is treated as the zone "" (never rejected).
///
/// The operations do no thread switching: call them from any thread; they return before the
/// network answers. Showing presents on the main thread, over the delegate's view, which must
/// then be in a shown window. Loading or showing before a delegate is registered prints a line
/// to the platform log and does nothing else. Where each callback comes, and in which order: see
/// TNLInterstitialAdDelegate.
class TNL_EXPORT TNLInterstitialAd {
 public:
  /// Stores the application ID for the library's requests (std::nullopt removes it), keeps the
  /// delegate (strongly) and makes it the view controller interstitials are presented from: the
  /// delegate must be a TNLViewController to present anything. Nothing is validated; a null
  /// delegate is stored as it is. A second call replaces both.
  static void setInterstitialAdDelegate(std::shared_ptr<TNLInterstitialAdDelegate> delegate,
                                        const std::optional<std::string>& appID);
  /// Requests an ad for the zone from the network; the delegate hears ready or failed. A zone
  /// that already holds a loaded ad answers ready at once, on this thread, without a request
  /// (to the delegate of the stored ad's type).
  static void loadInterstitialAdForZone(const std::optional<std::string>& zone);
  /// As loadInterstitialAdForZone(zone), with `markup` (an ad response body the host obtained)
  /// instead of a request; std::nullopt markup requests the ad from the network.
  static void loadInterstitialAdForZone(const std::optional<std::string>& zone,
                                        const std::optional<std::string>& markup);
  /// Shows the zone's loaded ad: the presentation happens on the main thread, later, and the ad
  /// stays loaded until it closes. A zone with nothing loaded is reported at once, on this
  /// thread, as failed.
  static void showInterstitialAdForZone(const std::optional<std::string>& zone);
  /// Switches the library's diagnostic log (off by default).
  static void showTNLLogs(bool show);

  /// The process-wide facade, which passes the library's callbacks on to the delegate.
  static std::shared_ptr<TNLInterstitialAd> sharedInstance();

  /// The registered delegate; null before registration.
  std::shared_ptr<TNLInterstitialAdDelegate> delegate() const;
  /// Replaces the delegate without changing the presenting view controller or the application
  /// ID; setInterstitialAdDelegate is what hosts call.
  void setDelegate(std::shared_ptr<TNLInterstitialAdDelegate> delegate);

  /// The library's callbacks, passed on to the delegate (on the thread that TNLSetup's callback
  /// option chooses).
  ///@{
  void onFSAdReadyForZone(const std::string& zone) const;
  void onFSAdFailedForZone(const std::string& zone) const;
  void onFSAdClosedForZone(const std::string& zone) const;
  ///@}

  virtual ~TNLInterstitialAd() = default;
  TNLInterstitialAd(const TNLInterstitialAd&) = delete;
  TNLInterstitialAd& operator=(const TNLInterstitialAd&) = delete;

 protected:
  /// Made once, by the library.
  TNLInterstitialAd() = default;

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<TNLInterstitialAdDelegate> delegate_;
};
