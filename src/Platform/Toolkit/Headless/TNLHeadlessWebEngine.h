#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Toolkit/Headless/TNLHeadlessViewPeer.h"
#include "Platform/Toolkit/TNLWebEnginePeer.h"
#include "TarnelAd/Toolkit/TNLNavigationDelegate.h"
#include "TarnelAd/Toolkit/TNLWebViewConfiguration.h"

class TNLWebView;

// The headless backend's web engine. It runs no page: it keeps what the web view asked of it
// and lets a test play the page's side. Reach it from a web view with
//   auto engine = TNLHeadlessWebEngine::of(webView);
// then, for example, to play a creative:
//   engine->html(), engine->baseURL()           the page and base URL loaded
//   engine->playPageLoad()                       the load's own navigation, then its finish
//   engine->deliverNavigationAction("bridge://close", Target::mainFrame)   a click or redirect
//   engine->evaluatedStatements()               what was run in the page, in order
class TNLHeadlessWebEngine : public TNLWebEnginePeer,
                             public std::enable_shared_from_this<TNLHeadlessWebEngine> {
 public:
  // Which frame a navigation targets.
  enum class Target {
    mainFrame,
    childFrame,  // an iframe
    none,        // a new window: the action has no target frame
  };

  struct Decision {
    std::string url;
    TNLNavigationActionPolicy policy;
  };

  explicit TNLHeadlessWebEngine(const std::shared_ptr<TNLWebView>& webView);

  // The web view's headless engine, made now if it has none; null under another backend.
  static std::shared_ptr<TNLHeadlessWebEngine> of(const std::shared_ptr<TNLWebView>& webView);

  // What the web view asked for.
  const TNLWebViewConfiguration& configuration() const { return configuration_; }
  // The last loadHTMLString; cleared by a loadRequest, and the other way round.
  const std::optional<std::string>& html() const { return html_; }
  const std::optional<std::string>& baseURL() const { return baseURL_; }
  const std::optional<std::string>& requestURL() const { return requestURL_; }
  size_t loadCount() const { return loadCount_; }
  const std::vector<std::string>& evaluatedStatements() const { return statements_; }
  // The view state the engine was told, and the state of the web view's scroll view.
  const TNLHeadlessViewPeer& viewState() const { return *viewState_; }
  const TNLHeadlessViewPeer& scrollState() const { return *scrollState_; }

  // Playing the page.
  // Asks the web view's navigation delegate about a navigation to `url`; returns the decision
  // if it was made during the call. An allowed main-frame navigation becomes currentURL().
  std::optional<TNLNavigationActionPolicy> deliverNavigationAction(const std::string& url,
                                                                   Target target);
  // The main frame has finished loading (didFinishNavigation).
  void finishNavigation();
  // What a real engine does for the last load: a main-frame navigation to the base URL (or
  // "about:blank" without one) or to the request URL, then, if allowed, the finish. Returns the
  // decision; none when nothing was loaded or no decision came during the call.
  std::optional<TNLNavigationActionPolicy> playPageLoad();
  // Every decision made so far, in order.
  const std::vector<Decision>& decisions() const { return decisions_; }
  const std::optional<std::string>& currentURL() const { return currentURL_; }

  // TNLWebEnginePeer
  void loadHTMLString(const std::string& html, const std::optional<std::string>& baseURL) override;
  void loadRequest(const std::string& url) override;
  void evaluateJavaScript(const std::string& statement) override;
  std::shared_ptr<TNLViewPeer> scrollViewPeer() override { return scrollState_; }

  // TNLViewPeer: the web view's own state.
  void frameChanged(const TNLRect& frame) override { viewState_->frameChanged(frame); }
  void hiddenChanged(bool hidden) override { viewState_->hiddenChanged(hidden); }
  void alphaChanged(double alpha) override { viewState_->alphaChanged(alpha); }
  void opaqueChanged(bool opaque) override { viewState_->opaqueChanged(opaque); }
  void subviewsChanged(const std::vector<std::shared_ptr<TNLViewPeer>>& subviews) override {
    viewState_->subviewsChanged(subviews);
  }

 private:
  std::weak_ptr<TNLWebView> webView_;
  TNLWebViewConfiguration configuration_;
  std::shared_ptr<TNLHeadlessViewPeer> viewState_;
  std::shared_ptr<TNLHeadlessViewPeer> scrollState_;
  std::optional<std::string> html_;
  std::optional<std::string> baseURL_;
  std::optional<std::string> requestURL_;
  std::optional<std::string> pageLoadURL_;
  size_t loadCount_ = 0;
  std::vector<std::string> statements_;
  std::vector<Decision> decisions_;
  std::optional<std::string> currentURL_;
};
