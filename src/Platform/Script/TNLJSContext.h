#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Script/TNLJSValue.h"

// A script-engine context (JavaScriptCore): one global object in a virtual machine of its own.
//
// Threads: the engine serialises calls into one context with its own lock, so a context and its
// values may be touched from any thread, but evaluation is meant to happen on one thread (the
// owner's queue). The last exception is plain state of that thread.
class TNLJSContext : public std::enable_shared_from_this<TNLJSContext> {
 public:
  // A native function: receives the call's arguments (missing ones are not padded) and returns
  // the call's result; a default-constructed value returns undefined. A C++ exception becomes a
  // script exception with the exception's message.
  using NativeFunction =
      std::function<TNLJSValue(TNLJSContext& context, const std::vector<TNLJSValue>& arguments)>;

  static std::shared_ptr<TNLJSContext> create();
  ~TNLJSContext();
  TNLJSContext(const TNLJSContext&) = delete;
  TNLJSContext& operator=(const TNLJSContext&) = delete;

  TNLJSValue globalObject();

  // Evaluates the script with the global object as `this`. Returns the completion value, or
  // undefined when the script throws; the exception is then kept in exception().
  TNLJSValue evaluateScript(const std::string& script);

  // The exception of the last evaluation or call made through this context (its string
  // conversion), cleared by every evaluation or call that completes normally.
  const std::optional<std::string>& exception() const { return exception_; }

  TNLJSValue undefinedValue();
  TNLJSValue nullValue();
  TNLJSValue booleanValue(bool value);
  TNLJSValue numberValue(double value);
  TNLJSValue stringValue(const std::string& text);
  TNLJSValue objectValue();
  // The value that JSON.parse gives for the text; undefined when it is not JSON.
  TNLJSValue valueFromJSON(const std::string& json);
  // A callable object that runs `function`. The function is destroyed with the object (when the
  // engine collects it, at the latest when the context goes); it must not own the context.
  TNLJSValue functionValue(const std::string& name, NativeFunction function);

  // Asks the engine to collect unreachable values now.
  void collectGarbage();

  // Installs a native function as the property `name` of `object`.
  void setFunction(const TNLJSValue& object, const std::string& name, NativeFunction function);

  struct Impl;

 private:
  friend class TNLJSValue;
  TNLJSContext();
  TNLJSValue wrap(const void* value);
  void recordException(const void* exception);

  std::unique_ptr<Impl> impl_;
  std::optional<std::string> exception_;
};
