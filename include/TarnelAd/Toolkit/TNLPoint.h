#pragma once

/// @file
/// @brief TNLPoint: a point in a view's coordinates.

/// A point in a view's coordinate space, in points (not pixels); y grows downwards.
struct TNLPoint {
  double x = 0.0;  ///< Rightwards.
  double y = 0.0;  ///< Downwards.

  /// Equal when both coordinates are.
  bool operator==(const TNLPoint&) const = default;
};
