#include "TarnelAd/TNLBannerAdView.h"

#include <algorithm>
#include <utility>

#include "Ads/BannerAds/TNLBannerAd.h"
#include "Ads/BannerAds/TNLBannerAdHandler.h"
#include "Ads/Macros/TNLMacros.h"
#include "Ads/TNLAdWebView.h"
#include "Ads/TNLClickOutViewController.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "TNLLog.h"
#include "TNLOMHandler.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLLayoutConstraint.h"
#include "TarnelAd/Toolkit/TNLLayoutGuide.h"
#include "TarnelAd/Toolkit/TNLScreen.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLViewController.h"
#include "TarnelAd/Toolkit/TNLWindow.h"
#include "Trackers/TNLTrackerHandler.h"

namespace {

constexpr char kHiddenKeyPath[] = "hidden";
constexpr char kAlphaKeyPath[] = "alpha";

// Views are torn down on the main thread, whichever thread held the last reference: a load
// completion on the HTTP thread hands its reference over instead of dropping it there.
void releaseOnMainThread(std::shared_ptr<TNLBannerAdView> view) {
  if (!view || TNLMainQueue::isMainThread()) {
    return;
  }
  TNLMainQueue::async([view = std::move(view)]() mutable { view.reset(); });
}

}  // namespace

std::shared_ptr<TNLBannerAdView> TNLBannerAdView::create(
    const std::shared_ptr<TNLBannerAdDelegate>& delegate, const std::optional<std::string>& appID,
    unsigned bannerSize, std::shared_ptr<TNLViewController> rootVC) {
  // The view hands itself to its bridge, so it is owned before it is set up.
  const std::shared_ptr<TNLBannerAdView> view(new TNLBannerAdView());
  view->delegate_ = delegate;
  view->rootVC_ = std::move(rootVC);
  try {
    const auto webView = TNLAdWebView::create();
    webView->bridge()->setDelegate(view);
    view->setLoadedWebView(webView);
    view->bridgeOpen_ = false;
    view->impressionSent_ = false;
    view->touchIgnoreZone_ = TNLRect();
    view->defaultHeight_ = 0.0;
    view->addSubview(webView);
    view->setBannerSizeFromAdSize(bannerSize);
    view->setWebviewSize();
    view->addObservers();
    TNLMacros::setValueInMacroDictionary(appID, TNL_APPID_MACRO);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to initialize Banner Ad View due to exception: %@", error);
  }
  return view;
}

TNLBannerAdView::~TNLBannerAdView() {
  // Each step is tried on its own: a view whose set-up failed has fewer registrations to undo,
  // and what is left must still be undone.
  try {
    removeObserver(this, kHiddenKeyPath);
    removeObserver(this, kAlphaKeyPath);
  } catch (const std::exception&) {
  }
  try {
    TNLNotificationCenter::defaultCenter()->removeObserver(this);
  } catch (const std::exception&) {
  }
  try {
    TNLOMHandler::sharedHandler()->destroyOMIDSessionForWebView(loadedWebView_);
  } catch (const std::exception&) {
  }
}

std::shared_ptr<TNLBannerAdView> TNLBannerAdView::self() {
  return std::static_pointer_cast<TNLBannerAdView>(shared_from_this());
}

// Size and layout.

TNLSize TNLBannerAdView::baseSizeForAdSize(unsigned bannerSize) {
  switch (bannerSize) {
    case TNLBannerAdSizeLeaderboard:
      return {728.0, 90.0};
    case TNLBannerAdSizeMediumRectangle:
      return {300.0, 250.0};
    default:
      return {320.0, 50.0};
  }
}

TNLSize TNLBannerAdView::calculateBannerSizeForAdSize(unsigned bannerSize) {
  // The screen's short side, so that the banner does not change with the orientation.
  const TNLRect screen = TNLScreen::mainScreen()->bounds();
  const double width = std::min(screen.width(), screen.height());
  return {width, calculateHeightForWidth(width, bannerSize)};
}

double TNLBannerAdView::calculateHeightForWidth(double width, unsigned bannerSize) {
  const TNLSize base = baseSizeForAdSize(bannerSize);
  return width / base.width * base.height;
}

void TNLBannerAdView::setBannerSizeFromAdSize(unsigned bannerSize) {
  const TNLSize size = calculateBannerSizeForAdSize(bannerSize);
  defaultHeight_ = size.height;
  setTranslatesAutoresizingMaskIntoConstraints(false);
  const auto me = self();
  heightConstraint_ = TNLLayoutConstraint::constraintWithItem(
      me, TNLLayoutAttribute::height, TNLLayoutRelation::equal, nullptr,
      TNLLayoutAttribute::notAnAttribute, 1.0, size.height);
  const auto widthConstraint = TNLLayoutConstraint::constraintWithItem(
      me, TNLLayoutAttribute::width, TNLLayoutRelation::equal, nullptr,
      TNLLayoutAttribute::notAnAttribute, 1.0, size.width);
  addConstraint(heightConstraint_);
  addConstraint(widthConstraint);
}

