// Views and windows on GTK: model state mirrored onto widgets, geometry and visibility reported
// back, input routed by the model's hit test, the application state, the screen.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "AppVerificationLibrary/OMIDScreenProcessor.h"
#include "AppVerificationLibrary/OMIDWindowProcessor.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Gtk/TNLGtkApplicationState.h"
#include "Platform/Gtk/TNLGtkInputRouting.h"
#include "Platform/Gtk/TNLGtkLabelPeer.h"
#include "Platform/Gtk/TNLGtkWebEngine.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLLabel.h"
#include "TarnelAd/Toolkit/TNLScreen.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLViewController.h"
#include "TarnelAd/Toolkit/TNLWindow.h"
#include "e2e/TNLGtkTestSupport.h"
#include "support/TNLTestServer.h"

namespace {

using namespace tnl_e2e;

GdkRectangle allocationOf(GtkWidget* widget) {
  GtkAllocation allocation;
  gtk_widget_get_allocation(widget, &allocation);
  return allocation;
}

bool allocatedAt(GtkWidget* widget, int x, int y, int width, int height) {
  const GdkRectangle a = allocationOf(widget);
  return a.x == x && a.y == y && a.width == width && a.height == height;
}

std::shared_ptr<TNLWindow> shownWindow(const TNLRect& frame) {
  auto window = TNLWindow::create(frame);
  window->makeKeyAndVisible();
  return window;
}

std::shared_ptr<TNLButton> buttonCounting(int& taps, const TNLRect& frame) {
  auto button = TNLButton::create();
  button->setFrame(frame);
  button->setTitle("Tap", TNLControlState::normal);
  button->addTapAction([&taps](TNLButton&) { ++taps; });
  return button;
}

// Refuses touches in a zone at its top-left corner, as a banner's pass-through zone does.
class PassThroughView : public TNLView {
 public:
  using TNLView::TNLView;
  bool pointInside(const TNLPoint& point) const override {
    return point.x >= 0.0 && point.y >= 0.0 && !(point.x < zone.width() && point.y < zone.height());
  }
  TNLRect zone;
};

class RecordingController : public TNLViewController {
 public:
  void viewWillTransitionToSize(const TNLSize& size) override { sizes.push_back(size); }
  void viewWillDisappear(bool) override { events.push_back("willDisappear"); }
  void viewWillAppear(bool) override { events.push_back("willAppear"); }
  std::vector<TNLSize> sizes;
  std::vector<std::string> events;
};

using ViewTest = GtkTest;

TEST_F(ViewTest, FrameHiddenAndAlphaOfAViewReachItsWidget) {
  const auto window = shownWindow({40.0, 30.0, 400.0, 300.0});
  const auto view = TNLView::create({10.0, 20.0, 100.0, 50.0});
  window->addSubview(view);
  GtkWidget* widget = widgetOf(view);
  ASSERT_NE(widget, nullptr);
  GtkWidget* toplevel = gtk_widget_get_toplevel(widget);
  ASSERT_TRUE(waitUntilMapped(toplevel));

  // The window sits at its frame on the screen.
  int x = 0;
  int y = 0;
  gdk_window_get_origin(gtk_widget_get_window(toplevel), &x, &y);
  EXPECT_EQ(x, 40);
  EXPECT_EQ(y, 30);
  EXPECT_TRUE(waitFor([&] { return allocatedAt(widget, 10, 20, 100, 50); }));

  view->setFrame({30.0, 40.0, 120.0, 60.0});
  EXPECT_TRUE(waitFor([&] { return allocatedAt(widget, 30, 40, 120, 60); }));

  view->setHidden(true);
  EXPECT_FALSE(gtk_widget_get_visible(widget));
  EXPECT_FALSE(gtk_widget_get_mapped(widget));
  view->setHidden(false);
  EXPECT_TRUE(gtk_widget_get_mapped(widget));

  view->setAlpha(0.25);
  EXPECT_NEAR(gtk_widget_get_opacity(widget), 0.25, 1.0 / 255.0);  // GTK keeps 8 bits
}

TEST_F(ViewTest, BackgroundsArePaintedAndClippingCutsSubviews) {
  const auto window = shownWindow({0.0, 0.0, 300.0, 300.0});
  window->setBackgroundColor(TNLColor{0.0, 0.0, 1.0, 1.0});
  const auto parent = TNLView::create({0.0, 0.0, 100.0, 100.0});
  const auto child = TNLView::create({0.0, 0.0, 200.0, 200.0});
  child->setBackgroundColor(TNLColor{1.0, 0.0, 0.0, 1.0});
  parent->addSubview(child);
  window->addSubview(parent);
  GtkWidget* toplevel = gtk_widget_get_toplevel(widgetOf(parent));
  ASSERT_TRUE(waitUntilMapped(toplevel));

  const auto pixel = [&](int x, int y) { return pixelAt(toplevel, x, y); };
  constexpr std::array<int, 3> red{255, 0, 0};
  constexpr std::array<int, 3> blue{0, 0, 255};
  // A subview reaches beyond its superview unless the superview clips.
  EXPECT_TRUE(waitFor([&] { return pixel(150, 150) == red; }, 3s));
  EXPECT_EQ(pixel(250, 250), blue);
  parent->setClipsToBounds(true);
  EXPECT_TRUE(waitFor([&] { return pixel(150, 150) == blue; }, 3s));
  EXPECT_EQ(pixel(50, 50), red);
  child->setBackgroundColor(std::nullopt);
  EXPECT_TRUE(waitFor([&] { return pixel(50, 50) == blue; }, 3s));
}

TEST_F(ViewTest, LabelsAndButtonsShowTheirTextAndMeasureIt) {
  const auto window = shownWindow({0.0, 0.0, 300.0, 200.0});
  const auto label = TNLLabel::create({10.0, 10.0, 200.0, 30.0});
  window->addSubview(label);
  label->setText("Brand");
  const auto peer = std::dynamic_pointer_cast<TNLGtkLabelPeer>(label->existingPeer());
  ASSERT_NE(peer, nullptr);
  EXPECT_STREQ(gtk_label_get_text(peer->label()), "Brand");
  // Measured by the toolkit: a longer text is wider, no text has no size.
  const TNLSize brand = label->intrinsicContentSize();
  label->setText("A much longer brand name");
  EXPECT_GT(label->intrinsicContentSize().width, brand.width);
  label->setText(std::nullopt);
  EXPECT_EQ(label->intrinsicContentSize(), (TNLSize{0.0, 0.0}));

  int taps = 0;
  const auto button = buttonCounting(taps, {10.0, 100.0, 120.0, 40.0});
  window->addSubview(button);
  button->setTitle("Done", TNLControlState::normal);
  const TNLGtkViewBox* buttonBox = TNLGtkViewBox::of(widgetOf(button));
  EXPECT_STREQ(gtk_button_get_label(GTK_BUTTON(buttonBox->content())), "Done");
}

TEST_F(ViewTest, AScrollViewScrollsItsContentWithTheWheelWithinItsContentSize) {
  const auto window = shownWindow({0.0, 0.0, 300.0, 300.0});
  const auto scrollView = TNLScrollView::create({0.0, 0.0, 300.0, 200.0});
  scrollView->setContentSize({300.0, 260.0});
  const auto content = TNLView::create({0.0, 150.0, 300.0, 100.0});
  scrollView->addSubview(content);
  window->addSubview(scrollView);
  ASSERT_TRUE(waitUntilMapped(gtk_widget_get_toplevel(widgetOf(scrollView))));

  scroll(widgetOf(scrollView), 150, 100, 1);
  EXPECT_TRUE(waitFor([&] { return scrollView->contentOffset().y > 0.0; }));
  // No further than the content: 260 - 200.
  scroll(widgetOf(scrollView), 150, 100, 5);
  EXPECT_TRUE(waitFor([&] { return scrollView->contentOffset() == TNLPoint{0.0, 60.0}; }));
  EXPECT_TRUE(waitFor([&] { return allocatedAt(widgetOf(content), 0, 90, 300, 100); }));

  scrollView->setScrollEnabled(false);
  scroll(widgetOf(scrollView), 150, 100, -3);
  EXPECT_EQ(scrollView->contentOffset(), (TNLPoint{0.0, 60.0}));
}

TEST_F(ViewTest, ClicksGoToTheTopmostViewInTheModelsZOrder) {
  const auto window = shownWindow({0.0, 0.0, 300.0, 200.0});
  int backTaps = 0;
  int frontTaps = 0;
  const auto back = buttonCounting(backTaps, {50.0, 50.0, 150.0, 80.0});
  const auto front = buttonCounting(frontTaps, {50.0, 50.0, 150.0, 80.0});
  window->addSubview(back);
  window->addSubview(front);
  ASSERT_TRUE(waitUntilMapped(gtk_widget_get_toplevel(widgetOf(back))));
  click(widgetOf(back), 75, 40);
  EXPECT_TRUE(waitFor([&] { return frontTaps == 1; }));
  EXPECT_EQ(backTaps, 0);

  back->setZPosition(1.0);
  click(widgetOf(back), 75, 40);
  EXPECT_TRUE(waitFor([&] { return backTaps == 1; }));
  EXPECT_EQ(frontTaps, 1);

  // A view that takes no touches lets them through to what lies behind it.
  back->setUserInteractionEnabled(false);
  click(widgetOf(back), 75, 40);
  EXPECT_TRUE(waitFor([&] { return frontTaps == 2; }));
  EXPECT_EQ(backTaps, 1);
}

TEST_F(ViewTest, APassThroughZoneSendsClicksToWhatLiesBehind) {
  TNLTestServer server;
  server.on("GET", "/clicked", TNLTestServer::Response(204));
  const auto window = shownWindow({0.0, 0.0, 300.0, 300.0});
  int taps = 0;
  const auto behind = buttonCounting(taps, {0.0, 0.0, 300.0, 300.0});
  window->addSubview(behind);
  // Over it: a view whose top 100 points pass touches through, holding a web page that counts
  // the clicks it gets.
  const auto banner = std::make_shared<PassThroughView>(TNLRect{0.0, 0.0, 300.0, 300.0});
  banner->zone = {0.0, 0.0, 300.0, 100.0};
  window->addSubview(banner);
  const auto page = TNLWebView::create({0.0, 0.0, 300.0, 300.0}, {});
  banner->addSubview(page);
  const auto delegate = std::make_shared<RecordingDelegate>();
  page->setNavigationDelegate(delegate);
  page->loadHTMLString("<body style='margin:0;height:300px' onclick=\"fetch('/clicked')\"></body>",
                       server.baseURL());
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 1; }));
  settle(200ms);

  // The region the model accepts: everything below the zone.
  cairo_region_t* region = TNLGtkInputRouting::acceptingRegion(page);
  cairo_rectangle_int_t extents;
  cairo_region_get_extents(region, &extents);
  EXPECT_EQ(extents.y, 100);
  EXPECT_EQ(extents.height, 200);
  cairo_region_destroy(region);

  click(widgetOf(page), 150, 50);
  EXPECT_TRUE(waitFor([&] { return taps == 1; }));
  click(widgetOf(page), 150, 200);
  EXPECT_TRUE(waitFor([&] { return server.requestsTo("/clicked").size() == 1; }));
  EXPECT_EQ(taps, 1);

  // The zone grows with the banner's next expansion: its edge is found to the point.
  banner->zone = {0.0, 0.0, 300.0, 213.0};
  banner->setFrame({0.0, 0.0, 300.0, 299.0});
  click(widgetOf(page), 150, 210);
  EXPECT_TRUE(waitFor([&] { return taps == 2; }));
  click(widgetOf(page), 150, 216);
  EXPECT_TRUE(waitFor([&] { return server.requestsTo("/clicked").size() == 2; }));
  EXPECT_EQ(taps, 2);
}

