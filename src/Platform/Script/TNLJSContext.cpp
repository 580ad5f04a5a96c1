#include "Platform/Script/TNLJSContext.h"

#include <exception>

#include "Platform/Foundation/TNLNoDestructor.h"
#include "Platform/Script/TNLJSEngine.h"

namespace {

// What a native function object carries: the function and a non-owning way back to the wrapper.
struct NativeCallable {
  std::weak_ptr<TNLJSContext> context;
  TNLJSContext::NativeFunction function;
};

}  // namespace

// ---- Native functions ----

void TNLJSContext::Impl::finalizeNative(JSObjectRef object) {
  delete static_cast<NativeCallable*>(JSObjectGetPrivate(object));
}

JSClassRef TNLJSContext::Impl::nativeFunctionClass() {
  // One class for every native function, made once and kept for the life of the process.
  static const TNLNoDestructor<JSClassRef> jsClass([] {
    JSClassDefinition definition = kJSClassDefinitionEmpty;
    definition.className = "NativeFunction";
    definition.callAsFunction = callNative;
    definition.finalize = finalizeNative;
    return JSClassCreate(&definition);
  }());
  return *jsClass;
}

// ---- Context ----

TNLJSContext::TNLJSContext() : impl_(std::make_unique<Impl>()) {
  impl_->context = JSGlobalContextCreate(nullptr);
}

TNLJSContext::~TNLJSContext() {
  // Releasing the last reference tears down the virtual machine, which finalizes every native
  // function object and with it the functions they carry.
  JSGlobalContextRelease(impl_->context);
}

std::shared_ptr<TNLJSContext> TNLJSContext::create() {
  return std::shared_ptr<TNLJSContext>(new TNLJSContext());
}

TNLJSValue TNLJSContext::wrap(const void* value) {
  if (value == nullptr) {
    return undefinedValue();
  }
  return TNLJSValue(std::make_shared<const TNLJSValue::Handle>(shared_from_this(),
                                                               static_cast<JSValueRef>(value)));
}

void TNLJSContext::recordException(const void* exception) {
  if (exception == nullptr) {
    exception_.reset();
    return;
  }
  TNLJSString text(
      JSValueToStringCopy(impl_->context, static_cast<JSValueRef>(exception), nullptr));
  exception_ = text.utf8();
}

TNLJSValue TNLJSContext::globalObject() {
  return wrap(JSContextGetGlobalObject(impl_->context));
}

TNLJSValue TNLJSContext::evaluateScript(const std::string& script) {
  const TNLJSString source(script);
  JSValueRef exception = nullptr;
  const JSValueRef result =
      JSEvaluateScript(impl_->context, source.get(), nullptr, nullptr, 1, &exception);
  recordException(exception);
  return exception != nullptr ? undefinedValue() : wrap(result);
}

TNLJSValue TNLJSContext::undefinedValue() {
  return TNLJSValue(std::make_shared<const TNLJSValue::Handle>(
      shared_from_this(), JSValueMakeUndefined(impl_->context)));
}

TNLJSValue TNLJSContext::nullValue() {
  return wrap(JSValueMakeNull(impl_->context));
}

TNLJSValue TNLJSContext::booleanValue(bool value) {
  return wrap(JSValueMakeBoolean(impl_->context, value));
}

TNLJSValue TNLJSContext::numberValue(double value) {
  return wrap(JSValueMakeNumber(impl_->context, value));
}

TNLJSValue TNLJSContext::stringValue(const std::string& text) {
  const TNLJSString string(text);
  return wrap(JSValueMakeString(impl_->context, string.get()));
}

TNLJSValue TNLJSContext::objectValue() {
  return wrap(JSObjectMake(impl_->context, nullptr, nullptr));
}

TNLJSValue TNLJSContext::valueFromJSON(const std::string& json) {
  const TNLJSString text(json);
  return wrap(JSValueMakeFromJSONString(impl_->context, text.get()));
}

TNLJSValue TNLJSContext::functionValue(const std::string& name, NativeFunction function) {
  auto callable =
      std::make_unique<NativeCallable>(NativeCallable{weak_from_this(), std::move(function)});
  const JSObjectRef object =
      JSObjectMake(impl_->context, Impl::nativeFunctionClass(), callable.get());
  callable.release();  // owned by the object now; freed by its finalizer
  const TNLJSString nameKey("name");
  const TNLJSString nameValue(name);
  JSObjectSetProperty(impl_->context, object, nameKey.get(),
                      JSValueMakeString(impl_->context, nameValue.get()),
                      kJSPropertyAttributeReadOnly | kJSPropertyAttributeDontEnum, nullptr);
  return wrap(object);
}

void TNLJSContext::collectGarbage() {
  JSGarbageCollect(impl_->context);
}

void TNLJSContext::setFunction(const TNLJSValue& object, const std::string& name,
                               NativeFunction function) {
  object.setProperty(name, functionValue(name, std::move(function)));
}

JSValueRef TNLJSContext::Impl::callNative(JSContextRef ctx, JSObjectRef function, JSObjectRef,
                                          size_t argumentCount, const JSValueRef arguments[],
                                          JSValueRef* exception) {
  auto* callable = static_cast<NativeCallable*>(JSObjectGetPrivate(function));
  const auto context = callable != nullptr ? callable->context.lock() : nullptr;
  if (context == nullptr) {
    return JSValueMakeUndefined(ctx);
  }
  // Nothing may unwind through the engine's frames.
  std::string failure;
  try {
    std::vector<TNLJSValue> values;
    values.reserve(argumentCount);
    for (size_t i = 0; i < argumentCount; ++i) {
      values.push_back(context->wrap(arguments[i]));
    }
    const TNLJSValue result = callable->function(*context, values);
    // The engine keeps the returned value reachable from here on.
    return result.raw() != nullptr ? static_cast<JSValueRef>(result.raw())
                                   : JSValueMakeUndefined(ctx);
  } catch (const std::exception& error) {
    failure = error.what();
  } catch (...) {
    failure = "native function failed";
  }
  const TNLJSString message(failure);
  *exception = JSValueMakeString(ctx, message.get());
  return JSValueMakeUndefined(ctx);
}
