#pragma once

#include <memory>

#include "TarnelAd/TNLBridgeDelegate.h"
#include "TarnelAd/Toolkit/TNLViewController.h"

class TNLAdWebView;
struct TNLNotification;

// The screen of one full-screen ad: its view is the ad's web view, and it answers the creative's
// bridge actions. It has no chrome of its own; the creative draws its close control and closes
// through the bridge. It tells the creative when it becomes visible or hidden and when the screen
// turns. Expand and collapse actions do nothing here. Main thread only.
class TNLFSAdViewController : public TNLViewController, public TNLBridgeDelegate {
 public:
  static std::shared_ptr<TNLFSAdViewController> create();
  ~TNLFSAdViewController() override;

  // Becomes the web view's bridge delegate, takes the web view as its view and presents itself
  // over `presenting`, animated.
  void loadWebView(const std::shared_ptr<TNLAdWebView>& webView,
                   const std::shared_ptr<TNLViewController>& presenting);

  void viewWillAppear(bool animated) override;
  void viewWillTransitionToSize(const TNLSize& size) override;
  // The application's background and foreground notifications.
  void sendBridgeMessageFromNotification(const TNLNotification& notification);

  // TNLBridgeDelegate
  void bridgeOpened(TNLBridge& bridge) override;
  void closeActionSentByBridge(TNLBridge& bridge) override;
  void enableRedirectActionSentByBridge(TNLBridge& bridge) override;
  void openUrl(const std::string& url, TNLBridge& bridge) override;
  void rewardActionSentByBridge(TNLBridge& bridge) override;
  void displayOptinSentByBridge(TNLBridge& bridge) override;
  void videoOptinSentByBridge(TNLBridge& bridge) override;
  void deviceDataRequestSentByBridge(TNLBridge& bridge) override;
  void allowScroll(bool allow, TNLBridge& bridge) override;

  const std::shared_ptr<TNLAdWebView>& loadedWebView() const { return loadedWebView_; }
  void setLoadedWebView(std::shared_ptr<TNLAdWebView> webView) {
    loadedWebView_ = std::move(webView);
  }

 private:
  std::shared_ptr<TNLAdWebView> loadedWebView_;
};
