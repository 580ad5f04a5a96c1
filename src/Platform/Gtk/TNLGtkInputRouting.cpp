#include "Platform/Gtk/TNLGtkInputRouting.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cmath>
#include <typeinfo>
#include <vector>

#include "Platform/Gtk/TNLGtkViewBox.h"
#include "TarnelAd/Toolkit/TNLButton.h"
#include "TarnelAd/Toolkit/TNLLabel.h"
#include "TarnelAd/Toolkit/TNLScrollView.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWebView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

namespace {

constexpr int kSampleStep = 8;

// The classes whose pointInside is the toolkit's bounds test.
bool hasPlainPointInside(const TNLView& view) {
  const std::type_info& type = typeid(view);
  return type == typeid(TNLView) || type == typeid(TNLWindow) || type == typeid(TNLScrollView) ||
         type == typeid(TNLLabel) || type == typeid(TNLButton) || type == typeid(TNLWebView);
}

bool takesTouches(const TNLView& view) {
  // As the model's hit test: hidden, non-interactive and nearly transparent views take none.
  return !view.isHidden() && view.isUserInteractionEnabled() && view.alpha() > 0.01;
}

TNLRect intersect(const TNLRect& a, const TNLRect& b) {
  const double minX = std::max(a.minX(), b.minX());
  const double minY = std::max(a.minY(), b.minY());
  const double maxX = std::max(minX, std::min(a.maxX(), b.maxX()));
  const double maxY = std::max(minY, std::min(a.maxY(), b.maxY()));
  return {minX, minY, maxX - minX, maxY - minY};
}

// The view and its ancestors, with the ones whose pointInside must be asked.
struct Chain {
  std::vector<std::shared_ptr<TNLView>> sampled;
  TNLRect rect;  // in the view's coordinates: what the plain members allow
  bool interactive = true;
};

Chain chainOf(const std::shared_ptr<TNLView>& view) {
  Chain chain;
  chain.rect = view->bounds();
  for (std::shared_ptr<TNLView> member = view; member; member = member->superview()) {
    if (!takesTouches(*member)) {
      chain.interactive = false;
      return chain;
    }
    if (hasPlainPointInside(*member)) {
      if (member != view) {
        chain.rect = intersect(chain.rect, member->convertRect(member->bounds(), view));
      }
    } else {
      chain.sampled.push_back(member);
    }
  }
  return chain;
}

class Sampler {
 public:
  Sampler(const std::shared_ptr<TNLView>& view, const Chain& chain)
      : view_(view), chain_(chain), origin_(view->bounds().origin) {}

  // Whether the view accepts the widget-local pixel (x, y).
  bool accepts(int x, int y) const {
    const TNLPoint point{origin_.x + x + 0.5, origin_.y + y + 0.5};
    for (const auto& member : chain_.sampled) {
      const TNLPoint inMember = member == view_ ? point : view_->convertPoint(point, member);
      if (!member->pointInside(inMember)) {
        return false;
      }
    }
    return true;
  }

  // The accepting runs of row y between x0 and x1 (exclusive), each as [start, end).
  std::vector<std::pair<int, int>> runs(int y, int x0, int x1) const {
    std::vector<std::pair<int, int>> result;
    bool inside = accepts(x0, y);
    int start = x0;
    int x = x0;
    while (x < x1 - 1) {
      const int next = std::min(x + kSampleStep, x1 - 1);
      if (accepts(next, y) != inside) {
        // The edge lies in (x, next]: find the first pixel of the other kind.
        int low = x;
        int high = next;
        while (high - low > 1) {
          const int middle = (low + high) / 2;
          (accepts(middle, y) == inside ? low : high) = middle;
        }
        if (inside) {
          result.emplace_back(start, high);
        } else {
          start = high;
        }
        inside = !inside;
        x = high;
      } else {
        x = next;
      }
    }
    if (inside) {
      result.emplace_back(start, x1);
    }
    return result;
  }

