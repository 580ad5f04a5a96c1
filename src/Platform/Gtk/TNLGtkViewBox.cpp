#include "Platform/Gtk/TNLGtkViewBox.h"

#include <algorithm>
#include <cmath>

#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Gtk/TNLGtkInputRouting.h"
#include "TarnelAd/Toolkit/TNLView.h"
#include "TarnelAd/Toolkit/TNLWindow.h"

// The container widget: a GtkContainer whose class functions ask the box that owns it.
struct TNLGtkContainer {
  GtkContainer parent;
  TNLGtkViewBox* box;
};

struct TNLGtkContainerClass {
  GtkContainerClass parent_class;
};

G_DEFINE_TYPE(TNLGtkContainer, tnl_gtk_container, GTK_TYPE_CONTAINER)

namespace {

TNLGtkViewBox* boxOf(GtkWidget* widget) {
  return reinterpret_cast<TNLGtkContainer*>(widget)->box;
}

int toPixels(double points) {
  return static_cast<int>(std::lround(points));
}

std::vector<TNLGtkViewBox*>& registry() {
  static TNLNoDestructor<std::vector<TNLGtkViewBox*>> boxes;
  return *boxes;
}

bool syncScheduled = false;

}  // namespace

static void tnlContainerPreferredWidth(GtkWidget* widget, int* minimum, int* natural) {
  if (auto* box = boxOf(widget)) {
    box->measure(GTK_ORIENTATION_HORIZONTAL, minimum, natural);
  } else {
    *minimum = *natural = 0;
  }
}

static void tnlContainerPreferredHeight(GtkWidget* widget, int* minimum, int* natural) {
  if (auto* box = boxOf(widget)) {
    box->measure(GTK_ORIENTATION_VERTICAL, minimum, natural);
  } else {
    *minimum = *natural = 0;
  }
}

static void tnlContainerSizeAllocate(GtkWidget* widget, GtkAllocation* allocation) {
  if (auto* box = boxOf(widget)) {
    box->allocate(allocation);
  } else {
    gtk_widget_set_allocation(widget, allocation);
  }
}

static gboolean tnlContainerDraw(GtkWidget* widget, cairo_t* cr) {
  auto* box = boxOf(widget);
  return box ? box->draw(cr) : FALSE;
}

static void tnlContainerRealize(GtkWidget* widget) {
  if (auto* box = boxOf(widget)) {
    box->realize();
  } else {
    GTK_WIDGET_CLASS(tnl_gtk_container_parent_class)->realize(widget);
  }
}

static void tnlContainerUnrealize(GtkWidget* widget) {
  if (auto* box = boxOf(widget)) {
    box->unrealize();
  }
  GTK_WIDGET_CLASS(tnl_gtk_container_parent_class)->unrealize(widget);
}

static void tnlContainerMap(GtkWidget* widget) {
  GTK_WIDGET_CLASS(tnl_gtk_container_parent_class)->map(widget);
  if (auto* box = boxOf(widget)) {
    box->map();
  }
}

static void tnlContainerUnmap(GtkWidget* widget) {
  if (auto* box = boxOf(widget)) {
    box->unmap();
  }
  GTK_WIDGET_CLASS(tnl_gtk_container_parent_class)->unmap(widget);
}

static void tnlContainerDestroy(GtkWidget* widget) {
  // Destroyed by its parent (a host's layout or window going away): the children and the
  // content belong to boxes that live on, so they leave instead of being destroyed with it.
  if (auto* box = boxOf(widget)) {
    box->releaseWidgets();
  }
  GTK_WIDGET_CLASS(tnl_gtk_container_parent_class)->destroy(widget);
}

static gboolean tnlContainerScroll(GtkWidget* widget, GdkEventScroll* event) {
  auto* box = boxOf(widget);
  return box ? box->scrolled(*event) : FALSE;
}

static void tnlContainerForall(GtkContainer* container, gboolean /*includeInternals*/,
                               GtkCallback callback, gpointer data) {
  if (auto* box = boxOf(GTK_WIDGET(container))) {
    box->forall(callback, data);
  }
}

