#pragma once

/// @file
/// @brief TNLBridgeDelegate: what a creative asks of the view that hosts it.

#include <string>

#include "TarnelAd/TNLExport.h"

class TNLBridge;

/// The host of a creative's web view (the full-screen controller, the banner view): told what the
/// creative asked for over "bridge://". Called on the main thread, in the order the creative
/// asked; the bridge passed is the one of the web view that asked and is valid for the duration
/// of the call. The first eight operations are required; expanding, collapsing and the reward
/// are optional and do nothing unless overridden. Public because the banner view, a view hosts
/// place in their own hierarchy, is one.
class TNL_EXPORT TNLBridgeDelegate {
 public:
  virtual ~TNLBridgeDelegate() = default;

  /// The creative's page has loaded and received its payload.
  virtual void bridgeOpened(TNLBridge& bridge) = 0;
  /// The creative closes itself.
  virtual void closeActionSentByBridge(TNLBridge& bridge) = 0;
  /// The creative opens `url` (in the click-out browser).
  virtual void openUrl(const std::string& url, TNLBridge& bridge) = 0;
  /// The creative allows navigations away from its page, as opened URLs.
  virtual void enableRedirectActionSentByBridge(TNLBridge& bridge) = 0;
  /// The creative opts in to measurement as a display ad.
  virtual void displayOptinSentByBridge(TNLBridge& bridge) = 0;
  /// The creative opts in to measurement as a video ad.
  virtual void videoOptinSentByBridge(TNLBridge& bridge) = 0;
  /// The creative asks for the device description.
  virtual void deviceDataRequestSentByBridge(TNLBridge& bridge) = 0;
  /// The creative allows or forbids scrolling its page.
  virtual void allowScroll(bool allow, TNLBridge& bridge) = 0;

  /// The new height of the ad in points.
  virtual void expandPixels(float pixels, bool allowTouch, TNLBridge& bridge) {
    (void)pixels, (void)allowTouch, (void)bridge;
  }
  /// A percentage (0 to 100) of the height of the host's root view.
  virtual void expandPercent(float percent, bool allowTouch, TNLBridge& bridge) {
    (void)percent, (void)allowTouch, (void)bridge;
  }
  /// Back to the ad's own height.
  virtual void collapseActionSentByBridge(TNLBridge& bridge) { (void)bridge; }
  /// The creative grants the reward.
  virtual void rewardActionSentByBridge(TNLBridge& bridge) { (void)bridge; }
};