TEST_F(ViewTest, ResizingTheWindowReachesTheModelAndTheModelResizesTheWindow) {
  const auto controller = std::make_shared<RecordingController>();
  const auto window = TNLWindow::create({0.0, 0.0, 400.0, 300.0});
  window->setRootViewController(controller);
  window->makeKeyAndVisible();
  GtkWidget* toplevel = gtk_widget_get_toplevel(widgetOf(window));
  ASSERT_TRUE(waitUntilMapped(toplevel));

  gtk_window_resize(GTK_WINDOW(toplevel), 500, 350);
  ASSERT_TRUE(waitFor([&] { return window->frame().size == TNLSize{500.0, 350.0}; }));
  ASSERT_FALSE(controller->sizes.empty());
  EXPECT_EQ(controller->sizes.back(), (TNLSize{500.0, 350.0}));
  EXPECT_EQ(controller->view()->frame().size, (TNLSize{500.0, 350.0}));
  EXPECT_TRUE(waitFor([&] { return allocatedAt(widgetOf(controller->view()), 0, 0, 500, 350); }));

  window->transitionToSize({320.0, 480.0});
  EXPECT_TRUE(waitFor([&] {
    int width = 0;
    int height = 0;
    gtk_window_get_size(GTK_WINDOW(toplevel), &width, &height);
    return width == 320 && height == 480;
  }));

  // Hidden by the user (closed): the model's window hides, and its controller disappears.
  controller->events.clear();
  gtk_widget_hide(toplevel);
  EXPECT_TRUE(window->isHidden());
  EXPECT_EQ(controller->events, std::vector<std::string>{"willDisappear"});
}

