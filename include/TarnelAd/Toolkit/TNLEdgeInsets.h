#pragma once

/// @file
/// @brief TNLEdgeInsets: distances in from the edges of a rectangle.

/// Distances inwards from the four edges of a rectangle, in points.
struct TNLEdgeInsets {
  double top = 0.0;     ///< From the top edge.
  double left = 0.0;    ///< From the left edge.
  double bottom = 0.0;  ///< From the bottom edge.
  double right = 0.0;   ///< From the right edge.

  /// Equal when all four distances are.
  bool operator==(const TNLEdgeInsets&) const = default;
};
