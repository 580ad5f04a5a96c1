#include "Platform/Gtk/TNLGtkBackend.h"

#include <algorithm>
#include <vector>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Gtk/TNLGtkBoxed.h"
#include "Platform/Gtk/TNLGtkButtonPeer.h"
#include "Platform/Gtk/TNLGtkLabelPeer.h"
#include "Platform/Gtk/TNLGtkPeer.h"
#include "Platform/Gtk/TNLGtkScrollViewPeer.h"
#include "Platform/Gtk/TNLGtkWebEngine.h"
#include "Platform/Gtk/TNLGtkWindowPeer.h"
#include "TarnelAd/Toolkit/TNLApplication.h"
#include "TarnelAd/Toolkit/TNLScreen.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLViewController.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

// The screen when no monitor can be asked: the headless backend's phone.
constexpr double kFallbackWidth = 375.0;
constexpr double kFallbackHeight = 667.0;
// A cover that never maps (its display went away) still ends its transition.
constexpr guint kMapTimeoutMilliseconds = 2000;

GdkMonitor* primaryMonitor() {
  GdkDisplay* display = gdk_display_get_default();
  if (!display) {
    return nullptr;
  }
  GdkMonitor* monitor = gdk_display_get_primary_monitor(display);
  return monitor ? monitor : gdk_display_get_monitor(display, 0);
}

// Bridge URLs are the creative talking to the library; they load nothing and never go out.
void serveBridge(WebKitURISchemeRequest* request, gpointer /*data*/) {
  auto stream =
      TNLGObjectRef<GInputStream>::adopt(g_memory_input_stream_new_from_data("", 0, nullptr));
  webkit_uri_scheme_request_finish(request, stream.get(), 0, "text/html");
}

void hostWindowDestroyed(GtkWidget* window, gpointer data) {
  static_cast<std::map<GtkWindow*, std::weak_ptr<TNLWindow>>*>(data)->erase(GTK_WINDOW(window));
}

}  // namespace

std::shared_ptr<TNLGtkBackend> TNLGtkBackend::shared() {
  static const TNLNoDestructor<std::shared_ptr<TNLGtkBackend>> backend(
      std::make_shared<TNLGtkBackend>());
  return *backend;
}

TNLGtkBackend::TNLGtkBackend() {
  // Rendering keeps WebKit's defaults, which also work without a GPU (under Xvfb WebKitGTK 2.50
  // rasterises in software). Turning compositing or the DMA-BUF renderer off is not needed there
  // and would cost transparency: a view that is not opaque then paints black.
  context_ = TNLGObjectRef<WebKitWebContext>::adopt(webkit_web_context_new_ephemeral());
  // Containers often run as root without user namespaces, where the sandbox cannot start.
  webkit_web_context_set_sandbox_enabled(context_.get(), FALSE);
  webkit_web_context_register_uri_scheme(context_.get(), "bridge", serveBridge, nullptr, nullptr);

  if (GdkScreen* screen = gdk_screen_get_default()) {
    monitorsConnection_ = TNLSignalConnection(screen, "monitors-changed",
                                              G_CALLBACK(&TNLGtkBackend::monitorsChanged), this);
    screenSizeConnection_ = TNLSignalConnection(screen, "size-changed",
                                                G_CALLBACK(&TNLGtkBackend::monitorsChanged), this);
  }
}

TNLGtkBackend::~TNLGtkBackend() = default;

TNLRect TNLGtkBackend::mainScreenBounds() const {
  GdkDisplay* display = gdk_display_get_default();
  const int monitors = display ? gdk_display_get_n_monitors(display) : 0;
  if (monitors == 0) {
    return {0.0, 0.0, kFallbackWidth, kFallbackHeight};
  }
  // The desktop: from the origin of the coordinates that windows are placed in, out to the far
  // edges of every monitor. Window frames and views are in that space, so an ad on any monitor
  // lies on the screen (the primary monitor alone would leave a second one outside it).
  int right = 0;
  int bottom = 0;
  for (int i = 0; i < monitors; ++i) {
    GdkRectangle geometry;
    gdk_monitor_get_geometry(gdk_display_get_monitor(display, i), &geometry);
    right = std::max(right, geometry.x + geometry.width);
    bottom = std::max(bottom, geometry.y + geometry.height);
  }
  // Points: GDK's geometry is in application pixels, which the scale factor turns into pixels.
  return {0.0, 0.0, static_cast<double>(right), static_cast<double>(bottom)};
}