static void tnlContainerRemove(GtkContainer* container, GtkWidget* child) {
  if (auto* box = boxOf(GTK_WIDGET(container))) {
    box->remove(child);
  }
}

static void tnlContainerAdd(GtkContainer* container, GtkWidget* child) {
  // Children are placed by their boxes; a plain add (from a builder, say) is refused.
  g_warning("TNLGtkContainer does not take children through gtk_container_add (%s)",
            G_OBJECT_TYPE_NAME(child));
  (void)container;
}

static GType tnlContainerChildType(GtkContainer* /*container*/) {
  return GTK_TYPE_WIDGET;
}

static void tnl_gtk_container_class_init(TNLGtkContainerClass* klass) {
  auto* widgetClass = GTK_WIDGET_CLASS(klass);
  widgetClass->get_preferred_width = tnlContainerPreferredWidth;
  widgetClass->get_preferred_height = tnlContainerPreferredHeight;
  widgetClass->size_allocate = tnlContainerSizeAllocate;
  widgetClass->draw = tnlContainerDraw;
  widgetClass->realize = tnlContainerRealize;
  widgetClass->unrealize = tnlContainerUnrealize;
  widgetClass->map = tnlContainerMap;
  widgetClass->unmap = tnlContainerUnmap;
  widgetClass->scroll_event = tnlContainerScroll;
  widgetClass->destroy = tnlContainerDestroy;
  auto* containerClass = GTK_CONTAINER_CLASS(klass);
  containerClass->forall = tnlContainerForall;
  containerClass->remove = tnlContainerRemove;
  containerClass->add = tnlContainerAdd;
  containerClass->child_type = tnlContainerChildType;
  gtk_widget_class_set_css_name(widgetClass, "tnlview");
}

static void tnl_gtk_container_init(TNLGtkContainer* self) {
  self->box = nullptr;
  gtk_widget_set_has_window(GTK_WIDGET(self), FALSE);
}

TNLGtkViewBox::TNLGtkViewBox(std::weak_ptr<TNLView> view)
    : view_(std::move(view)),
      container_(TNLGObjectRef<GtkWidget>::retain(
          GTK_WIDGET(g_object_new(tnl_gtk_container_get_type(), nullptr)))) {
  reinterpret_cast<TNLGtkContainer*>(container_.get())->box = this;
  gtk_widget_add_events(container_.get(), GDK_SCROLL_MASK | GDK_SMOOTH_SCROLL_MASK |
                                              GDK_BUTTON_PRESS_MASK | GDK_BUTTON_RELEASE_MASK |
                                              GDK_TOUCH_MASK);
  gtk_widget_show(container_.get());
  registry().push_back(this);
}

TNLGtkViewBox::~TNLGtkViewBox() {
  std::erase(registry(), this);
  GtkWidget* widget = container_.get();
  // The children belong to boxes of their own; they only leave this container.
  releaseWidgets();
  if (GtkWidget* parent = gtk_widget_get_parent(widget)) {
    if (auto* parentBox = of(parent)) {
      parentBox->detachChild(widget);
    } else if (GTK_IS_CONTAINER(parent)) {
      gtk_container_remove(GTK_CONTAINER(parent), widget);
    }
  }
  reinterpret_cast<TNLGtkContainer*>(widget)->box = nullptr;
  scheduleSync();
}

void TNLGtkViewBox::releaseWidgets() {
  for (GtkWidget* child : std::vector<GtkWidget*>(children_)) {
    detachChild(child);
  }
  if (GtkWidget* content = content_.get(); content && gtk_widget_get_parent(content) == widget()) {
    gtk_widget_unparent(content);
  }
}

TNLGtkViewBox* TNLGtkViewBox::of(GtkWidget* widget) {
  if (!widget || !G_TYPE_CHECK_INSTANCE_TYPE(widget, tnl_gtk_container_get_type())) {
    return nullptr;
  }
  return boxOf(widget);
}

