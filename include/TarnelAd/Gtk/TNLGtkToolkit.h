#pragma once

/// @file
/// @brief TNLGtkToolkit: real windows and web views through GTK 3 and WebKitGTK 4.1 (library
/// TarnelAdGtk, CMake target TarnelAd::Gtk, pkg-config tarnelad-gtk).

#include <functional>
#include <memory>
#include <string>

#include "TarnelAd/TNLExport.h"

// GTK types, declared here so that this header does not need the GTK headers.
/// @cond
typedef struct _GtkWidget GtkWidget;
typedef struct _GtkWindow GtkWindow;
/// @endcond

class TNLView;
class TNLWindow;

/// Real windows and web views: the GTK 3 + WebKitGTK 4.1 backend of the toolkit. Link TarnelAdGtk
/// and choose it once, at start-up, on the main thread, before any view is made:
/// @code
/// if (!TNLGtkToolkit::useGtkBackend()) { /* no display: stay headless */ }
/// auto window = TNLGtkToolkit::windowForGtkWindow(GTK_WINDOW(myWindow));
/// window->setRootViewController(myController);      // full-screen ads are presented over it
/// gtk_box_pack_start(myBox, TNLGtkToolkit::widgetForView(banner), FALSE, FALSE, 0);
/// @endcode
///
/// Full-screen presentation covers the presenting window with a window of its own. Web pages run
/// in WebKitGTK with JavaScript, and navigations reach the web view's navigation delegate. The
/// application state follows the focus and minimising of the windows, the main screen follows
/// the monitor. Everything here runs on the main thread (the one running GLib's default main
/// context, where the host runs its GTK loop), except outputVolume. A host that also wants the
/// full-screen ready and failed callbacks there asks TNLSetup::setCallbacksOnMainThread.
class TNL_EXPORT TNLGtkToolkit {
 public:
  /// Initialises GTK if the host has not and installs the backend. False, with nothing changed,
  /// when there is no display or when called off the main thread.
  static bool useGtkBackend();
  /// Whether useGtkBackend installed the backend.
  static bool isInstalled();

  /// The toolkit window for a host's GtkWindow (the same one for the same GtkWindow), with its
  /// frame, visibility and size changes following the GtkWindow. The window's own content stays
  /// the host's; views of the window appear where the host places their widgets, and
  /// controllers presented in it cover the GtkWindow. The library holds the toolkit window
  /// weakly: the host keeps the returned one as long as it uses it. Null before useGtkBackend.
  static std::shared_ptr<TNLWindow> windowForGtkWindow(GtkWindow* window);

  /// The widget of a view, for a host to place in a layout of its own (a banner view in a box).
  /// The widget asks for the view's model size, and where the layout puts it is reported to the
  /// view's frame. The view keeps its own subviews' widgets and owns this one; the host's
  /// container takes its own reference when it adds it. Null before useGtkBackend or for a view
  /// not owned by a std::shared_ptr.
  static GtkWidget* widgetForView(const std::shared_ptr<TNLView>& view);

  /// Writes what the main screen shows (every window on it, covers included) as a PNG file; false
  /// when there is no display or the file cannot be written.
  static bool writeScreenshot(const std::string& path);

  /// The output volume, 0 to 1: the sound server's (PulseAudio, or PipeWire's PulseAudio
  /// service) when one answers, else 1.0. Any thread; it may wait for the sound server.
  static float outputVolume();
  /// Calls `observer` on the main thread with the volume now and whenever it changes (the
  /// sound server is asked every second, on a thread of the toolkit's own); null stops. The
  /// toolkit keeps the observer until it is replaced. The device facts hook in here.
  static void setOutputVolumeObserver(std::function<void(float volume)> observer);
};