void TNLBannerAdView::setWebviewSize() {
  const auto webView = loadedWebView();
  if (!webView) {
    throw TNLException(TNLInvalidArgumentException, "No web view to lay out");
  }
  webView->setTranslatesAutoresizingMaskIntoConstraints(false);
  const auto me = self();
  for (const auto attribute : {TNLLayoutAttribute::top, TNLLayoutAttribute::bottom,
                               TNLLayoutAttribute::left, TNLLayoutAttribute::right}) {
    addConstraint(TNLLayoutConstraint::constraintWithItem(
        webView, attribute, TNLLayoutRelation::equal, me, attribute, 1.0, 0.0));
  }
}

// Observation.

void TNLBannerAdView::addObservers() {
  // The observations belong to this view and end with it, so they may refer to it directly.
  const auto observer = [this](const std::string& keyPath, TNLView&) {
    observeValueForKeyPath(keyPath);
  };
  addObserver(this, kHiddenKeyPath, observer);
  addObserver(this, kAlphaKeyPath, observer);

  const std::weak_ptr<TNLBannerAdView> weakSelf = self();
  const auto notify = [weakSelf](const TNLNotification& notification) {
    // The application may change state on any thread; the page is only touched on the main one.
    const auto deliver = [weakSelf, notification] {
      if (const auto view = weakSelf.lock()) {
        view->sendBridgeMessageFromNotification(notification);
      }
    };
    if (TNLMainQueue::isMainThread()) {
      deliver();
    } else {
      TNLMainQueue::async(deliver);
    }
  };
  const auto center = TNLNotificationCenter::defaultCenter();
  center->addObserver(this, TNLApplicationDidEnterBackgroundNotification, nullptr, notify);
  center->addObserver(this, TNLApplicationWillEnterForegroundNotification, nullptr, notify);
}

void TNLBannerAdView::observeValueForKeyPath(const std::string& keyPath) {
  try {
    if (keyPath == kHiddenKeyPath || keyPath == kAlphaKeyPath) {
      checkVisibilityAndSendToBridge();
    }
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("KVO for visibility check failed with exception: %@", error);
  }
}

void TNLBannerAdView::checkVisibilityAndSendToBridge() {
  try {
    if (!bridgeOpen_) {
      return;
    }
    putBlockOnMainQueue([view = self()] {
      // Only the view's own state counts, not its ancestors' or where it is on the screen.
      const bool visible = !view->isHidden() && view->alpha() == 1.0 && view->window() != nullptr;
      const auto webView = view->loadedWebView();
      if (visible) {
        if (!view->impressionSent_) {
          TNLOMHandler::sharedHandler()->sendImpressionEventForWebView(webView);
        }
        view->impressionSent_ = true;
      }
      view->sendBridgeMessageToAd(TNLFormat(TNL_BRIDGE_VISIBILITY_CMD, visible ? "true" : "false"));
    });
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Banner Ad visibility check failed with exception: %@", error);
  }
}

void TNLBannerAdView::sendBridgeMessageFromNotification(const TNLNotification& notification) {
  // Fixed messages: coming back says "visible" without looking at the view, as designed.
  const auto webView = loadedWebView();
  if (!webView || !webView->bridge()) {
    return;
  }
  if (notification.name == TNLApplicationDidEnterBackgroundNotification) {
    webView->sendBridgeMessageToAd(TNL_BRIDGE_BACKGROUND_CMD);
  } else if (notification.name == TNLApplicationWillEnterForegroundNotification) {
    webView->sendBridgeMessageToAd(TNL_BRIDGE_FOREGROUND_CMD);
  }
}

// Loading.

