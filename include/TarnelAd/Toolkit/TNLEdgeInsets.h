#pragma once

// Distances inwards from the four edges of a rectangle, in points.
struct TNLEdgeInsets {
  double top = 0.0;
  double left = 0.0;
  double bottom = 0.0;
  double right = 0.0;

  bool operator==(const TNLEdgeInsets&) const = default;
};
