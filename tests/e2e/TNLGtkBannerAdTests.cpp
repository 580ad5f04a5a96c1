// Banners in real windows: a TNLBannerAdView placed in the host's view hierarchy loads its
// creative from the loopback ad service into WebKit, which hears the library over the bridge,
// expands, passes clicks through and closes itself.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "Ads/TNLAd.h"
#include "Ads/TNLAdWebView.h"
#include "Platform/Foundation/TNLJSON.h"
#include "TarnelAd/TarnelAd.h"
#include "e2e/TNLCreativeTestSupport.h"
#include "e2e/TNLGtkTestSupport.h"
#include "support/TNLTestAdService.h"
#include "support/TNLTestHosts.h"

namespace {

using namespace tnl_e2e;
using Response = TNLTestServer::Response;
using Names = std::vector<std::string>;

constexpr auto kContentDelay = TNLTestAdService::kContentDelay;

// The host's scroll handling: it tells the banner in its feed of every scroll.
class FeedScrolling : public TNLScrollViewDelegate {
 public:
  std::weak_ptr<TNLBannerAdView> banner;

  void scrollViewDidScroll(const std::shared_ptr<TNLScrollView>& scrollView) override {
    if (const auto shown = banner.lock()) {
      shown->informBannerAdOfScrollViewEvent(scrollView);
    }
  }
};

class BannerAdTest : public GtkTest {
 protected:
  void SetUp() override {
    GtkTest::SetUp();
    service.install();
    bannerSize = TNLBannerAdView::calculateBannerSizeForAdSize(TNLBannerAdSizeStandard);
    window = TNLWindow::create({0.0, 0.0, bannerSize.width, kWindowHeight});
    window->setRootViewController(screen);
    window->makeKeyAndVisible();
    ASSERT_TRUE(waitUntilMapped(gtk_widget_get_toplevel(widgetOf(screen->view()))));
    service.publishManifest({{0, "/ads"}});
    server.on("GET", "/ads",
              Response::json(TNLJSON::serialize({{"sdkType", "html"},
                                                 {"creative_tag", server.url("/banner.html")},
                                                 {"copy", {{"brandName", "Acme"}}}}))
                  .after(kContentDelay));
    ASSERT_TRUE(service.preloadManifest());
  }

  void serveCreative(const std::string& body, const std::string& script) {
    server.on("GET", "/banner.html",
              Response(200, creativePage(body, script), "text/html").after(kContentDelay));
  }

  std::shared_ptr<TNLBannerAdView> makeBanner() {
    return TNLBannerAdView::create(screen, "APP1", TNLBannerAdSizeStandard, screen);
  }

  static bool heightIs(GtkWidget* widget, int height) {
    return widget && gtk_widget_get_mapped(widget) &&
           gtk_widget_get_allocated_height(widget) == height;
  }

  static constexpr double kWindowHeight = 600.0;

  TNLTestAdService service;
  TNLTestServer& server = service.server;
  CreativeReports reports{server};
  std::shared_ptr<TNLTestBannerHost> screen = std::make_shared<TNLTestBannerHost>();
  std::shared_ptr<TNLWindow> window;
  TNLSize bannerSize;
};

TEST_F(BannerAdTest, ABannerInTheHostsFeedRunsFromLoadToCloseAndItsPageHearsTheLibrary) {
  // The creative's close button sits at its bottom right.
  serveCreative(R"HTML(<a href="bridge://close"
      style="position:absolute;bottom:0;right:0;width:60px;height:60px;background:#c00"></a>)HTML",
                "");
  // The feed scrolls 40 points at most; the banner sits at its top.
  const auto feed = TNLScrollView::create({0.0, 0.0, bannerSize.width, kWindowHeight});
  const auto scrolling = std::make_shared<FeedScrolling>();
  feed->setDelegate(scrolling);
  feed->setContentSize({bannerSize.width, kWindowHeight + 40.0});
  screen->view()->addSubview(feed);
  const auto banner = makeBanner();
  feed->addSubview(banner);
  scrolling->banner = banner;

  banner->loadAdForZone("B");
  ASSERT_TRUE(screen->waitForCall("ready B @main"));
  GtkWidget* bannerWidget = widgetOf(banner);
  EXPECT_TRUE(waitFor([&] { return heightIs(bannerWidget, std::lround(bannerSize.height)); }));

