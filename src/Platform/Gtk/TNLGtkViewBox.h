#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/Gtk/TNLGObjectRef.h"
#include "TarnelAd/Toolkit/TNLColor.h"
#include "TarnelAd/Toolkit/TNLRect.h"

class TNLView;

// The widget side of one model view: a container widget that is placed in its superview's box at
// the view's frame, paints the background, clips when asked, and holds the view's content widget
// (a label, a button, a web view) under the widgets of its subviews, which it stacks in the
// model's z order. Every box also owns an input-only window under its children, so that a click
// on a plain view lands on that view, as the model's hit test says; TNLGtkInputRouting shapes
// these windows (and those of the content widgets) after the model.
//
// Geometry is the model's: a child is allocated at its frame, offset by the parent's bounds
// origin (a scroll view's content offset), whatever size GTK would prefer.
class TNLGtkViewBox {
 public:
  explicit TNLGtkViewBox(std::weak_ptr<TNLView> view);
  ~TNLGtkViewBox();
  TNLGtkViewBox(const TNLGtkViewBox&) = delete;
  TNLGtkViewBox& operator=(const TNLGtkViewBox&) = delete;

  // The box whose container `widget` is; null for other widgets.
  static TNLGtkViewBox* of(GtkWidget* widget);
  // Every live box, for the passes that walk all of them.
  static const std::vector<TNLGtkViewBox*>& all();

  GtkWidget* widget() const { return container_.get(); }
  std::shared_ptr<TNLView> view() const { return view_.lock(); }

  // The content fills the view's bounds, under the subviews. The box owns it.
  void setContent(GtkWidget* content);
  GtkWidget* content() const { return content_.get(); }

  // Model state.
  void setFrame(const TNLRect& frame);
  const TNLRect& frame() const { return frame_; }
  void setBoundsOrigin(const TNLPoint& origin);
  const TNLPoint& boundsOrigin() const { return boundsOrigin_; }
  void setHidden(bool hidden);
  void setAlpha(double alpha);
  void setClipsToBounds(bool clips);
  void setBackgroundColor(const std::optional<TNLColor>& color);
  // The subviews' boxes, back to front. Boxes placed elsewhere (see setPlacedElsewhere) are
  // left where they are.
  void setChildren(const std::vector<TNLGtkViewBox*>& children);
  std::vector<TNLGtkViewBox*> children() const;
  TNLGtkViewBox* parentBox() const;

  // A box whose widget lives outside its superview's box: in a window of its own (a presented
  // controller's view) or in the host's layout. Its superview does not take it back.
  void setPlacedElsewhere(bool elsewhere) { placedElsewhere_ = elsewhere; }
  bool isPlacedElsewhere() const { return placedElsewhere_; }
  // Placed by the host in a GTK layout of its own: the widget asks for the model size, and the
  // position the host gives it is reported to the model.
  void setHostPlaced(bool hostPlaced);
  bool isHostPlaced() const { return hostPlaced_; }

  // Called with scroll events that reach this box's input window.
  void setScrollHandler(std::function<bool(const GdkEventScroll&)> handler) {
    scrollHandler_ = std::move(handler);
  }

  // The input-only window of the box (null while unrealised).
  GdkWindow* inputWindow() const { return inputWindow_; }

  // Asks for one pass, on a later loop iteration, that restacks windows and reshapes input after
  // geometry, visibility or hierarchy changed anywhere.
  static void scheduleSync();
  // Whether that pass is still to run.
  static bool isSyncScheduled();

  // GTK side; called by the container's class functions.
  void measure(GtkOrientation orientation, int* minimum, int* natural) const;
  void allocate(GtkAllocation* allocation);
  gboolean draw(cairo_t* cr);
  void realize();
  void unrealize();
  void map();
  void unmap();
  void forall(GtkCallback callback, gpointer data);
  void remove(GtkWidget* child);
  gboolean scrolled(const GdkEventScroll& event);
  // Lets go of the children's widgets and the content (the container is being destroyed).
  void releaseWidgets();

 private:
  void detachChild(GtkWidget* child);
  void reportHostPlacement();

  std::weak_ptr<TNLView> view_;
  TNLGObjectRef<GtkWidget> container_;
  TNLGObjectRef<GtkWidget> content_;
  std::vector<GtkWidget*> children_;  // parented to the container; owned by their own boxes
  GdkWindow* inputWindow_ = nullptr;
  TNLRect frame_;
  TNLPoint boundsOrigin_;
  bool clips_ = false;
  std::optional<TNLColor> background_;
  bool placedElsewhere_ = false;
  bool hostPlaced_ = false;
  std::function<bool(const GdkEventScroll&)> scrollHandler_;
};
