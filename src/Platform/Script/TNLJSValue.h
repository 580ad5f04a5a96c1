#pragma once

#include <memory>
#include <string>
#include <vector>

class TNLJSContext;

// A value of a script-engine context. Every value that native code holds is protected from the
// engine's garbage collector for as long as a copy of it lives, and keeps its context alive, so
// values may be stored in closures and timers freely. Copies share one protection.
//
// A default-constructed value belongs to no context and reads as undefined.
class TNLJSValue {
 public:
  TNLJSValue() = default;

  bool isUndefined() const;
  bool isNull() const;
  bool isBoolean() const;
  bool isNumber() const;
  bool isString() const;
  bool isObject() const;
  // True for objects that can be called (script functions and native functions alike).
  bool isFunction() const;

  // The engine's conversions (ToString, ToNumber, ToBoolean). A conversion that throws yields
  // the empty string, NaN or false; the exception is recorded on the context.
  std::string toString() const;
  double toNumber() const;
  bool toBool() const;

  // Property access on an object; reading from a non-object gives undefined, and writing to one
  // does nothing.
  TNLJSValue property(const std::string& name) const;
  void setProperty(const std::string& name, const TNLJSValue& value) const;

  // Calls this value as a function, with the global object as `this`. Calling something that is
  // not a function, or a function that throws, gives undefined and records the exception on the
  // context.
  TNLJSValue call(const std::vector<TNLJSValue>& arguments = {}) const;

  // The context the value belongs to; null for a default-constructed value.
  const std::shared_ptr<TNLJSContext>& context() const;

 private:
  friend class TNLJSContext;
  struct Handle;
  explicit TNLJSValue(std::shared_ptr<const Handle> handle) : handle_(std::move(handle)) {}
  // The engine's value reference (a JSValueRef), or null.
  const void* raw() const;

  std::shared_ptr<const Handle> handle_;
};
