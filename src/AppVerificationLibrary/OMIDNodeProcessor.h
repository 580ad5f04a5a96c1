#pragma once

#include <memory>
#include <vector>

#include "Platform/Foundation/TNLJSON.h"

class TNLView;

// Describes one node of the measured hierarchy (the screen, a window or a view): its state and
// the children to walk, back to front. Main thread.
class OMIDTarnelNodeProcessor {
 public:
  virtual ~OMIDTarnelNodeProcessor() = default;

  // The node's view state (frame in screen coordinates, clipping). The screen's processor is
  // asked with null.
  virtual TNLJson stateForView(const TNLView* view) const = 0;
  // The node's children in drawing order, back to front.
  virtual std::vector<std::shared_ptr<TNLView>> orderedChildrenForView(
      const TNLView* view) const = 0;
};
