#pragma once

#include <functional>
#include <memory>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLNavigationAction.h"

class TNLWebView;

enum class TNLNavigationActionPolicy {
  cancel = 0,
  allow = 1,
};

// Told about a web view's navigations, on the main thread. Both operations are optional: without
// an override every navigation is allowed and a finished load goes unnoticed.
class TNL_EXPORT TNLNavigationDelegate {
 public:
  using DecisionHandler = std::function<void(TNLNavigationActionPolicy policy)>;

  virtual ~TNLNavigationDelegate() = default;

  // Decide by calling `decisionHandler` once, now or later; calls after the first are ignored.
  virtual void webViewDecidePolicyForNavigationActionDecisionHandler(
      const std::shared_ptr<TNLWebView>& /*webView*/, const TNLNavigationAction& /*action*/,
      DecisionHandler decisionHandler) {
    decisionHandler(TNLNavigationActionPolicy::allow);
  }

  // The main frame's page has finished loading.
  virtual void webViewDidFinishNavigation(const std::shared_ptr<TNLWebView>& /*webView*/) {}
};
