#include "TarnelAd/Toolkit/TNLLayoutGuide.h"

#include "TarnelAd/Toolkit/TNLView.h"

TNLLayoutGuide::TNLLayoutGuide(std::weak_ptr<TNLView> owningView)
    : owningView_(std::move(owningView)) {}

TNLRect TNLLayoutGuide::layoutFrame() const {
  const auto view = owningView();
  return view ? view->bounds().inset(view->safeAreaInsets()) : TNLRect{};
}
