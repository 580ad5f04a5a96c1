#include "Platform/Toolkit/TNLLayoutSolver.h"

#include <cmath>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

#include "TarnelAd/Toolkit/TNLLayoutConstraint.h"
#include "TarnelAd/Toolkit/TNLView.h"

namespace {

using Attribute = TNLLayoutAttribute;

struct Equation {
  TNLView* target;
  Attribute attribute;
  std::shared_ptr<TNLLayoutItem> other;  // null: a constant
  Attribute otherAttribute;
  double multiplier;
  double constant;
};

bool isHorizontal(Attribute attribute) {
  switch (attribute) {
    case Attribute::left:
    case Attribute::right:
    case Attribute::leading:
    case Attribute::trailing:
    case Attribute::width:
    case Attribute::centerX:
      return true;
    default:
      return false;
  }
}

bool isSize(Attribute attribute) {
  return attribute == Attribute::width || attribute == Attribute::height;
}

double valueOf(const TNLRect& rect, Attribute attribute) {
  switch (attribute) {
    case Attribute::left:
    case Attribute::leading:
      return rect.minX();
    case Attribute::right:
    case Attribute::trailing:
      return rect.maxX();
    case Attribute::top:
      return rect.minY();
    case Attribute::bottom:
      return rect.maxY();
    case Attribute::width:
      return rect.width();
    case Attribute::height:
      return rect.height();
    case Attribute::centerX:
      return rect.midX();
    case Attribute::centerY:
      return rect.midY();
    case Attribute::notAnAttribute:
      break;
  }
  return 0.0;
}

void collect(TNLView& view, std::vector<TNLView*>& views) {
  views.push_back(&view);
  for (const auto& subview : view.subviews()) {
    collect(*subview, views);
  }
}

const TNLView* rootOf(const TNLView& view) {
  const TNLView* root = &view;
  for (auto up = view.superview(); up; up = up->superview()) {
    root = up.get();
  }
  return root;
}

// The item's rectangle in `space`'s coordinates; none when the two share no tree.
std::optional<TNLRect> rectIn(const TNLLayoutItem& item, const TNLView* space) {
  if (space == nullptr) {
    return std::nullopt;
  }
  if (&item == static_cast<const TNLLayoutItem*>(space)) {
    return space->bounds();
  }
  const std::shared_ptr<TNLView> itemSpace = item.layoutItemSpace();
  if (!itemSpace) {
    return std::nullopt;
  }
  const TNLRect rect = item.layoutItemRect();
  if (itemSpace.get() == space) {
    return rect;
  }
  if (rootOf(*itemSpace) != rootOf(*space)) {
    return std::nullopt;
  }
  return itemSpace->convertRect(rect, space->shared_from_this());
}

struct Axis {
  std::optional<double> size;
  std::optional<double> low;   // left, leading, top
  std::optional<double> high;  // right, trailing, bottom
  std::optional<double> middle;

  // Origin and length along the axis.
  std::pair<double, double> resolve(double origin, double length, double intrinsic) const {
    if (size) {
      return {placed(*size).value_or(origin), *size};
    }
    if (low && high) {
      return {*low, *high - *low};
    }
    if (low && middle) {
      return {*low, 2.0 * (*middle - *low)};
    }
    if (high && middle) {
      const double fitted = 2.0 * (*high - *middle);
      return {*high - fitted, fitted};
    }
    const double kept = intrinsic >= 0.0 ? intrinsic : length;
    return {placed(kept).value_or(origin), kept};
  }

