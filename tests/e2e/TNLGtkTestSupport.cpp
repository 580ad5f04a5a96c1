#include "e2e/TNLGtkTestSupport.h"

// The X headers come last: their macros (None, True, Status...) would clash with the others.
#include <X11/extensions/XTest.h>

#include <gdk/gdkx.h>
#include <cstdlib>

namespace tnl_e2e {

void click(std::pair<int, int> point) {
  Display* display = gdk_x11_display_get_xdisplay(gdk_display_get_default());
  XTestFakeMotionEvent(display, -1, point.first, point.second, CurrentTime);
  XTestFakeButtonEvent(display, 1, True, CurrentTime);
  XTestFakeButtonEvent(display, 1, False, CurrentTime);
  XSync(display, False);
  settle(std::chrono::milliseconds(150));
}

void scroll(std::pair<int, int> point, int notches) {
  Display* display = gdk_x11_display_get_xdisplay(gdk_display_get_default());
  XTestFakeMotionEvent(display, -1, point.first, point.second, CurrentTime);
  // Buttons 4 and 5 are the wheel's up and down.
  const unsigned button = notches < 0 ? 4 : 5;
  for (int i = 0; i < std::abs(notches); ++i) {
    XTestFakeButtonEvent(display, button, True, CurrentTime);
    XTestFakeButtonEvent(display, button, False, CurrentTime);
  }
  XSync(display, False);
  settle(std::chrono::milliseconds(150));
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

}  // namespace tnl_e2e