const std::vector<TNLGtkViewBox*>& TNLGtkViewBox::all() {
  return registry();
}

void TNLGtkViewBox::setContent(GtkWidget* content) {
  if (GtkWidget* former = content_.get(); former && gtk_widget_get_parent(former) == widget()) {
    gtk_widget_unparent(former);
  }
  content_ = TNLGObjectRef<GtkWidget>::retain(content);
  if (content) {
    gtk_widget_set_parent(content, widget());
    gtk_widget_show(content);
  }
  gtk_widget_queue_resize(widget());
}

void TNLGtkViewBox::setFrame(const TNLRect& frame) {
  const bool resized = frame.size != frame_.size;
  frame_ = frame;
  if (resized || hostPlaced_) {
    gtk_widget_queue_resize(widget());
  } else if (GtkWidget* parent = gtk_widget_get_parent(widget())) {
    // A move: the parent places its children again.
    gtk_widget_queue_allocate(parent);
  }
  scheduleSync();
}

void TNLGtkViewBox::setBoundsOrigin(const TNLPoint& origin) {
  if (origin == boundsOrigin_) {
    return;
  }
  boundsOrigin_ = origin;
  gtk_widget_queue_allocate(widget());
  scheduleSync();
}

void TNLGtkViewBox::setHidden(bool hidden) {
  gtk_widget_set_visible(widget(), !hidden);
  scheduleSync();
}

void TNLGtkViewBox::setAlpha(double alpha) {
  gtk_widget_set_opacity(widget(), alpha);
  scheduleSync();
}

void TNLGtkViewBox::setClipsToBounds(bool clips) {
  clips_ = clips;
  gtk_widget_queue_allocate(widget());
}

void TNLGtkViewBox::setBackgroundColor(const std::optional<TNLColor>& color) {
  background_ = color;
  gtk_widget_queue_draw(widget());
}

void TNLGtkViewBox::setHostPlaced(bool hostPlaced) {
  hostPlaced_ = hostPlaced;
  placedElsewhere_ = placedElsewhere_ || hostPlaced;
  gtk_widget_queue_resize(widget());
}

void TNLGtkViewBox::setChildren(const std::vector<TNLGtkViewBox*>& children) {
  std::vector<GtkWidget*> wanted;
  for (TNLGtkViewBox* child : children) {
    if (child && child != this && !child->isPlacedElsewhere()) {
      wanted.push_back(child->widget());
    }
  }
  for (GtkWidget* child : std::vector<GtkWidget*>(children_)) {
    if (std::find(wanted.begin(), wanted.end(), child) == wanted.end()) {
      detachChild(child);
    }
  }
  for (GtkWidget* child : wanted) {
    GtkWidget* parent = gtk_widget_get_parent(child);
    if (parent == widget()) {
      continue;
    }
    // Moving between superviews: the former one may not have let go yet.
    if (auto* formerBox = of(parent)) {
      formerBox->detachChild(child);
    } else if (parent) {
      continue;  // placed by someone else; leave it
    }
    gtk_widget_set_parent(child, widget());
  }
  std::vector<GtkWidget*> ordered;
  for (GtkWidget* child : wanted) {
    if (gtk_widget_get_parent(child) == widget()) {
      ordered.push_back(child);
    }
  }
  children_ = std::move(ordered);
  gtk_widget_queue_resize(widget());
  gtk_widget_queue_draw(widget());
  scheduleSync();
}

std::vector<TNLGtkViewBox*> TNLGtkViewBox::children() const {
  std::vector<TNLGtkViewBox*> boxes;
  for (GtkWidget* child : children_) {
    if (auto* box = of(child)) {
      boxes.push_back(box);
    }
  }
  return boxes;
}

TNLGtkViewBox* TNLGtkViewBox::parentBox() const {
  return of(gtk_widget_get_parent(widget()));
}