double TNLGtkBackend::mainScreenScale() const {
  GdkMonitor* monitor = primaryMonitor();
  return monitor ? static_cast<double>(gdk_monitor_get_scale_factor(monitor)) : 1.0;
}

void TNLGtkBackend::monitorsChanged(GdkScreen* /*screen*/, gpointer self) {
  const auto* backend = static_cast<TNLGtkBackend*>(self);
  const auto screen = TNLScreen::mainScreen();
  screen->setBounds(backend->mainScreenBounds());
  screen->setScale(backend->mainScreenScale());
  updateOrientations();
}

void TNLGtkBackend::updateOrientations() {
  // A desktop does not turn: the screen is landscape when it is wider than tall, and the
  // application's interface takes the orientation of its key window (the screen's without one).
  const TNLSize screen = TNLScreen::mainScreen()->bounds().size;
  const auto application = TNLApplication::sharedApplication();
  application->setDeviceOrientation(screen.width > screen.height
                                        ? TNLDeviceOrientation::landscapeLeft
                                        : TNLDeviceOrientation::portrait);
  const auto keyWindow = application->keyWindow();
  const TNLSize interface = keyWindow ? keyWindow->frame().size : screen;
  application->setStatusBarOrientation(interface.width > interface.height
                                           ? TNLInterfaceOrientation::landscapeRight
                                           : TNLInterfaceOrientation::portrait);
}

std::shared_ptr<TNLViewPeer> TNLGtkBackend::createViewPeer(const std::shared_ptr<TNLView>& view) {
  return std::make_shared<TNLGtkPeer<TNLViewPeer>>(view);
}

std::shared_ptr<TNLViewPeer> TNLGtkBackend::createScrollViewPeer(
    const std::shared_ptr<TNLScrollView>& scrollView) {
  return std::make_shared<TNLGtkScrollViewPeer>(scrollView);
}

std::shared_ptr<TNLViewPeer> TNLGtkBackend::createLabelPeer(
    const std::shared_ptr<TNLLabel>& label) {
  return std::make_shared<TNLGtkLabelPeer>(label);
}

std::shared_ptr<TNLViewPeer> TNLGtkBackend::createButtonPeer(
    const std::shared_ptr<TNLButton>& button) {
  return std::make_shared<TNLGtkButtonPeer>(button);
}

std::shared_ptr<TNLViewPeer> TNLGtkBackend::createWindowPeer(
    const std::shared_ptr<TNLWindow>& window) {
  return std::make_shared<TNLGtkWindowPeer>(window, std::exchange(wrapping_, nullptr));
}

std::shared_ptr<TNLWebEnginePeer> TNLGtkBackend::createWebEngine(
    const std::shared_ptr<TNLWebView>& webView) {
  return std::make_shared<TNLGtkWebEngine>(webView, context_.get());
}

std::shared_ptr<TNLGtkWindowPeer> TNLGtkBackend::windowPeerOf(
    const std::shared_ptr<TNLWindow>& window) {
  return window ? std::dynamic_pointer_cast<TNLGtkWindowPeer>(window->existingPeer()) : nullptr;
}

