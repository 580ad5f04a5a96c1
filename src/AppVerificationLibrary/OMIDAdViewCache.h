#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "AppVerificationLibrary/OMIDViewKey.h"

class OMIDTarnelAdSessionRegistry;
class TNLView;

// How a walk treats a view.
enum class OMIDTarnelViewType {
  // On the path from a window to a visible ad view: walked, children in z order.
  root = 0,
  // Reached after an ad view: it may cover the ad, so it is walked, children as listed.
  obstruction = 1,
  // Neither: skipped with its subtree.
  skip = 2,
};

// What one walk needs to know about the active sessions: their visible ad views and the paths to
// them, their friendly obstructions, and which sessions are visible or hidden. Filled by prepare()
// at the start of a walk and emptied by cleanup() at its end. Main thread.
class OMIDTarnelAdViewCache {
 public:
  explicit OMIDTarnelAdViewCache(std::shared_ptr<OMIDTarnelAdSessionRegistry> registry)
      : registry_(std::move(registry)) {}

  // For every active session with a main ad view: visible when the view is in a window and
  // neither it nor an ancestor is hidden or fully transparent. A visible session's path joins
  // the root views and its ad view and friendly obstructions are entered under its identifier;
  // every other active session with an ad view is hidden.
  void prepare();
  void cleanup();

  // The identifier of the session whose ad view this is; null for other views.
  const std::string* sessionIdForView(const std::shared_ptr<TNLView>& view) const;
  // The sessions for which this view is a friendly obstruction; null when there are none.
  const std::vector<std::string>* friendlyObstructionSessionIdsForView(
      const std::shared_ptr<TNLView>& view) const;
  OMIDTarnelViewType typeOfView(const std::shared_ptr<TNLView>& view) const;

  bool isAdViewProcessed() const { return isAdViewProcessed_; }
  void setAdViewProcessed(bool processed) { isAdViewProcessed_ = processed; }

  const std::vector<std::string>& visibleSessionIds() const { return visibleSessionIds_; }
  const std::vector<std::string>& hiddenSessionIds() const { return hiddenSessionIds_; }

 private:
  using ViewMap = std::unordered_map<OMIDTarnelViewKey, std::string, OMIDTarnelViewKey::Hash>;
  using ViewListMap =
      std::unordered_map<OMIDTarnelViewKey, std::vector<std::string>, OMIDTarnelViewKey::Hash>;

  const std::shared_ptr<OMIDTarnelAdSessionRegistry> registry_;
  ViewMap adViews_;
  ViewListMap friendlyObstructions_;
  std::unordered_set<OMIDTarnelViewKey, OMIDTarnelViewKey::Hash> rootViews_;
  std::vector<std::string> visibleSessionIds_;
  std::vector<std::string> hiddenSessionIds_;
  bool isAdViewProcessed_ = false;
};
