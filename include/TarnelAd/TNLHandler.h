#pragma once

/// @file
/// @brief TNLHandler: the entry of a hosting component.

#include <memory>
#include <mutex>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/TNLTarnelContext.h"

/// The entry of a hosting component (TNLTarnelContext) that has fetched the configuration itself.
/// @code
/// TNLHandler::sharedHandler()->initializeWithTarnelContext(context);
/// // ... the context has its configuration ...
/// TNLHandler::sharedHandler()->onDidFetchConfiguration();
/// @endcode
/// Any thread; the context is called on the thread that calls onDidFetchConfiguration.
class TNL_EXPORT TNLHandler {
 public:
  /// The process-wide handler.
  static std::shared_ptr<TNLHandler> sharedHandler();

  /// Stores the context (strongly) on the shared handler; fetches nothing.
  void initializeWithTarnelContext(std::shared_ptr<TNLTarnelContext> context);

  /// Takes the shared handler's context (whichever handler receives the call): its application ID
  /// is assigned to the macro table object's attribute named "%APP_ID%", which the table does not
  /// have, so the call raises an exception derived from std::runtime_error (an undefined key) to
  /// its caller before the configuration is read. The configuration is therefore never
  /// installed through this path; hosts register with the facades' set...Delegate calls instead.
  void onDidFetchConfiguration();

  /// The context of this handler, held strongly.
  ///@{
  std::shared_ptr<TNLTarnelContext> context() const;
  void setContext(std::shared_ptr<TNLTarnelContext> context);
  ///@}

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<TNLTarnelContext> context_;
};
