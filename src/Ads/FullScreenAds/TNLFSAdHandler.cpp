#include "Ads/FullScreenAds/TNLFSAdHandler.h"

#include "Ads/FullScreenAds/TNLFSAd.h"
#include "Ads/FullScreenAds/TNLFSAdViewController.h"
#include "Ads/TNLAd.h"
#include "Ads/TNLAdClient.h"
#include "Ads/TNLAdWebView.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Foundation/TNLStrings.h"
#include "TNLLog.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"
#include "Trackers/TNLTrackerHandler.h"

namespace {

// The interstitial line names the rewarded protocol; hosts and support documents quote it as it
// stands.
constexpr char kRewardedDelegateMissing[] =
    "Need to set delegate for TNLRewardedAd using + (void)setRewardedAdDelegate:"
    "(UIViewController<TNLRewardedAdDelegate> *)delegate appID:(NSString *)appID before loading "
    "ad!";
constexpr char kInterstitialDelegateMissing[] =
    "Need to set delegate for TNLInterstitialAd using + (void)setInterstitialAdDelegate:"
    "(UIViewController<TNLRewardedAdDelegate> *)delegate appID:(NSString *)appID before loading "
    "ad!";

constexpr char kXMLDocPlaceholder[] = "^#xml_doc#^";
constexpr char kZonePlaceholder[] = "^#zone#^";
constexpr char kSitePlaceholder[] = "^#site#^";
constexpr char kVideoPlaceholder[] = "^#video#^";

// The VAST template receives these fixed words, not the real zone and site.
constexpr char kZoneWord[] = "zone";
constexpr char kSiteWord[] = "site";

// The page of a VAST ad: the template with the document, the fixed words and the media file put
// in. Other ads' pages pass unchanged (they have neither a document nor a media file).
std::optional<std::string> fillTemplate(std::optional<std::string> page, const TNLFSAd& ad) {
  if (!page) {
    return page;
  }
  if (!ad.xml().empty()) {
    page = TNLStrings::replaceAll(*page, kXMLDocPlaceholder, ad.xml());
    page = TNLStrings::replaceAll(*page, kZonePlaceholder, kZoneWord);
    page = TNLStrings::replaceAll(*page, kSitePlaceholder, kSiteWord);
  }
  if (!ad.mediaFile().empty()) {
    page = TNLStrings::replaceAll(*page, kVideoPlaceholder,
                                  TNLStrings::trimWhitespaceAndNewlines(ad.mediaFile()));
  }
  return page;
}

}  // namespace

std::shared_ptr<TNLFSAdHandler> TNLFSAdHandler::sharedHandler() {
  static const TNLNoDestructor<std::shared_ptr<TNLFSAdHandler>> instance(
      std::make_shared<TNLFSAdHandler>());
  return *instance;
}

void TNLFSAdHandler::setFSAdDelegate(const std::shared_ptr<TNLFSAdDelegate>& delegate,
                                     const std::shared_ptr<TNLViewController>& rootVC,
                                     bool rewarded) {
  std::lock_guard lock(mutex_);
  if (rewarded) {
    rewardedDelegate_ = delegate;
    rewardedRootVC_ = rootVC;
  } else {
    interstitialDelegate_ = delegate;
    interstitialRootVC_ = rootVC;
  }
}

bool TNLFSAdHandler::checkDelegate(bool rewarded) const {
  if (delegateFor(rewarded)) {
    return true;
  }
  TNLPlatformLog(rewarded ? kRewardedDelegateMissing : kInterstitialDelegateMissing);
  return false;
}

