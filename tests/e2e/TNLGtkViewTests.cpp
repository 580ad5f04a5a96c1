// Views and windows on GTK: model state mirrored onto widgets, geometry and visibility reported
// back, input routed by the model's hit test, the application state, the screen.

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "AppVerificationLibrary/OMIDScreenProcessor.h"
#include "AppVerificationLibrary/OMIDWindowProcessor.h"
#include "Platform/Foundation/TNLNotificationCenter.h"
#include "Platform/Gtk/TNLGtkApplicationState.h"
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

bool allocatedAt(GtkWidget* widget, int x, int y, int width, int height) {
  GtkAllocation a;
  gtk_widget_get_allocation(widget, &a);
  return a.x == x && a.y == y && a.width == width && a.height == height;
}

// The colour of the toplevel window's pixel at (x, y), once drawing has caught up.
std::array<int, 3> pixelAt(GtkWidget* toplevel, int x, int y) {
  settle(300ms);
  GdkPixbuf* pixbuf = gdk_pixbuf_get_from_window(gtk_widget_get_window(toplevel), x, y, 1, 1);
  const guchar* pixel = gdk_pixbuf_get_pixels(pixbuf);
  const std::array<int, 3> rgb{pixel[0], pixel[1], pixel[2]};
  g_object_unref(pixbuf);
  return rgb;
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

using ViewTest = GtkTest;

TEST_F(ViewTest, TheModelsStateReachesTheWidgets) {
  const auto window = shownWindow({40.0, 30.0, 400.0, 300.0});
  const auto view = TNLView::create({10.0, 20.0, 100.0, 50.0});
  window->addSubview(view);
  GtkWidget* widget = widgetOf(view);
  ASSERT_NE(widget, nullptr);
  GtkWidget* toplevel = gtk_widget_get_toplevel(widget);
  ASSERT_TRUE(waitUntilMapped(toplevel));
  // The window sits at its frame on the screen.
  EXPECT_EQ(screenPoint(toplevel, 0, 0), (std::pair{40, 30}));
  EXPECT_TRUE(waitFor([&] { return allocatedAt(widget, 10, 20, 100, 50); }));
  view->setFrame({30.0, 40.0, 120.0, 60.0});
  EXPECT_TRUE(waitFor([&] { return allocatedAt(widget, 30, 40, 120, 60); }));
  view->setHidden(true);
  EXPECT_FALSE(gtk_widget_get_mapped(widget));
  view->setHidden(false);
  EXPECT_TRUE(gtk_widget_get_mapped(widget));
  view->setAlpha(0.25);
  EXPECT_NEAR(gtk_widget_get_opacity(widget), 0.25, 1.0 / 255.0);  // GTK keeps 8 bits

  // Labels and buttons show their text, measured by the toolkit.
  const auto label = TNLLabel::create({10.0, 10.0, 200.0, 30.0});
  window->addSubview(label);
  label->setText("Brand");
  const auto peer = std::dynamic_pointer_cast<TNLGtkLabelPeer>(label->existingPeer());
  ASSERT_NE(peer, nullptr);
  EXPECT_STREQ(gtk_label_get_text(peer->label()), "Brand");
  const TNLSize brand = label->intrinsicContentSize();
  label->setText("A much longer brand name");
  EXPECT_GT(label->intrinsicContentSize().width, brand.width);
  label->setText(std::nullopt);
  EXPECT_EQ(label->intrinsicContentSize(), (TNLSize{0.0, 0.0}));
  const auto button = TNLButton::create();
  window->addSubview(button);
  button->setTitle("Done", TNLControlState::normal);
  const TNLGtkViewBox* buttonBox = TNLGtkViewBox::of(widgetOf(button));
  EXPECT_STREQ(gtk_button_get_label(GTK_BUTTON(buttonBox->content())), "Done");
}

TEST_F(ViewTest, BackgroundsArePaintedClippingCutsSubviewsAndPagesMayBeSeeThrough) {
  const auto window = shownWindow({0.0, 0.0, 300.0, 300.0});
  window->setBackgroundColor(TNLColor{0.0, 0.0, 1.0, 1.0});
  const auto parent = TNLView::create({0.0, 0.0, 100.0, 100.0});
  const auto child = TNLView::create({0.0, 0.0, 200.0, 200.0});
  child->setBackgroundColor(TNLColor{1.0, 0.0, 0.0, 1.0});
  parent->addSubview(child);
  window->addSubview(parent);
  // A page at the top right.
  const auto page = TNLWebView::create({200.0, 0.0, 100.0, 100.0}, {});
  window->addSubview(page);
  const auto delegate = std::make_shared<RecordingDelegate>();
  page->setNavigationDelegate(delegate);
  page->loadHTMLString("<body style='margin:0'></body>", std::nullopt);
  GtkWidget* toplevel = gtk_widget_get_toplevel(widgetOf(parent));
  ASSERT_TRUE(waitUntilMapped(toplevel));
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 1; }));

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
  // An opaque page shows its white; one that is not, what lies behind it.
  EXPECT_TRUE(waitFor([&] { return pixel(250, 50) == std::array{255, 255, 255}; }, 5s));
  page->setOpaque(false);
  EXPECT_TRUE(waitFor([&] { return pixel(250, 50) == blue; }, 5s));
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
  // Over it: a view whose top-left 205 x 100 points pass touches through, holding a web page
  // that counts the clicks it gets. The zone's edges are found to the point.
  const auto banner = std::make_shared<PassThroughView>(TNLRect{0.0, 0.0, 300.0, 300.0});
  banner->zone = {0.0, 0.0, 205.0, 100.0};
  window->addSubview(banner);
  const auto page = TNLWebView::create({0.0, 0.0, 300.0, 300.0}, {});
  banner->addSubview(page);
  const auto delegate = std::make_shared<RecordingDelegate>();
  page->setNavigationDelegate(delegate);
  page->loadHTMLString("<body style='margin:0;height:300px' onclick=\"fetch('/clicked')\"></body>",
                       server.baseURL());
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 1; }));
  settle(200ms);

  click(widgetOf(page), 150, 50);
  EXPECT_TRUE(waitFor([&] { return taps == 1; }));
  click(widgetOf(page), 206, 50);
  EXPECT_TRUE(waitFor([&] { return server.requestsTo("/clicked").size() == 1; }));
  EXPECT_EQ(taps, 1);

  // The zone grows with the banner's next expansion.
  banner->zone = {0.0, 0.0, 300.0, 213.0};
  banner->setFrame({0.0, 0.0, 300.0, 299.0});
  click(widgetOf(page), 150, 210);
  EXPECT_TRUE(waitFor([&] { return taps == 2; }));
  click(widgetOf(page), 150, 216);
  EXPECT_TRUE(waitFor([&] { return server.requestsTo("/clicked").size() == 2; }));
  EXPECT_EQ(taps, 2);
}

