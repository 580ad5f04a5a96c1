#pragma once

/// @file
/// @brief TNLTarnelContext: a hosting component that fetches the configuration itself.

#include <memory>
#include <string>

#include "TarnelAd/TNLAdConfiguration.h"
#include "TarnelAd/TNLExport.h"

/// A hosting component that owns the application's identity and fetches its configuration, and
/// hands both to the library through TNLHandler.
class TNL_EXPORT TNLTarnelContext {
 public:
  virtual ~TNLTarnelContext() = default;

  /// The application's identifier.
  virtual std::string applicationID() const = 0;
  /// Null while the component has no configuration.
  virtual std::shared_ptr<const TNLAdConfiguration> adConfiguration() const = 0;
};
