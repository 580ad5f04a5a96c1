#include <gtest/gtest.h>

#include "Platform/Foundation/TNLMainQueue.h"
#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLLabel.h"
#include "TarnelAd/Toolkit/TNLLayoutConstraint.h"
#include "TarnelAd/Toolkit/TNLLayoutGuide.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLViewController.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

using A = TNLLayoutAttribute;

std::shared_ptr<TNLLayoutConstraint> pin(const std::shared_ptr<TNLLayoutItem>& item, A attribute,
                                         const std::shared_ptr<TNLLayoutItem>& to, A toAttribute,
                                         double constant = 0.0, double multiplier = 1.0) {
  return TNLLayoutConstraint::constraintWithItem(item, attribute, TNLLayoutRelation::equal, to,
                                                 toAttribute, multiplier, constant);
}

std::shared_ptr<TNLLayoutConstraint> fixed(const std::shared_ptr<TNLLayoutItem>& item, A attribute,
                                           double constant) {
  return pin(item, attribute, nullptr, A::notAnAttribute, constant);
}

// A title, a "Done" button and a page, laid out against the safe area as an in-app browser is.
class BrowserController : public TNLViewController {
 public:
  void viewDidLoad() override {
    const auto root = view();
    const auto guide = root->safeAreaLayoutGuide();
    title->setText("Brand");
    title->setTranslatesAutoresizingMaskIntoConstraints(false);
    root->addSubview(title);
    root->addConstraint(pin(title, A::top, guide, A::top, 8));
    root->addConstraint(pin(title, A::centerX, guide, A::centerX));

    done->setTitle("Done", TNLControlState::normal);
    done->setTranslatesAutoresizingMaskIntoConstraints(false);
    root->addSubview(done);
    root->addConstraint(pin(done, A::trailing, guide, A::trailing, -16));
    root->addConstraint(pin(done, A::centerY, title, A::centerY));

    page->setTranslatesAutoresizingMaskIntoConstraints(false);
    root->addSubview(page);
    root->addConstraint(pin(page, A::leading, guide, A::leading));
    root->addConstraint(pin(page, A::trailing, guide, A::trailing));
    root->addConstraint(pin(page, A::bottom, guide, A::bottom));
    root->addConstraint(pin(page, A::top, title, A::bottom, 16));
  }

  std::shared_ptr<TNLLabel> title = TNLLabel::create();
  std::shared_ptr<TNLButton> done = TNLButton::create();
  std::shared_ptr<TNLWebView> page = TNLWebView::create({}, {});
};

TEST(TNLLayout, BannerSizedByConstantsWithItsWebViewPinnedToItsEdges) {
  auto host = TNLView::create({0, 0, 375, 667});
  auto banner = TNLView::create();
  auto web = TNLView::create();
  host->addSubview(banner);
  banner->addSubview(web);

  banner->setTranslatesAutoresizingMaskIntoConstraints(false);
  const auto height = fixed(banner, A::height, 58.59375);
  banner->addConstraint(height);
  banner->addConstraint(fixed(banner, A::width, 375));
  web->setTranslatesAutoresizingMaskIntoConstraints(false);
  banner->addConstraints({pin(web, A::top, banner, A::top), pin(web, A::bottom, banner, A::bottom),
                          pin(web, A::left, banner, A::left),
                          pin(web, A::right, banner, A::right)});
  // The host places the banner at its bottom, centred.
  host->addConstraint(pin(banner, A::bottom, host, A::bottom));
  host->addConstraint(pin(banner, A::centerX, host, A::centerX));

  banner->layoutIfNeeded();
  EXPECT_EQ(banner->frame(), TNLRect(0, 667 - 58.59375, 375, 58.59375));
  EXPECT_EQ(web->frame(), TNLRect(0, 0, 375, 58.59375));

  // Growing the constant and laying out at once resizes the banner and the page with it.
  height->setConstant(250);
  banner->layoutIfNeeded();
  EXPECT_EQ(banner->frame(), TNLRect(0, 417, 375, 250));
  EXPECT_EQ(web->frame(), TNLRect(0, 0, 375, 250));

  // Without a superview only the size can be solved; the origin stays.
  auto loose = TNLView::create({3, 4, 1, 1});
  loose->setTranslatesAutoresizingMaskIntoConstraints(false);
  loose->addConstraint(fixed(loose, A::width, 320));
  loose->addConstraint(fixed(loose, A::height, 50));
  loose->layoutIfNeeded();
  EXPECT_EQ(loose->frame(), TNLRect(3, 4, 320, 50));
}

