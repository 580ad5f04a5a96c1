#pragma once

#include <memory>

#include "AppVerificationLibrary/OMIDNodeProcessor.h"
#include "AppVerificationLibrary/OMIDScreenProcessor.h"
#include "AppVerificationLibrary/OMIDViewProcessor.h"
#include "AppVerificationLibrary/OMIDWindowProcessor.h"

// The processor for each kind of node of the hierarchy.
class OMIDTarnelProcessorFactory {
 public:
  // The screen's processor, the root of every walk.
  const OMIDTarnelNodeProcessor& rootProcessor() const { return screenProcessor_; }
  // The window processor for a window, the view processor for any other view.
  const OMIDTarnelNodeProcessor& processorForView(const TNLView& view) const;

 private:
  OMIDTarnelScreenProcessor screenProcessor_;
  OMIDTarnelWindowProcessor windowProcessor_;
  OMIDTarnelViewProcessor viewProcessor_;
};
