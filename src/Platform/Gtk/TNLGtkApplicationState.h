#pragma once

#include <gtk/gtk.h>

// The application's state from its windows: background when every shown window is minimised,
// active while one of them has the focus, inactive once the focus went elsewhere. Reported to
// TNLApplication::setApplicationState, which posts the platform's notifications.
//
// The application starts active. A display without a window manager may never give focus to
// anything; the state only becomes inactive after a window of ours has had the focus and lost it
// to no other window of ours, so such a display leaves it active. Focus moving between our own
// windows (a cover appearing over its parent) is decided on a later iteration, when it has
// settled, and changes nothing.
class TNLGtkApplicationState {
 public:
  // Follows a window until it is destroyed.
  static void track(GtkWindow* window);

  // Evaluates the tracked windows now (for tests: after synthesised focus or state events).
  static void evaluate();
};
