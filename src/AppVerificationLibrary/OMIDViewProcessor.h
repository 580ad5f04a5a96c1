#pragma once

#include "AppVerificationLibrary/OMIDNodeProcessor.h"

// A view of a window's tree.
class OMIDTarnelViewProcessor : public OMIDTarnelNodeProcessor {
 public:
  // The view's frame converted to its window's and then the screen's coordinates, with the
  // view's own clipping flag.
  TNLJson stateForView(const TNLView* view) const override;
  // The subviews as listed when none has a z position; otherwise grouped by z position,
  // ascending, keeping the listed order within a group.
  std::vector<std::shared_ptr<TNLView>> orderedChildrenForView(const TNLView* view) const override;
};
