#pragma once

/// @file
/// @brief TNLScreen: the main screen.

#include <memory>
#include <mutex>

#include "TarnelAd/TNLExport.h"
#include "TarnelAd/Toolkit/TNLRect.h"

/// The main screen: its bounds in points and its scale (pixels per point). The values come from
/// the toolkit backend when the screen is first used and whenever a backend is installed; the
/// backend updates them when the display changes. The headless backend's screen is 375 x 667
/// points at scale 2.0. Safe to read from any thread.
class TNL_EXPORT TNLScreen {
 public:
  /// The main screen.
  static std::shared_ptr<TNLScreen> mainScreen();

  /// The bounds in points, origin zero.
  TNLRect bounds() const;
  /// Pixels per point.
  double scale() const;

  /// Backend side: the display changed.
  ///@{
  void setBounds(const TNLRect& bounds);
  void setScale(double scale);
  ///@}

 private:
  TNLScreen(const TNLRect& bounds, double scale) : bounds_(bounds), scale_(scale) {}

  mutable std::mutex mutex_;
  TNLRect bounds_;
  double scale_;
};
