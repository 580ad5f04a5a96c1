#include "Platform/Gtk/TNLGtkButtonPeer.h"

#include "TarnelAd/Toolkit/TNLButton.h"

TNLGtkButtonPeer::TNLGtkButtonPeer(const std::shared_ptr<TNLButton>& button)
    : TNLGtkPeer(button), model_(button) {
  GtkWidget* widget = gtk_button_new();
  if (button->buttonType() == TNLButtonType::system) {
    // A system button is a titled text button without a frame of its own.
    gtk_button_set_relief(GTK_BUTTON(widget), GTK_RELIEF_NONE);
  }
  box_.setContent(widget);
  clickedConnection_ =
      TNLSignalConnection(widget, "clicked", G_CALLBACK(&TNLGtkButtonPeer::clicked), this);
}

void TNLGtkButtonPeer::clicked(GtkButton* /*widget*/, gpointer self) {
  // Held for the actions' duration: one of them may release the button.
  if (const auto model = static_cast<TNLGtkButtonPeer*>(self)->model_.lock()) {
    model->sendTap();
  }
}

void TNLGtkButtonPeer::titleChanged(const std::optional<std::string>& title) {
  gtk_button_set_label(button(), title ? title->c_str() : "");
}

std::optional<TNLSize> TNLGtkButtonPeer::intrinsicContentSize() const {
  GtkRequisition natural;
  gtk_widget_get_preferred_size(box_.content(), nullptr, &natural);
  return TNLSize{static_cast<double>(natural.width), static_cast<double>(natural.height)};
}
