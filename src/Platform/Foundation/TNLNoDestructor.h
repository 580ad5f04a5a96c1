#pragma once

#include <new>
#include <utility>

// Holds a process-wide instance that is never destroyed, so that work still running on other
// threads at exit (network completions, queued tasks) never meets a destroyed singleton.
// Use as a function-local static: construction is once-only and thread-safe.
template <class T>
class TNLNoDestructor {
 public:
  template <class... Args>
  explicit TNLNoDestructor(Args&&... args) {
    new (storage_) T(std::forward<Args>(args)...);
  }
  TNLNoDestructor(const TNLNoDestructor&) = delete;
  TNLNoDestructor& operator=(const TNLNoDestructor&) = delete;

  const T& operator*() const { return *get(); }
  T& operator*() { return *get(); }
  const T* operator->() const { return get(); }
  T* operator->() { return get(); }
  const T* get() const { return std::launder(reinterpret_cast<const T*>(storage_)); }
  T* get() { return std::launder(reinterpret_cast<T*>(storage_)); }

 private:
  alignas(T) unsigned char storage_[sizeof(T)];
};
