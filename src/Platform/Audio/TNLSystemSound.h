#pragma once

#include <cstdint>

// System sounds identified by the platform's numbers.
class TNLSystemSound {
 public:
  // The platform's identifier of the vibration "sound".
  static constexpr uint32_t kVibrate = 4095;

  // Plays the system sound. Linux offers no vibration device and no system sound service, so the
  // request is written to the platform log (one line) and nothing else happens.
  static void play(uint32_t soundID);
};
