#include "AppVerificationLibrary/OMIDAdViewCache.h"

#include "AppVerificationLibrary/OMIDAdSession.h"
#include "AppVerificationLibrary/OMIDAdSessionRegistry.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

bool isShown(const TNLView& view) {
  return !view.isHidden() && view.alpha() != 0.0;
}

// The ad view and its ancestors up to the window, when the view is in a window and all of them
// are shown; empty otherwise.
std::vector<std::shared_ptr<TNLView>> visiblePath(const std::shared_ptr<TNLView>& adView) {
  if (!adView->window()) {
    return {};
  }
  std::vector<std::shared_ptr<TNLView>> path;
  for (auto view = adView; view; view = view->superview()) {
    if (!isShown(*view)) {
      return {};
    }
    path.push_back(view);
  }
  return path;
}

}  // namespace

void OMIDTarnelAdViewCache::prepare() {
  for (const auto& session : registry_->activeAdSessions()) {
    const auto adView = session->mainAdView();
    if (!adView) {
      continue;
    }
    const auto path = visiblePath(adView);
    if (path.empty()) {
      hiddenSessionIds_.push_back(session->identifier());
      continue;
    }
    for (const auto& view : path) {
      rootViews_.emplace(view);
    }
    adViews_.emplace(OMIDTarnelViewKey(adView), session->identifier());
    visibleSessionIds_.push_back(session->identifier());
    for (const auto& obstruction : session->friendlyObstructions()) {
      friendlyObstructions_[OMIDTarnelViewKey(obstruction)].push_back(session->identifier());
    }
  }
}

void OMIDTarnelAdViewCache::cleanup() {
  adViews_.clear();
  friendlyObstructions_.clear();
  rootViews_.clear();
  visibleSessionIds_.clear();
  hiddenSessionIds_.clear();
  isAdViewProcessed_ = false;
}

const std::string* OMIDTarnelAdViewCache::sessionIdForView(
    const std::shared_ptr<TNLView>& view) const {
  const auto found = adViews_.find(OMIDTarnelViewKey(view));
  return found == adViews_.end() ? nullptr : &found->second;
}

const std::vector<std::string>* OMIDTarnelAdViewCache::friendlyObstructionSessionIdsForView(
    const std::shared_ptr<TNLView>& view) const {
  if (friendlyObstructions_.empty()) {
    return nullptr;
  }
  const auto found = friendlyObstructions_.find(OMIDTarnelViewKey(view));
  return found == friendlyObstructions_.end() ? nullptr : &found->second;
}

OMIDTarnelViewType OMIDTarnelAdViewCache::typeOfView(const std::shared_ptr<TNLView>& view) const {
  if (rootViews_.contains(OMIDTarnelViewKey(view))) {
    return OMIDTarnelViewType::root;
  }
  return isAdViewProcessed_ ? OMIDTarnelViewType::obstruction : OMIDTarnelViewType::skip;
}
