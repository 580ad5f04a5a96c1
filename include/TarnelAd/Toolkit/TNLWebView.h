#pragma once

/// @file
/// @brief TNLWebView: a view that shows web content.

#include <memory>
#include <optional>
#include <string>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLNavigationDelegate.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWebViewConfiguration.h"

class TNLScrollView;
class TNLWebEnginePeer;

/// A view that shows web content. Its peer is the backend's web engine, made on the first load
/// (or when the view goes on screen); the engine honours the configuration, the opaque flag and
/// the switches and offset of the view's own scroll view, and reports navigations back through
/// the navigation delegate. Subclasses may be their own navigation delegate.
///
/// The headless backend's engine runs no page. Main thread only.
class TNL_EXPORT TNLWebView : public TNLView {
 public:
  /// A web view at `frame` with its engine set up as `configuration` says; own it with
  /// std::shared_ptr.
  ///@{
  TNLWebView(const TNLRect& frame, const TNLWebViewConfiguration& configuration);
  static std::shared_ptr<TNLWebView> create(const TNLRect& frame,
                                            const TNLWebViewConfiguration& configuration);
  ///@}

  /// "TNLWebView".
  std::string className() const override { return "TNLWebView"; }

  /// The configuration it was made with.
  const TNLWebViewConfiguration& configuration() const { return configuration_; }

  /// Relative URLs of the page resolve against `baseURL` (an absolute URL); without one the page
  /// has no origin ("about:blank").
  /// Loading happens later; the navigation delegate decides the navigation and hears when the
  /// page has loaded.
  void loadHTMLString(const std::string& html, const std::optional<std::string>& baseURL);
  /// Loads the page at `url`, as loadHTMLString does.
  void loadRequest(const std::string& url);
  /// Runs a statement in the page; its result is not awaited.
  void evaluateJavaScript(const std::string& statement);

  /// The view's own scroll view; its frame follows the web view's bounds.
  const std::shared_ptr<TNLScrollView>& scrollView() const { return scrollView_; }

  /// The navigation delegate, held weakly.
  ///@{
  std::shared_ptr<TNLNavigationDelegate> navigationDelegate() const {
    return navigationDelegate_.lock();
  }
  void setNavigationDelegate(std::weak_ptr<TNLNavigationDelegate> delegate) {
    navigationDelegate_ = std::move(delegate);
  }
  ///@}

  /// Engine side: a navigation needs a decision (the handler is called once at most, with the
  /// delegate's decision, or allow without a delegate); the main frame finished loading.
  ///@{
  void engineDecidePolicyForNavigationAction(const TNLNavigationAction& action,
                                             TNLNavigationDelegate::DecisionHandler handler);
  void engineDidFinishNavigation();
  ///@}

 protected:
  /// The backend's web engine.
  std::shared_ptr<TNLViewPeer> makePeer(TNLToolkitBackend& backend) override;
  /// Keeps the scroll view's frame on the bounds.
  void boundsDidChange() override;

 private:
  std::shared_ptr<TNLWebEnginePeer> engine();

  TNLWebViewConfiguration configuration_;
  std::shared_ptr<TNLScrollView> scrollView_;
  std::weak_ptr<TNLNavigationDelegate> navigationDelegate_;
};
