#include "Ads/FullScreenAds/TNLFSAdViewController.h"

#include "Ads/TNLAd.h"
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

std::shared_ptr<TNLFSAdViewController> TNLFSAdViewController::create() {
  return std::make_shared<TNLFSAdViewController>();
}

TNLFSAdViewController::~TNLFSAdViewController() {
  TNLNotificationCenter::defaultCenter()->removeObserver(this);
}

void TNLFSAdViewController::loadWebView(const std::shared_ptr<TNLAdWebView>& webView,
                                        const std::shared_ptr<TNLViewController>& presenting) {
  try {
    const auto self = std::static_pointer_cast<TNLFSAdViewController>(shared_from_this());
    const std::weak_ptr<TNLFSAdViewController> weakSelf = self;
    // The application may change state on any thread; the page is only touched on the main one.
    const auto observe = [&](const char* name) {
      TNLNotificationCenter::defaultCenter()->addObserver(
          this, name, nullptr, [weakSelf](const TNLNotification& notification) {
            const auto deliver = [weakSelf, notification] {
              if (const auto controller = weakSelf.lock()) {
                controller->sendBridgeMessageFromNotification(notification);
              }
            };
            if (TNLMainQueue::isMainThread()) {
              deliver();
            } else {
              TNLMainQueue::async(deliver);
            }
          });
    };
    observe(TNLApplicationDidEnterBackgroundNotification);
    observe(TNLApplicationWillEnterForegroundNotification);

    if (!webView) {
      throw TNLException(TNLInvalidArgumentException, "No web view to show");
    }
    webView->bridge()->setDelegate(self);
    loadedWebView_ = webView;
    setView(webView);
    if (!presenting) {
      throw TNLException(TNLInvalidArgumentException,
                         "No view controller to present the full screen ad from");
    }
    presenting->present(self, true);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to load webview due to exception: %@", error);
  }
}

void TNLFSAdViewController::viewWillAppear(bool animated) {
  TNLViewController::viewWillAppear(animated);
  if (loadedWebView_) {
    loadedWebView_->sendBridgeMessageToAd(TNL_BRIDGE_FOREGROUND_CMD);
  }
}

void TNLFSAdViewController::viewWillTransitionToSize(const TNLSize& size) {
  TNLViewController::viewWillTransitionToSize(size);
  if (!loadedWebView_ || size.width == size.height) {
    return;
  }
  const std::string orientation = size.height > size.width ? TNL_PORTRAITORI : TNL_LANDSCAPEORI;
  loadedWebView_->sendBridgeMessageToAd(
      TNLFormat(TNL_BRIDGE_ORICHANGE_CMD, "'" + orientation + "'"));
}

void TNLFSAdViewController::sendBridgeMessageFromNotification(const TNLNotification& notification) {
  if (!loadedWebView_ || !loadedWebView_->bridge()) {
    return;
  }
  if (notification.name == TNLApplicationDidEnterBackgroundNotification) {
    loadedWebView_->sendBridgeMessageToAd(TNL_BRIDGE_BACKGROUND_CMD);
  } else if (notification.name == TNLApplicationWillEnterForegroundNotification) {
    loadedWebView_->sendBridgeMessageToAd(TNL_BRIDGE_FOREGROUND_CMD);
  }
}

void TNLFSAdViewController::bridgeOpened(TNLBridge& /*bridge*/) {
  // The creative has loaded and has its payload: the moment of the measurement impression.
  if (loadedWebView_) {
    TNLOMHandler::sharedHandler()->sendImpressionEventForWebView(loadedWebView_);
  }
}

void TNLFSAdViewController::closeActionSentByBridge(TNLBridge& /*bridge*/) {
  if (loadedWebView_) {
    TNLOMHandler::sharedHandler()->destroyOMIDSessionForWebView(loadedWebView_);
    if (const auto& ad = loadedWebView_->loadedAd()) {
      ad->adClosed();
    }
  }
  // The creative's close is the only way out of the ad, so it always dismisses, and it takes
  // the ad away with whatever covers it (the click-out browser): dismissing from this controller
  // would only take the browser.
  if (const auto presenting = presentingViewController()) {
    presenting->dismiss(true);
  } else {
    dismiss(true);
  }
}

void TNLFSAdViewController::enableRedirectActionSentByBridge(TNLBridge& /*bridge*/) {
  if (loadedWebView_) {
    loadedWebView_->enableRedirect(true);
  }
}

void TNLFSAdViewController::openUrl(const std::string& url, TNLBridge& /*bridge*/) {
  if (!loadedWebView_) {
    return;
  }
  try {
    std::optional<std::string> brandName;
    if (const auto& ad = loadedWebView_->loadedAd()) {
      if (const TNLJson* name = TNLJSON::member(ad->adCopy(), TNL_BRANDNAME_KEY);
          name && name->is_string()) {
        brandName = name->get<std::string>();
      }
    }
    const auto clickOut = TNLClickOutViewController::create(brandName, url);
    const std::weak_ptr<TNLAdWebView> webView = loadedWebView_;
    present(clickOut, true, [webView] {
      if (const auto view = webView.lock()) {
        view->sendBridgeMessageToAd(TNL_BRIDGE_BACKGROUND_CMD);
      }
    });
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to open clickout due to exception: %@", error);
  }
}

void TNLFSAdViewController::rewardActionSentByBridge(TNLBridge& /*bridge*/) {
  if (loadedWebView_) {
    if (const auto& ad = loadedWebView_->loadedAd()) {
      ad->adRewarded();
    }
  }
}

void TNLFSAdViewController::displayOptinSentByBridge(TNLBridge& /*bridge*/) {
  if (loadedWebView_) {
    loadedWebView_->respondToOptin(TNL_DISPLAY_OPTIN);
  }
}

void TNLFSAdViewController::videoOptinSentByBridge(TNLBridge& /*bridge*/) {
  if (loadedWebView_) {
    loadedWebView_->respondToOptin(TNL_VIDEO_OPTIN);
  }
}

void TNLFSAdViewController::deviceDataRequestSentByBridge(TNLBridge& /*bridge*/) {
  if (loadedWebView_) {
    loadedWebView_->sendDeviceData();
  }
}

void TNLFSAdViewController::allowScroll(bool allow, TNLBridge& /*bridge*/) {
  if (loadedWebView_) {
    loadedWebView_->respondToAllowScroll(allow);
  }
}
