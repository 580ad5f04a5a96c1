#include "e2e/TNLGtkTestSupport.h"

// The X headers come last: their macros (None, True, Status...) would clash with the others.
#include <X11/extensions/XTest.h>
#include <X11/extensions/Xrandr.h>

#include <gdk/gdkx.h>
#include <cstdlib>

namespace tnl_e2e {

namespace {

// Moves the pointer to the widget's point (x, y) once the windows' stacking and input shapes
// follow the model (and GDK has had its crossing events), presses `button` `times`.
void pointerAt(GtkWidget* widget, int x, int y, unsigned button, int times) {
  settle(std::chrono::milliseconds(50));
  waitFor([] { return !TNLGtkViewBox::isSyncScheduled(); });
  for (int i = 0; i < 1000 && g_main_context_pending(nullptr); ++i) {
    g_main_context_iteration(nullptr, FALSE);
  }
  const auto point = screenPoint(widget, x, y);
  Display* display = gdk_x11_display_get_xdisplay(gdk_display_get_default());
  XTestFakeMotionEvent(display, -1, point.first, point.second, CurrentTime);
  for (int i = 0; i < times; ++i) {
    XTestFakeButtonEvent(display, button, True, CurrentTime);
    XTestFakeButtonEvent(display, button, False, CurrentTime);
  }
  XSync(display, False);
  settle(std::chrono::milliseconds(50));
}

}  // namespace

void click(GtkWidget* widget, int x, int y) {
  pointerAt(widget, x, y, 1, 1);
}

void scroll(GtkWidget* widget, int x, int y, int notches) {
  // Buttons 4 and 5 are the wheel's up and down.
  pointerAt(widget, x, y, notches < 0 ? 4 : 5, std::abs(notches));
}

void movePointerAway() {
  GdkDisplay* gdkDisplay = gdk_display_get_default();
  Display* display = gdk_x11_display_get_xdisplay(gdkDisplay);
  GdkRectangle screen;
  gdk_monitor_get_geometry(gdk_display_get_monitor(gdkDisplay, 0), &screen);
  XTestFakeMotionEvent(display, -1, screen.width - 1, screen.height - 1, CurrentTime);
  XSync(display, False);
  settle(std::chrono::milliseconds(50));
}

constexpr char kRightHalfMonitor[] = "TNL-RIGHT-HALF";

RightHalfMonitor::RightHalfMonitor() {
  Display* display = XOpenDisplay(nullptr);
  display_ = display;
  XRRScreenResources* resources =
      display ? XRRGetScreenResources(display, DefaultRootWindow(display)) : nullptr;
  if (resources && resources->noutput > 0) {
    // A monitor that holds the output replaces the one the server made for it.
    RROutput output = resources->outputs[0];
    const int width = DisplayWidth(display, DefaultScreen(display));
    XRRMonitorInfo monitor{};
    monitor.name = XInternAtom(display, kRightHalfMonitor, False);
    monitor.primary = True;
    monitor.x = width / 2;
    monitor.width = width - width / 2;
    monitor.height = DisplayHeight(display, DefaultScreen(display));
    monitor.mwidth = 300;
    monitor.mheight = 300;
    monitor.noutput = 1;
    monitor.outputs = &output;
    XRRSetMonitor(display, DefaultRootWindow(display), &monitor);
    XSync(display, False);
    set_ = true;
  }
  if (resources) {
    XRRFreeScreenResources(resources);
  }
}

// Gives the shared display its own layout back.
RightHalfMonitor::~RightHalfMonitor() {
  auto* display = static_cast<Display*>(display_);
  if (display && set_) {
    XRRDeleteMonitor(display, DefaultRootWindow(display),
                     XInternAtom(display, kRightHalfMonitor, False));
    XSync(display, False);
  }
  if (display) {
    XCloseDisplay(display);
  }
}

}  // namespace tnl_e2e
