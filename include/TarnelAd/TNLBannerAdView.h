#pragma once

/// @file
/// @brief TNLBannerAdView: inline banner ads, and their size codes.

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TarnelAd/TNLBannerAdDelegate.h"
#include "TarnelAd/TNLBridgeDelegate.h"
#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLRect.h"
#include "TarnelAd/Toolkit/TNLSize.h"
#include "TarnelAd/Toolkit/TNLView.h"

class TNLAdWebView;
class TNLLayoutConstraint;
class TNLScrollView;
class TNLViewController;
struct TNLNotification;

/// Banner size codes. The width of a banner is the screen's short side; its height keeps the
/// proportions of the base size. Any other code gets the standard base size.
enum TNLBannerAdSize : unsigned {
  TNLBannerAdSizeStandard = 0,         ///< 320 x 50
  TNLBannerAdSizeLeaderboard = 1,      ///< 728 x 90
  TNLBannerAdSizeMediumRectangle = 2,  ///< 300 x 250
};

/// An inline banner: a view the host places in its own hierarchy, with the creative's web view
/// filling it. It sizes itself (width and height constraints; the host positions it), loads a
/// banner for a zone, tells the creative when the banner is visible, when the application goes to
/// the background and comes back, and when the host's scroll view scrolls, and lets the creative
/// expand, collapse, close itself and open links.
///
/// @code
/// auto banner = TNLBannerAdView::create(screen, "my-app-id", TNLBannerAdSizeStandard, screen);
/// screen->view()->addSubview(banner);
/// banner->loadAdForZone("home-bottom");
/// // ... onBannerAdReadyForZone(banner, "home-bottom") on the main thread ...
/// @endcode
///
/// The view counts as visible when it is not hidden, its alpha is exactly 1.0 and it is in a
/// window; its ancestors and its position on the screen are not considered. After an expansion
/// that allows touches, touches in the added band at the top of the banner reach what lies behind
/// it. Main thread only, except loadAdForZone. The host owns the view (and its superview holds
/// it); when the creative closes itself the view leaves its superview and releases its web view.
/// Callbacks: see TNLBannerAdDelegate.
class TNL_EXPORT TNLBannerAdView : public TNLView, public TNLBridgeDelegate {
 public:
  /// The delegate is held weakly, the root view controller strongly: it presents the click-out
  /// browser and its view's safe area is the base of expansions by percent. The application ID
  /// goes into the library's requests. A failure while setting up is logged and the view is
  /// returned as far as it got. Main thread.
  static std::shared_ptr<TNLBannerAdView> create(
      const std::shared_ptr<TNLBannerAdDelegate>& delegate, const std::optional<std::string>& appID,
      unsigned bannerSize, std::shared_ptr<TNLViewController> rootVC);
  /// Stops observing and ends the web view's measurement session; failures are ignored.
  ~TNLBannerAdView() override;

  /// "TNLBannerAdView".
  std::string className() const override { return "TNLBannerAdView"; }

  /// Requests the zone's banner (std::nullopt is the zone "") and shows it; returns before the
  /// network answers. A zone loaded before (by any banner view of the process) answers at once
  /// with the same banner. The delegate hears ready or failed later, on the main thread. Any
  /// thread.
  void loadAdForZone(const std::optional<std::string>& zone);
  /// Call from the scroll handling of the scroll view that holds the banner (its
  /// TNLScrollViewDelegate::scrollViewDidScroll): the creative receives the scroll position.
  void informBannerAdOfScrollViewEvent(const std::shared_ptr<TNLScrollView>& scrollView);
  /// Switches the library's diagnostic log (off by default).
  static void showTNLLogs(bool show);

  /// The base size of a size code (TNLBannerAdSize; any other code is the standard size).
  static TNLSize baseSizeForAdSize(unsigned bannerSize);
  /// The banner's size on the main screen: the screen's short side wide, in the proportions of
  /// the base size.
  static TNLSize calculateBannerSizeForAdSize(unsigned bannerSize);
  /// The height, unrounded, of a banner of this width in the proportions of the base size.
  static double calculateHeightForWidth(double width, unsigned bannerSize);

  /// Touches in the pass-through zone (origin always 0, 0) and at negative coordinates are not
  /// the banner's; everything else is, even right of or below the view.
  bool pointInside(const TNLPoint& point) const override;

