#pragma once

/// @file
/// @brief TNLSize: a width and a height.

/// A width and a height, in points.
struct TNLSize {
  double width = 0.0;   ///< Points.
  double height = 0.0;  ///< Points.

  /// Equal when both dimensions are.
  bool operator==(const TNLSize&) const = default;
};
