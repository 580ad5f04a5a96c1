#include "TarnelAd/Toolkit/TNLLayoutConstraint.h"

#include "TarnelAd/Toolkit/TNLView.h"

TNLLayoutConstraint::TNLLayoutConstraint(const std::shared_ptr<TNLLayoutItem>& firstItem,
                                         TNLLayoutAttribute firstAttribute,
                                         TNLLayoutRelation relation,
                                         const std::shared_ptr<TNLLayoutItem>& secondItem,
                                         TNLLayoutAttribute secondAttribute, double multiplier,
                                         double constant)
    : firstItem_(firstItem),
      firstAttribute_(firstAttribute),
      relation_(relation),
      secondItem_(secondItem),
      hasSecondItem_(secondItem != nullptr),
      secondAttribute_(secondAttribute),
      multiplier_(multiplier),
      constant_(constant) {}

std::shared_ptr<TNLLayoutConstraint> TNLLayoutConstraint::constraintWithItem(
    const std::shared_ptr<TNLLayoutItem>& firstItem, TNLLayoutAttribute firstAttribute,
    TNLLayoutRelation relation, const std::shared_ptr<TNLLayoutItem>& secondItem,
    TNLLayoutAttribute secondAttribute, double multiplier, double constant) {
  return std::make_shared<TNLLayoutConstraint>(firstItem, firstAttribute, relation, secondItem,
                                               secondAttribute, multiplier, constant);
}

void TNLLayoutConstraint::setConstant(double constant) {
  constant_ = constant;
  if (const auto view = installedView()) {
    view->setNeedsLayout();
  }
}
