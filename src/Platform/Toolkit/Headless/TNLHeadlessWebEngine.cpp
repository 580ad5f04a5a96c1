#include "Platform/Toolkit/Headless/TNLHeadlessWebEngine.h"

#include "TarnelAd/Toolkit/TNLWebView.h"

TNLHeadlessWebEngine::TNLHeadlessWebEngine(const std::shared_ptr<TNLWebView>& webView)
    : webView_(webView),
      configuration_(webView->configuration()),
      viewState_(std::make_shared<TNLHeadlessViewPeer>(TNLHeadlessViewPeer::Kind::view)),
      scrollState_(std::make_shared<TNLHeadlessViewPeer>(TNLHeadlessViewPeer::Kind::scrollView)) {}

std::shared_ptr<TNLHeadlessWebEngine> TNLHeadlessWebEngine::of(
    const std::shared_ptr<TNLWebView>& webView) {
  return webView ? std::dynamic_pointer_cast<TNLHeadlessWebEngine>(webView->peer()) : nullptr;
}

void TNLHeadlessWebEngine::loadHTMLString(const std::string& html,
                                          const std::optional<std::string>& baseURL) {
  html_ = html;
  baseURL_ = baseURL;
  requestURL_.reset();
  pageLoadURL_ = baseURL ? *baseURL : "about:blank";
  ++loadCount_;
}

void TNLHeadlessWebEngine::loadRequest(const std::string& url) {
  html_.reset();
  baseURL_.reset();
  requestURL_ = url;
  pageLoadURL_ = url;
  ++loadCount_;
}

void TNLHeadlessWebEngine::evaluateJavaScript(const std::string& statement) {
  statements_.push_back(statement);
}

std::optional<TNLNavigationActionPolicy> TNLHeadlessWebEngine::deliverNavigationAction(
    const std::string& url, Target target) {
  const auto webView = webView_.lock();
  if (!webView) {
    return std::nullopt;
  }
  std::optional<TNLFrameInfo> frame;
  if (target != Target::none) {
    frame = TNLFrameInfo(target == Target::mainFrame);
  }
  // The delegate may decide later; the decision is recorded whenever it comes.
  auto decided = std::make_shared<std::optional<TNLNavigationActionPolicy>>();
  const std::weak_ptr<TNLHeadlessWebEngine> weakSelf = weak_from_this();
  const bool mainFrame = target == Target::mainFrame;
  webView->engineDecidePolicyForNavigationAction(
      TNLNavigationAction(url, frame),
      [weakSelf, decided, url, mainFrame](TNLNavigationActionPolicy policy) {
        *decided = policy;
        if (const auto self = weakSelf.lock()) {
          self->decisions_.push_back({url, policy});
          if (mainFrame && policy == TNLNavigationActionPolicy::allow) {
            self->currentURL_ = url;
          }
        }
      });
  return *decided;
}

void TNLHeadlessWebEngine::finishNavigation() {
  if (const auto webView = webView_.lock()) {
    webView->engineDidFinishNavigation();
  }
}

std::optional<TNLNavigationActionPolicy> TNLHeadlessWebEngine::playPageLoad() {
  if (!pageLoadURL_) {
    return std::nullopt;
  }
  const auto decision = deliverNavigationAction(*pageLoadURL_, Target::mainFrame);
  if (decision == TNLNavigationActionPolicy::allow) {
    finishNavigation();
  }
  return decision;
}