TEST_F(ViewTest, AHostWindowBecomesAToolkitWindowAndHostsAViewInItsLayout) {
  GtkWidget* host = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_window_move(GTK_WINDOW(host), 20, 10);
  gtk_window_set_default_size(GTK_WINDOW(host), 400, 300);
  GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  GtkWidget* heading = gtk_label_new("The host's own content");
  gtk_widget_set_size_request(heading, -1, 70);
  gtk_box_pack_start(GTK_BOX(column), heading, FALSE, FALSE, 0);
  gtk_container_add(GTK_CONTAINER(host), column);
  gtk_widget_show_all(host);
  ASSERT_TRUE(waitUntilMapped(host));

  const auto window = TNLGtkToolkit::windowForGtkWindow(GTK_WINDOW(host));
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(TNLGtkToolkit::windowForGtkWindow(GTK_WINDOW(host)), window);
  EXPECT_FALSE(window->isHidden());
  EXPECT_EQ(window->frame(), (TNLRect{20.0, 10.0, 400.0, 300.0}));
  EXPECT_EQ(gtk_bin_get_child(GTK_BIN(host)), column);  // the host keeps its content

  // A banner-sized view placed by the host under its heading.
  const auto banner = TNLView::create({0.0, 0.0, 320.0, 50.0});
  window->addSubview(banner);
  GtkWidget* widget = TNLGtkToolkit::widgetForView(banner);
  ASSERT_NE(widget, nullptr);
  gtk_box_pack_start(GTK_BOX(column), widget, FALSE, FALSE, 0);
  EXPECT_TRUE(waitFor([&] { return banner->frame().origin.y == 70.0; }));
  EXPECT_EQ(banner->frame().size, (TNLSize{320.0, 50.0}));
  EXPECT_EQ(allocationOf(widget).height, 50);
  EXPECT_EQ(banner->convertRectToScreen(banner->bounds()).origin.y, 80.0);

  gtk_window_resize(GTK_WINDOW(host), 450, 320);
  EXPECT_TRUE(waitFor([&] { return window->frame().size == TNLSize{450.0, 320.0}; }));
  gtk_widget_hide(host);
  EXPECT_TRUE(window->isHidden());
  gtk_widget_destroy(host);
}

