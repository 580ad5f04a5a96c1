#pragma once

/// @file
/// @brief TNLColor: a colour with opacity.

/// A colour with red, green, blue and alpha components from 0.0 to 1.0.
struct TNLColor {
  double red = 0.0;    ///< Red, 0 to 1.
  double green = 0.0;  ///< Green, 0 to 1.
  double blue = 0.0;   ///< Blue, 0 to 1.
  double alpha = 1.0;  ///< Opacity, 0 (transparent) to 1.

  /// Opaque white.
  static TNLColor white() { return {1.0, 1.0, 1.0, 1.0}; }
  /// Opaque black.
  static TNLColor black() { return {0.0, 0.0, 0.0, 1.0}; }
  /// Fully transparent.
  static TNLColor clear() { return {0.0, 0.0, 0.0, 0.0}; }

  /// Equal when all four components are.
  bool operator==(const TNLColor&) const = default;
};
