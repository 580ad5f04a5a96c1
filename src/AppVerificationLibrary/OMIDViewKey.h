#pragma once

#include <cstddef>
#include <functional>
#include <memory>

class TNLView;

// A view as a map key: keys are equal when they wrap the same view object. The key keeps its view
// alive, which is what a walk's caches want for the length of one walk.
class OMIDTarnelViewKey {
 public:
  explicit OMIDTarnelViewKey(std::shared_ptr<TNLView> view) : view_(std::move(view)) {}

  const std::shared_ptr<TNLView>& view() const { return view_; }

  bool operator==(const OMIDTarnelViewKey& other) const { return view_ == other.view_; }

  struct Hash {
    size_t operator()(const OMIDTarnelViewKey& key) const {
      return std::hash<const TNLView*>()(key.view_.get());
    }
  };

 private:
  std::shared_ptr<TNLView> view_;
};
