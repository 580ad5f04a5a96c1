#include "Ads/TNLAdWebView.h"

#include "Ads/Macros/TNLMacros.h"
#include "Ads/TNLAd.h"
#include "Platform/Foundation/TNLException.h"
#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLJSON.h"
#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Foundation/TNLStrings.h"
#include "Platform/Http/TNLURLRequest.h"
#include "TNLLog.h"
#include "TNLOMHandler.h"
#include "TarnelAd/TNLConstants.h"
#include "TarnelAd/TNLDeviceFacts.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLScreen.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"

namespace {

TNLWebViewConfiguration creativeConfiguration() {
  TNLWebViewConfiguration configuration;
  configuration.javaScriptEnabled = true;
  // Creatives may start audio and video on their own, and play them inside the page.
  configuration.mediaTypesRequiringUserActionForPlayback = TNLAudiovisualMediaTypes::none;
  configuration.allowsInlineMediaPlayback = true;
  return configuration;
}

}  // namespace

std::shared_ptr<TNLAdWebView> TNLAdWebView::create() {
  auto webView = std::make_shared<TNLAdWebView>();
  webView->setNavigationDelegate(webView);
  return webView;
}

TNLAdWebView::TNLAdWebView()
    : TNLWebView(TNLRect(), creativeConfiguration()), bridge_(std::make_shared<TNLBridge>()) {
  // A creative turns scrolling on itself if it wants it ("allowScrolling=").
  scrollView()->setScrollEnabled(false);
  scrollView()->setBounces(false);
  setOpaque(false);
}

TNLAdWebView::~TNLAdWebView() {
  TNLNotificationCenter::defaultCenter()->removeObserver(this);
}

std::shared_ptr<TNLAdWebView> TNLAdWebView::loadAd(const std::shared_ptr<TNLAd>& ad) {
  const auto self = std::static_pointer_cast<TNLAdWebView>(shared_from_this());
  TNLMainQueue::async([self, ad] {
    self->loadedAd_ = ad;
    self->baseURL_.reset();
    if (ad && ad->creativeTag()) {
      self->baseURL_ = TNLURLRequest::parseURL(*ad->creativeTag());
    }
    self->loadHTMLString(ad ? ad->html().value_or("") : "", self->baseURL_);
  });
  return self;
}

void TNLAdWebView::webViewDidFinishNavigation(const std::shared_ptr<TNLWebView>& webView) {
  if (webView.get() != this) {
    return;
  }
  try {
    if (!loadedAd_) {
      throw TNLException(TNLInvalidArgumentException, "The web view has no ad to hand over");
    }
    sendBridgeMessageToAd(
        TNLFormat(TNL_BRIDGE_RECIEVEPAYLOAD_CMD, TNLJSON::serialize(loadedAd_->fullAd(), true)));
    bridge_->open();
    startVolumeListener();
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to initialize Ad in webview due to exception: %@", error);
  }
}

void TNLAdWebView::webViewDecidePolicyForNavigationActionDecisionHandler(
    const std::shared_ptr<TNLWebView>& webView, const TNLNavigationAction& action,
    DecisionHandler decisionHandler) {
  try {
    const std::string& url = action.requestURL();
    TNLPlatformLog(TNLFormat("URL String: %@", url));
    // The creative's own page: its tag, or the address the tag was read as (escaped where the tag
    // has blanks or other characters an address cannot carry), which the page loads from.
    if (loadedAd_ && (loadedAd_->creativeTag() == url || baseURL_ == url)) {
      decisionHandler(TNLNavigationActionPolicy::allow);
      return;
    }
    // Frames inside the page, and new windows.
    const auto& frame = action.targetFrame();
    if (!frame || !frame->isMainFrame()) {
      decisionHandler(TNLNavigationActionPolicy::allow);
      return;
    }
    // The main frame never leaves the creative; what it asked for goes to the bridge.
    if (webView.get() == this) {
      if (TNLStrings::hasPrefix(url, TNL_BRIDGE_CALLOUT)) {
        bridge_->respondToBridgeAction(TNLBridge::actionForURL(url));
      } else if (allowRedirect_) {
        bridge_->respondToBridgeAction(TNL_BRIDGE_OPEN_URL_ACT + url);
      }
    }
    decisionHandler(TNLNavigationActionPolicy::cancel);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Navigation action handling failed in webview due to exception: %@",
                                error);
  }
}

