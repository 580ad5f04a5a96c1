#pragma once

#include <glib-object.h>

#include <utility>

// One strong reference to a GObject, released on destruction. adopt() takes over a reference the
// caller already owns (a "transfer full" return value); retain() adds one (a floating reference
// is sunk, so the holder owns widgets that no container has taken yet).
template <class T>
class TNLGObjectRef {
 public:
  TNLGObjectRef() = default;
  static TNLGObjectRef adopt(T* object) { return TNLGObjectRef(object); }
  static TNLGObjectRef retain(T* object) {
    if (object) {
      g_object_ref_sink(object);
    }
    return TNLGObjectRef(object);
  }

  ~TNLGObjectRef() { reset(); }
  TNLGObjectRef(const TNLGObjectRef& other) : object_(other.object_) {
    if (object_) {
      g_object_ref(object_);
    }
  }
  TNLGObjectRef(TNLGObjectRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  TNLGObjectRef& operator=(TNLGObjectRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  void reset() {
    if (auto* object = std::exchange(object_, nullptr)) {
      g_object_unref(object);
    }
  }

  T* get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  explicit TNLGObjectRef(T* object) : object_(object) {}

  T* object_ = nullptr;
};

// A signal handler connected for the lifetime of the holder; disconnected on destruction while
// the instance still exists (a weak pointer notices when it does not).
class TNLSignalConnection {
 public:
  TNLSignalConnection() = default;
  TNLSignalConnection(gpointer instance, const char* signal, GCallback callback, gpointer data)
      : instance_(instance), id_(g_signal_connect(instance, signal, callback, data)) {
    g_object_add_weak_pointer(G_OBJECT(instance_), &instance_);
  }
  ~TNLSignalConnection() { disconnect(); }
  TNLSignalConnection(const TNLSignalConnection&) = delete;
  TNLSignalConnection& operator=(const TNLSignalConnection&) = delete;
  TNLSignalConnection(TNLSignalConnection&& other) noexcept { *this = std::move(other); }
  TNLSignalConnection& operator=(TNLSignalConnection&& other) noexcept {
    if (this != &other) {
      disconnect();
      if (other.instance_) {
        g_object_remove_weak_pointer(G_OBJECT(other.instance_), &other.instance_);
        instance_ = std::exchange(other.instance_, nullptr);
        id_ = std::exchange(other.id_, 0);
        g_object_add_weak_pointer(G_OBJECT(instance_), &instance_);
      }
    }
    return *this;
  }

  void disconnect() {
    if (instance_) {
      g_object_remove_weak_pointer(G_OBJECT(instance_), &instance_);
      if (g_signal_handler_is_connected(instance_, id_)) {
        g_signal_handler_disconnect(instance_, id_);
      }
      instance_ = nullptr;
      id_ = 0;
    }
  }

 private:
  gpointer instance_ = nullptr;
  gulong id_ = 0;
};
