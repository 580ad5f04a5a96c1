#include "Platform/Gtk/TNLGtkLabelPeer.h"

#include "TarnelAd/Toolkit/TNLLabel.h"

TNLGtkLabelPeer::TNLGtkLabelPeer(const std::shared_ptr<TNLLabel>& label) : TNLGtkPeer(label) {
  GtkWidget* widget = gtk_label_new(nullptr);
  gtk_label_set_xalign(GTK_LABEL(widget), 0.0f);
  gtk_label_set_ellipsize(GTK_LABEL(widget), PANGO_ELLIPSIZE_END);
  gtk_label_set_single_line_mode(GTK_LABEL(widget), TRUE);
  box_.setContent(widget);
}

void TNLGtkLabelPeer::textChanged(const std::optional<std::string>& text) {
  gtk_label_set_text(label(), text ? text->c_str() : "");
}

std::optional<TNLSize> TNLGtkLabelPeer::intrinsicContentSize() const {
  GtkWidget* widget = box_.content();
  const char* text = gtk_label_get_text(GTK_LABEL(widget));
  if (!text || !*text) {
    return TNLSize{0.0, 0.0};  // an empty label takes no room
  }
  // The natural size of the text without ellipsis.
  PangoLayout* layout = gtk_widget_create_pango_layout(widget, text);
  int width = 0;
  int height = 0;
  pango_layout_get_pixel_size(layout, &width, &height);
  g_object_unref(layout);
  GtkStyleContext* style = gtk_widget_get_style_context(widget);
  GtkBorder padding;
  gtk_style_context_get_padding(style, gtk_style_context_get_state(style), &padding);
  return TNLSize{static_cast<double>(width + padding.left + padding.right),
                 static_cast<double>(height + padding.top + padding.bottom)};
}
