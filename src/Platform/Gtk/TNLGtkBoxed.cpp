#include "Platform/Gtk/TNLGtkBoxed.h"

#include "Platform/Toolkit/TNLViewPeer.h"

TNLGtkViewBox* TNLGtkBoxed::boxOf(const std::shared_ptr<TNLViewPeer>& peer) {
  auto* boxed = dynamic_cast<TNLGtkBoxed*>(peer.get());
  return boxed ? &boxed->box() : nullptr;
}
