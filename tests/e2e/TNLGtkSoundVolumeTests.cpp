// The output volume without a sound server: the fixed level, at once and to an observer.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "Platform/Foundation/TNLMainQueue.h"
#include "Platform/Gtk/TNLGtkSoundVolume.h"
#include "TarnelAd/Gtk/TNLGtkToolkit.h"

namespace {

TEST(SoundVolumeTest, WithoutASoundServerTheVolumeIsTheFixedLevel) {
  // Nothing answers there; libpulse, when present, must give up quickly.
  setenv("PULSE_SERVER", "unix:/nonexistent/tarnelad-test/native", 1);
  EXPECT_FALSE(TNLGtkSoundVolume::readSoundServerVolume().has_value());
  EXPECT_EQ(TNLGtkToolkit::outputVolume(), TNLGtkSoundVolume::kFixedLevel);

  std::vector<float> reported;
  TNLGtkToolkit::setOutputVolumeObserver([&](float volume) { reported.push_back(volume); });
  EXPECT_TRUE(TNLMainQueue::runUntil([&] { return !reported.empty(); }));
  TNLMainQueue::runFor(std::chrono::milliseconds(1500));
  TNLGtkToolkit::setOutputVolumeObserver(nullptr);
  // Reported once: the level did not change.
  EXPECT_EQ(reported, std::vector<float>{TNLGtkSoundVolume::kFixedLevel});
}

}  // namespace