void TNLBannerAdView::loadAdForZone(const std::optional<std::string>& zone) {
  const std::string zoneName = zone.value_or("");
  try {
    TNLTrackerHandler::sendTrackerForEvent(TNL_ADREQUESTED_TRACKER);
    // The completions may outlive the host's interest in the view; they hold it only while they
    // run.
    const std::weak_ptr<TNLBannerAdView> weakSelf = self();
    TNLBannerAdHandler::sharedHandler()->loadBannerAdForZone(
        zoneName,
        [weakSelf, zoneName](const std::shared_ptr<TNLBannerAd>& ad) {
          auto view = weakSelf.lock();
          TNLTrackerHandler::sendTrackerForEvent(TNL_ADRETURNED_TRACKER);
          if (const auto webView = view ? view->loadedWebView() : nullptr) {
            webView->loadAd(ad);
          }
          // Sent when the ad is handed to the web view, not when the banner is first seen.
          TNLTrackerHandler::sendTrackerForEvent(TNL_ADSHOWING_TRACKER);
          if (view) {
            view->fireAdReadyForZone(zoneName);
          }
          releaseOnMainThread(std::move(view));
        },
        [weakSelf, zoneName](const TNLErrorPtr&) {
          auto view = weakSelf.lock();
          TNLTrackerHandler::sendTrackerForEvent(TNL_ADUNAVAILABLE_TRACKER);
          if (view) {
            view->fireAdFailedForZone(zoneName);
          }
          releaseOnMainThread(std::move(view));
        });
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Ad Loadng failed with exception: %@", error);
  }
}

void TNLBannerAdView::informBannerAdOfScrollViewEvent(
    const std::shared_ptr<TNLScrollView>& scrollView) {
  if (const auto webView = loadedWebView()) {
    webView->respondToScroll(scrollView);
  }
}

void TNLBannerAdView::showTNLLogs(bool show) {
  TNLLog::sharedLogger()->showTNLLogs(show);
}

// Delegate notification.

void TNLBannerAdView::fireAdReadyForZone(const std::string& zone) {
  if (!hasDelegate()) {
    return;
  }
  putBlockOnMainQueue([view = self(), zone] {
    if (const auto delegate = view->delegate()) {
      delegate->onBannerAdReadyForZone(view, zone);
    }
  });
}

void TNLBannerAdView::fireAdFailedForZone(const std::string& zone) {
  if (!hasDelegate()) {
    return;
  }
  putBlockOnMainQueue([view = self(), zone] {
    if (const auto delegate = view->delegate()) {
      delegate->onBannerAdFailedForZone(view, zone);
    }
  });
}

void TNLBannerAdView::fireAdClosedForZone(const std::string& zone) {
  if (!hasDelegate()) {
    return;
  }
  putBlockOnMainQueue([view = self(), zone] {
    if (const auto delegate = view->delegate()) {
      delegate->onBannerAdClosedForZone(view, zone);
    }
  });
}

void TNLBannerAdView::putBlockOnMainQueue(std::function<void()> block) const {
  TNLMainQueue::async(std::move(block));
}

// Touches.

bool TNLBannerAdView::pointInside(const TNLPoint& point) const {
  if (point.x < 0.0 || point.y < 0.0) {
    return false;
  }
  // The zone always starts at the view's origin; its own origin is not read.
  if (point.x < touchIgnoreZone_.size.width && point.y < touchIgnoreZone_.size.height) {
    return false;
  }
  return true;
}

void TNLBannerAdView::createTouchPassthroughZoneFromExpansion(float expansion) {
  touchIgnoreZone_ = TNLRect(0.0, 0.0, frame().width(), expansion);
}

// Bridge actions.

void TNLBannerAdView::bridgeOpened(TNLBridge& /*bridge*/) {
  bridgeOpen_ = true;
  checkVisibilityAndSendToBridge();
}

void TNLBannerAdView::closeActionSentByBridge(TNLBridge& bridge) {
  // Only the creative shown here may close this banner.
  const auto webView = loadedWebView();
  if (!webView || webView->bridge().get() != &bridge) {
    return;
  }
  TNLOMHandler::sharedHandler()->destroyOMIDSessionForWebView(webView);
  TNLTrackerHandler::sendTrackerForEvent(TNL_ADCLOSED_TRACKER);
  const auto& ad = webView->loadedAd();
  fireAdClosedForZone(ad ? ad->zone().value_or("") : std::string());
  setLoadedWebView(nullptr);
  removeFromSuperview();
}

void TNLBannerAdView::openUrl(const std::string& url, TNLBridge& /*bridge*/) {
  if (!rootVC_) {
    return;
  }
  std::optional<std::string> brandName;
  if (const auto webView = loadedWebView()) {
    if (const auto& ad = webView->loadedAd()) {
      if (const TNLJson* name = TNLJSON::member(ad->adCopy(), TNL_BRANDNAME_KEY);
          name && name->is_string()) {
        brandName = name->get<std::string>();
      }
    }
  }
  rootVC_->present(TNLClickOutViewController::create(brandName, url), true);
}

void TNLBannerAdView::enableRedirectActionSentByBridge(TNLBridge& /*bridge*/) {
  if (const auto webView = loadedWebView()) {
    webView->enableRedirect(true);
  }
}

