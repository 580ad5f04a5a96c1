#include "Platform/Script/TNLJSValue.h"

#include <cmath>

#include "Platform/Script/TNLJSEngine.h"

TNLJSValue::Handle::Handle(std::shared_ptr<TNLJSContext> owner, JSValueRef ref)
    : context(std::move(owner)), value(ref) {
  JSValueProtect(TNLJSContext::Impl::of(*context), value);
}

TNLJSValue::Handle::~Handle() {
  JSValueUnprotect(TNLJSContext::Impl::of(*context), value);
}

namespace {

const std::shared_ptr<TNLJSContext>& noContext() {
  static const std::shared_ptr<TNLJSContext> none;
  return none;
}

}  // namespace

const void* TNLJSValue::raw() const {
  return handle_ != nullptr ? handle_->value : nullptr;
}

const std::shared_ptr<TNLJSContext>& TNLJSValue::context() const {
  return handle_ != nullptr ? handle_->context : noContext();
}

bool TNLJSValue::isUndefined() const {
  return handle_ == nullptr ||
         JSValueIsUndefined(TNLJSContext::Impl::of(*handle_->context), handle_->value);
}

bool TNLJSValue::isNull() const {
  return handle_ != nullptr &&
         JSValueIsNull(TNLJSContext::Impl::of(*handle_->context), handle_->value);
}

bool TNLJSValue::isBoolean() const {
  return handle_ != nullptr &&
         JSValueIsBoolean(TNLJSContext::Impl::of(*handle_->context), handle_->value);
}

bool TNLJSValue::isNumber() const {
  return handle_ != nullptr &&
         JSValueIsNumber(TNLJSContext::Impl::of(*handle_->context), handle_->value);
}

bool TNLJSValue::isString() const {
  return handle_ != nullptr &&
         JSValueIsString(TNLJSContext::Impl::of(*handle_->context), handle_->value);
}

bool TNLJSValue::isObject() const {
  return handle_ != nullptr &&
         JSValueIsObject(TNLJSContext::Impl::of(*handle_->context), handle_->value);
}

bool TNLJSValue::isFunction() const {
  if (!isObject()) {
    return false;
  }
  const JSContextRef ctx = TNLJSContext::Impl::of(*handle_->context);
  return JSObjectIsFunction(ctx, JSValueToObject(ctx, handle_->value, nullptr));
}

std::string TNLJSValue::toString() const {
  if (handle_ == nullptr) {
    return "undefined";
  }
  JSValueRef exception = nullptr;
  const TNLJSString text(
      JSValueToStringCopy(TNLJSContext::Impl::of(*handle_->context), handle_->value, &exception));
  if (exception != nullptr) {
    handle_->context->recordException(exception);
    return "";
  }
  return text.utf8();
}

double TNLJSValue::toNumber() const {
  if (handle_ == nullptr) {
    return std::nan("");
  }
  JSValueRef exception = nullptr;
  const double number =
      JSValueToNumber(TNLJSContext::Impl::of(*handle_->context), handle_->value, &exception);
  if (exception != nullptr) {
    handle_->context->recordException(exception);
    return std::nan("");
  }
  return number;
}

bool TNLJSValue::toBool() const {
  return handle_ != nullptr &&
         JSValueToBoolean(TNLJSContext::Impl::of(*handle_->context), handle_->value);
}

TNLJSValue TNLJSValue::property(const std::string& name) const {
  if (!isObject()) {
    return handle_ != nullptr ? handle_->context->undefinedValue() : TNLJSValue();
  }
  const JSContextRef ctx = TNLJSContext::Impl::of(*handle_->context);
  const TNLJSString key(name);
  JSValueRef exception = nullptr;
  const JSValueRef value = JSObjectGetProperty(ctx, JSValueToObject(ctx, handle_->value, nullptr),
                                               key.get(), &exception);
  if (exception != nullptr) {
    handle_->context->recordException(exception);
    return handle_->context->undefinedValue();
  }
  return handle_->context->wrap(value);
}

void TNLJSValue::setProperty(const std::string& name, const TNLJSValue& value) const {
  if (!isObject()) {
    return;
  }
  const JSContextRef ctx = TNLJSContext::Impl::of(*handle_->context);
  const TNLJSString key(name);
  const JSValueRef newValue =
      value.handle_ != nullptr ? value.handle_->value : JSValueMakeUndefined(ctx);
  JSValueRef exception = nullptr;
  JSObjectSetProperty(ctx, JSValueToObject(ctx, handle_->value, nullptr), key.get(), newValue,
                      kJSPropertyAttributeNone, &exception);
  if (exception != nullptr) {
    handle_->context->recordException(exception);
  }
}

TNLJSValue TNLJSValue::call(const std::vector<TNLJSValue>& arguments) const {
  if (handle_ == nullptr) {
    return TNLJSValue();
  }
  TNLJSContext& context = *handle_->context;
  const JSContextRef ctx = TNLJSContext::Impl::of(context);
  std::vector<JSValueRef> values;
  values.reserve(arguments.size());
  for (const auto& argument : arguments) {
    values.push_back(argument.handle_ != nullptr ? argument.handle_->value
                                                 : JSValueMakeUndefined(ctx));
  }
  JSValueRef exception = nullptr;
  const JSObjectRef function = JSValueToObject(ctx, handle_->value, &exception);
  if (exception != nullptr) {  // undefined or null
    context.recordException(exception);
    return context.undefinedValue();
  }
  if (!JSObjectIsFunction(ctx, function)) {
    context.exception_ = "TypeError: " + toString() + " is not a function";
    return context.undefinedValue();
  }
  const JSValueRef result =
      JSObjectCallAsFunction(ctx, function, nullptr, values.size(), values.data(), &exception);
  context.recordException(exception);
  return exception != nullptr ? context.undefinedValue() : context.wrap(result);
}
