#pragma once

class TNLView;

// Solves the layout constraints of a view tree. Each constraint is an equality
//   target.attribute = other.attribute * multiplier + constant
// where the target is a view that takes its frame from constraints (its
// translatesAutoresizingMaskIntoConstraints is off) and the other item is a view, a layout
// guide or nothing (a constant width or height). A constraint whose first item keeps its own
// frame but whose second item is a target is used the other way round. Positions are taken in
// the target's superview coordinates; leading and trailing are left and right.
//
// Per axis a target's frame follows from what its constraints fix:
//   size and one edge or the centre   -> both
//   two of the edges and the centre   -> the size from their distance
//   one edge or the centre only       -> the intrinsic size (or the current one) and that edge
//   nothing                           -> the current frame stays
// Targets depend on each other (an item placed below another), so the tree is swept until no
// frame changes, a bounded number of times.
class TNLLayoutSolver {
 public:
  static void solve(TNLView& root);
};
