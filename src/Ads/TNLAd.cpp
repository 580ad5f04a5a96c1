#include "Ads/TNLAd.h"

#include "Categories/NSString+TNLValidation.h"

TNLAd::TNLAd()
    : TNLAd(std::string(), std::string(), TNLJson::object(), TNLJson::object(), TNLJson::object(),
            TNLJson::object(), TNLJson::object(), TNLJson::object()) {}

TNLAd::TNLAd(std::optional<std::string> sdkType, std::optional<std::string> creativeTag,
             TNLJson assets, TNLJson adCopy, TNLJson flags, TNLJson trackers, TNLJson payload,
             TNLJson completeAd)
    : sdkType_(std::move(sdkType)),
      creativeTag_(std::move(creativeTag)),
      assets_(std::move(assets)),
      adCopy_(std::move(adCopy)),
      flags_(std::move(flags)),
      trackers_(std::move(trackers)),
      payload_(std::move(payload)),
      fullAd_(std::move(completeAd)) {}

bool TNLAd::adIsValid() const {
  return isNotEmpty(creativeTag_);
}

void TNLAd::adClosed() const {
  if (const auto listener = delegate()) {
    listener->adWillCloseInZone(zone_.value_or(""));
  }
}

void TNLAd::adRewarded() const {
  if (const auto listener = delegate()) {
    listener->adRewardedForZone(zone_.value_or(""));
  }
}
