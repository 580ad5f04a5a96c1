#include "Ads/BannerAds/TNLBannerAd.h"

TNLBannerAd::TNLBannerAd(const TNLAd& ad)
    : TNLAd(ad.sdkType(), ad.creativeTag(), ad.assets(), ad.adCopy(), ad.flags(), ad.trackers(),
            ad.payload(), ad.fullAd()) {}
