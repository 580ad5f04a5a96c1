#pragma once

// A colour with red, green, blue and alpha components from 0.0 to 1.0.
struct TNLColor {
  double red = 0.0;
  double green = 0.0;
  double blue = 0.0;
  double alpha = 1.0;

  static TNLColor white() { return {1.0, 1.0, 1.0, 1.0}; }
  static TNLColor black() { return {0.0, 0.0, 0.0, 1.0}; }
  static TNLColor clear() { return {0.0, 0.0, 0.0, 0.0}; }

  bool operator==(const TNLColor&) const = default;
};
