#include "Platform/Gtk/TNLGtkWindowPeer.h"

#include <algorithm>
#include <cmath>

#include "Platform/Gtk/TNLGtkApplicationState.h"
#include "Platform/Gtk/TNLGtkBackend.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

int toPixels(double points) {
  return static_cast<int>(std::lround(points));
}

TNLRect geometryOf(GtkWindow* window) {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  gtk_window_get_position(window, &x, &y);
  gtk_window_get_size(window, &width, &height);
  return {static_cast<double>(x), static_cast<double>(y), static_cast<double>(width),
          static_cast<double>(height)};
}

}  // namespace

// Whether the cover still holds its box's widget: a box that went away took its widget along.
bool TNLGtkWindowPeer::holdsBox(const Cover& cover) {
  GtkWidget* child = gtk_bin_get_child(GTK_BIN(cover.window.get()));
  return child && TNLGtkViewBox::of(child) == cover.box;
}

namespace {

void place(GtkWindow* window, const TNLRect& frame) {
  gtk_window_move(window, toPixels(frame.origin.x), toPixels(frame.origin.y));
  gtk_window_resize(window, std::max(1, toPixels(frame.size.width)),
                    std::max(1, toPixels(frame.size.height)));
}

}  // namespace

TNLGtkWindowPeer::TNLGtkWindowPeer(const std::shared_ptr<TNLWindow>& window, GtkWindow* hostWindow)
    : TNLGtkPeer(window), model_(window), wrapped_(hostWindow != nullptr) {
  if (wrapped_) {
    window_ = TNLGObjectRef<GtkWindow>::retain(hostWindow);
    geometry_ = window->frame();
  } else {
    window_ = TNLGObjectRef<GtkWindow>::retain(GTK_WINDOW(gtk_window_new(GTK_WINDOW_TOPLEVEL)));
    gtk_window_set_title(window_.get(), "TarnelAd");
    const TNLRect frame = window->frame();
    gtk_window_set_default_size(window_.get(), std::max(1, toPixels(frame.size.width)),
                                std::max(1, toPixels(frame.size.height)));
    gtk_window_move(window_.get(), toPixels(frame.origin.x), toPixels(frame.origin.y));
    geometry_ = frame;
    gtk_container_add(GTK_CONTAINER(window_.get()), box_.widget());
  }
  GtkWidget* widget = GTK_WIDGET(window_.get());
  gtk_widget_add_events(widget, GDK_STRUCTURE_MASK);
  connections_.emplace_back(widget, "configure-event", G_CALLBACK(&TNLGtkWindowPeer::configured),
                            this);
  connections_.emplace_back(widget, "delete-event", G_CALLBACK(&TNLGtkWindowPeer::deleted), this);
  connections_.emplace_back(widget, "show", G_CALLBACK(&TNLGtkWindowPeer::shown), this);
  connections_.emplace_back(widget, "hide", G_CALLBACK(&TNLGtkWindowPeer::hidden), this);
  connections_.emplace_back(widget, "destroy", G_CALLBACK(&TNLGtkWindowPeer::destroyed), this);
  TNLGtkApplicationState::track(window_.get());
}

TNLGtkWindowPeer::~TNLGtkWindowPeer() {
  connections_.clear();
  for (Cover& cover : covers_) {
    if (holdsBox(cover)) {
      gtk_container_remove(GTK_CONTAINER(cover.window.get()), cover.box->widget());
      cover.box->setPlacedElsewhere(false);
    }
    gtk_widget_destroy(GTK_WIDGET(cover.window.get()));
  }
  covers_.clear();
  if (!wrapped_ && !destroyed_) {
    // The box outlives the window by a moment (it is a member); it leaves first so that
    // destroying the window does not destroy the subviews' widgets with it.
    gtk_container_remove(GTK_CONTAINER(window_.get()), box_.widget());
    gtk_widget_destroy(GTK_WIDGET(window_.get()));
  }
}

void TNLGtkWindowPeer::frameChanged(const TNLRect& frame) {
  box_.setFrame(frame);
  // The key window's shape is the interface's orientation.
  TNLGtkBackend::updateOrientations();
  if (frame == geometry_ || destroyed_) {
    return;
  }
  geometry_ = frame;
  place(window_.get(), frame);
  fitCovers();
}

void TNLGtkWindowPeer::hiddenChanged(bool hidden) {
  if (destroyed_) {
    return;
  }
  GtkWidget* widget = GTK_WIDGET(window_.get());
  if (hidden == !gtk_widget_get_visible(widget)) {
    return;
  }
  if (hidden) {
    gtk_widget_hide(widget);
  } else {
    gtk_widget_show(widget);
  }
}

void TNLGtkWindowPeer::keyWindowChanged(bool isKey) {
  TNLGtkBackend::updateOrientations();
  if (isKey && !destroyed_ && gtk_widget_get_visible(GTK_WIDGET(window_.get()))) {
    gtk_window_present(window_.get());
  }
}

