#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/Gtk/TNLGObjectRef.h"
#include "Platform/Gtk/TNLGtkPeer.h"

class TNLButton;

// A button: a GtkButton filling the view, showing the normal state's title. A click (the GTK
// button's "clicked": released inside after a press inside) taps the model button.
class TNLGtkButtonPeer : public TNLGtkPeer<TNLViewPeer> {
 public:
  explicit TNLGtkButtonPeer(const std::shared_ptr<TNLButton>& button);

  void titleChanged(const std::optional<std::string>& title) override;
  std::optional<TNLSize> intrinsicContentSize() const override;

  GtkButton* button() const { return GTK_BUTTON(box_.content()); }

 private:
  static void clicked(GtkButton* widget, gpointer self);

  std::weak_ptr<TNLButton> model_;
  TNLSignalConnection clickedConnection_;
};
