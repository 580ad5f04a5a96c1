#pragma once

#include <memory>
#include <string>

#include "AppVerificationLibrary/OMIDJSExecutor.h"

class TNLWebView;

// Runs a session's statements in the ad's own web view (the toolkit's TNLWebView, the WebKit
// view), where the creative's OMID service script lives. The web view is held weakly: a session
// never keeps its ad's page alive, and statements for a page that is gone are dropped.
class OMIDTarnelWKWebViewJSExecutor : public OMIDTarnelJSExecutor {
 public:
  explicit OMIDTarnelWKWebViewJSExecutor(const std::shared_ptr<TNLWebView>& webView)
      : webView_(webView) {}

  // The toolkit is main-thread only.
  bool supportBackgroundThread() const override { return false; }
  // The TNLWebView; null once it is gone.
  std::shared_ptr<void> jsEnvironment() const override { return webView(); }
  // Evaluates the statement in the page without waiting for its result. On the main thread at
  // once; from another thread it is queued there, in order.
  void injectJavaScriptFromString(const std::string& javaScript) override;

  std::shared_ptr<TNLWebView> webView() const { return webView_.lock(); }

 private:
  const std::weak_ptr<TNLWebView> webView_;
};
