#include "AppVerificationLibrary/OMIDWindowProcessor.h"

#include "AppVerificationLibrary/OMIDDictionaryUtil.h"
#include "TarnelAd/Toolkit/TNLView.h"

TNLJson OMIDTarnelWindowProcessor::stateForView(const TNLView* view) const {
  if (view == nullptr) {
    return OMIDTarnelDictionaryUtil::emptyState();
  }
  return OMIDTarnelDictionaryUtil::stateWithFrame(view->frame(), view->clipsToBounds());
}
