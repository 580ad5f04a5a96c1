#include <gtest/gtest.h>

#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/Toolkit/TNLLayoutConstraint.h"
#include "TarnelAd/Toolkit/TNLLayoutGuide.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

using A = TNLLayoutAttribute;

std::shared_ptr<TNLLayoutConstraint> pin(const std::shared_ptr<TNLLayoutItem>& item, A attribute,
                                         const std::shared_ptr<TNLLayoutItem>& to, A toAttribute,
                                         double constant = 0.0, double multiplier = 1.0) {
  return TNLLayoutConstraint::constraintWithItem(item, attribute, TNLLayoutRelation::equal, to,
                                                 toAttribute, multiplier, constant);
}

TEST(TNLLayout, ReversedConstraintsMultipliersAndTheScheduledPass) {
  auto host = TNLView::create({0, 0, 400, 300});
  auto child = TNLView::create({1, 1, 1, 1});
  host->addSubview(child);
  child->setTranslatesAutoresizingMaskIntoConstraints(false);
  // Written with the fixed item first: host.trailing = child.trailing + 20.
  host->addConstraint(pin(host, A::trailing, child, A::trailing, 20));
  // child.width = host.width * 0.5 + 10, child.centerY = host.centerY.
  host->addConstraint(pin(child, A::width, host, A::width, 10, 0.5));
  host->addConstraint(pin(child, A::height, nullptr, A::notAnAttribute, 40));
  host->addConstraint(pin(child, A::centerY, host, A::centerY));

  // No explicit layout: the pass scheduled by the changes runs on the main queue.
  EXPECT_EQ(child->frame(), TNLRect(1, 1, 1, 1));
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return child->frame() != TNLRect(1, 1, 1, 1); }));
  EXPECT_EQ(child->frame(), TNLRect(170, 130, 210, 40));

  // Resizing the host schedules the next pass.
  host->setFrame({0, 0, 600, 300});
  ASSERT_TRUE(TNLMainQueue::runUntil([&] { return child->frame().width() == 310; }));
  EXPECT_EQ(child->frame(), TNLRect(270, 130, 310, 40));

  // An edge and the centre fix the size between them.
  auto between = TNLView::create();
  host->addSubview(between);
  between->setTranslatesAutoresizingMaskIntoConstraints(false);
  host->addConstraints(
      {pin(between, A::left, host, A::left, 100), pin(between, A::centerX, host, A::centerX),
       pin(between, A::bottom, host, A::bottom, -10), pin(between, A::centerY, host, A::centerY)});
  host->layoutIfNeeded();
  EXPECT_EQ(between->frame(), TNLRect(100, 10, 400, 280));
}

TEST(TNLLayout, SafeAreaInsetsOfNestedViews) {
  auto window = TNLWindow::create({0, 0, 375, 667});
  window->setWindowSafeAreaInsets({44, 0, 34, 0});
  auto top = TNLView::create({0, 20, 375, 100});
  auto bottom = TNLView::create({0, 600, 200, 67});
  window->addSubview(top);
  window->addSubview(bottom);
  EXPECT_EQ(top->safeAreaInsets(), (TNLEdgeInsets{24, 0, 0, 0}));
  EXPECT_EQ(bottom->safeAreaInsets(), (TNLEdgeInsets{0, 0, 34, 0}));
  EXPECT_EQ(bottom->safeAreaLayoutGuide()->layoutFrame(), TNLRect(0, 0, 200, 33));
}

}  // namespace
