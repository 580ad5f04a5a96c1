#pragma once

// The engine-facing internals shared by TNLJSContext.cpp and TNLJSValue.cpp. Only the script layer
// includes this header.

#include <JavaScriptCore/JavaScript.h>

#include <memory>
#include <string>

#include "Platform/Script/TNLJSContext.h"
#include "Platform/Script/TNLJSString.h"

struct TNLJSContext::Impl {
  JSGlobalContextRef context = nullptr;

  static JSContextRef of(const TNLJSContext& owner) { return owner.impl_->context; }

  static JSValueRef callNative(JSContextRef ctx, JSObjectRef function, JSObjectRef thisObject,
                               size_t argumentCount, const JSValueRef arguments[],
                               JSValueRef* exception);
  static void finalizeNative(JSObjectRef object);
  static JSClassRef nativeFunctionClass();
};

// One protection of one value; shared by the copies of a TNLJSValue.
struct TNLJSValue::Handle {
  Handle(std::shared_ptr<TNLJSContext> owner, JSValueRef ref);
  ~Handle();
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  std::shared_ptr<TNLJSContext> context;
  JSValueRef value;
};
