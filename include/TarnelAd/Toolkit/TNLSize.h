#pragma once

// A width and a height, in points.
struct TNLSize {
  double width = 0.0;
  double height = 0.0;

  bool operator==(const TNLSize&) const = default;
};
