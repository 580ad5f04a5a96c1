#include "AppVerificationLibrary/OMIDWKWebViewJSExecutor.h"

#include "AppVerificationLibrary/OMIDMethodInvoker.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

void OMIDTarnelWKWebViewJSExecutor::injectJavaScriptFromString(const std::string& javaScript) {
  OMIDTarnelMethodInvoker::performSelectorAsync([webView = webView_, javaScript] {
    if (const auto view = webView.lock()) {
      view->evaluateJavaScript(javaScript);
    }
  });
}