void TNLBannerAdView::displayOptinSentByBridge(TNLBridge& /*bridge*/) {
  // The web view opens the measurement session.
  if (const auto webView = loadedWebView()) {
    webView->respondToOptin(TNL_DISPLAY_OPTIN);
  }
}

void TNLBannerAdView::videoOptinSentByBridge(TNLBridge& /*bridge*/) {
  if (const auto webView = loadedWebView()) {
    webView->respondToOptin(TNL_VIDEO_OPTIN);
  }
}

void TNLBannerAdView::deviceDataRequestSentByBridge(TNLBridge& /*bridge*/) {
  if (const auto webView = loadedWebView()) {
    webView->sendDeviceData();
  }
}

void TNLBannerAdView::allowScroll(bool allow, TNLBridge& /*bridge*/) {
  if (const auto webView = loadedWebView()) {
    webView->respondToAllowScroll(allow);
  }
}

void TNLBannerAdView::expandPixels(float pixels, bool allowTouch, TNLBridge& /*bridge*/) {
  try {
    if (!heightConstraint_) {
      throw TNLException(TNLInternalInconsistencyException, "The banner has no height constraint");
    }
    const double current = heightConstraint_->constant();
    const double height = pixels;
    // An expansion by points never makes the banner smaller.
    if (height <= current) {
      return;
    }
    if (allowTouch) {
      createTouchPassthroughZoneFromExpansion(static_cast<float>(height - current));
    }
    applyExpandedHeight(height);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Expanding banner ad failed due to exception: %@", error);
  }
}

void TNLBannerAdView::expandPercent(float percent, bool allowTouch, TNLBridge& /*bridge*/) {
  try {
    if (!heightConstraint_) {
      throw TNLException(TNLInternalInconsistencyException, "The banner has no height constraint");
    }
    double base = 0.0;
    if (rootVC_) {
      if (const auto rootView = rootVC_->view()) {
        if (const auto guide = rootView->safeAreaLayoutGuide()) {
          base = guide->layoutFrame().height();
        }
      }
    }
    // Unlike an expansion by points, this one may shrink the banner.
    const double height = static_cast<double>(percent) / 100.0 * base;
    if (allowTouch) {
      createTouchPassthroughZoneFromExpansion(
          static_cast<float>(height - heightConstraint_->constant()));
    }
    applyExpandedHeight(height);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Expanding banner ad failed due to exception: %@", error);
  }
}

void TNLBannerAdView::applyExpandedHeight(double height) {
  heightConstraint_->setConstant(height);
  layoutIfNeeded();
  sendBridgeMessageToAd(TNLFormat(TNL_BRIDGE_EXPANDED_CMD, height));
}

void TNLBannerAdView::collapseActionSentByBridge(TNLBridge& /*bridge*/) {
  // The pass-through zone stays: only a later expansion with touches replaces it.
  try {
    if (!heightConstraint_) {
      throw TNLException(TNLInternalInconsistencyException, "The banner has no height constraint");
    }
    heightConstraint_->setConstant(defaultHeight_);
    layoutIfNeeded();
    sendBridgeMessageToAd(TNL_BRIDGE_COLLAPSED_CMD);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Collapsing banner ad failed due to exception: %@", error);
  }
}

void TNLBannerAdView::sendBridgeMessageToAd(const std::string& statement) const {
  if (const auto webView = loadedWebView()) {
    webView->sendBridgeMessageToAd(statement);
  }
}

// Accessors shared with the HTTP thread.

bool TNLBannerAdView::hasDelegate() const {
  // Asked on the HTTP thread too, where taking a reference could make it the delegate's last.
  std::lock_guard lock(mutex_);
  return !delegate_.expired();
}

std::shared_ptr<TNLBannerAdDelegate> TNLBannerAdView::delegate() const {
  std::lock_guard lock(mutex_);
  return delegate_.lock();
}

void TNLBannerAdView::setDelegate(const std::shared_ptr<TNLBannerAdDelegate>& delegate) {
  std::lock_guard lock(mutex_);
  delegate_ = delegate;
}

std::shared_ptr<TNLAdWebView> TNLBannerAdView::loadedWebView() const {
  std::lock_guard lock(mutex_);
  return loadedWebView_;
}

void TNLBannerAdView::setLoadedWebView(std::shared_ptr<TNLAdWebView> webView) {
  std::shared_ptr<TNLAdWebView> previous;
  {
    std::lock_guard lock(mutex_);
    previous = std::exchange(loadedWebView_, std::move(webView));
  }
  // The previous web view may go with this reference; not under the lock.
}
