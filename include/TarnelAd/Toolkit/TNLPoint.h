#pragma once

// A point in a view's coordinate space, in points (not pixels); y grows downwards.
struct TNLPoint {
  double x = 0.0;
  double y = 0.0;

  bool operator==(const TNLPoint&) const = default;
};
