#include "AppVerificationLibrary/OMIDJSExecutorFactory.h"

#include "AppVerificationLibrary/OMIDAdSessionContext.h"
#include "AppVerificationLibrary/OMIDJSNetworkBridge.h"
#include "AppVerificationLibrary/OMIDLightJSExecutor.h"

std::shared_ptr<OMIDTarnelJSExecutor> OMIDTarnelJSExecutorFactory::JSExecutorForContext(
    const std::shared_ptr<OMIDTarnelAdSessionContext>& context) {
  if (context == nullptr) {
    return nullptr;
  }
  switch (context->type()) {
    case OMIDTarnelAdSessionContextType::Native:
      return JSExecutorWithResources(context->resources(), context->script());
    case OMIDTarnelAdSessionContextType::HTML:
      // JSExecutorWithWebView(context->webView()) once web views exist.
      return nullptr;
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
