#pragma once

#include <memory>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDJSExecutor.h"
#include "AppVerificationLibrary/OMIDVerificationScriptResource.h"

class OMIDTarnelAdSessionContext;

// Chooses the executor that runs a session's commands.
class OMIDTarnelJSExecutorFactory {
 public:
  // Native contexts get a new light executor running their script and verification resources.
  // HTML contexts get the executor of their web view; the web-view executors arrive with the view
  // toolkit (JSExecutorWithWebView), and until then an HTML context gets none.
  static std::shared_ptr<OMIDTarnelJSExecutor> JSExecutorForContext(
      const std::shared_ptr<OMIDTarnelAdSessionContext>& context);

  // A light executor that runs `script` and then each resource's script, loaded from its URL.
  static std::shared_ptr<OMIDTarnelJSExecutor> JSExecutorWithResources(
      const std::vector<OMIDTarnelVerificationScriptResource>& resources,
      const std::string& script);
};