 private:
  std::optional<double> placed(double length) const {
    if (low) {
      return *low;
    }
    if (high) {
      return *high - length;
    }
    if (middle) {
      return *middle - length / 2.0;
    }
    return std::nullopt;
  }
};

void assign(Axis& axis, Attribute attribute, double value) {
  switch (attribute) {
    case Attribute::width:
    case Attribute::height:
      axis.size = value;
      break;
    case Attribute::left:
    case Attribute::leading:
    case Attribute::top:
      axis.low = value;
      break;
    case Attribute::right:
    case Attribute::trailing:
    case Attribute::bottom:
      axis.high = value;
      break;
    case Attribute::centerX:
    case Attribute::centerY:
      axis.middle = value;
      break;
    case Attribute::notAnAttribute:
      break;
  }
}

std::optional<double> evaluate(const Equation& equation, const TNLView* space) {
  if (!equation.other || equation.otherAttribute == Attribute::notAnAttribute) {
    return equation.constant;
  }
  double otherValue = 0.0;
  if (isSize(equation.otherAttribute)) {
    // A size is the same in every coordinate space.
    otherValue = valueOf(equation.other->layoutItemRect(), equation.otherAttribute);
  } else {
    const auto rect = rectIn(*equation.other, space);
    if (!rect) {
      return std::nullopt;
    }
    otherValue = valueOf(*rect, equation.otherAttribute);
  }
  return otherValue * equation.multiplier + equation.constant;
}

bool differs(const TNLRect& a, const TNLRect& b) {
  constexpr double kTolerance = 1e-9;
  return std::abs(a.minX() - b.minX()) > kTolerance || std::abs(a.minY() - b.minY()) > kTolerance ||
         std::abs(a.width() - b.width()) > kTolerance ||
         std::abs(a.height() - b.height()) > kTolerance;
}

}  // namespace

void TNLLayoutSolver::solve(TNLView& root) {
  std::vector<TNLView*> views;
  collect(root, views);
  const std::unordered_set<const TNLLayoutItem*> inTree(views.begin(), views.end());

  std::vector<Equation> equations;
  for (TNLView* view : views) {
    for (const auto& constraint : view->constraints()) {
      const auto first = constraint->firstItem();
      if (!first || constraint->secondItemLost()) {
        continue;
      }
      const auto second = constraint->secondItem();
      auto* firstView = dynamic_cast<TNLView*>(first.get());
      auto* secondView = dynamic_cast<TNLView*>(second.get());
      if (firstView != nullptr && inTree.contains(firstView) &&
          !firstView->translatesAutoresizingMaskIntoConstraints()) {
        equations.push_back({firstView, constraint->firstAttribute(), second,
                             constraint->secondAttribute(), constraint->multiplier(),
                             constraint->constant()});
      } else if (secondView != nullptr && inTree.contains(secondView) &&
                 !secondView->translatesAutoresizingMaskIntoConstraints() &&
                 constraint->multiplier() != 0.0 &&
                 constraint->secondAttribute() != Attribute::notAnAttribute) {
        // first = second * m + c  <=>  second = first * (1/m) - c/m
        equations.push_back({secondView, constraint->secondAttribute(), first,
                             constraint->firstAttribute(), 1.0 / constraint->multiplier(),
                             -constraint->constant() / constraint->multiplier()});
      }
    }
  }
  if (equations.empty()) {
    return;
  }

  const size_t maximumSweeps = views.size() + 2;
  for (size_t sweep = 0; sweep < maximumSweeps; ++sweep) {
    bool changed = false;
    for (TNLView* view : views) {
      Axis horizontal;
      Axis vertical;
      bool constrained = false;
      const std::shared_ptr<TNLView> superview = view->superview();
      for (const Equation& equation : equations) {
        if (equation.target != view) {
          continue;
        }
        constrained = true;
        // Positions need a superview to be placed in.
        if (!isSize(equation.attribute) && !superview) {
          continue;
        }
        if (const auto value = evaluate(equation, superview.get())) {
          assign(isHorizontal(equation.attribute) ? horizontal : vertical, equation.attribute,
                 *value);
        }
      }
      if (!constrained) {
        continue;
      }
      const TNLRect current = view->frame();
      const bool needsIntrinsic = !horizontal.size || !vertical.size;
      const TNLSize intrinsic = needsIntrinsic
                                    ? view->intrinsicContentSize()
                                    : TNLSize{TNLViewNoIntrinsicMetric, TNLViewNoIntrinsicMetric};
      const auto [x, width] = horizontal.resolve(current.minX(), current.width(), intrinsic.width);
      const auto [y, height] = vertical.resolve(current.minY(), current.height(), intrinsic.height);
      const TNLRect solved{x, y, width, height};
      if (differs(solved, current)) {
        view->setFrameFromLayout(solved);
        changed = true;
      }
    }
    if (!changed) {
      break;
    }
  }
}
