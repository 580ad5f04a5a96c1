#include "Ads/FullScreenAds/TNLFSAd.h"

TNLFSAd::TNLFSAd(const TNLAd& ad)
    : TNLAd(ad.sdkType(), ad.creativeTag(), ad.assets(), ad.adCopy(), ad.flags(), ad.trackers(),
            ad.payload(), ad.fullAd()) {
  setXml(ad.xml());
  setMediaFile(ad.mediaFile());
  setIsVast(ad.isVast());
}