  // Shown in a window, opaque: the page hears that it is visible once it has loaded.
  ASSERT_TRUE(reports.waitFor("ZENKO.isAdVisible"));
  EXPECT_TRUE(banner->impressionSent());
  // The host fades the banner, and brings it back.
  banner->setAlpha(0.5);
  EXPECT_NEAR(gtk_widget_get_opacity(bannerWidget), 0.5, 1.0 / 255.0);
  ASSERT_TRUE(reports.waitFor("ZENKO.isAdVisible", 2));
  banner->setAlpha(1.0);
  ASSERT_TRUE(reports.waitFor("ZENKO.isAdVisible", 3));

  // The user turns the mouse wheel over the feed below the banner.
  scroll(widgetOf(feed), 100, static_cast<int>(kWindowHeight) - 100, 1);
  ASSERT_TRUE(waitFor([&] { return feed->contentOffset().y == 40.0; }));
  ASSERT_TRUE(waitFor([&] {
    const auto scrolls = reports.named("ZENKO.scroll");
    return !scrolls.empty() && scrolls.back().args[0].value("currY", 0.0) == 40.0;
  }));

  const auto names = reports.names();
  ASSERT_GE(names.size(), 7u);
  EXPECT_EQ(Names(names.begin(), names.begin() + 7),
            (Names{"receivePayload", "ZENKO.setVolume", "ZENKO.isAdVisible", "ZENKO.isAdVisible",
                   "ZENKO.isAdVisible", "ZENKO.isScrollListenerSubscribed", "ZENKO.scroll"}));
  // One scroll event for each step the feed took.
  EXPECT_TRUE(std::all_of(names.begin() + 7, names.end(),
                          [](const std::string& name) { return name == "ZENKO.scroll"; }));
  const auto calls = reports.calls();
  EXPECT_EQ(calls[2].args, nlohmann::json::array({true}));
  EXPECT_EQ(calls[3].args, nlohmann::json::array({false}));
  EXPECT_EQ(calls[4].args, nlohmann::json::array({true}));
  EXPECT_EQ(calls[5].args, nlohmann::json::array({true}));
  EXPECT_EQ(reports.named("ZENKO.scroll").back().args[0],
            nlohmann::json({{"startX", 0},
                            {"startY", 0},
                            {"currX", 0},
                            {"currY", 40},
                            {"maxX", bannerSize.width},
                            {"maxY", kWindowHeight}}));

  // The user taps the creative's close button: the banner leaves the host's feed.
  click(bannerWidget, gtk_widget_get_allocated_width(bannerWidget) - 30,
        gtk_widget_get_allocated_height(bannerWidget) - 30);
  ASSERT_TRUE(screen->waitForCall("closed B @main"));
  EXPECT_EQ(screen->calls(), (Names{"ready B @main", "closed B @main"}));
  EXPECT_EQ(banner->superview(), nullptr);
  EXPECT_EQ(banner->loadedWebView(), nullptr);
  EXPECT_FALSE(gtk_widget_get_mapped(bannerWidget));

  ASSERT_TRUE(service.waitForEvents(5));
  settle(200ms);
  Names events = service.events();
  ASSERT_EQ(events.size(), 5u);
  // The return and the showing leave together and may arrive in either order.
  std::sort(events.begin() + 2, events.begin() + 4);
  EXPECT_EQ(events, (Names{TNL_MANIFESTLOADED_TRACKER, TNL_ADREQUESTED_TRACKER,
                           TNL_ADRETURNED_TRACKER, TNL_ADSHOWING_TRACKER, TNL_ADCLOSED_TRACKER}));
}