void TNLFSAdHandler::loadFSAdForZone(const std::string& zone,
                                     const std::optional<std::string>& markup, bool rewarded) {
  try {
    if (!checkDelegate(rewarded)) {
      return;
    }
    // A loaded zone answers at once, for whichever type it was loaded as.
    if (const auto loaded = loadedAdForZone(zone)) {
      fireAdReadyForZone(zone, loaded->rewarded());
      return;
    }
    TNLTrackerHandler::sendTrackerForEvent(TNL_ADREQUESTED_TRACKER);
    const auto self = shared_from_this();
    const TNLAdClient client;
    const auto failure = [self, zone, rewarded](const TNLErrorPtr&) {
      self->processFSAdFailureInZone(zone, rewarded);
    };
    if (markup) {
      client.generateAdFromData(
          *markup,
          [self, zone, rewarded](const std::shared_ptr<TNLAd>& ad) {
            // An ad the factory could not make goes on as an empty one, whose page cannot be
            // fetched.
            const auto fullScreenAd =
                ad ? TNLFSAd::initFromAd(*ad)
                   : TNLFSAd::initFromAd(TNLAd(std::nullopt, std::nullopt, TNLJson(), TNLJson(),
                                               TNLJson(), TNLJson(), TNLJson(), TNLJson()));
            self->processFSAd(fullScreenAd, zone, rewarded);
          },
          failure);
    } else {
      client.getFSAdForZone(
          zone, rewarded,
          [self, zone, rewarded](const std::shared_ptr<TNLFSAd>& ad) {
            self->processFSAd(ad, zone, rewarded);
          },
          failure);
    }
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to load full screen ad due to exception: %@", error);
  }
}

void TNLFSAdHandler::processFSAd(const std::shared_ptr<TNLFSAd>& ad, const std::string& zone,
                                 bool rewarded) {
  TNLTrackerHandler::sendTrackerForEvent(TNL_ADRETURNED_TRACKER);
  const auto self = shared_from_this();
  TNLNetworkClient::makeHTMLRequestWithURL(
      ad->creativeTag().value_or(""), GET_METHOD,
      [self, ad, zone, rewarded](const std::optional<std::string>& page) {
        TNLTrackerHandler::sendTrackerForEvent(TNL_ADREADY_TRACKER);
        ad->setHtml(fillTemplate(page, *ad));
        ad->setZone(zone);
        ad->setRewarded(rewarded);
        {
          std::lock_guard lock(self->mutex_);
          self->loadedAds_[zone] = ad;
        }
        self->fireAdReadyForZone(zone, rewarded);
      },
      [self, zone, rewarded](const TNLErrorPtr&) {
        self->processFSAdFailureInZone(zone, rewarded);
      });
}

void TNLFSAdHandler::processFSAdFailureInZone(const std::string& zone, bool rewarded) {
  TNLTrackerHandler::sendTrackerForEvent(TNL_ADUNAVAILABLE_TRACKER);
  fireAdFailedForZone(zone, rewarded);
}

void TNLFSAdHandler::fireAdReadyForZone(const std::string& zone, bool rewarded) const {
  if (const auto delegate = delegateFor(rewarded)) {
    delegate->onFSAdReadyForZone(zone);
  }
}

void TNLFSAdHandler::fireAdFailedForZone(const std::string& zone, bool rewarded) const {
  if (const auto delegate = delegateFor(rewarded)) {
    delegate->onFSAdFailedForZone(zone);
  }
}

void TNLFSAdHandler::showFSAdForZone(const std::string& zone, bool rewarded) {
  try {
    if (!checkDelegate(rewarded)) {
      return;
    }
    // Nothing stored reads as an interstitial: a rewarded show of an empty zone is reported to
    // the interstitial side.
    const auto stored = loadedAdForZone(zone);
    if (!stored) {
      fireAdFailedForZone(zone, false);
      return;
    }
    TNLTrackerHandler::sendTrackerForEvent(TNL_ADSHOWING_TRACKER);
    const auto self = shared_from_this();
    TNLMainQueue::async([self, zone] {
      try {
        // The ad stays stored while it is shown; it is forgotten when it closes.
        const auto ad = self->loadedAdForZone(zone);
        if (!ad) {
          throw TNLException(TNLInternalInconsistencyException,
                             "The ad of zone " + zone + " was closed before it could be shown");
        }
        ad->setDelegate(self);
        const auto webView = TNLAdWebView::create()->loadAd(ad);
        const auto rootVC = ad->rewarded() ? self->rewardedRootVC() : self->interstitialRootVC();
        TNLFSAdViewController::create()->loadWebView(webView, rootVC);
      } catch (const std::exception& error) {
        TNLLog::sharedLogger()->log("Failed to show full screen ad due to exception: %@", error);
      }
    });
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to show full screen ad due to exception: %@", error);
  }
}

