#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/Foundation/TNLException.h"
#include "Platform/Toolkit/Headless/TNLHeadlessViewPeer.h"
#include "TarnelAd/Toolkit/TNLLabel.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

// Touches in the top-left zone pass through to what lies behind, and points outside the
// bounds still count as inside, as a banner with a pass-through zone answers.
class PassThroughView : public TNLView {
 public:
  using TNLView::TNLView;
  std::string className() const override { return "PassThroughView"; }
  bool pointInside(const TNLPoint& point) const override {
    if (point.x < 0 || point.y < 0) {
      return false;
    }
    return !(point.x < zone.size.width && point.y < zone.size.height);
  }
  TNLRect zone;
};

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
  EXPECT_EQ(inner->convertRectToScreen(inner->bounds()), TNLRect(18, 99, 20, 20));
  // The same through the superview and its frame, as a tree walk converts.
  EXPECT_EQ(content->convertRectToScreen(inner->frame()), TNLRect(18, 99, 20, 20));
  EXPECT_EQ(inner->convertRect({1, 1, 2, 2}, scroll), TNLRect(13, 110, 2, 2));
  EXPECT_EQ(scroll->convertRect({13, 110, 2, 2}, inner), TNLRect(1, 1, 2, 2));
  EXPECT_EQ(inner->window(), window);
  EXPECT_EQ(window->window(), nullptr);

  // Between windows the conversion goes through the screen.
  auto other = TNLWindow::create({100, 0, 100, 100});
  EXPECT_EQ(inner->convertRect(inner->bounds(), other), TNLRect(-82, 99, 20, 20));

  // Outside any window the root's coordinates stand in for the window's and the screen's.
  auto loose = TNLView::create({3, 4, 50, 50});
  auto child = TNLView::create({1, 1, 5, 5});
  loose->addSubview(child);
  EXPECT_EQ(child->convertRectToScreen(child->bounds()), TNLRect(1, 1, 5, 5));
  EXPECT_EQ(child->window(), nullptr);
}

TEST(TNLView, HitTestingHonoursPointInsideOverridesAndVisibility) {
  auto window = TNLWindow::create({0, 0, 320, 480});
  window->makeKeyAndVisible();  // a hidden window takes no touches
  auto behind = TNLView::create({0, 0, 320, 480});
  auto banner = std::make_shared<PassThroughView>(TNLRect{0, 400, 320, 50});
  window->addSubview(behind);
  window->addSubview(banner);

  EXPECT_EQ(window->hitTest({10, 410}), banner);
  banner->zone = {0, 0, 320, 20};
  EXPECT_EQ(window->hitTest({10, 410}), behind);  // inside the pass-through zone
  EXPECT_EQ(window->hitTest({10, 425}), banner);
  // The override, not the bounds, decides: a point below the banner's bounds is still its own.
  EXPECT_TRUE(banner->pointInside({10, 500}));
  EXPECT_FALSE(banner->pointInside({-1, 30}));

  // The default test is half-open on the bounds.
  EXPECT_TRUE(behind->pointInside({0, 0}));
  EXPECT_FALSE(behind->pointInside({320, 10}));

  banner->zone = {};
  banner->setAlpha(0.0);
  EXPECT_EQ(window->hitTest({10, 425}), behind);
  banner->setAlpha(1.0);
  banner->setUserInteractionEnabled(false);
  EXPECT_EQ(window->hitTest({10, 425}), behind);
  banner->setUserInteractionEnabled(true);
  banner->setHidden(true);
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
  view->addObserver(&first, "alpha", [&](const std::string& keyPath, TNLView& object) {
    seen.push_back("first:" + keyPath + "=" + std::to_string(object.alpha()).substr(0, 3));
  });
  view->addObserver(&second, "alpha", [&](const std::string& keyPath, TNLView&) {
    seen.push_back("second:" + keyPath);
  });

  view->setHidden(true);
  view->setAlpha(0.5);
  view->setAlpha(0.5);           // every set is reported, as the platform does
  view->setClipsToBounds(true);  // not observable
  EXPECT_EQ(seen, (std::vector<std::string>{"first:hidden=YES", "first:alpha=0.5", "second:alpha",
                                            "first:alpha=0.5", "second:alpha"}));

  seen.clear();
  view->removeObserver(&first, "alpha");
  view->setAlpha(1.0);
  view->setHidden(false);
  EXPECT_EQ(seen, (std::vector<std::string>{"second:alpha", "first:hidden=NO"}));

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
  bool removedSecond = false;
  view->addObserver(&first, "alpha", [&](const std::string&, TNLView& object) {
    seen.push_back("remover");
    if (!removedSecond) {
      removedSecond = true;
      object.removeObserver(&second, "alpha");
    }
  });
  view->addObserver(&second, "alpha",
                    [&](const std::string&, TNLView&) { seen.push_back("removed"); });
  view->setAlpha(0.2);
  view->setAlpha(0.3);
  EXPECT_EQ(seen, (std::vector<std::string>{"remover", "remover"}));
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
  window->insertSubview(d, 1);  // a d b c
  EXPECT_EQ(window->subviewsInZOrder(), (std::vector<std::shared_ptr<TNLView>>{a, d, b, c}));

  // Higher z is drawn later; equal z keeps the listed order.
  a->setZPosition(2);
  c->setZPosition(-1);
  b->setZPosition(2);
  EXPECT_EQ(window->subviews(), (std::vector<std::shared_ptr<TNLView>>{a, d, b, c}));
  EXPECT_EQ(window->subviewsInZOrder(), (std::vector<std::shared_ptr<TNLView>>{c, d, a, b}));

  // Views get peers once their window is on screen, and the window's peer gets them back to
  // front; later changes reach it too.
  EXPECT_EQ(a->existingPeer(), nullptr);
  window->makeKeyAndVisible();
  const auto windowPeer = TNLHeadlessViewPeer::of(window);
  ASSERT_NE(windowPeer, nullptr);
  EXPECT_EQ(windowPeer->kind(), TNLHeadlessViewPeer::Kind::window);
  EXPECT_TRUE(windowPeer->isKeyWindow());
  EXPECT_FALSE(windowPeer->isHidden());
  EXPECT_EQ(windowPeer->subviews(),
            (std::vector<std::shared_ptr<TNLViewPeer>>{c->existingPeer(), d->existingPeer(),
                                                       a->existingPeer(), b->existingPeer()}));
  d->setZPosition(5);
  b->removeFromSuperview();
  EXPECT_EQ(windowPeer->subviews(), (std::vector<std::shared_ptr<TNLViewPeer>>{
                                        c->existingPeer(), a->existingPeer(), d->existingPeer()}));
}