void TNLAdWebView::respondToScroll(const std::shared_ptr<TNLScrollView>& scrollView) {
  try {
    if (!scrollInitialized_) {
      sendBridgeMessageToAd(TNL_BRIDGE_SCROLL_INIT_CMD);
      scrollInitialized_ = true;
    }
    if (!scrollView) {
      throw TNLException(TNLInvalidArgumentException, "No scroll view to report");
    }
    const TNLPoint offset = scrollView->contentOffset();
    const TNLRect frame = scrollView->frame();
    TNLJson event = TNLJson::object();
    event["startX"] = 0;
    event["startY"] = 0;
    event["currX"] = offset.x;
    event["currY"] = offset.y;
    event["maxX"] = frame.width();
    event["maxY"] = frame.height();
    sendBridgeMessageToAd(TNLFormat(TNL_BRIDGE_SCROLL_CMD, TNLJSON::serialize(event)));
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to create scroll view event due to exception: %@", error);
  }
}

void TNLAdWebView::respondToAllowScroll(bool allow) {
  try {
    scrollView()->setScrollEnabled(allow);
    scrollView()->setBounces(allow);
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Failed to set scrollView properties due to exception: %@", error);
  }
}

void TNLAdWebView::startVolumeListener() {
  // Linux has no volume overlay to hide, so no hidden volume view is added. The level and its
  // changes come from the device facts.
  const std::weak_ptr<TNLAdWebView> weakSelf =
      std::static_pointer_cast<TNLAdWebView>(shared_from_this());
  TNLNotificationCenter::defaultCenter()->addObserver(
      this, TNLDeviceFacts::kOutputVolumeDidChangeNotification, nullptr,
      [weakSelf](const TNLNotification& notification) {
        // Volume changes may be posted from any thread; the page is only touched on the main one.
        if (TNLMainQueue::isMainThread()) {
          if (const auto self = weakSelf.lock()) {
            self->volumeChanged(notification);
          }
          return;
        }
        TNLMainQueue::async([weakSelf, notification] {
          if (const auto self = weakSelf.lock()) {
            self->volumeChanged(notification);
          }
        });
      });
  sendBridgeMessageToAd(TNLFormat(TNL_BRIDGE_VOLUME_CMD, getCurrentVolume()));
}

void TNLAdWebView::volumeChanged(const TNLNotification& notification) {
  try {
    const float volume = notification.userInfo.at(TNLDeviceFacts::kOutputVolumeKey).get<float>();
    sendBridgeMessageToAd(TNLFormat(TNL_BRIDGE_VOLUME_CMD, volume));
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Volume change notification caused exception: %@", error);
  }
}

float TNLAdWebView::getCurrentVolume() const {
  return TNLSetup::deviceFacts()->outputVolume();
}

void TNLAdWebView::sendDeviceData() {
  try {
    const auto orientation = TNLApplication::sharedApplication()->statusBarOrientation();
    const bool portrait = orientation == TNLInterfaceOrientation::portrait ||
                          orientation == TNLInterfaceOrientation::portraitUpsideDown;
    const TNLMacroDict macros = TNLMacros::sharedMacroDict();
    const TNLRect frame = this->frame();
    const TNLPoint offset = scrollView()->contentOffset();
    TNLJson data = TNLJson::object();
    data["devicePixelRatio"] = TNLScreen::mainScreen()->scale();
    data["orientation"] = portrait ? 1 : 2;
    // A table without the screen size cannot describe the device: nothing is sent.
    data["screenHeight"] = macros.at(TNL_SCREENHEIGHT_MACRO);
    data["screenWidth"] = macros.at(TNL_SCREENWIDTH_MACRO);
    data["webviewHeight"] = frame.height();
    data["webviewOffsetX"] = offset.x;
    data["webviewOffsetY"] = offset.y;
    data["webviewWidth"] = frame.width();
    sendBridgeMessageToAd(TNLFormat(TNL_BRIDGE_DEVICEDATA_CMD, TNLJSON::serialize(data)));
  } catch (const std::exception& error) {
    TNLLog::sharedLogger()->log("Sending device data failed due to exception: %@", error);
  }
}

void TNLAdWebView::sendBridgeMessageToAd(const std::string& statement) {
  TNLPlatformLog(TNLFormat("Bridge Message sent: %@", statement));
  evaluateJavaScript(statement);
}

void TNLAdWebView::respondToOptin(const std::string& type) {
  TNLOMHandler::sharedHandler()->createOMIDSessionForWebView(
      std::static_pointer_cast<TNLAdWebView>(shared_from_this()), type);
}

std::string TNLAdWebView::address() const {
  return TNLOMHandler::addressForWebView(*this);
}
