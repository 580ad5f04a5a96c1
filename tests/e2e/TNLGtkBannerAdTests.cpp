// A banner in a real window: the creative in WebKit hears the library over the bridge, follows
// the host's real scrolling, is measured with its real geometry and closes at a real click.

#include <gtest/gtest.h>

#include <cmath>

#include "e2e/TNLCreativeTestSupport.h"
#include "support/TNLTestHosts.h"

namespace {

using namespace tnl_e2e;

constexpr double kWindowHeight = 600.0;

// The host tells the banner in its feed of every scroll.
class FeedScrolling : public TNLScrollViewDelegate {
 public:
  void scrollViewDidScroll(const std::shared_ptr<TNLScrollView>& scrollView) override {
    if (const auto shown = banner.lock()) {
      shown->informBannerAdOfScrollViewEvent(scrollView);
    }
  }
  std::weak_ptr<TNLBannerAdView> banner;
};

// The view state the measurement SDK sent for the ad's view, found anywhere in the tree.
nlohmann::json adViewState(const nlohmann::json& state) {
  if (state.contains("adSessionId")) {
    return state;
  }
  for (const auto& child : state.value("childViews", nlohmann::json::array())) {
    if (auto found = adViewState(child); !found.is_null()) {
      return found;
    }
  }
  return nullptr;
}

class BannerAdTest : public AdFlowTest<TNLTestBannerHost> {
 protected:
  void SetUp() override {
    GtkTest::SetUp();  // the banner's size follows the real screen
    bannerSize = TNLBannerAdView::calculateBannerSizeForAdSize(TNLBannerAdSizeStandard);
    AdFlowTest::SetUp();
  }

  TNLRect windowFrame() const override { return {0.0, 0.0, bannerSize.width, kWindowHeight}; }

  TNLSize bannerSize;
};

TEST_F(BannerAdTest, AMeasuredBannerInTheHostsFeedFollowsItsScrollingAndClosesAtAClick) {
  // Opts in to measurement; its close button sits at its bottom right.
  serveCreative(R"(<a href="bridge://close" style="position:absolute;bottom:0;right:0;
      width:60px;height:60px;background:#c00"></a>)",
                "on('receivePayload', () => bridge('optin?display'));");
  // Away from the screen's origin, so that the window's own position must count in the walk.
  gtk_window_move(GTK_WINDOW(hostWindow), 50, 60);
  ASSERT_TRUE(waitFor([&] { return window->frame().origin == TNLPoint{50.0, 60.0}; }));
  // The feed, 120 points down, scrolls 40 points at most; the banner sits at its top.
  const auto feed = TNLScrollView::create({0.0, 120.0, bannerSize.width, kWindowHeight});
  const auto scrolling = std::make_shared<FeedScrolling>();
  feed->setDelegate(scrolling);
  feed->setContentSize({bannerSize.width, kWindowHeight + 40.0});
  screen->view()->addSubview(feed);
  const auto banner = TNLBannerAdView::create(screen, "APP1", TNLBannerAdSizeStandard, screen);
  feed->addSubview(banner);
  scrolling->banner = banner;

  banner->loadAdForZone("B");
  ASSERT_TRUE(screen->waitForCall("ready B @main"));
  GtkWidget* widget = widgetOf(banner);
  EXPECT_TRUE(waitFor([&] {
    return gtk_widget_get_mapped(widget) &&
           gtk_widget_get_allocated_height(widget) == std::lround(bannerSize.height);
  }));
  ASSERT_TRUE(reports.waitFor("omidBridge.setNativeViewHierarchy"));
  const auto state = adViewState(reports.named("omidBridge.setNativeViewHierarchy")[0].args[0]);
  ASSERT_FALSE(state.is_null());
  EXPECT_EQ((std::vector<double>{state["x"], state["y"], state["width"], state["height"]}),
            (std::vector<double>{50.0, 180.0, bannerSize.width, bannerSize.height}));

  // The user turns the wheel over the feed below the banner: the feed, the banner with it, moves
  // no further than its content; with scrolling off, not at all.
  const int top = screenPoint(widget, 0, 0).second;
  scroll(widgetOf(feed), 100, 300, 2);
  ASSERT_TRUE(waitFor([&] {
    const auto scrolls = reports.named("ZENKO.scroll");
    return !scrolls.empty() && scrolls.back().args[0].value("currY", 0.0) == 40.0;
  }));
  EXPECT_TRUE(waitFor([&] { return screenPoint(widget, 0, 0).second == top - 40; }));
  feed->setScrollEnabled(false);
  scroll(widgetOf(feed), 100, 300, -1);
  EXPECT_EQ(feed->contentOffset(), (TNLPoint{0.0, 40.0}));
  Names heard;
  for (const auto& name : reports.names()) {
    if (!name.starts_with("omidBridge.")) {
      heard.push_back(name);
    }
  }
  ASSERT_GE(heard.size(), 5u);
  EXPECT_EQ(Names(heard.begin(), heard.begin() + 4),
            (Names{"receivePayload", "ZENKO.setVolume", "ZENKO.isAdVisible",
                   "ZENKO.isScrollListenerSubscribed"}));
  EXPECT_EQ(reports.named("ZENKO.isAdVisible")[0].args, nlohmann::json::array({true}));
  EXPECT_EQ(reports.named("ZENKO.scroll").back().args[0],
            nlohmann::json({{"startX", 0},
                            {"startY", 0},
                            {"currX", 0},
                            {"currY", 40},
                            {"maxX", bannerSize.width},
                            {"maxY", kWindowHeight}}));

  click(widget, gtk_widget_get_allocated_width(widget) - 30,
        gtk_widget_get_allocated_height(widget) - 30);
  ASSERT_TRUE(screen->waitForCall("closed B @main"));
  EXPECT_EQ(screen->calls(), (Names{"ready B @main", "closed B @main"}));
  EXPECT_EQ(banner->superview(), nullptr);
  EXPECT_FALSE(gtk_widget_get_mapped(widget));
}

}  // namespace
