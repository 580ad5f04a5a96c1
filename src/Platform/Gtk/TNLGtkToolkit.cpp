#include "TarnelAd/Gtk/TNLGtkToolkit.h"

#include <gtk/gtk.h>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Foundation/TNLPlatformLog.h"
#include "Platform/Gtk/TNLGObjectRef.h"
#include "Platform/Gtk/TNLGtkBackend.h"
#include "Platform/Gtk/TNLGtkBoxed.h"
#include "Platform/Gtk/TNLGtkSoundVolume.h"
#include "Platform/Gtk/TNLGtkViewBox.h"
#include "TarnelAd/TNLSetup.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

bool TNLGtkToolkit::useGtkBackend() {
  if (!TNLMainQueue::isMainThread()) {
    TNLPlatformLog("TNLGtkToolkit: the GTK backend is chosen on the main thread");
    return false;
  }
  if (!gtk_init_check(nullptr, nullptr)) {
    TNLPlatformLog("TNLGtkToolkit: no display; the GTK backend is not installed");
    return false;
  }
  if (!isInstalled()) {
    TNLToolkitBackend::install(TNLGtkBackend::shared());
    TNLGtkBackend::updateOrientations();
    // Where a sound server answers, its volume becomes the device's output volume, which
    // creatives are told; without one, the level the host set (or the default) stands.
    if (TNLGtkSoundVolume::readSoundServerVolume()) {
      setOutputVolumeObserver(
          [](float volume) { TNLSetup::deviceFacts()->setOutputVolume(volume); });
    }
  }
  return true;
}

bool TNLGtkToolkit::isInstalled() {
  return std::dynamic_pointer_cast<TNLGtkBackend>(TNLToolkitBackend::current()) != nullptr;
}

std::shared_ptr<TNLWindow> TNLGtkToolkit::windowForGtkWindow(GtkWindow* window) {
  const auto backend = std::dynamic_pointer_cast<TNLGtkBackend>(TNLToolkitBackend::current());
  return backend ? backend->windowFor(window) : nullptr;
}

GtkWidget* TNLGtkToolkit::widgetForView(const std::shared_ptr<TNLView>& view) {
  if (!view || !isInstalled()) {
    return nullptr;
  }
  TNLGtkViewBox* box = TNLGtkBoxed::boxOf(view->peer());
  if (!box) {
    return nullptr;
  }
  GtkWidget* widget = box->widget();
  if (TNLGtkViewBox* parent = box->parentBox()) {
    // It leaves its superview's widget for the host's layout.
    gtk_container_remove(GTK_CONTAINER(parent->widget()), widget);
  }
  box->setHostPlaced(true);
  return widget;
}

bool TNLGtkToolkit::writeScreenshot(const std::string& path) {
  if (!isInstalled()) {
    return false;
  }
  // Pending drawing first, so that what was just shown is in the picture.
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  GdkWindow* root = gdk_get_default_root_window();
  if (!root) {
    return false;
  }
  auto pixbuf = TNLGObjectRef<GdkPixbuf>::adopt(gdk_pixbuf_get_from_window(
      root, 0, 0, gdk_window_get_width(root), gdk_window_get_height(root)));
  GError* error = nullptr;
  const bool written =
      pixbuf && gdk_pixbuf_save(pixbuf.get(), path.c_str(), "png", &error, nullptr);
  if (error) {
    TNLPlatformLog("TNLGtkToolkit: no screenshot at " + path + ": " + error->message);
    g_error_free(error);
  }
  return written;
}

float TNLGtkToolkit::outputVolume() {
  return TNLGtkSoundVolume::current();
}

void TNLGtkToolkit::setOutputVolumeObserver(std::function<void(float volume)> observer) {
  TNLGtkSoundVolume::setObserver(std::move(observer));
}
