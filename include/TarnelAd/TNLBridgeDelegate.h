#pragma once

#include <string>

#include "TarnelAd/TNLExport.h"

class TNLBridge;

// The host of a creative's web view (the full-screen controller, the banner view): told what the
// creative asked for over "bridge://". Called on the main thread. The first eight operations are
// required; expanding, collapsing and the reward are optional and do nothing unless overridden.
// Public because the banner view, a view hosts place in their own hierarchy, is one.
class TNL_EXPORT TNLBridgeDelegate {
 public:
  virtual ~TNLBridgeDelegate() = default;

  // The creative's page has loaded and received its payload.
  virtual void bridgeOpened(TNLBridge& bridge) = 0;
  virtual void closeActionSentByBridge(TNLBridge& bridge) = 0;
  virtual void openUrl(const std::string& url, TNLBridge& bridge) = 0;
  virtual void enableRedirectActionSentByBridge(TNLBridge& bridge) = 0;
  virtual void displayOptinSentByBridge(TNLBridge& bridge) = 0;
  virtual void videoOptinSentByBridge(TNLBridge& bridge) = 0;
  virtual void deviceDataRequestSentByBridge(TNLBridge& bridge) = 0;
  virtual void allowScroll(bool allow, TNLBridge& bridge) = 0;

  // The new height of the ad in points.
  virtual void expandPixels(float pixels, bool allowTouch, TNLBridge& bridge) {
    (void)pixels, (void)allowTouch, (void)bridge;
  }
  // A percentage (0 to 100) of the height of the host's root view.
  virtual void expandPercent(float percent, bool allowTouch, TNLBridge& bridge) {
    (void)percent, (void)allowTouch, (void)bridge;
  }
  virtual void collapseActionSentByBridge(TNLBridge& bridge) { (void)bridge; }
  virtual void rewardActionSentByBridge(TNLBridge& bridge) { (void)bridge; }
};