TEST_F(ViewTest, AHostDestroyingItsWindowLeavesTheViewsInsideItWorking) {
  TNLTestServer server;
  server.on("GET", "/alive", TNLTestServer::Response(204));
  GtkWidget* host = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  gtk_widget_show(host);
  const auto window = TNLGtkToolkit::windowForGtkWindow(GTK_WINDOW(host));
  const auto banner = TNLView::create({0.0, 0.0, 320.0, 50.0});
  const auto page = TNLWebView::create({0.0, 0.0, 320.0, 50.0}, {});
  banner->addSubview(page);
  window->addSubview(banner);
  gtk_container_add(GTK_CONTAINER(host), TNLGtkToolkit::widgetForView(banner));
  const auto delegate = std::make_shared<RecordingDelegate>();
  page->setNavigationDelegate(delegate);
  page->loadHTMLString("<p>banner</p>", server.baseURL());
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 1; }));

  // GTK destroys a window's children with it; the view's own widgets must survive that.
  gtk_widget_destroy(host);
  EXPECT_TRUE(window->isHidden());
  page->evaluateJavaScript("fetch('/alive')");
  EXPECT_TRUE(waitFor([&] { return !server.requestsTo("/alive").empty(); }));
  page->setFrame({0.0, 0.0, 300.0, 40.0});
  banner->removeFromSuperview();
}