 private:
  std::shared_ptr<TNLView> view_;
  const Chain& chain_;
  TNLPoint origin_;
};

cairo_region_t* sampledRegion(const std::shared_ptr<TNLView>& view, const Chain& chain,
                              const cairo_rectangle_int_t& area) {
  cairo_region_t* region = cairo_region_create();
  if (area.width <= 0 || area.height <= 0) {
    return region;
  }
  const Sampler sampler(view, chain);
  const int x0 = area.x;
  const int x1 = area.x + area.width;
  const int y1 = area.y + area.height;
  const auto addBand = [&](int top, int bottom, const std::vector<std::pair<int, int>>& runs) {
    for (const auto& [start, end] : runs) {
      const cairo_rectangle_int_t rect{start, top, end - start, bottom - top};
      cairo_region_union_rectangle(region, &rect);
    }
  };
  int bandTop = area.y;
  auto bandRuns = sampler.runs(bandTop, x0, x1);
  int y = bandTop;
  while (y < y1 - 1) {
    const int next = std::min(y + kSampleStep, y1 - 1);
    auto nextRuns = sampler.runs(next, x0, x1);
    if (nextRuns == bandRuns) {
      y = next;
      continue;
    }
    // The band changes in (y, next]: find its first row of the new kind.
    int low = y;
    int high = next;
    while (high - low > 1) {
      const int middle = (low + high) / 2;
      (sampler.runs(middle, x0, x1) == bandRuns ? low : high) = middle;
    }
    addBand(bandTop, high, bandRuns);
    bandTop = high;
    bandRuns = high == next ? std::move(nextRuns) : sampler.runs(high, x0, x1);
    y = high;
  }
  addBand(bandTop, y1, bandRuns);
  return region;
}

// The windows that `widget` owns directly under `parent` (its own window, or an input-only
// event window like a button's).
std::vector<GdkWindow*> windowsOf(GtkWidget* widget) {
  std::vector<GdkWindow*> windows;
  if (!widget || !gtk_widget_get_realized(widget)) {
    return windows;
  }
  GdkWindow* parent = gtk_widget_get_parent_window(widget);
  if (!parent) {
    return windows;
  }
  for (GList* child = gdk_window_peek_children(parent); child; child = child->next) {
    auto* window = static_cast<GdkWindow*>(child->data);
    gpointer owner = nullptr;
    gdk_window_get_user_data(window, &owner);
    if (owner == widget) {
      windows.push_back(window);
    }
  }
  return windows;
}

struct RoutedWindow {
  GdkWindow* window;
  TNLGtkViewBox* box;
};

// The windows of a mapped tree of boxes, bottom to top as the model draws: a box's input
// window, its content's windows, then its subviews in z order.
void collect(TNLGtkViewBox& box, std::vector<RoutedWindow>& windows) {
  if (!gtk_widget_get_mapped(box.widget())) {
    return;
  }
  if (GdkWindow* input = box.inputWindow()) {
    windows.push_back({input, &box});
  }
  for (GdkWindow* window : windowsOf(box.content())) {
    windows.push_back({window, &box});
  }
  for (TNLGtkViewBox* child : box.children()) {
    collect(*child, windows);
  }
}

// Restacks the windows that share `parent` only when their order is not the wanted one:
// raising invalidates, so it is not done for nothing.
void restack(GdkWindow* parent, const std::vector<GdkWindow*>& wanted) {
  std::vector<GdkWindow*> current;
  // GDK lists children top first.
  for (GList* child = gdk_window_peek_children(parent); child; child = child->next) {
    auto* window = static_cast<GdkWindow*>(child->data);
    if (std::find(wanted.begin(), wanted.end(), window) != wanted.end()) {
      current.insert(current.begin(), window);
    }
  }
  if (current == wanted) {
    return;
  }
  for (GdkWindow* window : wanted) {
    gdk_window_raise(window);
  }
}

constexpr char kShapeKey[] = "tnl-input-shape";

void reshape(GdkWindow* window, const cairo_region_t* region) {
  const auto* applied =
      static_cast<const cairo_region_t*>(g_object_get_data(G_OBJECT(window), kShapeKey));
  if (applied && cairo_region_equal(applied, region)) {
    return;
  }
  gdk_window_input_shape_combine_region(window, region, 0, 0);
  g_object_set_data_full(G_OBJECT(window), kShapeKey, cairo_region_copy(region),
                         reinterpret_cast<GDestroyNotify>(cairo_region_destroy));
}

void syncTree(TNLGtkViewBox& root) {
  std::vector<RoutedWindow> windows;
  collect(root, windows);
  std::vector<std::pair<GdkWindow*, std::vector<GdkWindow*>>> byParent;
  for (const RoutedWindow& routed : windows) {
    GdkWindow* parent = gdk_window_get_parent(routed.window);
    auto group = std::find_if(byParent.begin(), byParent.end(),
                              [&](const auto& entry) { return entry.first == parent; });
    if (group == byParent.end()) {
      byParent.push_back({parent, {}});
      group = byParent.end() - 1;
    }
    group->second.push_back(routed.window);
  }
  for (const auto& [parent, wanted] : byParent) {
    if (parent) {
      restack(parent, wanted);
    }
  }
  TNLGtkViewBox* shapedBox = nullptr;
  cairo_region_t* region = nullptr;
  for (const RoutedWindow& routed : windows) {
    if (routed.box != shapedBox) {
      if (region) {
        cairo_region_destroy(region);
      }
      shapedBox = routed.box;
      region = TNLGtkInputRouting::acceptingRegion(shapedBox->view());
    }
    reshape(routed.window, region);
  }
  if (region) {
    cairo_region_destroy(region);
  }
}

}  // namespace

cairo_region_t* TNLGtkInputRouting::acceptingRegion(const std::shared_ptr<TNLView>& view) {
  if (!view) {
    return cairo_region_create();
  }
  const Chain chain = chainOf(view);
  if (!chain.interactive) {
    return cairo_region_create();
  }
  // Widget-local pixels: the widget's top-left corner is the view's bounds origin.
  const TNLPoint origin = view->bounds().origin;
  const int left = static_cast<int>(std::floor(chain.rect.minX() - origin.x));
  const int top = static_cast<int>(std::floor(chain.rect.minY() - origin.y));
  const int right = static_cast<int>(std::ceil(chain.rect.maxX() - origin.x));
  const int bottom = static_cast<int>(std::ceil(chain.rect.maxY() - origin.y));
  const cairo_rectangle_int_t area{left, top, std::max(0, right - left), std::max(0, bottom - top)};
  if (chain.sampled.empty()) {
    return cairo_region_create_rectangle(&area);
  }
  return sampledRegion(view, chain, area);
}

void TNLGtkInputRouting::sync() {
  for (TNLGtkViewBox* box : std::vector<TNLGtkViewBox*>(TNLGtkViewBox::all())) {
    if (!box->parentBox()) {
      syncTree(*box);
    }
  }
}
