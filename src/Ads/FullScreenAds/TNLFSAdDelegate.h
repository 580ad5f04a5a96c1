#pragma once

#include <string>

// The full-screen handler's callbacks, neutral of the ad type; the interstitial and rewarded
// facades receive them and tell the host. All optional.
class TNLFSAdDelegate {
 public:
  virtual ~TNLFSAdDelegate() = default;
  virtual void onFSAdReadyForZone(const std::string& zone) { (void)zone; }
  virtual void onFSAdFailedForZone(const std::string& zone) { (void)zone; }
  virtual void onFSAdClosedForZone(const std::string& zone) { (void)zone; }
  virtual void onFSAdRewardedForZone(const std::string& zone) { (void)zone; }
};
