#pragma once

#include <chrono>
#include <functional>
#include <optional>

// The output volume from the sound server: the default sink's volume (the mean of its channels,
// 0 when muted, at most 1) as PulseAudio, or PipeWire's PulseAudio service, tells it. libpulse is
// loaded when first needed (dlopen), so neither building nor running needs it; without it, or
// without a server that answers, the volume is the fixed level.
class TNLGtkSoundVolume {
 public:
  static constexpr float kFixedLevel = 1.0f;

  // The server's volume, or none when no server answers within `timeout`.
  static std::optional<float> readSoundServerVolume(
      std::chrono::milliseconds timeout = std::chrono::milliseconds(500));
  // The server's volume, else the fixed level.
  static float current();

  // Calls `observer` on the main queue with the volume, first at once and then whenever it
  // changes; a background thread asks the server every second. Null stops.
  static void setObserver(std::function<void(float volume)> observer);
};
