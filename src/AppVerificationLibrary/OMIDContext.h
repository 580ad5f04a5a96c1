#pragma once

#include <memory>

#include "Platform/Foundation/TNLJSON.h"

// The application record reported to measurement scripts in the session context.
class OMIDTarnelContext {
 public:
  static std::shared_ptr<OMIDTarnelContext> sharedContext();

  // {"appId": the host's bundle identifier, "libraryVersion": the SDK version}
  TNLJson toJSON() const;
};
