#include "TarnelAd/Toolkit/TNLScreen.h"

#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Toolkit/TNLToolkitBackend.h"

std::shared_ptr<TNLScreen> TNLScreen::mainScreen() {
  static const TNLNoDestructor<std::shared_ptr<TNLScreen>> screen([] {
    const auto backend = TNLToolkitBackend::current();
    return std::shared_ptr<TNLScreen>(
        new TNLScreen(backend->mainScreenBounds(), backend->mainScreenScale()));
  }());
  return *screen;
}

TNLRect TNLScreen::bounds() const {
  std::lock_guard lock(mutex_);
  return bounds_;
}

double TNLScreen::scale() const {
  std::lock_guard lock(mutex_);
  return scale_;
}

void TNLScreen::setBounds(const TNLRect& bounds) {
  std::lock_guard lock(mutex_);
  bounds_ = bounds;
}

void TNLScreen::setScale(double scale) {
  std::lock_guard lock(mutex_);
  scale_ = scale;
}
