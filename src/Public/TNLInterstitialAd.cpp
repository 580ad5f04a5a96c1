#include "TarnelAd/TNLInterstitialAd.h"

#include "Ads/FullScreenAds/TNLFSAdDelegate.h"
#include "Ads/FullScreenAds/TNLFSAdHandler.h"
#include "Ads/Macros/TNLMacros.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Public/TNLDelegateDispatch.h"
#include "TNLLog.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/Toolkit/TNLViewController.h"

namespace {

constexpr bool kRewarded = false;

// The shared instance: the facade, receiving the handler's callbacks.
class InterstitialAdReceiver final : public TNLInterstitialAd, public TNLFSAdDelegate {
 public:
  void onFSAdReadyForZone(const std::string& zone) override {
    TNLInterstitialAd::onFSAdReadyForZone(zone);
  }
  void onFSAdFailedForZone(const std::string& zone) override {
    TNLInterstitialAd::onFSAdFailedForZone(zone);
  }
  void onFSAdClosedForZone(const std::string& zone) override {
    TNLInterstitialAd::onFSAdClosedForZone(zone);
  }
};

std::shared_ptr<InterstitialAdReceiver> receiver() {
  static const TNLNoDestructor<std::shared_ptr<InterstitialAdReceiver>> instance(
      std::make_shared<InterstitialAdReceiver>());
  return *instance;
}

// Calls the delegate of the moment, on the thread the host chose for callbacks. The facade is the
// process-wide instance, which is never destroyed.
void notify(const TNLInterstitialAd& facade,
            void (TNLInterstitialAdDelegate::*callback)(const std::string&),
            const std::string& zone) {
  TNLDelegateDispatch::deliver([&facade, callback, zone] {
    if (const auto delegate = facade.delegate()) {
      ((*delegate).*callback)(zone);
    }
  });
}

}  // namespace

void TNLInterstitialAd::setInterstitialAdDelegate(
    std::shared_ptr<TNLInterstitialAdDelegate> delegate, const std::optional<std::string>& appID) {
  TNLMacros::setValueInMacroDictionary(appID, TNL_APPID_MACRO);
  const auto instance = receiver();
  instance->setDelegate(delegate);
  TNLFSAdHandler::sharedHandler()->setFSAdDelegate(
      instance, std::dynamic_pointer_cast<TNLViewController>(delegate), kRewarded);
}

void TNLInterstitialAd::loadInterstitialAdForZone(const std::optional<std::string>& zone) {
  TNLFSAdHandler::sharedHandler()->loadFSAdForZone(zone.value_or(""), std::nullopt, kRewarded);
}

void TNLInterstitialAd::loadInterstitialAdForZone(const std::optional<std::string>& zone,
                                                  const std::optional<std::string>& markup) {
  TNLFSAdHandler::sharedHandler()->loadFSAdForZone(zone.value_or(""), markup, kRewarded);
}

void TNLInterstitialAd::showInterstitialAdForZone(const std::optional<std::string>& zone) {
  TNLFSAdHandler::sharedHandler()->showFSAdForZone(zone.value_or(""), kRewarded);
}

void TNLInterstitialAd::showTNLLogs(bool show) {
  TNLLog::sharedLogger()->showTNLLogs(show);
}

std::shared_ptr<TNLInterstitialAd> TNLInterstitialAd::sharedInstance() {
  return receiver();
}

std::shared_ptr<TNLInterstitialAdDelegate> TNLInterstitialAd::delegate() const {
  std::lock_guard lock(mutex_);
  return delegate_;
}

void TNLInterstitialAd::setDelegate(std::shared_ptr<TNLInterstitialAdDelegate> delegate) {
  std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}

void TNLInterstitialAd::onFSAdReadyForZone(const std::string& zone) const {
  notify(*this, &TNLInterstitialAdDelegate::onInterstitialAdReadyForZone, zone);
}

void TNLInterstitialAd::onFSAdFailedForZone(const std::string& zone) const {
  notify(*this, &TNLInterstitialAdDelegate::onInterstitialAdFailedForZone, zone);
}

void TNLInterstitialAd::onFSAdClosedForZone(const std::string& zone) const {
  notify(*this, &TNLInterstitialAdDelegate::onInterstitialAdClosedForZone, zone);
}