gboolean TNLGtkWindowPeer::configured(GtkWidget* /*widget*/, GdkEventConfigure* event,
                                      gpointer self) {
  auto* peer = static_cast<TNLGtkWindowPeer*>(self);
  const TNLRect geometry{static_cast<double>(event->x), static_cast<double>(event->y),
                         static_cast<double>(event->width), static_cast<double>(event->height)};
  if (geometry == peer->geometry_) {
    return FALSE;
  }
  peer->geometry_ = geometry;
  peer->fitCovers();
  if (const auto window = peer->model_.lock()) {
    // The user (or the window manager) moved or resized the window.
    if (window->frame().size != geometry.size) {
      window->transitionToSize(geometry.size);
    }
    if (window->frame().origin != geometry.origin) {
      window->setFrame({geometry.origin, window->frame().size});
    }
  }
  return FALSE;
}

gboolean TNLGtkWindowPeer::deleted(GtkWidget* /*widget*/, GdkEvent* /*event*/, gpointer self) {
  auto* peer = static_cast<TNLGtkWindowPeer*>(self);
  if (peer->wrapped_) {
    return FALSE;  // the host's window: the host decides
  }
  // Closing a window of ours hides it; the model owns it and may show it again.
  if (const auto window = peer->model_.lock()) {
    window->setHidden(true);
  }
  return TRUE;
}

void TNLGtkWindowPeer::shown(GtkWidget* /*widget*/, gpointer self) {
  if (const auto window = static_cast<TNLGtkWindowPeer*>(self)->model_.lock();
      window && window->isHidden()) {
    window->setHidden(false);
  }
}

void TNLGtkWindowPeer::hidden(GtkWidget* /*widget*/, gpointer self) {
  if (const auto window = static_cast<TNLGtkWindowPeer*>(self)->model_.lock();
      window && !window->isHidden()) {
    window->setHidden(true);
  }
}

void TNLGtkWindowPeer::destroyed(GtkWidget* /*widget*/, gpointer self) {
  auto* peer = static_cast<TNLGtkWindowPeer*>(self);
  peer->destroyed_ = true;
  if (const auto window = peer->model_.lock(); window && !window->isHidden()) {
    window->setHidden(true);
  }
}

GtkWindow* TNLGtkWindowPeer::addCover(TNLGtkViewBox& box) {
  pruneCovers();
  GtkWindow* parent = covers_.empty() ? window_.get() : covers_.back().window.get();
  auto cover = TNLGObjectRef<GtkWindow>::retain(GTK_WINDOW(gtk_window_new(GTK_WINDOW_TOPLEVEL)));
  GtkWindow* window = cover.get();
  gtk_window_set_title(window, gtk_window_get_title(window_.get()));
  gtk_window_set_decorated(window, FALSE);
  gtk_window_set_skip_taskbar_hint(window, TRUE);
  gtk_window_set_skip_pager_hint(window, TRUE);
  gtk_window_set_transient_for(window, parent);
  gtk_window_set_destroy_with_parent(window, TRUE);
  const TNLRect frame = geometryOf(window_.get());
  gtk_window_set_default_size(window, std::max(1, toPixels(frame.size.width)),
                              std::max(1, toPixels(frame.size.height)));
  gtk_window_move(window, toPixels(frame.origin.x), toPixels(frame.origin.y));
  GtkWidget* widget = box.widget();
  g_object_ref(widget);
  if (GtkWidget* former = gtk_widget_get_parent(widget)) {
    gtk_container_remove(GTK_CONTAINER(former), widget);
  }
  box.setPlacedElsewhere(true);
  gtk_container_add(GTK_CONTAINER(window), widget);
  g_object_unref(widget);
  TNLGtkApplicationState::track(window);
  covers_.push_back({&box, std::move(cover)});
  return window;
}

bool TNLGtkWindowPeer::removeCover(TNLGtkViewBox& box) {
  const auto found = std::find_if(covers_.begin(), covers_.end(),
                                  [&](const Cover& cover) { return cover.box == &box; });
  if (found == covers_.end()) {
    return false;
  }
  GtkWidget* window = GTK_WIDGET(found->window.get());
  gtk_widget_hide(window);
  if (gtk_widget_get_parent(box.widget()) == window) {
    gtk_container_remove(GTK_CONTAINER(window), box.widget());
  }
  box.setPlacedElsewhere(false);
  gtk_widget_destroy(window);
  covers_.erase(found);
  return true;
}

GtkWindow* TNLGtkWindowPeer::coverOf(const TNLGtkViewBox& box) const {
  for (const Cover& cover : covers_) {
    if (cover.box == &box) {
      return cover.window.get();
    }
  }
  return nullptr;
}

void TNLGtkWindowPeer::fitCovers() {
  for (const Cover& cover : covers_) {
    place(cover.window.get(), geometry_);
  }
}

void TNLGtkWindowPeer::pruneCovers() {
  // A presented view released without a dismissal leaves an empty cover behind.
  std::erase_if(covers_, [](Cover& cover) {
    if (holdsBox(cover)) {
      return false;
    }
    gtk_widget_destroy(GTK_WIDGET(cover.window.get()));
    return true;
  });
}