std::shared_ptr<TNLWindow> TNLGtkBackend::windowFor(GtkWindow* gtkWindow) {
  if (!gtkWindow) {
    return nullptr;
  }
  if (const auto found = wrapped_.find(gtkWindow); found != wrapped_.end()) {
    if (auto window = found->second.lock()) {
      return window;
    }
  }
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  gtk_window_get_position(gtkWindow, &x, &y);
  gtk_window_get_size(gtkWindow, &width, &height);
  auto window = TNLWindow::create({static_cast<double>(x), static_cast<double>(y),
                                   static_cast<double>(width), static_cast<double>(height)});
  if (wrapped_.find(gtkWindow) == wrapped_.end()) {
    g_signal_connect(gtkWindow, "destroy", G_CALLBACK(hostWindowDestroyed), &wrapped_);
  }
  wrapped_[gtkWindow] = window;
  // The model learns the window's visibility before the peer is made, so that the peer's first
  // state matches the host's window instead of hiding it.
  wrapping_ = gtkWindow;
  if (gtk_widget_get_visible(GTK_WIDGET(gtkWindow))) {
    window->setHidden(false);
  } else {
    window->peer();
  }
  wrapping_ = nullptr;
  return window;
}

void TNLGtkBackend::presentViewController(const std::shared_ptr<TNLViewController>& /*presenting*/,
                                          const std::shared_ptr<TNLViewController>& presented,
                                          bool /*animated*/, std::function<void()> finished) {
  const auto view = presented->view();
  const auto windowPeer = windowPeerOf(view->window());
  TNLGtkViewBox* box = TNLGtkBoxed::boxOf(view->peer());
  if (!windowPeer || !box) {
    // The window is not on screen through this backend: nothing to show.
    TNLMainQueue::async(std::move(finished));
    return;
  }
  GtkWindow* cover = windowPeer->addCover(*box);

  struct Transition {
    std::function<void()> finished;
    guint timeout = 0;
    TNLSignalConnection mapped;
    void finish() {
      if (!finished) {
        return;
      }
      mapped.disconnect();
      TNLMainQueue::async(std::exchange(finished, nullptr));
      if (timeout) {
        // Removing the time-out frees this transition: the last thing done here.
        g_source_remove(std::exchange(timeout, 0));
      }
    }
  };
  // Owned by the callbacks' data until the transition has finished.
  auto* transition = new Transition;
  transition->finished = std::move(finished);
  const auto release = [](gpointer data) { delete static_cast<Transition*>(data); };
  transition->mapped = TNLSignalConnection(
      cover, "map-event", G_CALLBACK(+[](GtkWidget*, GdkEvent*, gpointer data) -> gboolean {
        static_cast<Transition*>(data)->finish();
        return FALSE;
      }),
      transition);
  transition->timeout = g_timeout_add_full(
      G_PRIORITY_DEFAULT, kMapTimeoutMilliseconds,
      [](gpointer data) -> gboolean {
        auto* pending = static_cast<Transition*>(data);
        pending->timeout = 0;
        pending->finish();
        return G_SOURCE_REMOVE;
      },
      transition, release);
  gtk_widget_show(GTK_WIDGET(cover));
}

void TNLGtkBackend::dismissViewController(const std::shared_ptr<TNLViewController>& presenting,
                                          const std::shared_ptr<TNLViewController>& /*presented*/,
                                          bool /*animated*/, std::function<void()> finished) {
  // Every controller above `presenting` goes, the topmost first.
  std::vector<std::shared_ptr<TNLViewController>> dismissed;
  for (auto controller = presenting->presentedViewController(); controller;
       controller = controller->presentedViewController()) {
    dismissed.insert(dismissed.begin(), controller);
  }
  for (const auto& controller : dismissed) {
    const auto view = controller->view();
    if (const auto windowPeer = windowPeerOf(view->window())) {
      if (auto* box = TNLGtkBoxed::boxOf(view->existingPeer())) {
        if (GtkWindow* cover = windowPeer->coverOf(*box)) {
          gtk_widget_hide(GTK_WIDGET(cover));
        }
      }
    }
  }
  TNLMainQueue::async([dismissed, finished = std::move(finished)] {
    for (const auto& controller : dismissed) {
      const auto view = controller->view();
      const auto windowPeer = windowPeerOf(view->window());
      auto* box = TNLGtkBoxed::boxOf(view->existingPeer());
      if (windowPeer && box) {
        windowPeer->removeCover(*box);
      }
    }
    finished();
  });
}
