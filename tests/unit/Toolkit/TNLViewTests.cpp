#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

TEST(TNLView, ConvertsRectanglesThroughNestedViewsScrollOffsetsAndWindows) {
  auto window = TNLWindow::create({10, 20, 300, 400});
  auto scroll = TNLScrollView::create({0, 50, 300, 200});
  auto content = TNLView::create({5, 100, 200, 300});
  auto inner = TNLView::create({7, 9, 20, 20});
  window->addSubview(scroll);
  scroll->addSubview(content);
  content->addSubview(inner);
  scroll->setContentOffset({4, 80});

  // inner's origin: 7+5-4+0 = 8 across, 9+100-80+50 = 79 down in the window.
  EXPECT_EQ(inner->convertRectToWindow(inner->bounds()), TNLRect(8, 79, 20, 20));
  EXPECT_EQ(content->convertRectToScreen(inner->frame()), TNLRect(18, 99, 20, 20));
  EXPECT_EQ(scroll->convertRect({13, 110, 2, 2}, inner), TNLRect(1, 1, 2, 2));
}

TEST(TNLView, HitTestingSkipsViewsThatCannotTakeTouches) {
  auto window = TNLWindow::create({0, 0, 320, 480});
  window->makeKeyAndVisible();  // a hidden window takes no touches
  auto behind = TNLView::create({0, 0, 320, 480});
  auto front = TNLView::create({0, 400, 320, 50});
  window->addSubview(behind);
  window->addSubview(front);
  EXPECT_EQ(window->hitTest({10, 410}), front);
  for (const auto& disable : std::vector<std::function<void(TNLView&)>>{
           [](TNLView& v) { v.setAlpha(0.0); }, [](TNLView& v) { v.setHidden(true); },
           [](TNLView& v) { v.setUserInteractionEnabled(false); }}) {
    auto blocked = TNLView::create({0, 400, 320, 50});
    window->addSubview(blocked);
    disable(*blocked);
    EXPECT_EQ(window->hitTest({10, 425}), front);
  }
}

TEST(TNLView, HierarchyMovesKeepOneSuperviewAndTheSuperviewOwnsItsSubviews) {
  auto window = TNLWindow::create({0, 0, 200, 200});
  auto first = TNLView::create({0, 0, 100, 100});
  auto second = TNLView::create({100, 0, 100, 100});
  auto view = TNLView::create({1, 2, 3, 4});
  window->addSubview(first);
  window->addSubview(second);
  first->addSubview(view);

  second->addSubview(view);  // moves
  EXPECT_TRUE(first->subviews().empty());
  EXPECT_EQ(view->superview(), second);
  // A view cannot take itself or an ancestor as subview.
  view->addSubview(second);
  view->addSubview(view);
  EXPECT_TRUE(view->subviews().empty());
  EXPECT_EQ(second->superview(), window);

  std::weak_ptr<TNLView> weakView = view;
  view.reset();
  EXPECT_FALSE(weakView.expired());
  weakView.lock()->removeFromSuperview();
  EXPECT_TRUE(weakView.expired());
}

}  // namespace