void TNLGtkViewBox::detachChild(GtkWidget* child) {
  const auto found = std::find(children_.begin(), children_.end(), child);
  if (found == children_.end()) {
    return;
  }
  children_.erase(found);
  if (gtk_widget_get_parent(child) == widget()) {
    gtk_widget_unparent(child);
  }
  gtk_widget_queue_resize(widget());
  scheduleSync();
}

void TNLGtkViewBox::measure(GtkOrientation orientation, int* minimum, int* natural) const {
  const double extent =
      orientation == GTK_ORIENTATION_HORIZONTAL ? frame_.size.width : frame_.size.height;
  *natural = std::max(0, toPixels(extent));
  // A view in the host's layout insists on its model size; elsewhere the model places it.
  *minimum = hostPlaced_ ? *natural : 0;
}

void TNLGtkViewBox::allocate(GtkAllocation* allocation) {
  GtkWidget* self = widget();
  gtk_widget_set_allocation(self, allocation);
  if (inputWindow_) {
    gdk_window_move_resize(inputWindow_, allocation->x, allocation->y, allocation->width,
                           allocation->height);
  }
  GdkRectangle clip = *allocation;
  if (GtkWidget* content = content_.get(); content && gtk_widget_get_visible(content)) {
    gtk_widget_get_preferred_size(content, nullptr, nullptr);
    GtkAllocation contentAllocation = *allocation;
    gtk_widget_size_allocate(content, &contentAllocation);
    GdkRectangle contentClip;
    gtk_widget_get_clip(content, &contentClip);
    gdk_rectangle_union(&clip, &contentClip, &clip);
  }
  for (GtkWidget* child : children_) {
    auto* box = of(child);
    if (!box || !gtk_widget_get_visible(child)) {
      continue;
    }
    gtk_widget_get_preferred_size(child, nullptr, nullptr);
    const TNLRect& frame = box->frame();
    GtkAllocation childAllocation{allocation->x + toPixels(frame.origin.x - boundsOrigin_.x),
                                  allocation->y + toPixels(frame.origin.y - boundsOrigin_.y),
                                  std::max(0, toPixels(frame.size.width)),
                                  std::max(0, toPixels(frame.size.height))};
    gtk_widget_size_allocate(child, &childAllocation);
    GdkRectangle childClip;
    gtk_widget_get_clip(child, &childClip);
    gdk_rectangle_union(&clip, &childClip, &clip);
  }
  gtk_widget_set_clip(self, clips_ ? allocation : &clip);
  if (hostPlaced_) {
    reportHostPlacement();
  }
  scheduleSync();
}

void TNLGtkViewBox::reportHostPlacement() {
  // The host's layout decides where the view is; the model learns it in its window's
  // coordinates so that conversions to the screen (the view-tree walk) stay true.
  const auto view = view_.lock();
  GtkWidget* toplevel = gtk_widget_get_toplevel(widget());
  if (!view || !gtk_widget_is_toplevel(toplevel)) {
    return;
  }
  int x = 0;
  int y = 0;
  if (!gtk_widget_translate_coordinates(widget(), toplevel, 0, 0, &x, &y)) {
    return;
  }
  TNLRect placed{static_cast<double>(x), static_cast<double>(y), frame_.size.width,
                 frame_.size.height};
  // The position in the host's window is the model window's; a superview below the window
  // gets it in its own coordinates.
  if (const auto window = view->window(); window && view->superview() != window) {
    placed.origin = window->convertPoint(placed.origin, view->superview());
  }
  if (placed.origin != frame_.origin) {
    std::weak_ptr<TNLView> weakView = view;
    // Not from inside the allocation: the model may call back into this box.
    g_idle_add_full(
        G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
          auto* pending = static_cast<std::pair<std::weak_ptr<TNLView>, TNLPoint>*>(data);
          if (const auto target = pending->first.lock()) {
            target->setFrame({pending->second, target->frame().size});
          }
          return G_SOURCE_REMOVE;
        },
        new std::pair<std::weak_ptr<TNLView>, TNLPoint>(weakView, placed.origin),
        [](gpointer data) {
          delete static_cast<std::pair<std::weak_ptr<TNLView>, TNLPoint>*>(data);
        });
  }
}

