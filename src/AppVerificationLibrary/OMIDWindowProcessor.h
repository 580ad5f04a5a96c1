#pragma once

#include "AppVerificationLibrary/OMIDViewProcessor.h"

// A window: its frame is already in screen coordinates; its subviews are ordered like a view's.
class OMIDTarnelWindowProcessor : public OMIDTarnelViewProcessor {
 public:
  TNLJson stateForView(const TNLView* view) const override;
};
