#pragma once

/// @file
/// @brief TNLLayoutItem: what a layout constraint relates.

#include <memory>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLRect.h"

class TNLView;

/// Something a layout constraint can relate: a view or a layout guide.
class TNL_EXPORT TNLLayoutItem {
 public:
  virtual ~TNLLayoutItem() = default;

  /// The rectangle the item occupies, in the coordinates of layoutItemSpace(): a view's frame in
  /// its superview, a guide's layout frame in its owning view.
  virtual TNLRect layoutItemRect() const = 0;
  /// The view whose coordinate space layoutItemRect() is in; null when there is none (a view
  /// without superview), in which case only the item's size can take part in layout.
  virtual std::shared_ptr<TNLView> layoutItemSpace() const = 0;
};