gboolean TNLGtkViewBox::draw(cairo_t* cr) {
  GtkWidget* self = widget();
  const int width = gtk_widget_get_allocated_width(self);
  const int height = gtk_widget_get_allocated_height(self);
  cairo_save(cr);
  if (clips_) {
    cairo_rectangle(cr, 0, 0, width, height);
    cairo_clip(cr);
  }
  if (background_ && background_->alpha > 0.0) {
    cairo_set_source_rgba(cr, background_->red, background_->green, background_->blue,
                          background_->alpha);
    cairo_rectangle(cr, 0, 0, width, height);
    cairo_fill(cr);
  }
  if (GtkWidget* content = content_.get()) {
    gtk_container_propagate_draw(GTK_CONTAINER(self), content, cr);
  }
  for (GtkWidget* child : children_) {
    gtk_container_propagate_draw(GTK_CONTAINER(self), child, cr);
  }
  cairo_restore(cr);
  return FALSE;
}

void TNLGtkViewBox::realize() {
  GtkWidget* self = widget();
  gtk_widget_set_realized(self, TRUE);
  GdkWindow* parentWindow = gtk_widget_get_parent_window(self);
  gtk_widget_set_window(self, GDK_WINDOW(g_object_ref(parentWindow)));

  GtkAllocation allocation;
  gtk_widget_get_allocation(self, &allocation);
  GdkWindowAttr attributes{};
  attributes.x = allocation.x;
  attributes.y = allocation.y;
  attributes.width = allocation.width;
  attributes.height = allocation.height;
  attributes.window_type = GDK_WINDOW_CHILD;
  attributes.wclass = GDK_INPUT_ONLY;
  attributes.event_mask = gtk_widget_get_events(self);
  inputWindow_ = gdk_window_new(parentWindow, &attributes, GDK_WA_X | GDK_WA_Y);
  gtk_widget_register_window(self, inputWindow_);
  scheduleSync();
}

void TNLGtkViewBox::unrealize() {
  if (inputWindow_) {
    gtk_widget_unregister_window(widget(), inputWindow_);
    gdk_window_destroy(inputWindow_);
    inputWindow_ = nullptr;
  }
}

void TNLGtkViewBox::map() {
  if (inputWindow_) {
    // Under the children's windows; the sync pass puts every window in model order.
    gdk_window_show_unraised(inputWindow_);
  }
  scheduleSync();
}

void TNLGtkViewBox::unmap() {
  if (inputWindow_) {
    gdk_window_hide(inputWindow_);
  }
}

void TNLGtkViewBox::forall(GtkCallback callback, gpointer data) {
  if (GtkWidget* content = content_.get(); content && gtk_widget_get_parent(content) == widget()) {
    callback(content, data);
  }
  for (GtkWidget* child : std::vector<GtkWidget*>(children_)) {
    callback(child, data);
  }
}

void TNLGtkViewBox::remove(GtkWidget* child) {
  if (child == content_.get()) {
    gtk_widget_unparent(child);
    content_.reset();
    return;
  }
  detachChild(child);
}

gboolean TNLGtkViewBox::scrolled(const GdkEventScroll& event) {
  return scrollHandler_ ? scrollHandler_(event) : FALSE;
}

bool TNLGtkViewBox::isSyncScheduled() {
  return syncScheduled;
}

void TNLGtkViewBox::scheduleSync() {
  if (syncScheduled) {
    return;
  }
  syncScheduled = true;
  // After layout and drawing have settled for this iteration.
  g_idle_add_full(
      G_PRIORITY_DEFAULT_IDLE,
      [](gpointer) -> gboolean {
        syncScheduled = false;
        TNLGtkInputRouting::sync();
        return G_SOURCE_REMOVE;
      },
      nullptr, nullptr);
}
