#pragma once

#include <memory>

#include "TarnelAd/TNLExport.h"

class TNLLayoutItem;
class TNLView;

// Attribute values are the platform's.
enum class TNLLayoutAttribute {
  notAnAttribute = 0,
  left = 1,
  right = 2,
  top = 3,
  bottom = 4,
  leading = 5,   // left-to-right layout: the same as left
  trailing = 6,  // left-to-right layout: the same as right
  width = 7,
  height = 8,
  centerX = 9,
  centerY = 10,
};

// Only equalities are solved.
enum class TNLLayoutRelation {
  equal = 0,
};

// One linear equation between two layout items:
//   firstItem.firstAttribute = secondItem.secondAttribute * multiplier + constant
// or, without a second item (constant width or height), firstItem.firstAttribute = constant.
// Items are held weakly; a constraint takes effect once added to a view (TNLView::addConstraint)
// and is solved by layoutIfNeeded, or by the layout pass that any change schedules.
class TNL_EXPORT TNLLayoutConstraint {
 public:
  TNLLayoutConstraint(const std::shared_ptr<TNLLayoutItem>& firstItem,
                      TNLLayoutAttribute firstAttribute, TNLLayoutRelation relation,
                      const std::shared_ptr<TNLLayoutItem>& secondItem,
                      TNLLayoutAttribute secondAttribute, double multiplier, double constant);

  static std::shared_ptr<TNLLayoutConstraint> constraintWithItem(
      const std::shared_ptr<TNLLayoutItem>& firstItem, TNLLayoutAttribute firstAttribute,
      TNLLayoutRelation relation, const std::shared_ptr<TNLLayoutItem>& secondItem,
      TNLLayoutAttribute secondAttribute, double multiplier, double constant);

  std::shared_ptr<TNLLayoutItem> firstItem() const { return firstItem_.lock(); }
  TNLLayoutAttribute firstAttribute() const { return firstAttribute_; }
  TNLLayoutRelation relation() const { return relation_; }
  std::shared_ptr<TNLLayoutItem> secondItem() const { return secondItem_.lock(); }
  TNLLayoutAttribute secondAttribute() const { return secondAttribute_; }
  double multiplier() const { return multiplier_; }

  double constant() const { return constant_; }
  // Schedules a layout pass of the view the constraint was added to.
  void setConstant(double constant);

  // The view the constraint was added to, if any.
  std::shared_ptr<TNLView> installedView() const { return installedView_.lock(); }

  // True when the constraint named a second item and that item is gone: it no longer applies.
  bool secondItemLost() const { return hasSecondItem_ && secondItem_.expired(); }

 private:
  friend class TNLView;

  std::weak_ptr<TNLLayoutItem> firstItem_;
  TNLLayoutAttribute firstAttribute_;
  TNLLayoutRelation relation_;
  std::weak_ptr<TNLLayoutItem> secondItem_;
  bool hasSecondItem_;
  TNLLayoutAttribute secondAttribute_;
  double multiplier_;
  double constant_;
  std::weak_ptr<TNLView> installedView_;
};
