#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Ads/FullScreenAds/TNLFSAdDelegate.h"
#include "Ads/TNLAdDelegate.h"

class TNLFSAd;
class TNLViewController;

// Runs the life of every full-screen ad, interstitial and rewarded: requests it (from the demand
// sources, or from markup the host supplies), fetches its page, fills the VAST template, keeps
// the finished ad per zone until it is shown, presents it over the host's view controller, and
// reports ready, failed, closed and rewarded to the facade of the ad's type.
//
// One map serves both types: a zone holds at most one ad, and the stored ad's own `rewarded` flag
// decides which facade hears about it later.
//
// Threads: public operations run on the caller's thread. Ready and failed come from network
// completions on the HTTP thread, except the ready of an already loaded zone, which is
// synchronous. Presentation runs on the main thread, where close and reward come from. The map,
// the delegates and the root view controllers are guarded by one mutex that is never held while
// calling out.
class TNLFSAdHandler : public TNLAdDelegate, public std::enable_shared_from_this<TNLFSAdHandler> {
 public:
  static std::shared_ptr<TNLFSAdHandler> sharedHandler();

  // Stores the facade that receives the callbacks of one ad type and the view controller its ads
  // are presented from.
  void setFSAdDelegate(const std::shared_ptr<TNLFSAdDelegate>& delegate,
                       const std::shared_ptr<TNLViewController>& rootVC, bool rewarded);
  // Without markup the ad is requested from the demand sources; with it, the markup is the ad
  // response.
  void loadFSAdForZone(const std::string& zone, const std::optional<std::string>& markup,
                       bool rewarded);
  void showFSAdForZone(const std::string& zone, bool rewarded);

  // The continuations of a load.
  void processFSAd(const std::shared_ptr<TNLFSAd>& ad, const std::string& zone, bool rewarded);
  void processFSAdFailureInZone(const std::string& zone, bool rewarded);
  // Tell the facade of the given type.
  void fireAdReadyForZone(const std::string& zone, bool rewarded) const;
  void fireAdFailedForZone(const std::string& zone, bool rewarded) const;

  // TNLAdDelegate: the shown ad closed or granted its reward.
  void adWillCloseInZone(const std::string& zone) override;
  void adRewardedForZone(const std::string& zone) override;

  std::shared_ptr<TNLFSAdDelegate> interstitialDelegate() const;
  void setInterstitialDelegate(std::shared_ptr<TNLFSAdDelegate> delegate);
  std::shared_ptr<TNLFSAdDelegate> rewardedDelegate() const;
  void setRewardedDelegate(std::shared_ptr<TNLFSAdDelegate> delegate);
  std::shared_ptr<TNLViewController> interstitialRootVC() const;
  void setInterstitialRootVC(std::shared_ptr<TNLViewController> controller);
  std::shared_ptr<TNLViewController> rewardedRootVC() const;
  void setRewardedRootVC(std::shared_ptr<TNLViewController> controller);
  // A copy of the zone map.
  std::map<std::string, std::shared_ptr<TNLFSAd>> loadedAds() const;
  void setLoadedAds(std::map<std::string, std::shared_ptr<TNLFSAd>> loadedAds);

 private:
  // The delegate precondition of loads and shows: false, with the platform log line, when the
  // facade of the type has no delegate.
  bool checkDelegate(bool rewarded) const;
  std::shared_ptr<TNLFSAd> loadedAdForZone(const std::string& zone) const;
  std::shared_ptr<TNLFSAdDelegate> delegateFor(bool rewarded) const;

  mutable std::mutex mutex_;
  std::shared_ptr<TNLFSAdDelegate> interstitialDelegate_;
  std::shared_ptr<TNLFSAdDelegate> rewardedDelegate_;
  std::map<std::string, std::shared_ptr<TNLFSAd>> loadedAds_;
  std::shared_ptr<TNLViewController> interstitialRootVC_;
  std::shared_ptr<TNLViewController> rewardedRootVC_;
};
