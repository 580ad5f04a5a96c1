#pragma once

/// @file
/// @brief TNLRewardedAd: rewarded full-screen ads.

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/TNLRewardedAdDelegate.h"

/// Rewarded full-screen ads: the same shape as TNLInterstitialAd, and the delegate also hears
/// when the reward is earned.
/// @code
/// TNLRewardedAd::setRewardedAdDelegate(screen, "my-app-id");
/// TNLRewardedAd::loadRewardedAdForZone("extra-life");
/// // ... onRewardedAdReadyForZone("extra-life") ...
/// TNLRewardedAd::showRewardedAdForZone("extra-life");
/// @endcode
///
/// Zones: pass std::nullopt for "no zone"; it is treated as the zone "" (never rejected).
///
/// One zone holds one loaded full-screen ad of either type: loading a zone that already holds an
/// interstitial answers the interstitial delegate, and showing a zone with nothing loaded is
/// reported to the interstitial delegate, not to this one. Threads and order of the callbacks:
/// see TNLRewardedAdDelegate.
class TNL_EXPORT TNLRewardedAd {
 public:
  /// As TNLInterstitialAd::setInterstitialAdDelegate, for rewarded ads.
  static void setRewardedAdDelegate(std::shared_ptr<TNLRewardedAdDelegate> delegate,
                                    const std::optional<std::string>& appID);
  /// As TNLInterstitialAd::loadInterstitialAdForZone, for a rewarded ad.
  static void loadRewardedAdForZone(const std::optional<std::string>& zone);
  /// `markup` is an ad response body the host obtained; std::nullopt requests from the network.
  static void loadRewardedAdForZone(const std::optional<std::string>& zone,
                                    const std::optional<std::string>& markup);
  /// As TNLInterstitialAd::showInterstitialAdForZone; an empty zone is reported to the
  /// interstitial delegate.
  static void showRewardedAdForZone(const std::optional<std::string>& zone);
  /// The same switch as TNLInterstitialAd::showTNLLogs.
  static void showTNLLogs(bool show);

  /// The process-wide facade, which passes the library's callbacks on to the delegate.
  static std::shared_ptr<TNLRewardedAd> sharedInstance();

  /// The registered delegate; null before registration.
  std::shared_ptr<TNLRewardedAdDelegate> delegate() const;
  /// Replaces the delegate without changing the presenting view controller or the application
  /// ID; setRewardedAdDelegate is what hosts call.
  void setDelegate(std::shared_ptr<TNLRewardedAdDelegate> delegate);

  /// The library's callbacks, passed on to the delegate (on the thread that TNLSetup's callback
  /// option chooses).
  ///@{
  void onFSAdReadyForZone(const std::string& zone) const;
  void onFSAdFailedForZone(const std::string& zone) const;
  void onFSAdClosedForZone(const std::string& zone) const;
  void onFSAdRewardedForZone(const std::string& zone) const;
  ///@}

  virtual ~TNLRewardedAd() = default;
  TNLRewardedAd(const TNLRewardedAd&) = delete;
  TNLRewardedAd& operator=(const TNLRewardedAd&) = delete;

 protected:
  /// Made once, by the library.
  TNLRewardedAd() = default;

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<TNLRewardedAdDelegate> delegate_;
};