TEST(TNLView, HierarchyMovesKeepOneSuperviewAndPeersFollowTheModel) {
  auto window = TNLWindow::create({0, 0, 200, 200});
  window->makeKeyAndVisible();
  auto first = TNLView::create({0, 0, 100, 100});
  auto second = TNLView::create({100, 0, 100, 100});
  auto label = TNLLabel::create({1, 2, 3, 4});
  window->addSubview(first);
  window->addSubview(second);
  first->addSubview(label);

  second->addSubview(label);  // moves
  EXPECT_TRUE(first->subviews().empty());
  EXPECT_EQ(label->superview(), second);
  EXPECT_TRUE(label->isDescendantOfView(*window));
  EXPECT_FALSE(label->isDescendantOfView(*first));

  // A view cannot take itself or an ancestor as subview.
  label->addSubview(second);
  label->addSubview(label);
  EXPECT_TRUE(label->subviews().empty());
  EXPECT_EQ(second->superview(), window);

  // The label's peer has the whole state, and hears of every later change.
  label->setText("Brand");
  label->setAlpha(0.25);
  label->setHidden(true);
  label->setBackgroundColor(TNLColor::white());
  label->setFrame({5, 6, 7, 8});
  const auto peer = TNLHeadlessViewPeer::of(label);
  ASSERT_NE(peer, nullptr);
  EXPECT_EQ(peer->kind(), TNLHeadlessViewPeer::Kind::label);
  EXPECT_EQ(peer->text(), "Brand");
  EXPECT_EQ(peer->alpha(), 0.25);
  EXPECT_TRUE(peer->isHidden());
  EXPECT_EQ(peer->backgroundColor(), TNLColor::white());
  EXPECT_EQ(peer->frame(), TNLRect(5, 6, 7, 8));
  EXPECT_EQ(TNLHeadlessViewPeer::of(second)->subviews(),
            (std::vector<std::shared_ptr<TNLViewPeer>>{peer}));

  // Alpha outside 0...1 is taken as the nearest bound.
  label->setAlpha(3.0);
  EXPECT_EQ(label->alpha(), 1.0);

  // The superview owns its subviews: once removed and released, a view is gone.
  std::weak_ptr<TNLView> weakLabel = label;
  label.reset();
  EXPECT_FALSE(weakLabel.expired());
  weakLabel.lock()->removeFromSuperview();
  EXPECT_TRUE(weakLabel.expired());
}

}  // namespace

namespace {

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

  recorder.reset();  // held weakly
  EXPECT_NO_THROW(scroll->setContentOffset({0, 0}));
}

}  // namespace
