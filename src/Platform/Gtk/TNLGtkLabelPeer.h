#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/Gtk/TNLGtkPeer.h"

class TNLLabel;

// A label: a GtkLabel filling the view, one line, left-aligned and centred vertically, cut with an
// ellipsis when the view is too narrow. Its intrinsic size is the text's natural size.
class TNLGtkLabelPeer : public TNLGtkPeer<TNLViewPeer> {
 public:
  explicit TNLGtkLabelPeer(const std::shared_ptr<TNLLabel>& label);

  void textChanged(const std::optional<std::string>& text) override;
  std::optional<TNLSize> intrinsicContentSize() const override;

  GtkLabel* label() const { return GTK_LABEL(box_.content()); }
};