TEST_F(ViewTest, AHostWindowBecomesAToolkitWindowAndHostsAViewInItsLayout) {
  TNLTestServer server;
  server.on("GET", "/alive", TNLTestServer::Response(204));
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
  EXPECT_EQ(window->frame(), (TNLRect{20.0, 10.0, 400.0, 300.0}));
  EXPECT_EQ(gtk_bin_get_child(GTK_BIN(host)), column);  // the host keeps its content

  // A banner holding a page, placed by the host under its heading.
  const auto banner = TNLView::create({0.0, 0.0, 320.0, 50.0});
  const auto page = TNLWebView::create({0.0, 0.0, 320.0, 50.0}, {});
  banner->addSubview(page);
  window->addSubview(banner);
  gtk_box_pack_start(GTK_BOX(column), TNLGtkToolkit::widgetForView(banner), FALSE, FALSE, 0);
  EXPECT_TRUE(waitFor([&] { return banner->frame() == TNLRect{0.0, 70.0, 320.0, 50.0}; }));
  EXPECT_EQ(banner->convertRectToScreen(banner->bounds()).origin.y, 80.0);
  const auto delegate = std::make_shared<RecordingDelegate>();
  page->setNavigationDelegate(delegate);
  page->loadHTMLString("<p>banner</p>", server.baseURL());
  ASSERT_TRUE(waitFor([&] { return delegate->finished == 1; }));
  gtk_window_resize(GTK_WINDOW(host), 450, 320);
  EXPECT_TRUE(waitFor([&] { return window->frame().size == TNLSize{450.0, 320.0}; }));

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
  // Each notification with the state that observers read when it arrives.
  std::vector<std::pair<std::string, TNLApplicationState>> posted;
  const auto center = TNLNotificationCenter::defaultCenter();
  const auto application = TNLApplication::sharedApplication();
  for (const char* name :
       {TNLApplicationDidBecomeActiveNotification, TNLApplicationWillResignActiveNotification,
        TNLApplicationDidEnterBackgroundNotification,
        TNLApplicationWillEnterForegroundNotification}) {
    center->addObserver(&posted, name, nullptr, [&](const TNLNotification& n) {
      posted.emplace_back(n.name, application->applicationState());
    });
  }
  const auto send = [&](GdkEventType type, bool on) {
    GdkEvent* event = gdk_event_new(type);
    event->any.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(toplevel)));
    if (type == GDK_FOCUS_CHANGE) {
      event->focus_change.in = on;
      gtk_widget_send_focus_change(toplevel, event);
    } else {
      event->window_state.changed_mask = GDK_WINDOW_STATE_ICONIFIED;
      event->window_state.new_window_state =
          on ? GDK_WINDOW_STATE_ICONIFIED : static_cast<GdkWindowState>(0);
      gtk_widget_event(toplevel, event);
    }
    gdk_event_free(event);
  };
  const auto stateBecomes = [&](TNLApplicationState state) {
    return waitFor([&] { return application->applicationState() == state; });
  };

  // Shown as the key window, it gets the X server's focus (there is no window manager); that
  // focus arrives first, then the test moves it.
  ASSERT_TRUE(waitFor([&] { return gtk_window_is_active(GTK_WINDOW(toplevel)); }));
  send(GDK_FOCUS_CHANGE, true);
  TNLGtkApplicationState::evaluate();
  EXPECT_EQ(application->applicationState(), TNLApplicationState::active);
  send(GDK_FOCUS_CHANGE, false);
  EXPECT_TRUE(stateBecomes(TNLApplicationState::inactive));
  send(GDK_WINDOW_STATE, true);
  EXPECT_TRUE(stateBecomes(TNLApplicationState::background));
  send(GDK_WINDOW_STATE, false);
  send(GDK_FOCUS_CHANGE, true);
  EXPECT_TRUE(stateBecomes(TNLApplicationState::active));
  using State = TNLApplicationState;
  EXPECT_EQ(posted, (std::vector<std::pair<std::string, State>>{
                        {TNLApplicationWillResignActiveNotification, State::active},
                        {TNLApplicationDidEnterBackgroundNotification, State::background},
                        {TNLApplicationWillEnterForegroundNotification, State::background},
                        {TNLApplicationDidBecomeActiveNotification, State::active}}));
  center->removeObserver(&posted);
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
  GdkMonitor* gdkMonitor = gdk_display_get_monitor(gdk_display_get_default(), 0);
  GdkRectangle monitor;
  gdk_monitor_get_geometry(gdkMonitor, &monitor);
  ASSERT_GT(monitor.x, 0) << "the monitor should start right of the screen's origin";
  // The main screen reaches from the windows' origin to the monitor's far edges; a window made
  // without a frame covers it.
  const auto mainScreen = TNLScreen::mainScreen();
  EXPECT_EQ(mainScreen->bounds(),
            (TNLRect{0.0, 0.0, monitor.x + monitor.width + 0.0, monitor.y + monitor.height + 0.0}));
  EXPECT_EQ(mainScreen->scale(), gdk_monitor_get_scale_factor(gdkMonitor));
  EXPECT_EQ(TNLWindow::create()->frame(), mainScreen->bounds());
  const auto window = shownWindow({monitor.x + 60.0, 100.0, 300.0, 200.0});
  ASSERT_TRUE(waitUntilMapped(gtk_widget_get_toplevel(widgetOf(window))));
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
