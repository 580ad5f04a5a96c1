#pragma once

#include <memory>

class TNLGtkViewBox;
class TNLViewPeer;

// A GTK peer that renders its view in a TNLGtkViewBox; parents find their children's boxes
// through it.
class TNLGtkBoxed {
 public:
  virtual ~TNLGtkBoxed() = default;
  virtual TNLGtkViewBox& box() = 0;

  // The box of a peer made by the GTK backend; null for any other peer.
  static TNLGtkViewBox* boxOf(const std::shared_ptr<TNLViewPeer>& peer);
};
