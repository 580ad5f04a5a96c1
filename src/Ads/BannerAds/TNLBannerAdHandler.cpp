#include "Ads/BannerAds/TNLBannerAdHandler.h"

#include <typeinfo>
#include <utility>

#include "Ads/BannerAds/TNLBannerAd.h"
#include "Ads/TNLAdClient.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "TNLLog.h"
#include "TNLNetworkClient.h"
#include "TarnelAd/TNLConstants.h"

std::shared_ptr<TNLBannerAdHandler> TNLBannerAdHandler::sharedHandler() {
  static const TNLNoDestructor<std::shared_ptr<TNLBannerAdHandler>> handler(
      std::shared_ptr<TNLBannerAdHandler>(new TNLBannerAdHandler()));
  return *handler;
}

void TNLBannerAdHandler::loadBannerAdForZone(const std::string& zone, Success success,
                                             Failure failure) {
  try {
    // Only a plain banner ad counts as loaded; an entry of any derived class is replaced.
    if (const auto cached = cachedAdForZone(zone)) {
      const TNLAd& entry = *cached;
      if (typeid(entry) == typeid(TNLBannerAd)) {
        success(cached);
        return;
      }
    }
    const auto self = sharedHandler();
    const TNLAdClient client;
    client.getBannerAdForZone(
        zone,
        [self, zone, success, failure](const std::shared_ptr<TNLBannerAd>& ad) {
          if (!ad) {
            throw TNLException(TNLInvalidArgumentException, "The ad client returned no ad");
          }
          // A banner's creative tag is the URL of its page.
          TNLNetworkClient::makeHTMLRequestWithURL(
              ad->creativeTag().value_or(""), GET_METHOD,
              [self, zone, success, ad](const std::optional<std::string>& html) {
                ad->setHtml(html);
                ad->setZone(zone);
                self->storeAdForZone(zone, ad);
                success(ad);
              },
              failure);
        },
        failure);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Loading Banner Ad Failed due to exception: %@", error);
  }
}

std::shared_ptr<TNLBannerAd> TNLBannerAdHandler::cachedAdForZone(const std::string& zone) const {
  std::lock_guard lock(mutex_);
  const auto found = loadedAds_.find(zone);
  return found == loadedAds_.end() ? nullptr : found->second;
}

void TNLBannerAdHandler::storeAdForZone(const std::string& zone,
                                        const std::shared_ptr<TNLBannerAd>& ad) {
  std::shared_ptr<TNLBannerAd> replaced;
  {
    std::lock_guard lock(mutex_);
    replaced = std::exchange(loadedAds_[zone], ad);
  }
  // A replaced ad is released outside the lock.
}

std::map<std::string, std::shared_ptr<TNLBannerAd>> TNLBannerAdHandler::loadedAds() const {
  std::lock_guard lock(mutex_);
  return loadedAds_;
}

void TNLBannerAdHandler::setLoadedAds(
    std::map<std::string, std::shared_ptr<TNLBannerAd>> loadedAds) {
  std::lock_guard lock(mutex_);
  loadedAds_.swap(loadedAds);
}
