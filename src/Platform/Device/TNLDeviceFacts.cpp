#include "TarnelAd/TNLDeviceFacts.h"

#include <algorithm>

#include "Platform/Device/TNLLinuxDeviceFacts.h"
#include "Platform/Foundation/TNLNotificationCenter.h"

std::shared_ptr<TNLDeviceFacts> TNLDeviceFacts::linuxFacts(TNLHostApplicationInfo info) {
  return std::make_shared<TNLLinuxDeviceFacts>(std::move(info));
}

float TNLDeviceFacts::outputVolume() const {
  return volume_.load();
}

void TNLDeviceFacts::setOutputVolume(float volume) {
  const float level = std::clamp(volume, 0.0f, 1.0f);
  volume_.store(level);
  TNLNotificationCenter::defaultCenter()->post(kOutputVolumeDidChangeNotification, this,
                                               TNLJson{{kOutputVolumeKey, level}});
}
