#include "Platform/Gtk/TNLGtkApplicationState.h"

#include <algorithm>
#include <vector>

#include "Platform/Foundation/TNLNoDestructor.h"
#include "TarnelAd/Toolkit/TNLApplication.h"

namespace {

struct Tracker {
  std::vector<GtkWindow*> windows;  // weak: removed on destroy
  bool sawFocus = false;
  bool scheduled = false;
};

Tracker& tracker() {
  static TNLNoDestructor<Tracker> instance;
  return *instance;
}

void schedule() {
  if (tracker().scheduled) {
    return;
  }
  tracker().scheduled = true;
  g_idle_add_full(
      G_PRIORITY_DEFAULT_IDLE,
      [](gpointer) -> gboolean {
        tracker().scheduled = false;
        TNLGtkApplicationState::evaluate();
        return G_SOURCE_REMOVE;
      },
      nullptr, nullptr);
}

void activeChanged(GObject* /*window*/, GParamSpec* /*spec*/, gpointer /*data*/) {
  schedule();
}

constexpr char kIconifiedKey[] = "tnl-iconified";

gboolean stateChanged(GtkWidget* window, GdkEventWindowState* event, gpointer /*data*/) {
  // The event says it; GDK's own record may lag behind without a window manager.
  g_object_set_data(G_OBJECT(window), kIconifiedKey,
                    GINT_TO_POINTER((event->new_window_state & GDK_WINDOW_STATE_ICONIFIED) != 0));
  schedule();
  return FALSE;
}

void visibilityChanged(GtkWidget* /*window*/, gpointer /*data*/) {
  schedule();
}

void destroyed(GtkWidget* window, gpointer /*data*/) {
  std::erase(tracker().windows, GTK_WINDOW(window));
  schedule();
}

bool iconified(GtkWindow* window) {
  return GPOINTER_TO_INT(g_object_get_data(G_OBJECT(window), kIconifiedKey)) != 0;
}

}  // namespace

void TNLGtkApplicationState::track(GtkWindow* window) {
  auto& windows = tracker().windows;
  if (!window || std::find(windows.begin(), windows.end(), window) != windows.end()) {
    return;
  }
  windows.push_back(window);
  // The handlers go with the window; nothing to disconnect.
  g_signal_connect(window, "notify::is-active", G_CALLBACK(activeChanged), nullptr);
  g_signal_connect(window, "window-state-event", G_CALLBACK(stateChanged), nullptr);
  g_signal_connect(window, "show", G_CALLBACK(visibilityChanged), nullptr);
  g_signal_connect(window, "hide", G_CALLBACK(visibilityChanged), nullptr);
  g_signal_connect(window, "destroy", G_CALLBACK(destroyed), nullptr);
}

void TNLGtkApplicationState::evaluate() {
  size_t shown = 0;
  size_t minimised = 0;
  bool focused = false;
  for (GtkWindow* window : tracker().windows) {
    if (!gtk_widget_get_visible(GTK_WIDGET(window))) {
      continue;
    }
    ++shown;
    if (iconified(window)) {
      ++minimised;
    } else if (gtk_window_is_active(window)) {
      focused = true;
    }
  }
  const auto application = TNLApplication::sharedApplication();
  if (shown > 0 && minimised == shown) {
    application->setApplicationState(TNLApplicationState::background);
  } else if (focused) {
    tracker().sawFocus = true;
    application->setApplicationState(TNLApplicationState::active);
  } else if (tracker().sawFocus && shown > 0) {
    application->setApplicationState(TNLApplicationState::inactive);
  } else if (application->applicationState() == TNLApplicationState::background) {
    // Restored without the focus (no window manager to give it): back in the foreground.
    application->setApplicationState(tracker().sawFocus ? TNLApplicationState::inactive
                                                        : TNLApplicationState::active);
  }
}
