#include "TarnelAd/Toolkit/TNLWebView.h"

#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Toolkit/TNLToolkitBackend.h"
#include "Platform/Toolkit/TNLWebEnginePeer.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"

TNLWebView::TNLWebView(const TNLRect& frame, const TNLWebViewConfiguration& configuration)
    : TNLView(frame),
      configuration_(configuration),
      scrollView_(TNLScrollView::create({0.0, 0.0, frame.size.width, frame.size.height})) {
  // The scroll view's peer is part of the engine, attached when the engine is made.
  scrollView_->setPeerSuppliedByOwner(true);
}

std::shared_ptr<TNLWebView> TNLWebView::create(const TNLRect& frame,
                                               const TNLWebViewConfiguration& configuration) {
  return std::make_shared<TNLWebView>(frame, configuration);
}

std::shared_ptr<TNLWebEnginePeer> TNLWebView::engine() {
  auto engine = std::dynamic_pointer_cast<TNLWebEnginePeer>(peer());
  if (!engine) {
    TNLPlatformLog("TNLWebView has no web engine: the view must be owned by a std::shared_ptr");
  }
  return engine;
}

void TNLWebView::loadHTMLString(const std::string& html,
                                const std::optional<std::string>& baseURL) {
  if (const auto engine = this->engine()) {
    engine->loadHTMLString(html, baseURL);
  }
}

void TNLWebView::loadRequest(const std::string& url) {
  if (const auto engine = this->engine()) {
    engine->loadRequest(url);
  }
}

void TNLWebView::evaluateJavaScript(const std::string& statement) {
  if (const auto engine = this->engine()) {
    engine->evaluateJavaScript(statement);
  }
}

void TNLWebView::engineDecidePolicyForNavigationAction(
    const TNLNavigationAction& action, TNLNavigationDelegate::DecisionHandler handler) {
  auto decided = std::make_shared<bool>(false);
  TNLNavigationDelegate::DecisionHandler once =
      [decided, handler = std::move(handler)](TNLNavigationActionPolicy policy) {
        if (*decided) {
          return;
        }
        *decided = true;
        if (handler) {
          handler(policy);
        }
      };
  const auto self = std::static_pointer_cast<TNLWebView>(weak_from_this().lock());
  const auto delegate = navigationDelegate();
  if (self && delegate) {
    delegate->webViewDecidePolicyForNavigationActionDecisionHandler(self, action, once);
  } else {
    once(TNLNavigationActionPolicy::allow);
  }
}

void TNLWebView::engineDidFinishNavigation() {
  const auto self = std::static_pointer_cast<TNLWebView>(weak_from_this().lock());
  if (const auto delegate = navigationDelegate(); self && delegate) {
    delegate->webViewDidFinishNavigation(self);
  }
}

std::shared_ptr<TNLViewPeer> TNLWebView::makePeer(TNLToolkitBackend& backend) {
  auto engine = backend.createWebEngine(std::static_pointer_cast<TNLWebView>(shared_from_this()));
  if (engine) {
    scrollView_->attachPeer(engine->scrollViewPeer());
  }
  return engine;
}

void TNLWebView::boundsDidChange() {
  scrollView_->setFrame({0.0, 0.0, frame().size.width, frame().size.height});
}
