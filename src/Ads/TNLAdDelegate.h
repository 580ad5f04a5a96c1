#pragma once

#include <string>

// The listener of an ad: told when the creative closes or grants its reward. Both optional.
class TNLAdDelegate {
 public:
  virtual ~TNLAdDelegate() = default;
  virtual void adWillCloseInZone(const std::string& zone) { (void)zone; }
  virtual void adRewardedForZone(const std::string& zone) { (void)zone; }
};
