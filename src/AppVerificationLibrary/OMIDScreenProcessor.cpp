#include "AppVerificationLibrary/OMIDScreenProcessor.h"

#include "AppVerificationLibrary/OMIDDictionaryUtil.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLScreen.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

// The window the system puts its keyboard in; it never hides an ad.
constexpr char kKeyboardWindowClassName[] = "UITextEffectsWindow";

}  // namespace

TNLJson OMIDTarnelScreenProcessor::stateForView(const TNLView* /*view*/) const {
  // The screen's bounds already follow the interface orientation here, so they are never swapped
  // for landscape.
  return OMIDTarnelDictionaryUtil::stateWithFrame(TNLScreen::mainScreen()->bounds(), true);
}

std::vector<std::shared_ptr<TNLView>> OMIDTarnelScreenProcessor::orderedChildrenForView(
    const TNLView* /*view*/) const {
  std::vector<std::shared_ptr<TNLView>> windows;
  // Every window of the toolkit is on the main screen.
  for (auto& window : TNLApplication::sharedApplication()->windows()) {
    if (window->className() != kKeyboardWindowClassName) {
      windows.push_back(std::move(window));
    }
  }
  return windows;
}
