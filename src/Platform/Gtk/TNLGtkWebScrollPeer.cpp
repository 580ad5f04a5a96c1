#include "Platform/Gtk/TNLGtkWebScrollPeer.h"

#include "Platform/Gtk/TNLGtkWebEngine.h"

void TNLGtkWebScrollPeer::contentOffsetChanged(const TNLPoint& offset) {
  if (const auto engine = engine_.lock()) {
    engine->scrollPageTo(offset);
  }
}

void TNLGtkWebScrollPeer::scrollEnabledChanged(bool enabled) {
  if (const auto engine = engine_.lock()) {
    engine->setPageScrollEnabled(enabled);
  }
}

void TNLGtkWebScrollPeer::bouncesChanged(bool bounces) {
  if (const auto engine = engine_.lock()) {
    engine->setPageBounces(bounces);
  }
}
