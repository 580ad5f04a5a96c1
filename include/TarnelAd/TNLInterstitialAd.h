#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/TNLInterstitialAdDelegate.h"

// Full-screen interstitial ads. Register a delegate first, then load a zone and, once it is
// ready, show it:
//   TNLInterstitialAd::setInterstitialAdDelegate(screen, "my-app-id");
//   TNLInterstitialAd::loadInterstitialAdForZone("level-complete");
//   ... onInterstitialAdReadyForZone("level-complete") ...
//   TNLInterstitialAd::showInterstitialAdForZone("level-complete");
//
// Zones: pass std::nullopt for "no zone"; it is treated as the zone "" (never rejected).
//
// The operations do no thread switching: call them from any thread. Showing presents on the main
// thread, over the delegate's view, which must then be in a shown window. Loading or showing
// before a delegate is registered prints a line to the platform log and does nothing else.
class TNL_EXPORT TNLInterstitialAd {
 public:
  // Stores the application ID for the library's requests (std::nullopt removes it), keeps the
  // delegate (strongly) and makes it the view controller interstitials are presented from: the
  // delegate must be a TNLViewController to present anything. Nothing is validated; a null
  // delegate is stored as it is. A second call replaces both.
  static void setInterstitialAdDelegate(std::shared_ptr<TNLInterstitialAdDelegate> delegate,
                                        const std::optional<std::string>& appID);
  // Requests an ad for the zone from the network.
  static void loadInterstitialAdForZone(const std::optional<std::string>& zone);
  // Uses `markup` (an ad response body the host obtained) instead of a request; std::nullopt
  // markup requests the ad from the network.
  static void loadInterstitialAdForZone(const std::optional<std::string>& zone,
                                        const std::optional<std::string>& markup);
  static void showInterstitialAdForZone(const std::optional<std::string>& zone);
  // Switches the library's diagnostic log (off by default).
  static void showTNLLogs(bool show);

  static std::shared_ptr<TNLInterstitialAd> sharedInstance();

  std::shared_ptr<TNLInterstitialAdDelegate> delegate() const;
  void setDelegate(std::shared_ptr<TNLInterstitialAdDelegate> delegate);

  // The full-screen handler's callbacks, passed on to the delegate.
  void onFSAdReadyForZone(const std::string& zone) const;
  void onFSAdFailedForZone(const std::string& zone) const;
  void onFSAdClosedForZone(const std::string& zone) const;

  virtual ~TNLInterstitialAd() = default;
  TNLInterstitialAd(const TNLInterstitialAd&) = delete;
  TNLInterstitialAd& operator=(const TNLInterstitialAd&) = delete;

 protected:
  TNLInterstitialAd() = default;

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<TNLInterstitialAdDelegate> delegate_;
};
