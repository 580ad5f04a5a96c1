#pragma once

#include "Ads/TNLAd.h"

// A full-screen ad, interstitial or rewarded, as the full-screen handler keeps it per zone.
class TNLFSAd : public TNLAd {
 public:
  TNLFSAd() = default;
  // The source ad's fields and its VAST document, media file and kind; `rewarded` stays false,
  // and the HTML, zone and listener are not copied.
  explicit TNLFSAd(const TNLAd& ad);
  static std::shared_ptr<TNLFSAd> initFromAd(const TNLAd& ad) {
    return std::make_shared<TNLFSAd>(ad);
  }

  bool rewarded() const { return rewarded_; }
  void setRewarded(bool rewarded) { rewarded_ = rewarded; }

 private:
  bool rewarded_ = false;
};
