#include "AppVerificationLibrary/OMIDViewProcessor.h"

#include <algorithm>

#include "AppVerificationLibrary/OMIDDictionaryUtil.h"
#include "TarnelAd/Toolkit/TNLView.h"

TNLJson OMIDTarnelViewProcessor::stateForView(const TNLView* view) const {
  if (view == nullptr) {
    return OMIDTarnelDictionaryUtil::emptyState();
  }
  const auto superview = view->superview();
  const TNLRect frame = superview ? superview->convertRectToScreen(view->frame()) : view->frame();
  return OMIDTarnelDictionaryUtil::stateWithFrame(frame, view->clipsToBounds());
}

std::vector<std::shared_ptr<TNLView>> OMIDTarnelViewProcessor::orderedChildrenForView(
    const TNLView* view) const {
  if (view == nullptr) {
    return {};
  }
  const auto& subviews = view->subviews();
  const bool layered = std::any_of(subviews.begin(), subviews.end(),
                                   [](const auto& subview) { return subview->zPosition() != 0.0; });
  return layered ? view->subviewsInZOrder() : subviews;
}
