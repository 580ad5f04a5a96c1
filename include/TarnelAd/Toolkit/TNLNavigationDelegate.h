#pragma once

/// @file
/// @brief TNLNavigationDelegate: told about a web view's navigations.

#include <functional>
#include <memory>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLNavigationAction.h"

class TNLWebView;

/// A navigation delegate's decision.
enum class TNLNavigationActionPolicy {
  cancel = 0,
  allow = 1,
};

/// Told about a web view's navigations, on the main thread. Both operations are optional: without
/// an override every navigation is allowed and a finished load goes unnoticed. The web view holds
/// its navigation delegate weakly.
class TNL_EXPORT TNLNavigationDelegate {
 public:
  /// Takes the decision; callable on the main thread, now or later, and copyable.
  using DecisionHandler = std::function<void(TNLNavigationActionPolicy policy)>;

  virtual ~TNLNavigationDelegate() = default;

  /// Decide by calling `decisionHandler` once, now or later; calls after the first are ignored.
  /// The navigation waits until then (and is cancelled when the web view goes first).
  virtual void webViewDecidePolicyForNavigationActionDecisionHandler(
      const std::shared_ptr<TNLWebView>& /*webView*/, const TNLNavigationAction& /*action*/,
      DecisionHandler decisionHandler) {
    decisionHandler(TNLNavigationActionPolicy::allow);
  }

  /// The main frame's page has finished loading.
  virtual void webViewDidFinishNavigation(const std::shared_ptr<TNLWebView>& /*webView*/) {}
};
