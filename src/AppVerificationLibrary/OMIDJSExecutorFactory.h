#pragma once

#include <memory>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDJSExecutor.h"
#include "AppVerificationLibrary/OMIDVerificationScriptResource.h"

class OMIDTarnelAdSessionContext;
class TNLView;

// Chooses the executor that runs a session's commands.
class OMIDTarnelJSExecutorFactory {
 public:
  // Native contexts get a new light executor running their script and verification resources;
  // HTML contexts the executor of their web view.
  static std::shared_ptr<OMIDTarnelJSExecutor> JSExecutorForContext(
      const std::shared_ptr<OMIDTarnelAdSessionContext>& context);

  // The executor for a web view: the WebKit executor for the toolkit's TNLWebView, none for
  // anything else (or a web view that is gone). The toolkit has a single kind of web view, so
  // there is no second web-view executor.
  static std::shared_ptr<OMIDTarnelJSExecutor> JSExecutorWithWebView(
      const std::shared_ptr<TNLView>& webView);

  // A light executor that runs `script` and then each resource's script, loaded from its URL.
  static std::shared_ptr<OMIDTarnelJSExecutor> JSExecutorWithResources(
      const std::vector<OMIDTarnelVerificationScriptResource>& resources,
      const std::string& script);
};
