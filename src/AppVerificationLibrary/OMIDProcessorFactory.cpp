#include "AppVerificationLibrary/OMIDProcessorFactory.h"

#include "TarnelAd/Toolkit/TNLWindow.h"

const OMIDTarnelNodeProcessor& OMIDTarnelProcessorFactory::processorForView(
    const TNLView& view) const {
  if (dynamic_cast<const TNLWindow*>(&view) != nullptr) {
    return windowProcessor_;
  }
  return viewProcessor_;
}
