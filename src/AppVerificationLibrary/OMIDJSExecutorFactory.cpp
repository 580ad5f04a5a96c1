#include "AppVerificationLibrary/OMIDJSExecutorFactory.h"

#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDJSNetworkBridge.h"
#include "AppVerificationLibrary/OMIDLightJSExecutor.h"
#include "AppVerificationLibrary/OMIDWKWebViewJSExecutor.h"
#include "TarnelAd/Toolkit/TNLWebView.h"

std::shared_ptr<OMIDTarnelJSExecutor> OMIDTarnelJSExecutorFactory::JSExecutorForContext(
    const std::shared_ptr<OMIDTarnelAdSessionContext>& context) {
  if (context == nullptr) {
    return nullptr;
  }
  switch (context->type()) {
    case OMIDTarnelAdSessionContextType::Native:
      return JSExecutorWithResources(context->resources(), context->script());
    case OMIDTarnelAdSessionContextType::HTML:
      return JSExecutorWithWebView(context->webView());
  }
  return nullptr;
}

std::shared_ptr<OMIDTarnelJSExecutor> OMIDTarnelJSExecutorFactory::JSExecutorWithResources(
    const std::vector<OMIDTarnelVerificationScriptResource>& resources, const std::string& script) {
  const auto executor = OMIDTarnelLightJSExecutor::lightJSExecutor();
  executor->injectJavaScriptFromString(script);
  for (const auto& resource : resources) {
    executor->networkBridge()->injectJavaScriptFromURL(resource.url());
  }
  return executor;
}

std::shared_ptr<OMIDTarnelJSExecutor> OMIDTarnelJSExecutorFactory::JSExecutorWithWebView(
    const std::shared_ptr<TNLView>& webView) {
  if (auto webKitView = std::dynamic_pointer_cast<TNLWebView>(webView)) {
    return std::make_shared<OMIDTarnelWKWebViewJSExecutor>(webKitView);
  }
  return nullptr;
}
