#pragma once

/// @file
/// @brief TNLRect: a rectangle in a view's coordinates.

#include "TarnelAd/Toolkit/TNLEdgeInsets.h"
#include "TarnelAd/Toolkit/TNLPoint.h"
#include "TarnelAd/Toolkit/TNLSize.h"

/// A rectangle: origin (top-left corner) and size, in points.
struct TNLRect {
  TNLPoint origin;  ///< The top-left corner.
  TNLSize size;     ///< The width and height.

  /// The zero rectangle.
  TNLRect() = default;
  /// From a corner and a size.
  TNLRect(TNLPoint origin, TNLSize size) : origin(origin), size(size) {}
  /// From the corner's coordinates and the size.
  TNLRect(double x, double y, double width, double height) : origin{x, y}, size{width, height} {}

  /// The left, centre and right x coordinates.
  ///@{
  double minX() const { return origin.x; }
  double midX() const { return origin.x + size.width / 2.0; }
  double maxX() const { return origin.x + size.width; }
  ///@}
  /// The top, centre and bottom y coordinates.
  ///@{
  double minY() const { return origin.y; }
  double midY() const { return origin.y + size.height / 2.0; }
  double maxY() const { return origin.y + size.height; }
  ///@}
  /// The size's width and height.
  ///@{
  double width() const { return size.width; }
  double height() const { return size.height; }
  ///@}

  /// Half-open: the left and top edges are inside, the right and bottom edges are not.
  bool contains(const TNLPoint& point) const {
    return point.x >= minX() && point.x < maxX() && point.y >= minY() && point.y < maxY();
  }

  /// The rectangle shrunk by the insets (grown by negative ones).
  TNLRect inset(const TNLEdgeInsets& insets) const {
    return {origin.x + insets.left, origin.y + insets.top, size.width - insets.left - insets.right,
            size.height - insets.top - insets.bottom};
  }

  /// Equal when origin and size are.
  bool operator==(const TNLRect&) const = default;
};
