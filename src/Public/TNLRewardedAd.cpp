#include "TarnelAd/TNLRewardedAd.h"

#include "Ads/FullScreenAds/TNLFSAdDelegate.h"
#include "Ads/FullScreenAds/TNLFSAdHandler.h"
#include "Ads/Macros/TNLMacros.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Public/TNLDelegateDispatch.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLInterstitialAd.h"
#include "TarnelAd/Toolkit/TNLViewController.h"

namespace {

constexpr bool kRewarded = true;

// The shared instance: the facade, receiving the handler's callbacks.
class RewardedAdReceiver final : public TNLRewardedAd, public TNLFSAdDelegate {
 public:
  void onFSAdReadyForZone(const std::string& zone) override {
    TNLRewardedAd::onFSAdReadyForZone(zone);
  }
  void onFSAdFailedForZone(const std::string& zone) override {
    TNLRewardedAd::onFSAdFailedForZone(zone);
  }
  void onFSAdClosedForZone(const std::string& zone) override {
    TNLRewardedAd::onFSAdClosedForZone(zone);
  }
  void onFSAdRewardedForZone(const std::string& zone) override {
    TNLRewardedAd::onFSAdRewardedForZone(zone);
  }
};

std::shared_ptr<RewardedAdReceiver> receiver() {
  static const TNLNoDestructor<std::shared_ptr<RewardedAdReceiver>> instance(
      std::make_shared<RewardedAdReceiver>());
  return *instance;
}

// Calls the delegate of the moment, on the thread the host chose for callbacks. The facade is the
// process-wide instance, which is never destroyed.
void notify(const TNLRewardedAd& facade,
            void (TNLRewardedAdDelegate::*callback)(const std::string&), const std::string& zone) {
  TNLDelegateDispatch::deliver([&facade, callback, zone] {
    if (const auto delegate = facade.delegate()) {
      ((*delegate).*callback)(zone);
    }
  });
}

}  // namespace

void TNLRewardedAd::setRewardedAdDelegate(std::shared_ptr<TNLRewardedAdDelegate> delegate,
                                          const std::optional<std::string>& appID) {
  TNLMacros::setValueInMacroDictionary(appID, TNL_APPID_MACRO);
  const auto instance = receiver();
  instance->setDelegate(delegate);
  TNLFSAdHandler::sharedHandler()->setFSAdDelegate(
      instance, std::dynamic_pointer_cast<TNLViewController>(delegate), kRewarded);
}

void TNLRewardedAd::loadRewardedAdForZone(const std::optional<std::string>& zone) {
  TNLFSAdHandler::sharedHandler()->loadFSAdForZone(zone.value_or(""), std::nullopt, kRewarded);
}

void TNLRewardedAd::loadRewardedAdForZone(const std::optional<std::string>& zone,
                                          const std::optional<std::string>& markup) {
  TNLFSAdHandler::sharedHandler()->loadFSAdForZone(zone.value_or(""), markup, kRewarded);
}

void TNLRewardedAd::showRewardedAdForZone(const std::optional<std::string>& zone) {
  TNLFSAdHandler::sharedHandler()->showFSAdForZone(zone.value_or(""), kRewarded);
}

void TNLRewardedAd::showTNLLogs(bool show) {
  TNLInterstitialAd::showTNLLogs(show);
}

std::shared_ptr<TNLRewardedAd> TNLRewardedAd::sharedInstance() {
  return receiver();
}

std::shared_ptr<TNLRewardedAdDelegate> TNLRewardedAd::delegate() const {
  std::lock_guard lock(mutex_);
  return delegate_;
}

void TNLRewardedAd::setDelegate(std::shared_ptr<TNLRewardedAdDelegate> delegate) {
  std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}

void TNLRewardedAd::onFSAdReadyForZone(const std::string& zone) const {
  notify(*this, &TNLRewardedAdDelegate::onRewardedAdReadyForZone, zone);
}

void TNLRewardedAd::onFSAdFailedForZone(const std::string& zone) const {
  notify(*this, &TNLRewardedAdDelegate::onRewardedAdFailedForZone, zone);
}

void TNLRewardedAd::onFSAdClosedForZone(const std::string& zone) const {
  notify(*this, &TNLRewardedAdDelegate::onRewardedAdClosedForZone, zone);
}

void TNLRewardedAd::onFSAdRewardedForZone(const std::string& zone) const {
  notify(*this, &TNLRewardedAdDelegate::onRewardedAdRewardedForZone, zone);
}