void TNLFSAdHandler::adWillCloseInZone(const std::string& zone) {
  std::shared_ptr<TNLFSAd> ad;
  try {
    ad = loadedAdForZone(zone);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log(
        "Failed to retrieve full screen ad object due to exception: %@\nUnexpected behavior may "
        "occur",
        error);
  }
  // A zone with nothing stored counts as an interstitial.
  if (!ad) {
    ad = std::make_shared<TNLFSAd>();
  }
  if (const auto delegate = delegateFor(ad->rewarded())) {
    delegate->onFSAdClosedForZone(zone);
  }
  {
    std::lock_guard lock(mutex_);
    loadedAds_.erase(zone);
  }
  TNLTrackerHandler::sendTrackerForEvent(TNL_ADCLOSED_TRACKER);
}

void TNLFSAdHandler::adRewardedForZone(const std::string& zone) {
  TNLTrackerHandler::sendTrackerForEvent(TNL_ADREWARDED_TRACKER);
  if (const auto delegate = rewardedDelegate()) {
    delegate->onFSAdRewardedForZone(zone);
  }
}

std::shared_ptr<TNLFSAd> TNLFSAdHandler::loadedAdForZone(const std::string& zone) const {
  std::lock_guard lock(mutex_);
  const auto found = loadedAds_.find(zone);
  return found == loadedAds_.end() ? nullptr : found->second;
}

std::shared_ptr<TNLFSAdDelegate> TNLFSAdHandler::delegateFor(bool rewarded) const {
  std::lock_guard lock(mutex_);
  return rewarded ? rewardedDelegate_ : interstitialDelegate_;
}

std::shared_ptr<TNLFSAdDelegate> TNLFSAdHandler::interstitialDelegate() const {
  std::lock_guard lock(mutex_);
  return interstitialDelegate_;
}

void TNLFSAdHandler::setInterstitialDelegate(std::shared_ptr<TNLFSAdDelegate> delegate) {
  std::lock_guard lock(mutex_);
  interstitialDelegate_ = std::move(delegate);
}

std::shared_ptr<TNLFSAdDelegate> TNLFSAdHandler::rewardedDelegate() const {
  std::lock_guard lock(mutex_);
  return rewardedDelegate_;
}

void TNLFSAdHandler::setRewardedDelegate(std::shared_ptr<TNLFSAdDelegate> delegate) {
  std::lock_guard lock(mutex_);
  rewardedDelegate_ = std::move(delegate);
}

std::shared_ptr<TNLViewController> TNLFSAdHandler::interstitialRootVC() const {
  std::lock_guard lock(mutex_);
  return interstitialRootVC_;
}

void TNLFSAdHandler::setInterstitialRootVC(std::shared_ptr<TNLViewController> controller) {
  std::lock_guard lock(mutex_);
  interstitialRootVC_ = std::move(controller);
}

std::shared_ptr<TNLViewController> TNLFSAdHandler::rewardedRootVC() const {
  std::lock_guard lock(mutex_);
  return rewardedRootVC_;
}

void TNLFSAdHandler::setRewardedRootVC(std::shared_ptr<TNLViewController> controller) {
  std::lock_guard lock(mutex_);
  rewardedRootVC_ = std::move(controller);
}

std::map<std::string, std::shared_ptr<TNLFSAd>> TNLFSAdHandler::loadedAds() const {
  std::lock_guard lock(mutex_);
  return loadedAds_;
}

void TNLFSAdHandler::setLoadedAds(std::map<std::string, std::shared_ptr<TNLFSAd>> loadedAds) {
  std::lock_guard lock(mutex_);
  loadedAds_ = std::move(loadedAds);
}