TEST(TNLLayout, BrowserLayoutFollowsTheSafeAreaAndTheWindowSize) {
  auto window = TNLWindow::create({0, 0, 375, 667});
  window->setWindowSafeAreaInsets({44, 0, 34, 0});
  auto browser = std::make_shared<BrowserController>();
  window->setRootViewController(browser);
  window->makeKeyAndVisible();

  EXPECT_EQ(browser->view()->safeAreaLayoutGuide()->layoutFrame(), TNLRect(0, 44, 375, 589));
  // Title: 5 characters of 9 points, 21 high, 8 below the safe top, centred.
  EXPECT_EQ(browser->title->frame(), TNLRect(165, 52, 45, 21));
  // Done: trailing 16 inside, vertically centred on the title (30 high).
  EXPECT_EQ(browser->done->frame(), TNLRect(323, 47.5, 36, 30));
  // Page: 16 below the title, to the safe area's other edges.
  EXPECT_EQ(browser->page->frame(), TNLRect(0, 89, 375, 544));

  // Landscape with side insets.
  window->setWindowSafeAreaInsets({0, 44, 21, 44});
  window->transitionToSize({667, 375});
  EXPECT_EQ(browser->view()->frame(), TNLRect(0, 0, 667, 375));
  EXPECT_EQ(browser->title->frame(), TNLRect(311, 8, 45, 21));
  EXPECT_EQ(browser->done->frame(), TNLRect(571, 3.5, 36, 30));
  EXPECT_EQ(browser->page->frame(), TNLRect(44, 45, 579, 309));

  // A title with no text takes no room; the page moves up to 16 below the title's top.
  browser->title->setText(std::nullopt);
  browser->view()->layoutIfNeeded();
  EXPECT_EQ(browser->title->frame(), TNLRect(333.5, 8, 0, 0));
  EXPECT_EQ(browser->page->frame(), TNLRect(44, 24, 579, 330));
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

  // A constraint whose second item is gone no longer applies; the frame stays.
  auto gone = TNLView::create({0, 0, 10, 10});
  host->addSubview(gone);
  host->addConstraint(pin(child, A::top, gone, A::bottom, 5));
  child->layoutIfNeeded();
  EXPECT_EQ(child->frame().minY(), 15);
  gone->removeFromSuperview();
  gone.reset();
  host->setFrame({0, 0, 600, 500});
  host->layoutIfNeeded();
  EXPECT_EQ(child->frame(), TNLRect(270, 230, 310, 40));
}

TEST(TNLLayout, SafeAreaInsetsOfNestedViewsAndControllers) {
  auto window = TNLWindow::create({0, 0, 375, 667});
  window->setWindowSafeAreaInsets({44, 0, 34, 0});
  auto top = TNLView::create({0, 20, 375, 100});
  auto middle = TNLView::create({10, 200, 100, 100});
  auto bottom = TNLView::create({0, 600, 200, 67});
  window->addSubview(top);
  window->addSubview(middle);
  window->addSubview(bottom);
  EXPECT_EQ(window->safeAreaInsets(), (TNLEdgeInsets{44, 0, 34, 0}));
  EXPECT_EQ(top->safeAreaInsets(), (TNLEdgeInsets{24, 0, 0, 0}));
  EXPECT_EQ(middle->safeAreaInsets(), (TNLEdgeInsets{}));
  EXPECT_EQ(bottom->safeAreaInsets(), (TNLEdgeInsets{0, 0, 34, 0}));
  EXPECT_EQ(bottom->safeAreaLayoutGuide()->layoutFrame(), TNLRect(0, 0, 200, 33));

  // A controller's additional insets apply to its view and to the views inside it.
  auto controller = std::make_shared<TNLViewController>();
  window->setRootViewController(controller);
  controller->setAdditionalSafeAreaInsets({0, 0, 0, 15});
  auto inside = TNLView::create({300, 50, 75, 50});
  controller->view()->addSubview(inside);
  EXPECT_EQ(controller->view()->safeAreaInsets(), (TNLEdgeInsets{44, 0, 34, 15}));
  EXPECT_EQ(inside->safeAreaInsets(), (TNLEdgeInsets{0, 0, 0, 15}));

  // Outside a window there is no safe area to keep clear of.
  auto loose = TNLView::create({0, 0, 50, 50});
  EXPECT_EQ(loose->safeAreaInsets(), (TNLEdgeInsets{}));
}

}  // namespace
