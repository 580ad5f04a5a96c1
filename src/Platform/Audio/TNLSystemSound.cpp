#include "Platform/Audio/TNLSystemSound.h"

#include "Platform/Foundation/TNLFormat.h"
#include "Platform/Foundation/TNLPlatformLog.h"

void TNLSystemSound::play(uint32_t soundID) {
  if (soundID == kVibrate) {
    TNLPlatformLog(TNLFormat(
        "System sound %u (vibrate) not played: this platform has no vibration device", soundID));
  } else {
    TNLPlatformLog(
        TNLFormat("System sound %u not played: this platform has no system sounds", soundID));
  }
}
