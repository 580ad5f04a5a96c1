#pragma once

/// @file
/// @brief TNLNavigationAction: a navigation for the navigation delegate to decide.

#include <optional>
#include <string>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLFrameInfo.h"

/// A navigation the page or the user started, for the navigation delegate to allow or cancel.
class TNL_EXPORT TNLNavigationAction {
 public:
  /// A navigation to `requestURL` in `targetFrame` (none: a new window).
  TNLNavigationAction(std::string requestURL, std::optional<TNLFrameInfo> targetFrame)
      : requestURL_(std::move(requestURL)), targetFrame_(targetFrame) {}

  /// The request's URL as an absolute string.
  const std::string& requestURL() const { return requestURL_; }
  /// None when the navigation opens a new window (a link with a target, window.open).
  const std::optional<TNLFrameInfo>& targetFrame() const { return targetFrame_; }

 private:
  std::string requestURL_;
  std::optional<TNLFrameInfo> targetFrame_;
};