TEST_F(ViewTest, TheApplicationStateFollowsFocusAndMinimising) {
  movePointerAway();
  const auto window = shownWindow({0.0, 0.0, 200.0, 200.0});
  GtkWidget* toplevel = gtk_widget_get_toplevel(widgetOf(window));
  ASSERT_TRUE(waitUntilMapped(toplevel));
  std::vector<std::string> posted;
  const auto center = TNLNotificationCenter::defaultCenter();
  for (const char* name :
       {TNLApplicationDidBecomeActiveNotification, TNLApplicationWillResignActiveNotification,
        TNLApplicationDidEnterBackgroundNotification,
        TNLApplicationWillEnterForegroundNotification}) {
    center->addObserver(&posted, name, nullptr,
                        [&posted](const TNLNotification& n) { posted.push_back(n.name); });
  }
  const auto application = TNLApplication::sharedApplication();
  const auto focus = [&](bool in) {
    GdkEvent* event = gdk_event_new(GDK_FOCUS_CHANGE);
    event->focus_change.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(toplevel)));
    event->focus_change.in = in;
    gtk_widget_send_focus_change(toplevel, event);
    gdk_event_free(event);
  };
  const auto minimise = [&](bool minimised) {
    GdkEvent* event = gdk_event_new(GDK_WINDOW_STATE);
    event->window_state.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(toplevel)));
    event->window_state.changed_mask = GDK_WINDOW_STATE_ICONIFIED;
    event->window_state.new_window_state =
        minimised ? GDK_WINDOW_STATE_ICONIFIED : static_cast<GdkWindowState>(0);
    gtk_widget_event(toplevel, event);
    gdk_event_free(event);
  };

  // Shown as the key window, it gets the X server's focus (there is no window manager); that
  // focus arrives first, then the test moves it.
  ASSERT_TRUE(waitFor([&] { return gtk_window_is_active(GTK_WINDOW(toplevel)); }));
  focus(true);
  TNLGtkApplicationState::evaluate();
  EXPECT_EQ(application->applicationState(), TNLApplicationState::active);
  focus(false);
  EXPECT_TRUE(
      waitFor([&] { return application->applicationState() == TNLApplicationState::inactive; }));
  minimise(true);
  EXPECT_TRUE(
      waitFor([&] { return application->applicationState() == TNLApplicationState::background; }));
  minimise(false);
  focus(true);
  EXPECT_TRUE(
      waitFor([&] { return application->applicationState() == TNLApplicationState::active; }));
  EXPECT_EQ(posted, (std::vector<std::string>{TNLApplicationWillResignActiveNotification,
                                              TNLApplicationDidEnterBackgroundNotification,
                                              TNLApplicationWillEnterForegroundNotification,
                                              TNLApplicationDidBecomeActiveNotification}));
  center->removeObserver(&posted);
}

TEST_F(ViewTest, TheMainScreenIsTheMonitor) {
  GdkRectangle geometry;
  GdkMonitor* monitor = gdk_display_get_primary_monitor(gdk_display_get_default());
  if (!monitor) {
    monitor = gdk_display_get_monitor(gdk_display_get_default(), 0);
  }
  gdk_monitor_get_geometry(monitor, &geometry);
  const auto screen = TNLScreen::mainScreen();
  EXPECT_EQ(screen->bounds(), (TNLRect{0.0, 0.0, static_cast<double>(geometry.width),
                                       static_cast<double>(geometry.height)}));
  EXPECT_EQ(screen->scale(), static_cast<double>(gdk_monitor_get_scale_factor(monitor)));
  // A window made without a frame covers it.
  EXPECT_EQ(TNLWindow::create()->frame(), screen->bounds());
}

// The display's only monitor is the right half of its screen.
class RightHalfMonitorTest : public GtkTest {
 protected:
  void SetUp() override {
    ASSERT_TRUE(monitor_.isSet());
    GtkTest::SetUp();
  }

  RightHalfMonitor monitor_;
};

TEST_F(RightHalfMonitorTest, TheScreenCoversTheMonitorAWindowIsOn) {
  GdkRectangle monitor;
  gdk_monitor_get_geometry(gdk_display_get_monitor(gdk_display_get_default(), 0), &monitor);
  ASSERT_GT(monitor.x, 0) << "the monitor should start right of the screen's origin";
  const auto window = shownWindow({monitor.x + 60.0, 100.0, 300.0, 200.0});
  ASSERT_TRUE(waitFor([&] {
    GtkWidget* toplevel = gtk_widget_get_toplevel(widgetOf(window));
    return gtk_widget_get_mapped(toplevel);
  }));
  // Window frames and the screen are in one space, and the ad's window lies on the screen, as
  // the measurement SDK's walk reports them.
  const TNLJson screen = OMIDTarnelScreenProcessor().stateForView(nullptr);
  const TNLJson frame = OMIDTarnelWindowProcessor().stateForView(window.get());
  EXPECT_LE(screen["x"].get<double>(), frame["x"].get<double>());
  EXPECT_GE(screen["x"].get<double>() + screen["width"].get<double>(),
            frame["x"].get<double>() + frame["width"].get<double>());
  EXPECT_GE(screen["y"].get<double>() + screen["height"].get<double>(),
            frame["y"].get<double>() + frame["height"].get<double>());
}

}  // namespace
