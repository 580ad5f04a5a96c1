#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Platform/Toolkit/Headless/TNLHeadlessViewPeer.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

using Views = std::vector<std::shared_ptr<TNLView>>;

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

TEST(TNLView, KeyValueObservationOfHiddenAndAlpha) {
  auto view = TNLView::create({0, 0, 10, 10});
  std::vector<std::string> seen;
  int first = 0;
  int second = 0;
  const auto note = [&](const std::string& who) {
    return
        [&seen, who](const std::string& keyPath, TNLView&) { seen.push_back(who + ":" + keyPath); };
  };
  view->addObserver(&first, "hidden", note("first"));
  view->addObserver(&first, "alpha", note("first"));
  view->addObserver(&second, "alpha", note("second"));
  view->setHidden(true);
  view->setAlpha(0.5);
  view->setAlpha(0.5);  // every set is reported, as the platform does
  view->removeObserver(&first, "alpha");
  view->setAlpha(1.0);
  EXPECT_EQ(seen, (std::vector<std::string>{"first:hidden", "first:alpha", "second:alpha",
                                            "first:alpha", "second:alpha", "second:alpha"}));
}

TEST(TNLView, SubviewsAreDrawnByZPositionThenInTheirListedOrder) {
  auto window = TNLWindow::create({0, 0, 100, 100});
  Views views;
  for (const double z : {2.0, 0.0, 2.0, -1.0}) {
    views.push_back(TNLView::create());
    views.back()->setZPosition(z);
    window->addSubview(views.back());
  }
  EXPECT_EQ(window->subviewsInZOrder(), (Views{views[3], views[1], views[0], views[2]}));
  // Views get peers once their window is on screen, back to front; later changes reach them.
  window->makeKeyAndVisible();
  views[1]->setZPosition(5);
  views[2]->removeFromSuperview();
  EXPECT_EQ(TNLHeadlessViewPeer::of(window)->subviews(),
            (std::vector<std::shared_ptr<TNLViewPeer>>{
                views[3]->existingPeer(), views[0]->existingPeer(), views[1]->existingPeer()}));
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
  EXPECT_TRUE(view->isDescendantOfView(*window));
  EXPECT_FALSE(view->isDescendantOfView(*first));
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
