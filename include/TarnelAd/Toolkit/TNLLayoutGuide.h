#pragma once

/// @file
/// @brief TNLLayoutGuide: a rectangle for layout that is not a view.

#include <memory>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLLayoutItem.h"

/// A rectangle that a view defines for layout without being a view itself. The toolkit makes one
/// kind: the safe-area guide of a view (TNLView::safeAreaLayoutGuide()), whose layout frame is the
/// view's bounds inset by its safe-area insets.
class TNL_EXPORT TNLLayoutGuide : public TNLLayoutItem {
 public:
  /// A guide of `owningView`, which it holds weakly.
  explicit TNLLayoutGuide(std::weak_ptr<TNLView> owningView);

  /// The view whose guide this is; null once it is gone.
  std::shared_ptr<TNLView> owningView() const { return owningView_.lock(); }

  /// In the owning view's coordinates; the zero rectangle once the owning view is gone.
  TNLRect layoutFrame() const;

  /// The layout frame, in the owning view's space.
  ///@{
  TNLRect layoutItemRect() const override { return layoutFrame(); }
  std::shared_ptr<TNLView> layoutItemSpace() const override { return owningView(); }
  ///@}

 private:
  std::weak_ptr<TNLView> owningView_;
};