  /// The creative's requests (TNLBridgeDelegate), on the main thread. Only a close from this
  /// view's own web view is obeyed; the other actions act on the loaded web view whichever
  /// bridge sends them.
  ///@{
  void bridgeOpened(TNLBridge& bridge) override;
  void closeActionSentByBridge(TNLBridge& bridge) override;
  void openUrl(const std::string& url, TNLBridge& bridge) override;
  void enableRedirectActionSentByBridge(TNLBridge& bridge) override;
  void displayOptinSentByBridge(TNLBridge& bridge) override;
  void videoOptinSentByBridge(TNLBridge& bridge) override;
  void deviceDataRequestSentByBridge(TNLBridge& bridge) override;
  void allowScroll(bool allow, TNLBridge& bridge) override;
  ///@}
  /// Grows to `pixels` points high; never shrinks.
  void expandPixels(float pixels, bool allowTouch, TNLBridge& bridge) override;
  /// Takes `percent` of the height of the root view's safe area, larger or smaller than now.
  void expandPercent(float percent, bool allowTouch, TNLBridge& bridge) override;
  /// Back to the height of the size code.
  void collapseActionSentByBridge(TNLBridge& bridge) override;

  /// The delegate, held weakly; any thread.
  ///@{
  std::shared_ptr<TNLBannerAdDelegate> delegate() const;
  void setDelegate(const std::shared_ptr<TNLBannerAdDelegate>& delegate);
  ///@}
  /// The root view controller, held strongly.
  ///@{
  const std::shared_ptr<TNLViewController>& rootVC() const { return rootVC_; }
  void setRootVC(std::shared_ptr<TNLViewController> rootVC) { rootVC_ = std::move(rootVC); }
  ///@}
  /// The creative's web view, filling the banner; null once the creative has closed.
  ///@{
  std::shared_ptr<TNLAdWebView> loadedWebView() const;
  void setLoadedWebView(std::shared_ptr<TNLAdWebView> webView);
  ///@}
  /// For the host's own use; the view never reads it.
  ///@{
  const std::shared_ptr<TNLScrollView>& scrollView() const { return scrollView_; }
  void setScrollView(std::shared_ptr<TNLScrollView> scrollView) {
    scrollView_ = std::move(scrollView);
  }
  ///@}
  /// The constraint that holds the banner's height; expansions and collapses change it.
  ///@{
  const std::shared_ptr<TNLLayoutConstraint>& heightConstraint() const { return heightConstraint_; }
  void setHeightConstraint(std::shared_ptr<TNLLayoutConstraint> constraint) {
    heightConstraint_ = std::move(constraint);
  }
  ///@}
  /// Whether the creative's bridge has opened; visibility reports start then.
  ///@{
  bool bridgeOpen() const { return bridgeOpen_; }
  void setBridgeOpen(bool open) { bridgeOpen_ = open; }
  ///@}
  /// Whether the measurement impression was sent (the first time the banner was seen visible).
  ///@{
  bool impressionSent() const { return impressionSent_; }
  void setImpressionSent(bool sent) { impressionSent_ = sent; }
  ///@}
  /// The height of the size code, which a collapse returns to.
  ///@{
  double defaultHeight() const { return defaultHeight_; }
  void setDefaultHeight(double height) { defaultHeight_ = height; }
  ///@}
  /// The band at the top of the banner whose touches pass through it (origin always 0, 0).
  ///@{
  TNLRect touchIgnoreZone() const { return touchIgnoreZone_; }
  void setTouchIgnoreZone(const TNLRect& zone) { touchIgnoreZone_ = zone; }
  ///@}

 private:
  TNLBannerAdView() = default;

  std::shared_ptr<TNLBannerAdView> self();
  void setBannerSizeFromAdSize(unsigned bannerSize);
  void setWebviewSize();
  void addObservers();
  void observeValueForKeyPath(const std::string& keyPath);
  void checkVisibilityAndSendToBridge();
  void sendBridgeMessageFromNotification(const TNLNotification& notification);
  void createTouchPassthroughZoneFromExpansion(float expansion);
  /// Sets the height, lays the view out and tells the creative.
  void applyExpandedHeight(double height);
  void sendBridgeMessageToAd(const std::string& statement) const;
  bool hasDelegate() const;
  void fireAdReadyForZone(const std::string& zone);
  void fireAdFailedForZone(const std::string& zone);
  void fireAdClosedForZone(const std::string& zone);
  void putBlockOnMainQueue(std::function<void()> block) const;

  /// The delegate and the web view are also read by load completions on the HTTP thread.
  mutable std::mutex mutex_;
  std::weak_ptr<TNLBannerAdDelegate> delegate_;
  std::shared_ptr<TNLAdWebView> loadedWebView_;

  std::shared_ptr<TNLViewController> rootVC_;
  std::shared_ptr<TNLScrollView> scrollView_;
  std::shared_ptr<TNLLayoutConstraint> heightConstraint_;
  bool bridgeOpen_ = false;
  bool impressionSent_ = false;
  double defaultHeight_ = 0.0;
  TNLRect touchIgnoreZone_;
};
