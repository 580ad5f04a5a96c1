#pragma once

#include <cairo.h>

#include <memory>

class TNLView;

// Makes GDK deliver pointer and touch input where the model's hit test says it belongs.
//
// GDK picks the window under the pointer: the topmost window whose input shape contains the
// point. So after every change of geometry, visibility or hierarchy (one pass per loop
// iteration), the windows of all boxes are restacked in the model's drawing order, and each
// window of a view (its box's input window and its content's windows) gets as input shape the
// part of the view where the model would accept the touch: the view and all its ancestors are
// interactive, visible, not nearly transparent, and their pointInside says yes. Where a view
// refuses a point (a banner's pass-through zone), the window below gets the event: a sibling
// view, the superview, or a widget of the host's own behind a banner placed in its layout.
//
// pointInside of the toolkit's own classes is the bounds test, so their shapes are rectangles;
// for other classes (which may override it) the test is sampled every 8 points and the edges
// found between samples are refined to the point, so a refusing area narrower than 8 points can
// be missed.
class TNLGtkInputRouting {
 public:
  // Restacks and reshapes every live box. Called from TNLGtkViewBox::scheduleSync.
  static void sync();

  // The region of `view`'s widget (origin at the widget's top-left corner) where the view takes
  // input. Exposed for the tests of the routing.
  static cairo_region_t* acceptingRegion(const std::shared_ptr<TNLView>& view);
};
