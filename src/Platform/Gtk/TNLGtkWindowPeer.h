#pragma once

#include <memory>
#include <vector>

#include "Platform/Gtk/TNLGObjectRef.h"
#include "Platform/Gtk/TNLGtkPeer.h"

class TNLWindow;

// A window: a GtkWindow of its own (made and destroyed with the peer) whose content is the window
// view's box, or a host's GtkWindow wrapped as a toolkit window (its content stays the host's;
// model views appear in it where the host places their widgets, and presented controllers cover
// it). The model's frame (screen coordinates), hidden flag and key status are mirrored onto the
// GtkWindow; a move or resize of the GtkWindow, and it being shown or hidden, go back to the model
// (TNLWindow::transitionToSize, setFrame, setHidden).
//
// Presented controllers get covers: undecorated windows transient for this one (or for the cover
// below them), at the same position and size, that follow it when it moves or is resized.
class TNLGtkWindowPeer : public TNLGtkPeer<TNLViewPeer> {
 public:
  // `hostWindow` null: the peer makes its own GtkWindow.
  TNLGtkWindowPeer(const std::shared_ptr<TNLWindow>& window, GtkWindow* hostWindow);
  ~TNLGtkWindowPeer() override;

  GtkWindow* gtkWindow() const { return window_.get(); }
  bool isWrapped() const { return wrapped_; }

  void frameChanged(const TNLRect& frame) override;
  void hiddenChanged(bool hidden) override;
  void keyWindowChanged(bool isKey) override;

  // Covers for presented controllers. Each cover holds `box`'s widget; the returned window is
  // shown by the caller.
  GtkWindow* addCover(TNLGtkViewBox& box);
  // Hides the cover of `box`, gives the box back and destroys the cover window; false when the
  // box has none.
  bool removeCover(TNLGtkViewBox& box);
  GtkWindow* coverOf(const TNLGtkViewBox& box) const;

 private:
  struct Cover {
    TNLGtkViewBox* box;
    TNLGObjectRef<GtkWindow> window;
  };

  static gboolean configured(GtkWidget* widget, GdkEventConfigure* event, gpointer self);
  static gboolean deleted(GtkWidget* widget, GdkEvent* event, gpointer self);
  static void shown(GtkWidget* widget, gpointer self);
  static void hidden(GtkWidget* widget, gpointer self);
  static void destroyed(GtkWidget* widget, gpointer self);
  static bool holdsBox(const Cover& cover);
  void fitCovers();
  void pruneCovers();

  std::weak_ptr<TNLWindow> model_;
  TNLGObjectRef<GtkWindow> window_;
  bool wrapped_;
  bool destroyed_ = false;
  // The geometry last applied to or reported from the GtkWindow, to tell our own changes from
  // the user's.
  TNLRect geometry_;
  std::vector<Cover> covers_;
  std::vector<TNLSignalConnection> connections_;
};
