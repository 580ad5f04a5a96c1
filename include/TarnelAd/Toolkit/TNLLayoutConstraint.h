#pragma once

/// @file
/// @brief TNLLayoutConstraint: one linear equation of layout.

#include <memory>

#include "TarnelAd/TNLExport.h"

class TNLLayoutItem;
class TNLView;

/// What a constraint relates of an item; the values are the platform's.
enum class TNLLayoutAttribute {
  notAnAttribute = 0,
  left = 1,
  right = 2,
  top = 3,
  bottom = 4,
  leading = 5,   ///< left-to-right layout: the same as left
  trailing = 6,  ///< left-to-right layout: the same as right
  width = 7,
  height = 8,
  centerX = 9,
  centerY = 10,
};

/// The relation of a constraint's two sides; only equalities are solved.
enum class TNLLayoutRelation {
  equal = 0,
};

/// One linear equation between two layout items:
///   firstItem.firstAttribute = secondItem.secondAttribute * multiplier + constant
/// or, without a second item (constant width or height), firstItem.firstAttribute = constant.
/// Items are held weakly; a constraint takes effect once added to a view (TNLView::addConstraint)
/// and is solved by layoutIfNeeded, or by the layout pass that any change schedules.
class TNL_EXPORT TNLLayoutConstraint {
 public:
  /// firstItem.firstAttribute = secondItem.secondAttribute * multiplier + constant (a null
  /// second item: firstItem.firstAttribute = constant). The items are held weakly.
  ///@{
  TNLLayoutConstraint(const std::shared_ptr<TNLLayoutItem>& firstItem,
                      TNLLayoutAttribute firstAttribute, TNLLayoutRelation relation,
                      const std::shared_ptr<TNLLayoutItem>& secondItem,
                      TNLLayoutAttribute secondAttribute, double multiplier, double constant);

  static std::shared_ptr<TNLLayoutConstraint> constraintWithItem(
      const std::shared_ptr<TNLLayoutItem>& firstItem, TNLLayoutAttribute firstAttribute,
      TNLLayoutRelation relation, const std::shared_ptr<TNLLayoutItem>& secondItem,
      TNLLayoutAttribute secondAttribute, double multiplier, double constant);
  ///@}

  /// The equation's parts, as made; an item that is gone is null.
  ///@{
  std::shared_ptr<TNLLayoutItem> firstItem() const { return firstItem_.lock(); }
  TNLLayoutAttribute firstAttribute() const { return firstAttribute_; }
  TNLLayoutRelation relation() const { return relation_; }
  std::shared_ptr<TNLLayoutItem> secondItem() const { return secondItem_.lock(); }
  TNLLayoutAttribute secondAttribute() const { return secondAttribute_; }
  double multiplier() const { return multiplier_; }
  ///@}

  /// The constant; setting it schedules a layout pass of the view the constraint was added to.
  ///@{
  double constant() const { return constant_; }
  void setConstant(double constant);
  ///@}

  /// The view the constraint was added to, if any.
  std::shared_ptr<TNLView> installedView() const { return installedView_.lock(); }

  /// True when the constraint named a second item and that item is gone: it no longer applies.
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