TEST_F(BannerAdTest, AnExpansionWithTouchGrowsTheBannerAndClicksInTheAddedBandReachTheHost) {
  // Expands once it is seen; collapses at the first click that reaches it.
  serveCreative("", R"JS(
    let expanded = false;
    on('ZENKO.isAdVisible', (visible) => {
      if (visible && !expanded) { expanded = true; bridge('expand=250&touch=true'); }
    });
    let clicks = 0;
    document.addEventListener('click', (event) => {
      report('click', [event.clientX, event.clientY]);
      if (++clicks === 1) bridge('collapse');
    });
  )JS");
  ASSERT_LT(bannerSize.height, 250.0) << "the screen is too large for a banner to grow to 250";
  // Behind the banner, the host's own button.
  int hostTaps = 0;
  const auto behind = TNLButton::create();
  behind->setFrame({0.0, 0.0, bannerSize.width, kWindowHeight});
  behind->setTitle("Host", TNLControlState::normal);
  behind->addTapAction([&hostTaps](TNLButton&) { ++hostTaps; });
  screen->view()->addSubview(behind);
  const auto banner = makeBanner();
  screen->view()->addSubview(banner);

  banner->loadAdForZone("E");
  ASSERT_TRUE(screen->waitForCall("ready E @main"));
  ASSERT_TRUE(reports.waitFor("ZENKO.onWebViewExpanded"));
  const auto expanded = reports.named("ZENKO.onWebViewExpanded");
  EXPECT_EQ(expanded[0].args, nlohmann::json::array({250}));
  EXPECT_EQ(banner->frame().height(), 250.0);
  const double band = 250.0 - bannerSize.height;
  EXPECT_EQ(banner->touchIgnoreZone(), (TNLRect{0.0, 0.0, bannerSize.width, band}));
  GtkWidget* bannerWidget = widgetOf(banner);
  ASSERT_TRUE(waitFor([&] { return heightIs(bannerWidget, 250); }));

  // A click in the added band goes to the host; one below it to the creative, which collapses.
  const int middle = static_cast<int>(bannerSize.width / 2);
  click(bannerWidget, middle, static_cast<int>(band / 2));
  EXPECT_TRUE(waitFor([&] { return hostTaps == 1; }));
  click(bannerWidget, middle, static_cast<int>(band + 20));
  ASSERT_TRUE(reports.waitFor("ZENKO.onWebViewCollapsed"));
  EXPECT_TRUE(waitFor([&] { return heightIs(bannerWidget, std::lround(bannerSize.height)); }));
  EXPECT_EQ(banner->frame().height(), bannerSize.height);

  // Collapsing keeps the band: its clicks still go to the host.
  click(bannerWidget, middle, static_cast<int>(band / 2));
  EXPECT_TRUE(waitFor([&] { return hostTaps == 2; }));
  click(bannerWidget, middle, static_cast<int>(band + 20));
  ASSERT_TRUE(reports.waitFor("click", 2));
  for (const auto& pageClick : reports.named("click")) {
    EXPECT_GE(pageClick.args[1].get<double>(), band) << "a click in the band reached the page";
  }
  EXPECT_EQ(hostTaps, 2);
}

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

TEST_F(BannerAdTest, AMeasuredBannerHasItsGeometryWalkedFromTheRealWindow) {
  serveCreative("", "on('receivePayload', () => bridge('optin?display'));");
  // Away from the screen's origin, so that the window's own position must count.
  gtk_window_move(GTK_WINDOW(gtk_widget_get_toplevel(widgetOf(screen->view()))), 50, 60);
  ASSERT_TRUE(waitFor([&] { return window->frame().origin == TNLPoint{50.0, 60.0}; }));
  const auto banner = makeBanner();
  screen->view()->addSubview(banner);
  banner->setFrame({0.0, 120.0, bannerSize.width, bannerSize.height});
  banner->loadAdForZone("M");
  ASSERT_TRUE(reports.waitFor("omidBridge.setNativeViewHierarchy"));
  const auto state = adViewState(reports.named("omidBridge.setNativeViewHierarchy")[0].args[0]);
  ASSERT_FALSE(state.is_null());
  const TNLRect onScreen = banner->convertRectToScreen(banner->bounds());
  EXPECT_EQ(onScreen.origin, (TNLPoint{50.0, 180.0}));
  EXPECT_EQ(state["x"].get<double>(), onScreen.origin.x);
  EXPECT_EQ(state["y"].get<double>(), onScreen.origin.y);
  EXPECT_EQ(state["width"].get<double>(), onScreen.size.width);
  EXPECT_EQ(state["height"].get<double>(), onScreen.size.height);
}

}  // namespace
