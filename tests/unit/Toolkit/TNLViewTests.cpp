#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/Foundation/TNLException.h"
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
  // Between windows the conversion goes through the screen.
  auto other = TNLWindow::create({100, 0, 100, 100});
  EXPECT_EQ(inner->convertRect(inner->bounds(), other), TNLRect(-82, 99, 20, 20));

  // Outside any window the root's coordinates stand in for the window's and the screen's.
  auto loose = TNLView::create({3, 4, 50, 50});
  auto child = TNLView::create({1, 1, 5, 5});
  loose->addSubview(child);
  EXPECT_EQ(child->convertRectToScreen(child->bounds()), TNLRect(1, 1, 5, 5));
}

TEST(TNLView, HitTestingSkipsViewsThatCannotTakeTouches) {
  auto window = TNLWindow::create({0, 0, 320, 480});
  window->makeKeyAndVisible();  // a hidden window takes no touches
  auto behind = TNLView::create({0, 0, 320, 480});
  auto front = TNLView::create({0, 400, 320, 50});
  window->addSubview(behind);
  window->addSubview(front);
  EXPECT_EQ(window->hitTest({10, 410}), front);
  // The default test is half-open on the bounds.
  EXPECT_TRUE(behind->pointInside({0, 0}));
  EXPECT_FALSE(behind->pointInside({320, 10}));

  front->setAlpha(0.0);
  EXPECT_EQ(window->hitTest({10, 425}), behind);
  front->setAlpha(1.0);
  front->setUserInteractionEnabled(false);
  EXPECT_EQ(window->hitTest({10, 425}), behind);
  front->setUserInteractionEnabled(true);
  front->setHidden(true);
  EXPECT_EQ(window->hitTest({10, 425}), behind);
}

TEST(TNLView, KeyValueObservationOfHiddenAndAlpha) {
  auto view = TNLView::create({0, 0, 10, 10});
  std::vector<std::string> seen;
  int first = 0;
  int second = 0;
  view->addObserver(&first, "hidden", [&](const std::string& keyPath, TNLView& object) {
    seen.push_back("first:" + keyPath + "=" + (object.isHidden() ? "YES" : "NO"));
  });
  view->addObserver(&first, "alpha", [&](const std::string& keyPath, TNLView&) {
    seen.push_back("first:" + keyPath);
  });
  view->addObserver(&second, "alpha", [&](const std::string& keyPath, TNLView&) {
    seen.push_back("second:" + keyPath);
  });

  view->setHidden(true);
  view->setAlpha(0.5);
  view->setAlpha(0.5);           // every set is reported, as the platform does
  view->setClipsToBounds(true);  // not observable
  EXPECT_EQ(seen, (std::vector<std::string>{"first:hidden=YES", "first:alpha", "second:alpha",
                                            "first:alpha", "second:alpha"}));

  seen.clear();
  view->removeObserver(&first, "alpha");
  view->setAlpha(1.0);
  EXPECT_EQ(seen, (std::vector<std::string>{"second:alpha"}));

  // Removing what is not registered raises the platform's range exception.
  try {
    view->removeObserver(&first, "alpha");
    FAIL() << "expected an exception";
  } catch (const TNLException& exception) {
    EXPECT_EQ(exception.name(), TNLRangeException);
    EXPECT_NE(exception.reason().find("\"alpha\""), std::string::npos);
  }

  // An observer that removes another during a notification stops that one at once.
  seen.clear();
  view->removeObserver(&second, "alpha");
  view->addObserver(&first, "alpha", [&](const std::string&, TNLView& object) {
    seen.push_back("remover");
    object.removeObserver(&second, "alpha");
  });
  view->addObserver(&second, "alpha",
                    [&](const std::string&, TNLView&) { seen.push_back("removed"); });
  view->setAlpha(0.2);
  EXPECT_EQ(seen, (std::vector<std::string>{"remover"}));
}

TEST(TNLView, SubviewsAreListedInZOrderAndMirroredToThePeer) {
  auto window = TNLWindow::create({0, 0, 100, 100});
  auto a = TNLView::create();
  auto b = TNLView::create();
  auto c = TNLView::create();
  auto d = TNLView::create();
  window->addSubview(a);
  window->addSubview(b);
  window->addSubview(c);
  window->insertSubview(d, 1);
  // Higher z is drawn later; equal z keeps the listed order.
  a->setZPosition(2);
  c->setZPosition(-1);
  b->setZPosition(2);
  EXPECT_EQ(window->subviews(), (Views{a, d, b, c}));
  EXPECT_EQ(window->subviewsInZOrder(), (Views{c, d, a, b}));

  // Views get peers once their window is on screen, back to front; later changes reach them.
  EXPECT_EQ(a->existingPeer(), nullptr);
  window->makeKeyAndVisible();
  const auto windowPeer = TNLHeadlessViewPeer::of(window);
  ASSERT_NE(windowPeer, nullptr);
  d->setZPosition(5);
  b->removeFromSuperview();
  EXPECT_EQ(windowPeer->subviews(), (std::vector<std::shared_ptr<TNLViewPeer>>{
                                        c->existingPeer(), a->existingPeer(), d->existingPeer()}));
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
  EXPECT_TRUE(view->isDescendantOfView(*window));
  EXPECT_FALSE(view->isDescendantOfView(*first));
  // A view cannot take itself or an ancestor as subview.
  view->addSubview(second);
  view->addSubview(view);
  EXPECT_TRUE(view->subviews().empty());
  EXPECT_EQ(second->superview(), window);
  // Alpha outside 0...1 is taken as the nearest bound.
  view->setAlpha(3.0);
  EXPECT_EQ(view->alpha(), 1.0);

  std::weak_ptr<TNLView> weakView = view;
  view.reset();
  EXPECT_FALSE(weakView.expired());
  weakView.lock()->removeFromSuperview();
  EXPECT_TRUE(weakView.expired());
}

struct ScrollRecorder : TNLScrollViewDelegate {
  std::vector<TNLPoint> offsets;
  void scrollViewDidScroll(const std::shared_ptr<TNLScrollView>& scrollView) override {
    offsets.push_back(scrollView->contentOffset());
  }
};

TEST(TNLScrollView, ItsDelegateHearsEveryNewOffsetButNotResizes) {
  auto scroll = TNLScrollView::create({0, 0, 100, 100});
  auto recorder = std::make_shared<ScrollRecorder>();
  scroll->setDelegate(recorder);
  scroll->setContentOffset({0, 10});
  scroll->peerDidScroll({0, 25});  // the user scrolled
  scroll->setFrame({0, 0, 100, 200});
  scroll->setContentOffset({0, 25});
  EXPECT_EQ(recorder->offsets, (std::vector<TNLPoint>{{0, 10}, {0, 25}}));
}

}  // namespace
