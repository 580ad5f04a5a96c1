#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Ads/TNLBridge.h"
#include "TarnelAd/Toolkit/TNLNavigationDelegate.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

class TNLAd;
class TNLScrollView;
struct TNLNotification;

// The web view a creative runs in: one per shown ad, its own navigation delegate. It loads the
// ad's HTML with the creative tag as base URL, lets only the creative's own page and frames other
// than the main one navigate, hands "bridge://" actions to its bridge, and sends the creative its
// payload, the volume, scroll events and device data. Main thread only, except loadAd.
class TNLAdWebView : public TNLWebView, public TNLNavigationDelegate {
 public:
  // A transparent web view of zero size (the host sizes it) with scrolling off, autoplay and
  // inline playback allowed, a new bridge, and itself as its navigation delegate.
  static std::shared_ptr<TNLAdWebView> create();
  TNLAdWebView();
  ~TNLAdWebView() override;

  std::string className() const override { return "TNLAdWebView"; }

  // Loads the ad's HTML on a later main-loop iteration and returns this view at once (loadedAd
  // is still the previous one when it returns). Any thread.
  std::shared_ptr<TNLAdWebView> loadAd(const std::shared_ptr<TNLAd>& ad);

  // TNLNavigationDelegate
  void webViewDidFinishNavigation(const std::shared_ptr<TNLWebView>& webView) override;
  void webViewDecidePolicyForNavigationActionDecisionHandler(
      const std::shared_ptr<TNLWebView>& webView, const TNLNavigationAction& action,
      DecisionHandler decisionHandler) override;

  // Sends one scroll event of the host's scroll view that holds the ad (announcing the scroll
  // listener before the first one).
  void respondToScroll(const std::shared_ptr<TNLScrollView>& scrollView);
  // Turns scrolling and bouncing of this view's own scroll view on or off.
  void respondToAllowScroll(bool allow);
  // Observes the output volume and sends the current one.
  void startVolumeListener();
  void volumeChanged(const TNLNotification& notification);
  float getCurrentVolume() const;
  void sendDeviceData();
  // Logs the statement to the platform log and runs it in the page, without awaiting a result.
  void sendBridgeMessageToAd(const std::string& statement);
  void enableRedirect(bool enable) { allowRedirect_ = enable; }
  // The creative opted in to measurement of the given type ("display" or "video").
  void respondToOptin(const std::string& type);
  // The view's identity: its address printed with "%p".
  std::string address() const;

  bool allowRedirect() const { return allowRedirect_; }
  void setAllowRedirect(bool allow) { allowRedirect_ = allow; }
  bool scrollInitialized() const { return scrollInitialized_; }
  void setScrollInitialized(bool initialized) { scrollInitialized_ = initialized; }
  const std::shared_ptr<TNLBridge>& bridge() const { return bridge_; }
  void setBridge(std::shared_ptr<TNLBridge> bridge) { bridge_ = std::move(bridge); }
  const std::shared_ptr<TNLAd>& loadedAd() const { return loadedAd_; }
  void setLoadedAd(std::shared_ptr<TNLAd> ad) { loadedAd_ = std::move(ad); }

 private:
  bool allowRedirect_ = false;
  bool scrollInitialized_ = false;
  std::shared_ptr<TNLBridge> bridge_;
  std::shared_ptr<TNLAd> loadedAd_;
  // The base URL the loaded ad's page was given.
  std::optional<std::string> baseURL_;
};
