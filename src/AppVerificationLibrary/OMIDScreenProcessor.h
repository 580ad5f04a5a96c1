#pragma once

#include "AppVerificationLibrary/OMIDNodeProcessor.h"

// The root of the hierarchy: the main screen, whose children are the application's windows.
class OMIDTarnelScreenProcessor : public OMIDTarnelNodeProcessor {
 public:
  // The main screen's bounds, clipping.
  TNLJson stateForView(const TNLView* view) const override;
  // The application's windows, lowest level first, without the system's keyboard window.
  std::vector<std::shared_ptr<TNLView>> orderedChildrenForView(const TNLView* view) const override;
};
