#pragma once

#include <memory>
#include <optional>
#include <string>

#include "TarnelAd/TNLBridgeDelegate.h"

// Reads the actions a creative sends as "bridge://<action>" and calls its delegate. Each action
// is tested for the keys below as a substring, in this order, and the first key found decides:
//   vibrate, close, optin?, open?url=, expand=, expandPercent=, collapse, enableRedirect,
//   reward, deviceData, allowScrolling=
// So an open action whose address contains "close" closes the ad, and "expandPercent=" never
// matches because it contains "expand=". Unknown actions are ignored without a word. Main thread.
class TNLBridge {
 public:
  // The action a main-frame navigation to `url` (which begins with "bridge://") carries: every
  // "bridge://" removed and, for an open action, the rest percent-decoded; none when that
  // decoding fails.
  static std::optional<std::string> actionForURL(const std::string& url);
  // Parses one action (the text after "bridge://"; none when the web view could not decode it)
  // and dispatches it.
  void respondToBridgeAction(const std::optional<std::string>& action);
  // Tells the delegate that the page has loaded; called by the web view, not by the creative.
  void open();

  std::shared_ptr<TNLBridgeDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<TNLBridgeDelegate> delegate) { delegate_ = std::move(delegate); }

  // The steps of an action, public so that they can be exercised on their own.
  // The first "&"-separated piece read as a decimal prefix ("250px" is 250); 0 without one.
  static float getValueFromExpandAction(const std::string& action);
  // True when the second "&"-separated piece, without "touch=", is exactly "true".
  static bool getTouchFromExpandAction(const std::string& action);
  void getAllowScrollAndFireMethodForAction(const std::string& action);
  void handleOptin(const std::string& optin);

  void fireCloseMethod();
  void fireOpenUrlMethodWithUrl(const std::string& url);
  void fireExpandPixelsMethodWithPixels(float pixels, bool touch);
  void fireExpandPercentMethodWithPercent(float percent, bool touch);
  void fireCollapseMethod();
  void fireEnableRedirectMethod();
  void fireRewardMethod();
  void fireDeviceDataMethod();
  void fireAllowScrollMethodWithAllow(bool allow);

 private:
  std::weak_ptr<TNLBridgeDelegate> delegate_;
};
